// The random generator is seeded once per process, so each of these looks at a process of its own.

#include "tests/system/Processes.h"

#include <gtest/gtest.h>

namespace
{
std::string seeding(const std::string& arguments)
{
    const auttest::HelperRun run = auttest::runHelper(arguments, "fileops_helper.exe");
    return run.lines.empty() ? "" : run.lines[0];
}

TEST(Seeding, TheFirstReplacementSeedsWithTheTimeAndNoLaterOneDoes) { EXPECT_EQ("true", seeding("seed overwrite")); }

TEST(Seeding, TheFirstDelayedCopySeedsWithTheTimeAndNoLaterOneDoes) { EXPECT_EQ("true", seeding("seed copy")); }

TEST(Seeding, TheOlderFamilySeedsTheSameWay)
{
    const auttest::HelperWindowsVersion version("win98", "fileops_helper.exe");
    EXPECT_EQ("true", seeding("seed overwrite"));
    EXPECT_EQ("true", seeding("seed copy"));
}

TEST(Seeding, OfManyThreadsOneSeeds) { EXPECT_EQ("true", seeding("threads")); }
} // namespace
