#include "tests/system/Processes.h"
#include "tests/webconf/CachingFixture.h"

#include <atomic>
#include <string>
#include <vector>

// Several processes that ask for the same configuration, or write the same cache file.

using auttest::CachingTest;
using auttest::Child;
using auttest::Events;
using auttest::OpenDataCaching;

class CachingProcesses : public CachingTest
{
protected:
    CachingProcesses() { fill(request); }
    Child helper(const std::string& arguments) const
    {
        return Child("\"" + auttest::programFolder() + "\\datacaching_helper.exe\" " + arguments);
    }
    Child asking(const std::string& product = kProduct) const
    {
        return helper("ask " + host + " " + kCid + " " + product);
    }
    /// From now on each request that reaches the server sets the event.
    void reportRequests()
    {
        server->onRequest([this](const webconf_sample::HttpRequest&) { ::SetEvent(arrived.get()); });
    }
    bool requestArrives() const { return ::WaitForSingleObject(arrived.get(), 30'000) == WAIT_OBJECT_0; }
    /// The files in the cache folder of the product.
    std::vector<std::string> cacheFiles() const
    {
        std::vector<std::string> names;
        WIN32_FIND_DATAA entry;
        const HANDLE find = ::FindFirstFileA((data / (std::string(kProduct) + "\\" + host + "\\*.*")).c_str(), &entry);
        for (bool more = find != INVALID_HANDLE_VALUE; more; more = ::FindNextFileA(find, &entry) != FALSE)
        {
            if (entry.cFileName[0] != '.')
                names.emplace_back(entry.cFileName);
        }
        ::FindClose(find);
        return names;
    }

    const aut::UniqueHandle arrived{::CreateEventA(nullptr, FALSE, FALSE, nullptr)};
    OpenDataCaching request;
};

TEST_F(CachingProcesses, TheSecondOneGivesEighteenWithoutAsking)
{
    answerWith(newData("T"));
    std::atomic<bool> first{true};
    std::atomic<DWORD> other{99};
    server->onRequest(
        [&](const webconf_sample::HttpRequest&)
        {
            if (first.exchange(false))
                other = asking().wait();
        });
    EXPECT_EQ(0, request.TransmitRequestToWebConf());
    EXPECT_EQ(18u, other);
    EXPECT_EQ(1u, server->requests().size());
    EXPECT_FALSE(marked());
    EXPECT_EQ(newData("T"), data.readFile(file()));
}

TEST_F(CachingProcesses, TheMarkOfAnotherOneIsHeededUntilItHasEnded)
{
    answerWith(newData("T"));
    server->addRule("delay=1500");
    reportRequests();
    const Child other = asking();
    ASSERT_TRUE(requestArrives());
    EXPECT_EQ(18, request.TransmitRequestToWebConf());
    EXPECT_TRUE(marked()) << "it is the other process's";
    EXPECT_EQ(0u, other.wait());
    EXPECT_FALSE(marked());
    EXPECT_EQ("T", timeStamp());

    EXPECT_EQ(0, request.TransmitRequestToWebConf());
    EXPECT_EQ(2u, server->requests().size());
}

TEST_F(CachingProcesses, AnotherProductIsAskedForMeanwhile)
{
    answerWith(newData("T"));
    std::atomic<bool> first{true};
    std::atomic<DWORD> other{99};
    server->onRequest(
        [&](const webconf_sample::HttpRequest&)
        {
            if (first.exchange(false))
                other = asking("Planner").wait();
        });
    EXPECT_EQ(0, request.TransmitRequestToWebConf());
    EXPECT_EQ(0u, other);
    EXPECT_EQ(newData("T"), data.readFile(file(kCid, "Planner")));
}

TEST_F(CachingProcesses, AKilledOneLeavesItsMarkWhichAnOperatorDeletes)
{
    cache("2026-01-01 00:00:00", "old");
    server->addRule("silent=1");
    reportRequests();
    Child other = asking();
    ASSERT_TRUE(requestArrives());
    other.end();
    EXPECT_TRUE(marked()) << "nobody was left to delete it, and it has no expiry";
    EXPECT_EQ("old", data.readFile(file()));
    EXPECT_EQ("2026-01-01 00:00:00", timeStamp());

    server->clearRules();
    answerWith(newData("2026-05-05 00:00:00"));
    EXPECT_EQ(18, request.TransmitRequestToWebConf());
    EXPECT_EQ(1u, server->requests().size()) << "the killed one's";

    registry.removeValue(markKey(), (std::string(kCid) + "__config").c_str());
    EXPECT_EQ(0, request.TransmitRequestToWebConf());
    EXPECT_EQ(newData("2026-05-05 00:00:00"), data.readFile(file()));
    EXPECT_EQ("2026-05-05 00:00:00", timeStamp());
    EXPECT_FALSE(marked());
}

TEST_F(CachingProcesses, AllAtOnceLeaveOneWholeAnswerAndNoMark)
{
    answerWith(newData("T"));
    server->addRule("delay=300");
    std::vector<Child> others;
    for (int count = 0; count < 5; ++count)
        others.push_back(asking());
    std::size_t answered = 0;
    for (const Child& other : others)
    {
        // Which of them ask depends on their timing, and two may even meet between the test of the mark and its
        // setting.
        const DWORD outcome = other.wait();
        EXPECT_TRUE(outcome == 0 || outcome == 18) << outcome;
        answered += outcome == 0 ? 1 : 0;
    }
    EXPECT_GE(answered, 1u);
    EXPECT_EQ(answered, server->requests().size()) << "who was refused has not asked";
    EXPECT_FALSE(marked());
    EXPECT_EQ("T", timeStamp());
    EXPECT_EQ(newData("T"), data.readFile(file()));
    EXPECT_EQ(std::vector<std::string>{std::string(kCid) + ".dat"}, cacheFiles());
}

TEST_F(CachingProcesses, AReaderNeverSeesHalfAFile)
{
    constexpr std::size_t kSize = 300'000;
    SetDataInCache(host.c_str(), kCid, kProduct, "", std::string(kSize, 'A').c_str());
    const std::string arguments = "write " + host + " " + kCid + " " + kProduct + " 300000 60";
    const std::string path = data / file();
    std::vector<Child> writers;
    for (int count = 0; count < 2; ++count)
        writers.push_back(helper(arguments));

    std::vector<char> content(kSize + 1);
    int reads = 0;
    for (bool writing = true; writing; ++reads)
    {
        writing = ::WaitForSingleObject(writers.front().handle(), 0) == WAIT_TIMEOUT;
        const aut::UniqueFile reader(::CreateFileA(path.c_str(), GENERIC_READ,
                                                   FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                                   OPEN_EXISTING, 0, nullptr));
        if (!reader)
            continue; // just being replaced
        DWORD size = 0;
        ASSERT_TRUE(::ReadFile(reader.get(), content.data(), static_cast<DWORD>(content.size()), &size, nullptr));
        ASSERT_EQ(kSize, size);
        const std::string text(content.data(), size);
        ASSERT_EQ(std::string::npos, text.find_first_not_of(text[0])) << "parts of two answers";
    }
    EXPECT_GT(reads, 10);
    for (const Child& writer : writers)
        EXPECT_EQ(0u, writer.wait());
    EXPECT_EQ(std::vector<std::string>{std::string(kCid) + ".dat"}, cacheFiles());
}
