#include "foundation/EventLog.h"

#include "platform/UniqueResource.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogFile.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <io.h>
#include <regex>
#include <string>
#include <vector>

namespace
{
using auttest::LogEvent;
using Events = std::vector<LogEvent>;
using Names = std::vector<std::string>;

/// The log of this process, without a file and with detail level 0 at the start of each test.
class EventLog : public ::testing::Test
{
protected:
    EventLog()
    {
        setLevel(0);
        auttest::removeAll(path());
        m_log.mark();
    }
    ~EventLog() override { auttest::removeAll(path()); }

    static std::string path() { return auttest::LogFile::ownPath(); }
    /// Sets `TestEnv` and makes as many calls as it takes for the library to read it.
    void setLevel(DWORD level) const
    {
        m_registry.write("Config", "TestEnv", level);
        for (int i = 0; i < 10; ++i)
            Log(level < 0xFFFF ? 0xFFFF0000 : 0, "a call that makes the level be read");
    }

    auttest::ClientRegistry m_registry;
    auttest::LogFile m_log;
};

aut::UniqueFile openFile(const std::string& path, DWORD access, DWORD share)
{
    return aut::UniqueFile(::CreateFileA(path.c_str(), access, share, nullptr, OPEN_EXISTING, 0, nullptr));
}
} // namespace

TEST_F(EventLog, TheFirstEventCreatesTheFile)
{
    Log(0, "first %d", 1);
    const std::string content = m_log.content();
    std::smatch parts;
    // "." does not match a line end, so each line stands for itself.
    ASSERT_TRUE(std::regex_match(
        content, parts,
        std::regex(
            "<LogAutoUpdate>\r\n<Environment>\r\n<AUVersion>(.*)</AUVersion>\r\n<OS>(.*)</OS>\r\n<IE>(.*)</IE>\r\n"
            "</Environment>\r\n<LogEvent><Date>(\\d\\d/\\d\\d/\\d\\d \\d\\d:\\d\\d\\.\\d\\d)</Date><Type>Info</Type>"
            "<Event>first 1</Event></LogEvent>\r\n</LogAutoUpdate>\r\n")))
        << content;
}

TEST_F(EventLog, DatesAreTheLocalTime)
{
    const auto now = []
    {
        SYSTEMTIME local{};
        ::GetLocalTime(&local);
        char text[32];
        std::snprintf(text, sizeof text, "%02d/%02d/%02d %02d:%02d.%02d", local.wYear % 100, local.wMonth, local.wDay,
                      local.wHour, local.wMinute, local.wSecond);
        return std::string(text);
    };
    const std::string before = now();
    Log(0, "dated");
    const std::string after = now();
    const std::string content = m_log.content();
    const std::string date = content.substr(content.find("<Date>") + 6, before.size());
    EXPECT_LE(before, date); // such texts sort like the times
    EXPECT_GE(after, date);
}

TEST_F(EventLog, EachEventStandsBehindTheOthers)
{
    Log(0, "one");
    Log(1, "two");
    Log(2, "three");
    EXPECT_EQ((Events{{"Info", "one"}, {"Warning", "two"}, {"Error", "three"}}), m_log.events());
}

TEST_F(EventLog, TheLowHalfOfTheCodeIsTheType)
{
    const char* const names[] = {"Info",         "Warning",      "Error",        "Phase1_Start",
                                 "Phase2_Start", "Phase3_Start", "Phase1_End",   "Phase2_End",
                                 "Phase3_End",   "Send_Reports", "Reports_Sent", "Main_Window_Creation"};
    Events expected;
    for (unsigned long i = 0; i < 12; ++i)
    {
        Log(i, "x");
        expected.push_back({names[i], "x"});
    }
    EXPECT_EQ(expected, m_log.events());
}

TEST_F(EventLog, AnUnknownTypeIsAnEmptyElement)
{
    Log(12, "x");
    Log(0xFFFF, "y");
    EXPECT_NE(std::string::npos, m_log.content().find("<Type></Type><Event>x</Event>"));
    EXPECT_NE(std::string::npos, m_log.content().find("<Type></Type><Event>y</Event>"));
}

TEST_F(EventLog, MessagesAreEscaped)
{
    Log(0, "a<b & \"c\"");
    EXPECT_NE(std::string::npos, m_log.content().find("<Event>a&lt;b &amp; &quot;c&quot;</Event>"));
}

TEST_F(EventLog, ANullTextIsShownAsSuch)
{
    const char* volatile none = nullptr; // volatile, or the compiler would refuse
    Log(0, "<%s>", none);
    EXPECT_EQ((Events{{"Info", "<(null)>"}}), m_log.events());
}

TEST_F(EventLog, MessagesAreCutAt1023Characters)
{
    Log(0, "%s", std::string(10000, 'x').c_str());
    Log(0, "%s", std::string(1023, 'y').c_str());
    EXPECT_EQ((Events{{"Info", std::string(1023, 'x')}, {"Info", std::string(1023, 'y')}}), m_log.events());
}

TEST_F(EventLog, EscapedMessagesAreCutBehindAWholeEntity)
{
    Log(0, "%s", std::string(1023, '"').c_str());
    EXPECT_EQ((Events{{"Info", std::string(341, '"')}}), m_log.events()); // 341 times 6 is 2,046
}

TEST_F(EventLog, LineFeedsAreStoredAsLineEnds)
{
    Log(0, "a\nb");
    EXPECT_NE(std::string::npos, m_log.content().find("<Event>a\r\nb</Event>"));
}

TEST_F(EventLog, ANullFormatIsAnEmptyMessage)
{
    void (*const log)(unsigned long, const char*, ...) = &Log; // called so, the compiler does not look at the arguments
    log(0, nullptr);
    EXPECT_EQ((Events{{"Info", ""}}), m_log.events());
}

TEST_F(EventLog, SystemInformationWritesTheEnvironmentBlockAgain)
{
    Log(0, "%s", "System Information");
    const std::string content = m_log.content();
    const std::size_t block = content.find("<Environment>");
    const std::size_t end = content.find("</Environment>\r\n") + 16;
    ASSERT_NE(std::string::npos, block);
    const std::string text = content.substr(block, end - block);
    EXPECT_EQ("<LogAutoUpdate>\r\n" + text + text + "</LogAutoUpdate>\r\n", content);
}

TEST_F(EventLog, TheEnvironmentIsLookedUpOnceAndKept)
{
    m_registry.write("", "Current_Kernel_Version", "version of the first need");
    Log(0, "System Information");
    const std::string before = m_log.content();
    m_registry.write("", "Current_Kernel_Version", "later version");
    Log(0, "System Information");
    const std::string content = m_log.content();
    EXPECT_LT(before.size(), content.size());
    EXPECT_EQ(std::string::npos, content.find("later version"));

    auttest::removeAll(path()); // nor does a new file make it be looked up
    Log(0, "one");
    EXPECT_EQ(std::string::npos, m_log.content().find("later version"));
}

TEST_F(EventLog, OnlyExactlySystemInformationDoes)
{
    Log(0, "System Information.");
    Log(0, "system information");
    EXPECT_EQ((Events{{"Info", "System Information."}, {"Info", "system information"}}), m_log.events());
}

TEST_F(EventLog, AnEventAboveTheDetailLevelIsDropped)
{
    setLevel(1);
    Log(0x20000, "dropped");
    EXPECT_FALSE(auttest::fileExists(path()));
    setLevel(2);
    Log(0x20000, "kept");
    Log(0x20002, "kept too");
    Log(0x30000, "dropped");
    EXPECT_EQ((Events{{"Info", "kept"}, {"Error", "kept too"}}), m_log.events());
}

TEST_F(EventLog, DetailLevelsCompareUnsigned)
{
    setLevel(0x80000000);
    Log(0xFFFF0000, "highest");
    EXPECT_TRUE(m_log.has("Info", "highest"));
}

TEST_F(EventLog, TheDetailLevelIsReadOnEveryTenthCallOnly)
{
    const auto written = [this]
    {
        m_log.mark();
        Log(0x20000, "probe");
        return !m_log.events().empty();
    };
    m_registry.write("Config", "TestEnv", 2);
    int calls = 1;
    while (!written() && calls < 20)
        ++calls;
    EXPECT_LE(calls, 10); // that was a call whose number can be divided by ten
    m_registry.write("Config", "TestEnv", DWORD{0});
    for (int i = 1; i <= 9; ++i)
        EXPECT_TRUE(written()) << i;
    EXPECT_FALSE(written());
}

TEST_F(EventLog, DroppedCallsCountToo)
{
    setLevel(0); // ends with a call that was read
    m_registry.write("Config", "TestEnv", 2);
    for (int i = 0; i < 10; ++i)
        Log(0x50000, "dropped");
    Log(0x20000, "kept");
    EXPECT_EQ((Events{{"Info", "kept"}}), m_log.events());
}

TEST_F(EventLog, AMissingOrDamagedLevelIsZero)
{
    setLevel(2);
    m_registry.removeValue("Config", "TestEnv");
    for (int i = 0; i < 10; ++i)
        Log(0xFFFF0000, "dropped");
    Log(0x10000, "dropped");
    m_registry.write("Config", "TestEnv", "a text instead of a number");
    for (int i = 0; i < 10; ++i)
        Log(0xFFFF0000, "dropped");
    Log(0x10000, "dropped");
    EXPECT_FALSE(auttest::fileExists(path()));
}

TEST_F(EventLog, TheLastErrorStaysAsItWas)
{
    for (int i = 0; i < 10; ++i)
    {
        ::SetLastError(1234);
        Log(0, "event");
        Log(0x50000, "dropped");
        EXPECT_EQ(1234u, ::GetLastError());
    }
}

TEST_F(EventLog, ReadersDoNotKeepEventsOut)
{
    Log(0, "one");
    const aut::UniqueStdio reader(std::fopen(path().c_str(), "r"));
    const aut::UniqueFile windowsReader = openFile(path(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
    ASSERT_TRUE(reader && windowsReader);
    Log(0, "two");
    EXPECT_EQ((Events{{"Info", "one"}, {"Info", "two"}}), m_log.events());
}

TEST_F(EventLog, NoFileIsOpenBetweenEvents)
{
    Log(0, "one");
    EXPECT_TRUE(openFile(path(), GENERIC_READ | GENERIC_WRITE | DELETE, 0));
}

TEST_F(EventLog, AppendsToAFileThatAnotherProcessWrote)
{
    Log(0, "one");
    std::string content = m_log.content();
    content.insert(content.size() - 18,
                   "<LogEvent><Date>d</Date><Type>Info</Type><Event>theirs</Event></LogEvent>\r\n");
    auttest::writeFile(path(), content);
    Log(0, "two");
    EXPECT_EQ((Events{{"Info", "one"}, {"Info", "theirs"}, {"Info", "two"}}), m_log.events());
}

TEST_F(EventLog, AnEventWaitsForAnotherWriterAndCallsAboveTheLevelDoNot)
{
    Log(0, "one");
    aut::UniqueFile writer = openFile(path(), GENERIC_WRITE, FILE_SHARE_READ);
    ASSERT_TRUE(writer);
    // This thread holds the log's lock until the other writer is gone.
    const aut::UniqueHandle waiting(::CreateThread(
        nullptr, 0,
        [](void*) -> DWORD
        {
            Log(0, "two");
            return 0;
        },
        nullptr, 0, nullptr));
    ::Sleep(30); // long enough for it to get there; too short only makes the test easier
    for (int i = 0; i < 1000; ++i)
        Log(0x50000, "dropped %s", "unformatted");
    EXPECT_EQ(DWORD{WAIT_TIMEOUT}, ::WaitForSingleObject(waiting.get(), 0)); // so none of the calls waited for it
    writer.reset();
    EXPECT_EQ(DWORD{WAIT_OBJECT_0}, ::WaitForSingleObject(waiting.get(), 30000));
    EXPECT_EQ((Events{{"Info", "one"}, {"Info", "two"}}), m_log.events());
}

TEST_F(EventLog, AnEventIsLostWhenAnotherWriterDoesNotLetGo)
{
    Log(0, "one");
    const std::string before = m_log.content();
    {
        const aut::UniqueFile writer = openFile(path(), GENERIC_WRITE, FILE_SHARE_READ);
        ASSERT_TRUE(writer);
        Log(0, "lost");
        const ULONGLONG start = ::GetTickCount64();
        Log(0, "lost, too, but hardly waited for");
        EXPECT_LT(::GetTickCount64() - start, 1500u);
    }
    EXPECT_EQ(before, m_log.content()); // no second header either
    Log(0, "two");
    EXPECT_EQ((Events{{"Info", "one"}, {"Info", "two"}}), m_log.events());
}

TEST_F(EventLog, AnEventIsLostWhenTheFileIsReadOnly)
{
    Log(0, "one");
    const std::string before = m_log.content();
    ::SetFileAttributesA(path().c_str(), FILE_ATTRIBUTE_READONLY);
    Log(0, "lost");
    ::SetFileAttributesA(path().c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(before, m_log.content());
}

namespace
{
BOOL WINAPI readsNothing(HANDLE, void*, DWORD, DWORD*, OVERLAPPED*)
{
    ::SetLastError(ERROR_LOCK_VIOLATION);
    return FALSE;
}
BOOL WINAPI readsOneByte(HANDLE, void* buffer, DWORD, DWORD* read, OVERLAPPED*)
{
    *static_cast<char*>(buffer) = '\n';
    *read = 1;
    return TRUE;
}
} // namespace

TEST_F(EventLog, AnEventIsLostWhenTheEndOfTheFileCannotBeRead)
{
    Log(0, "one");
    const std::string before = m_log.content();
    {
        const auttest::ImportPatch patch("ReadFile", readsNothing);
        Log(0, "lost");
    }
    EXPECT_EQ(before, m_log.content()); // written behind the closing tag, it would leave two of them
    {
        const auttest::ImportPatch patch("ReadFile", readsOneByte);
        Log(0, "lost");
    }
    EXPECT_EQ(before, m_log.content());
    Log(0, "two");
    EXPECT_EQ((Events{{"Info", "one"}, {"Info", "two"}}), m_log.events());
}

TEST_F(EventLog, AnEmptyFileNeedsNoReading)
{
    auttest::writeFile(path(), "");
    const auttest::ImportPatch patch("ReadFile", readsNothing);
    Log(0, "one");
    EXPECT_EQ((Events{{"Info", "one"}}), m_log.events());
}

TEST_F(EventLog, AnEventIsLostWhenTheFolderIsMissing)
{
    const std::string folder = path().substr(0, path().rfind('\\'));
    const std::string aside = folder + " aside";
    ASSERT_TRUE(::MoveFileA(folder.c_str(), aside.c_str()));
    Log(0, "lost");
    EXPECT_FALSE(auttest::fileExists(folder));
    ASSERT_TRUE(::MoveFileA(aside.c_str(), folder.c_str()));
    Log(0, "one");
    EXPECT_EQ((Events{{"Info", "one"}}), m_log.events());
}

TEST_F(EventLog, AnEmptyFileGetsItsHeader)
{
    auttest::writeFile(path(), "");
    Log(0, "one");
    EXPECT_EQ(0u, m_log.content().find("<LogAutoUpdate>\r\n<Environment>\r\n"));
    EXPECT_EQ((Events{{"Info", "one"}}), m_log.events());
}

TEST_F(EventLog, ThreadsWriteOneEventAfterTheOther)
{
    const auto burst = [](void* name) -> DWORD
    {
        for (int i = 0; i < 50; ++i)
            Log(0, "%s %d", static_cast<const char*>(name), i);
        return 0;
    };
    char names[4][2] = {"a", "b", "c", "d"};
    std::vector<aut::UniqueHandle> threads;
    for (auto& name : names)
        threads.emplace_back(::CreateThread(nullptr, 0, burst, name, 0, nullptr));
    for (const aut::UniqueHandle& thread : threads)
        EXPECT_EQ(DWORD{WAIT_OBJECT_0}, ::WaitForSingleObject(thread.get(), 60000));
    EXPECT_EQ(200u, m_log.events().size());
    for (const auto& name : names)
    {
        for (int i = 0; i < 50; ++i)
            EXPECT_TRUE(m_log.has("Info", std::string(name) + " " + std::to_string(i)));
    }
}

namespace
{
Names g_flushed;
int __cdecl recordedCommit(int file)
{
    char path[MAX_PATH] = "";
    ::GetFinalPathNameByHandleA(reinterpret_cast<HANDLE>(::_get_osfhandle(file)), path, sizeof path, 0);
    const std::string whole(path);
    g_flushed.push_back(whole.substr(whole.rfind('\\') + 1));
    return ::_commit(file);
}
} // namespace

TEST_F(EventLog, RotatingFlushesEachFileUnderItsNewName)
{
    const std::string folder = path().substr(0, path().rfind('\\') + 1);
    const std::string full = std::string(512000, 'x') + "\r\n</LogAutoUpdate>\r\n";
    const auttest::ImportPatch patch("_commit", recordedCommit);
    g_flushed.clear();
    Log(0, "nothing to rotate");
    EXPECT_EQ(Names{}, g_flushed);
    auttest::writeFile(path(), full);
    Log(0, "one");
    EXPECT_EQ((Names{"7xAutoupdateLog_01.xml"}), g_flushed);
    auttest::writeFile(path(), full);
    Log(0, "two");
    EXPECT_EQ((Names{"7xAutoupdateLog_01.xml", "7xAutoupdateLog_02.xml", "7xAutoupdateLog_01.xml"}), g_flushed);
    for (const char* name : {"7xAutoupdateLog_01.xml", "7xAutoupdateLog_02.xml"})
        auttest::removeAll(folder + name);
}

namespace
{
class ArchiveLog : public ::testing::Test
{
protected:
    std::vector<std::string> files() const
    {
        std::vector<std::string> names;
        WIN32_FIND_DATAA found{};
        const aut::UniqueFind search(::FindFirstFileA((m_data / "*.xml").c_str(), &found));
        for (bool more = static_cast<bool>(search); more; more = ::FindNextFileA(search.get(), &found) != FALSE)
            names.emplace_back(found.cFileName);
        return names;
    }
    auttest::ClientRegistry m_registry;
    auttest::TestFolder m_data;
};
} // namespace

TEST_F(ArchiveLog, MovesTheMachineWideLogToATimeStampedName)
{
    m_registry.write("", "DataPath", m_data.path());
    m_data.writeFile("7xAutoupdateLog.xml", "content");
    const auto nameNow = []
    {
        SYSTEMTIME now{};
        ::GetLocalTime(&now);
        char name[64];
        std::snprintf(name, sizeof name, "7xAutoupdateLog_%02d-%02d-%02d_%02d-%02d-%02d.xml", now.wYear % 100,
                      now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond);
        return std::string(name);
    };
    const std::string before = nameNow();
    ArchiveCurrentLog();
    const std::string after = nameNow();
    const std::vector<std::string> names = files();
    ASSERT_EQ(1u, names.size());
    EXPECT_TRUE(std::regex_match(names[0], std::regex(R"(7xAutoupdateLog_\d\d-\d\d-\d\d_\d\d-\d\d-\d\d\.xml)")))
        << names[0];
    EXPECT_LE(before, names[0]); // such names sort like the times
    EXPECT_GE(after, names[0]);
    EXPECT_EQ("content", m_data.readFile(names[0]));
}

TEST_F(ArchiveLog, LeavesTheUsersOwnLogAlone)
{
    m_registry.write("", "DataPath", m_data.path());
    Log(0, "mine");
    ArchiveCurrentLog();
    EXPECT_TRUE(auttest::fileExists(auttest::LogFile::ownPath()));
    EXPECT_TRUE(files().empty());
}

TEST_F(ArchiveLog, ReportsNothingWhenThereIsNothingToMove)
{
    const auttest::LogFile log;
    ArchiveCurrentLog(); // no data path at all
    m_registry.write("", "DataPath", m_data.path());
    ArchiveCurrentLog(); // no file
    m_registry.write("", "DataPath", std::string(255, 'x'));
    ArchiveCurrentLog(); // no room for the name
    EXPECT_TRUE(log.events().empty());
}
