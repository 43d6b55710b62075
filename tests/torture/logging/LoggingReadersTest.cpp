// Readers beside the writers of a log: those that share it are never kept out, those that do not cost no event.

#include "tests/torture/Figure.h"
#include "tests/torture/logging/LogFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace
{
constexpr DWORD kLimitMs = 1000000;

/// Reads the log again and again, as long as it lives, and holds it a while each time.
class Reader
{
public:
    Reader(std::string path, DWORD share, DWORD holdMs) : m_path(std::move(path)), m_share(share), m_holdMs(holdMs)
    {
        m_thread = std::thread([this] { run(); });
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    ~Reader() { stop(); }

    void stop()
    {
        m_stop = true;
        if (m_thread.joinable())
            m_thread.join();
    }
    int opened() const { return m_opened; }
    int refused() const { return m_refused; }

private:
    void run()
    {
        while (!m_stop)
        {
            const aut::UniqueFile file(
                ::CreateFileA(m_path.c_str(), GENERIC_READ, m_share, nullptr, OPEN_EXISTING, 0, nullptr));
            if (file)
                ++m_opened;
            else if (::GetLastError() == ERROR_SHARING_VIOLATION)
                ++m_refused;
            ::Sleep(m_holdMs);
        }
    }

    std::string m_path;
    DWORD m_share;
    DWORD m_holdMs;
    std::atomic<bool> m_stop{false};
    std::atomic<int> m_opened{0};
    std::atomic<int> m_refused{0};
    std::thread m_thread;
};

/// Two processes write events beside the readers; what is in the log then.
torture::LogContent writeWithTwo(const torture::LogFolder& log, const std::string& command, int each)
{
    std::vector<auttest::ChildProgram> processes;
    for (const std::string tag : {"a", "b"})
        processes.push_back(log.start(command + " " + tag + " " + std::to_string(each)));
    for (const auttest::ChildProgram& process : processes)
        EXPECT_EQ(0u, process.wait(kLimitMs));
    torture::LogContent content = log.content();
    torture::count("log files beside a reader that are not well formed", content.broken, 0);
    torture::count("headers beyond one a file, beside a reader", content.headers - content.files, 0);
    return content;
}

long long inOrder(const torture::LogContent& content, int each)
{
    return content.inOrder("a", each) + content.inOrder("b", each);
}
} // namespace

TEST(LoggingReaders, OneThatSharesTheFileIsNeverKeptOut)
{
    const int each = torture::rounds(500, 1500); // less than what a file holds: nothing is renamed
    const torture::LogFolder log;
    Reader reader(log.log(), FILE_SHARE_READ | FILE_SHARE_WRITE, 0);
    torture::count("events beside a reader that shares reading and writing",
                   inOrder(writeWithTwo(log, "burst", each), each), 2LL * each);
    reader.stop();
    torture::count("times that reader was kept out", reader.refused(), 0);
    torture::figure("times that reader came in", std::to_string(reader.opened()), ">= 100", reader.opened() >= 100);
}

TEST(LoggingReaders, OneThatSharesDeletingIsNotKeptOutByRotationsEither)
{
    const int each = torture::rounds(350, 5000);
    const torture::LogFolder log;
    Reader reader(log.log(), FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, 0);
    torture::count("events beside a reader that shares everything, through rotations",
                   inOrder(writeWithTwo(log, "long", each), each), 2LL * each);
    reader.stop();
    torture::count("times the reader that shares everything was kept out", reader.refused(), 0);
}

// A file can only be renamed through a handle that may delete it. Who does not share that and comes in that very moment
// is told to try again, by the system.
TEST(LoggingReaders, OneThatForbidsRenamingIsKeptOutByRenamingOnly)
{
    const int each = torture::rounds(350, 5000);
    const torture::LogFolder log;
    Reader reader(log.log(), FILE_SHARE_READ | FILE_SHARE_WRITE, 0);
    const torture::LogContent content = writeWithTwo(log, "long", each);
    reader.stop();
    torture::count("events beside a reader that forbids renaming, through rotations", inOrder(content, each),
                   2LL * each);
    const int keptOut = 100 * reader.refused() / std::max(1, reader.refused() + reader.opened());
    torture::figure("times in 100 that such a reader meets a rotation", std::to_string(keptOut), "<= 20",
                    keptOut <= 20);
}

TEST(LoggingReaders, OneThatAllowsNoWritersDelaysThemOnly)
{
    const int each = torture::rounds(100, 2000);
    const torture::LogFolder log;
    Reader reader(log.log(), FILE_SHARE_READ, 20);
    torture::count("events beside a reader that shares only reading", inOrder(writeWithTwo(log, "long", each), each),
                   2LL * each);
    reader.stop();
    torture::figure("times that reader came in and held writers up", std::to_string(reader.opened()), ">= 2",
                    reader.opened() >= 2);
}

TEST(LoggingReaders, OneThatHoldsTheFileForGoodCostsEventsButNoSecondHeader)
{
    const torture::LogFolder log;
    ASSERT_EQ(0u, log.start("burst before 3").wait());
    {
        const aut::UniqueFile held(
            ::CreateFileA(log.log().c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(held);
        const ULONGLONG start = ::GetTickCount64();
        ASSERT_EQ(0u, log.start("burst lost 20").wait());
        const ULONGLONG waited = ::GetTickCount64() - start;
        torture::figure("ms that 20 events wait for a file that is never given free", std::to_string(waited),
                        "<= 15000", waited <= 15000);
    }
    ASSERT_EQ(0u, log.start("burst after 3").wait());
    const torture::LogContent content = log.content();
    torture::count("headers of a log that was held", content.headers, 1);
    torture::count("files of a log that was held that are not well formed", content.broken, 0);
    torture::count("events before and after it was held", content.inOrder("before", 3) + content.inOrder("after", 3),
                   6);
}
