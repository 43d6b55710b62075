// Several processes write one log: all at once, through rotations, and while one of them dies.

#include "tests/torture/Figure.h"
#include "tests/torture/logging/LogFolder.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{
constexpr DWORD kLimitMs = 1000000;
const std::vector<std::string> kTags = {"a", "b", "c", "d"};

/// Four processes write so many events each; the events that are there in order.
long long writeWithFour(const torture::LogFolder& log, const std::string& command, int each)
{
    std::vector<auttest::ChildProgram> processes;
    for (const std::string& tag : kTags)
        processes.push_back(log.start(command + " " + tag + " " + std::to_string(each)));
    for (const auttest::ChildProgram& process : processes)
        EXPECT_EQ(0u, process.wait(kLimitMs));
    const torture::LogContent content = log.content();
    long long there = 0;
    for (const std::string& tag : kTags)
        there += content.inOrder(tag, each);
    return there;
}
} // namespace

TEST(LoggingProcesses, FourProcessesLoseNothing)
{
    const int each = torture::rounds(600, 5000);
    const torture::LogFolder log;
    torture::count("events of 4 processes", writeWithFour(log, "burst", each), 4LL * each);
    const torture::LogContent content = log.content();
    torture::count("log files of 4 processes that are not well formed", content.broken, 0);
    torture::count("headers beyond one a file, 4 processes", content.headers - content.files, 0);
}

TEST(LoggingProcesses, FourProcessesRotateAtOnceAndLoseNothing)
{
    // Long events: a rotation every 480.
    const int each = torture::rounds(300, 5000);
    const torture::LogFolder log;
    torture::count("long events of 4 processes that all rotate", writeWithFour(log, "long", each), 4LL * each);
    const torture::LogContent content = log.content();
    torture::count("log files of 4 rotating processes that are not well formed", content.broken, 0);
    torture::count("headers beyond one a file, 4 rotating processes", content.headers - content.files, 0);
    const int rotations = content.files - 1;
    torture::figure("rotations of 4 processes", std::to_string(rotations), ">= 2", rotations >= 2);
}

TEST(LoggingProcesses, AKilledWriterCostsTheOthersNothing)
{
    const int deaths = torture::rounds(4, 200);
    const int each = deaths * 400;
    const torture::LogFolder log;
    std::vector<auttest::ChildProgram> survivors;
    for (const std::string tag : {"a", "b"})
        survivors.push_back(log.start("burst " + tag + " " + std::to_string(each)));
    std::mt19937_64 random(torture::seed());
    for (int i = 0; i < deaths; ++i)
    {
        const std::string name = "torture_victim_" + std::to_string(i);
        const aut::UniqueHandle begun(::CreateEventA(nullptr, TRUE, FALSE, name.c_str()));
        auttest::ChildProgram victim = log.start("burst v" + std::to_string(i) + " 1000000 " + name);
        EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(begun.get(), 60000));
        ::Sleep(static_cast<DWORD>(random() % 50));
        victim.kill();
    }
    for (const auttest::ChildProgram& survivor : survivors)
        EXPECT_EQ(0u, survivor.wait(kLimitMs));

    const torture::LogContent content = log.content();
    torture::count("events of 2 processes beside others that are killed",
                   content.inOrder("a", each) + content.inOrder("b", each), 2LL * each);
    int gaps = 0;
    int wrote = 0;
    for (int i = 0; i < deaths; ++i)
    {
        const std::string victim = "v" + std::to_string(i);
        wrote += content.events.count(victim) != 0 ? 1 : 0;
        gaps += content.countsUp(victim) ? 0 : 1;
    }
    torture::count("killed processes with an event missing before the last", gaps, 0);
    torture::count("log files beside killed processes that are not well formed", content.broken, 0);
    torture::count("headers beyond one a file, beside killed processes", content.headers - content.files, 0);
    torture::count("processes killed while they wrote", wrote, deaths);
}
