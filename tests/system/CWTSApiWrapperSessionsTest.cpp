// Sessions, clients and failures that the platform's own terminal services do not have, told by a stand-in.
#include "system/CWTSApiWrapper.h"

#include "platform/EntryPoint.h"
#include "platform/UniqueResource.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/LogFile.h"
#include "tests/system/wtsapi/TerminalServices.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace
{
using Events = std::vector<auttest::LogEvent>;

constexpr int kUserName = 5;
constexpr int kDomainName = 7;
constexpr int kClientName = 10;
constexpr DWORD kCurrentSession = 0xFFFFFFFF;

/// One server's sessions. Its buffers come from a heap of its own, so that nothing but its own function can free them.
class Server final : public auttest::TerminalServices
{
public:
    struct Message
    {
        HANDLE server;
        DWORD session;
        std::string title;
        DWORD titleLength;
        std::string text;
        DWORD textLength;
        DWORD style;
        DWORD timeout;
        bool hasAnswer;
        BOOL wait;
    };

    Server() = default;
    ~Server() { ::HeapDestroy(m_heap); }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    BOOL query(HANDLE server, DWORD session, int kind, char** text, DWORD* bytes) override
    {
        EXPECT_EQ(nullptr, server) << "the local server";
        ++queries;
        const auto failing = errors.find({session, kind});
        if (failing != errors.end())
        {
            *text = leftBehind;
            ::SetLastError(failing->second);
            return FALSE;
        }
        const auto known = texts.find({session, kind});
        const std::string answer = known != texts.end() ? known->second : "";
        *bytes = static_cast<DWORD>(answer.size() + 1);
        *text = nullptr;
        if (!withoutBuffer)
        {
            *text = static_cast<char*>(::HeapAlloc(m_heap, 0, *bytes));
            std::memcpy(*text, answer.c_str(), *bytes);
            ++buffers;
        }
        return TRUE;
    }
    void freeMemory(void* memory) override
    {
        EXPECT_TRUE(::HeapFree(m_heap, 0, memory)) << "not one of its buffers";
        --buffers;
        ::SetLastError(ERROR_INVALID_HANDLE); // freeing may change the error
    }
    BOOL sendMessage(HANDLE server, DWORD session, const char* title, DWORD titleLength, const char* message,
                     DWORD messageLength, DWORD style, DWORD timeout, DWORD* answer, BOOL wait) override
    {
        messages.push_back(
            {server, session, title, titleLength, message, messageLength, style, timeout, answer != nullptr, wait});
        return sendAnswer;
    }

    std::map<std::pair<DWORD, int>, std::string> texts; ///< "" for all others
    std::map<std::pair<DWORD, int>, DWORD> errors;
    bool withoutBuffer = false;
    char* leftBehind = nullptr; ///< by a failing query
    BOOL sendAnswer = TRUE;
    std::vector<Message> messages;
    std::atomic<int> queries{0};
    std::atomic<int> buffers{0}; ///< not yet released

private:
    HANDLE m_heap = ::HeapCreate(0, 0, 0);
};

std::string standInFolder(const std::string& name)
{
    char path[MAX_PATH] = "";
    ::GetModuleFileNameA(nullptr, path, sizeof path);
    const std::string program = path;
    return program.substr(0, program.rfind('\\')) + "\\wtsapi\\" + name;
}

/// No terminal services, until a test brings some.
class SessionsTest : public ::testing::Test
{
protected:
    SessionsTest()
    {
        CWTSApiWrapper::FreeInstance();
        EXPECT_EQ(nullptr, ::GetModuleHandleA("wtsapi32.dll"));
        m_log.mark();
    }
    ~SessionsTest() override
    {
        CWTSApiWrapper::FreeInstance();
        EXPECT_EQ(0, m_server.buffers) << "buffers that were not released";
        m_standIn.reset();
        EXPECT_EQ(nullptr, ::GetModuleHandleA("wtsapi32.dll")) << "still loaded";
        ::SetDllDirectoryA(nullptr);
    }
    /// Puts the stand-in where libraries are searched for.
    void bring(const std::string& name = "without_nothing")
    {
        ASSERT_TRUE(::SetDllDirectoryA(standInFolder(name).c_str()));
        m_standIn.reset(::LoadLibraryA("wtsapi32.dll"));
        const auto use = aut::entryPoint<auttest::UseTerminalServices>(m_standIn.get(), "useTerminalServices");
        ASSERT_NE(nullptr, use) << "the stand-in is not what is loaded: is WINEDLLOVERRIDES=wtsapi32=n set?";
        use(&m_server);
    }
    static std::string account(DWORD session)
    {
        return static_cast<const char*>(CWTSApiWrapper::GetInstance()->GetWTSAccountFromSessionId(session));
    }

    auttest::ClientRegistry m_registry;
    auttest::LogFile m_log;
    Server m_server;
    aut::UniqueModule m_standIn;
};

class IncompleteSessionsTest : public SessionsTest, public ::testing::WithParamInterface<const char*>
{
};
} // namespace

TEST_F(SessionsTest, TheAccountIsDomainAndUser)
{
    bring();
    m_server.texts = {{{3, kUserName}, "maria"}, {{3, kDomainName}, "OFFICE"}, {{4, kUserName}, "other"}};
    EXPECT_EQ("OFFICE\\maria", account(3));
    EXPECT_EQ(2, m_server.queries);
    EXPECT_EQ(Events(), m_log.events());
}

TEST_F(SessionsTest, EverySessionHasItsOwnAccount)
{
    bring();
    m_server.texts = {{{0, kUserName}, "a"},
                      {{0, kDomainName}, "A"},
                      {{65536, kUserName}, "b"},
                      {{65536, kDomainName}, "B"},
                      {{kCurrentSession, kUserName}, "c"},
                      {{kCurrentSession, kDomainName}, "C"}};
    EXPECT_EQ("A\\a", account(0));
    EXPECT_EQ("B\\b", account(65536));
    EXPECT_EQ("C\\c", account(0xFFFFFFFF));
}

TEST_F(SessionsTest, ASessionWithoutAUserHasNoAccountAndItsDomainIsNotAskedFor)
{
    bring();
    m_server.texts = {{{3, kDomainName}, "OFFICE"}};
    EXPECT_EQ("", account(3));
    EXPECT_EQ(1, m_server.queries);
    EXPECT_EQ(Events(), m_log.events());
}

TEST_F(SessionsTest, AUserWithoutADomainHasNoAccount)
{
    bring();
    m_server.texts = {{{3, kUserName}, "maria"}};
    EXPECT_EQ("", account(3));
    EXPECT_EQ(2, m_server.queries);
    EXPECT_EQ(Events(), m_log.events());
}

TEST_F(SessionsTest, AUserThatCannotBeAskedForIsAnError)
{
    bring();
    m_server.errors = {{{3, kUserName}, 0x1B5A}, {{kCurrentSession, kUserName}, 5}};
    EXPECT_EQ("", account(3));
    EXPECT_EQ("", account(0xFFFFFFFF));
    EXPECT_EQ(2, m_server.queries) << "no domain is asked for";
    EXPECT_EQ((Events{{"Error", "WTSQuerySessionInfo [UserName] failed for session ID 3, error code 0x1b5a"},
                      {"Error", "WTSQuerySessionInfo [UserName] failed for session ID -1, error code 0x5"}}),
              m_log.events());
}

TEST_F(SessionsTest, ADomainThatCannotBeAskedForIsAWarning)
{
    bring();
    m_server.texts = {{{3, kUserName}, "maria"}};
    m_server.errors = {{{3, kDomainName}, 0x1B5A}};
    EXPECT_EQ("", account(3));
    EXPECT_EQ((Events{{"Warning", "WTSQuerySessionInfo [DomainName] failed, error code 0x1b5a"}}), m_log.events());
}

TEST_F(SessionsTest, WhatAFailedQueryLeavesBehindIsNotABuffer)
{
    bring();
    char text[] = "neither read nor freed";
    m_server.leftBehind = text;
    m_server.texts = {{{4, kUserName}, "maria"}};
    m_server.errors = {{{3, kUserName}, 5}, {{4, kDomainName}, 5}, {{kCurrentSession, kClientName}, 5}};
    EXPECT_EQ("", account(3));
    EXPECT_EQ("", account(4));
    EXPECT_EQ(0, CWTSApiWrapper::GetInstance()->IsWTSSession());
}

TEST_F(SessionsTest, AnAnswerWithoutABufferIsEmpty)
{
    bring();
    m_server.withoutBuffer = true;
    EXPECT_EQ("", account(3));
    EXPECT_EQ(0, CWTSApiWrapper::GetInstance()->IsWTSSession());
    EXPECT_EQ(Events(), m_log.events());
}

TEST_F(SessionsTest, NamesOfAnyLengthComeWhole)
{
    bring();
    const std::string user(10000, 'u');
    const std::string domain(10000, 'd');
    m_server.texts = {{{3, kUserName}, user}, {{3, kDomainName}, domain}};
    EXPECT_EQ(domain + "\\" + user, account(3));
}

TEST_F(SessionsTest, NamesAreNotFormats)
{
    bring();
    m_server.texts = {{{3, kUserName}, "%s%n"}, {{3, kDomainName}, "%d"}};
    EXPECT_EQ("%d\\%s%n", account(3));
}

TEST_F(SessionsTest, ARemoteClientMakesTheSessionRemote)
{
    bring();
    m_server.texts = {{{kCurrentSession, kClientName}, "LAPTOP"}};
    EXPECT_EQ(1, CWTSApiWrapper::GetInstance()->IsWTSSession());
    EXPECT_EQ(1, m_server.queries);
}

TEST_F(SessionsTest, ASessionWithoutAClientIsNotRemote)
{
    bring();
    m_server.texts = {{{3, kClientName}, "LAPTOP"}, {{kCurrentSession, kUserName}, "maria"}};
    EXPECT_EQ(0, CWTSApiWrapper::GetInstance()->IsWTSSession());
}

TEST_F(SessionsTest, AClientThatCannotBeAskedForIsNoneAndNotLogged)
{
    bring();
    m_server.errors = {{{kCurrentSession, kClientName}, 5}};
    EXPECT_EQ(0, CWTSApiWrapper::GetInstance()->IsWTSSession());
    EXPECT_EQ(Events(), m_log.events());
}

TEST_F(SessionsTest, AWarningGoesToTheSessionAndIsNotWaitedFor)
{
    bring();
    EXPECT_EQ(1, CWTSApiWrapper::GetInstance()->SendWTSWarningMessage(3, "Update", "Please save your work."));
    ASSERT_EQ(1U, m_server.messages.size());
    const Server::Message& sent = m_server.messages.front();
    EXPECT_EQ(nullptr, sent.server);
    EXPECT_EQ(3U, sent.session);
    EXPECT_EQ("Update", sent.title);
    EXPECT_EQ(6U, sent.titleLength);
    EXPECT_EQ("Please save your work.", sent.text);
    EXPECT_EQ(22U, sent.textLength);
    EXPECT_EQ(0x30U, sent.style);
    EXPECT_EQ(0U, sent.timeout);
    EXPECT_TRUE(sent.hasAnswer) << "the interface writes there even when nobody waits";
    EXPECT_FALSE(sent.wait);
    EXPECT_EQ(0, m_server.queries);
}

TEST_F(SessionsTest, TheResultOfAWarningIsTheSystems)
{
    bring();
    for (const int answer : {0, 1, 7})
    {
        m_server.sendAnswer = answer;
        EXPECT_EQ(answer, CWTSApiWrapper::GetInstance()->SendWTSWarningMessage(3, "a", "b"));
    }
    EXPECT_EQ(Events(), m_log.events());
}

TEST_F(SessionsTest, AWarningMayBeEmptyOrLong)
{
    bring();
    const std::string longText(10000, 'x');
    CWTSApiWrapper* const wrapper = CWTSApiWrapper::GetInstance();
    EXPECT_EQ(1, wrapper->SendWTSWarningMessage(3, "", ""));
    EXPECT_EQ(1,
              wrapper->SendWTSWarningMessage(3, static_cast<const char*>(nullptr), static_cast<const char*>(nullptr)));
    EXPECT_EQ(1, wrapper->SendWTSWarningMessage(3, longText.c_str(), longText.c_str()));
    ASSERT_EQ(3U, m_server.messages.size());
    for (std::size_t i = 0; i < 2; ++i)
    {
        EXPECT_EQ("", m_server.messages[i].title);
        EXPECT_EQ("", m_server.messages[i].text);
        EXPECT_EQ(0U, m_server.messages[i].titleLength);
        EXPECT_EQ(0U, m_server.messages[i].textLength);
    }
    EXPECT_EQ(longText, m_server.messages[2].title);
    EXPECT_EQ(longText, m_server.messages[2].text);
    EXPECT_EQ(10000U, m_server.messages[2].textLength);
}

TEST_F(SessionsTest, WithoutTheLibraryNothingIsKnownWhichEachCallLogs)
{
    const auttest::LogEvent failed{"Error", "CWTSApiWrapper WtsApi32.dll load FAILED"};
    CWTSApiWrapper* const wrapper = CWTSApiWrapper::GetInstance();
    ASSERT_NE(nullptr, wrapper);
    EXPECT_EQ(Events{failed}, m_log.events());
    EXPECT_EQ("", account(3));
    EXPECT_EQ(0, wrapper->SendWTSWarningMessage(3, "a", "b"));
    EXPECT_EQ(0, wrapper->IsWTSSession());
    EXPECT_EQ((Events{failed, failed, failed, failed}), m_log.events());
}

TEST_F(SessionsTest, TheConsolesSessionIsKnownWithoutTheLibrary)
{
    CWTSApiWrapper* const wrapper = CWTSApiWrapper::GetInstance();
    m_log.mark();
    EXPECT_EQ(::WTSGetActiveConsoleSessionId(), wrapper->GetWTSActiveConsoleSessionId());
    EXPECT_EQ(Events(), m_log.events());
}

TEST_F(SessionsTest, ALibraryThatComesLaterIsLoadedThen)
{
    CWTSApiWrapper* const wrapper = CWTSApiWrapper::GetInstance();
    EXPECT_EQ(0, wrapper->IsWTSSession());
    bring();
    m_log.mark();
    m_server.texts = {{{kCurrentSession, kClientName}, "LAPTOP"}};
    EXPECT_EQ(1, wrapper->IsWTSSession());
    EXPECT_EQ(Events(), m_log.events());
}

TEST_P(IncompleteSessionsTest, NothingIsAskedWhenOneFunctionIsMissing)
{
    bring(std::string("without_") + GetParam());
    const auttest::LogEvent failed{"Error", "CWTSApiWrapper API init FAILED"};
    m_server.texts = {
        {{3, kUserName}, "maria"}, {{3, kDomainName}, "OFFICE"}, {{kCurrentSession, kClientName}, "LAPTOP"}};
    CWTSApiWrapper* const wrapper = CWTSApiWrapper::GetInstance();
    EXPECT_EQ(Events{failed}, m_log.events());
    EXPECT_EQ("", account(3));
    EXPECT_EQ(0, wrapper->SendWTSWarningMessage(3, "a", "b"));
    EXPECT_EQ(0, wrapper->IsWTSSession());
    EXPECT_EQ((Events{failed, failed, failed, failed}), m_log.events());
    EXPECT_EQ(0, m_server.queries);
    EXPECT_TRUE(m_server.messages.empty());
    EXPECT_EQ(::WTSGetActiveConsoleSessionId(), wrapper->GetWTSActiveConsoleSessionId());
}

INSTANTIATE_TEST_SUITE_P(Each, IncompleteSessionsTest,
                         ::testing::Values("WTSQuerySessionInformationA", "WTSFreeMemory", "WTSSendMessageA"),
                         [](const auto& tested) { return std::string(tested.param); });

TEST_F(SessionsTest, ThreadsThatComeAtOnceGetOneInstanceInitialisedOnce)
{
    constexpr int kThreads = 8;
    std::vector<CWTSApiWrapper*> seen(kThreads);
    std::vector<std::thread> threads;
    threads.reserve(seen.size());
    std::atomic<int> ready{0};
    for (CWTSApiWrapper*& own : seen)
    {
        threads.emplace_back(
            [&own, &ready]
            {
                ++ready;
                while (ready < kThreads)
                    std::this_thread::yield();
                own = CWTSApiWrapper::GetInstance();
            });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(std::vector<CWTSApiWrapper*>(kThreads, CWTSApiWrapper::GetInstance()), seen);
    EXPECT_EQ((Events{{"Error", "CWTSApiWrapper WtsApi32.dll load FAILED"}}), m_log.events());
}

TEST_F(SessionsTest, ThreadsMayAskAtOnce)
{
    CWTSApiWrapper* const wrapper = CWTSApiWrapper::GetInstance();
    bring(); // after the instance was made, so that the threads initialise it
    m_server.texts = {{{1, kUserName}, "u"}, {{1, kDomainName}, "D"}, {{kCurrentSession, kClientName}, "LAPTOP"}};
    std::atomic<int> right{0};
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int i = 0; i < 4; ++i)
    {
        threads.emplace_back(
            [wrapper, &right]
            {
                for (int round = 0; round < 200; ++round)
                {
                    const String found = wrapper->GetWTSAccountFromSessionId(1);
                    if (std::strcmp(found, "D\\u") == 0 && wrapper->IsWTSSession() == 1 &&
                        wrapper->GetWTSActiveConsoleSessionId() != 0xFFFFFFFF)
                        ++right;
                }
            });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(800, right);
    EXPECT_EQ(2400, m_server.queries);
}

TEST_F(SessionsTest, MakingAndFreeingTheInstanceLeavesNothingBehind)
{
    bring();
    m_server.texts = {{{1, kUserName}, "u"}, {{1, kDomainName}, "D"}};
    for (int round = 0; round < 100; ++round)
    {
        EXPECT_EQ("D\\u", account(1));
        CWTSApiWrapper::FreeInstance();
    }
    EXPECT_EQ(0, m_server.buffers);
} // the fixture looks whether the library is still loaded
