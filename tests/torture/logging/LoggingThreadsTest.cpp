// Many threads of one process write one log through its rotations.

#include "tests/torture/Figure.h"
#include "tests/torture/logging/LogFolder.h"

#include <gtest/gtest.h>

#include <string>

TEST(LoggingThreads, EightThreadsLoseNothingThroughRotations)
{
    const int each = torture::rounds(800, 12500);
    const torture::LogFolder log;
    const auttest::ChildProgram program = log.start("threads 8 " + std::to_string(each));
    ASSERT_EQ(0u, program.wait(1000000));

    const torture::LogContent content = log.content();
    long long there = 0;
    for (int i = 0; i < 8; ++i)
        there += content.inOrder("t" + std::to_string(i), each);
    torture::count("events of 8 threads, in order per thread", there, 8LL * each);
    torture::count("log files of 8 threads that are not well formed", content.broken, 0);
    torture::count("headers beyond one a file", content.headers - content.files, 0);
    const int rotations = content.files - 1;
    torture::figure("rotations meanwhile", std::to_string(rotations), ">= 3", rotations >= 3);
}
