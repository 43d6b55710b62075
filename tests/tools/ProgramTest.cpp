// autool.exe as its user starts it.
#include "common/Text.h"
#include "tests/tools/Autool.h"

#include <gtest/gtest.h>

namespace
{
using namespace auttest;

TEST(AutoolProgram, TellsItsVersionAndItsCommands)
{
    const AutoolRun version = runAutoolProgram("--version");
    EXPECT_EQ(0, version.code);
    EXPECT_EQ(0U, version.out.rfind("autool ", 0)) << version.out;
    const AutoolRun help = runAutoolProgram("--help");
    EXPECT_EQ(0, help.code);
    EXPECT_NE(std::string::npos, help.out.find("explain"));
    for (const std::string& line : linesOf(help.out))
        EXPECT_LE(autool::displayWidth(line), 100U) << line;
}

TEST(AutoolProgram, WrongUsageIsTwoAndSaidOnTheErrorStream)
{
    for (const char* wrong : {"", "nonsense", "explain", "explain --nonsense 5"})
    {
        const AutoolRun run = runAutoolProgram(wrong);
        EXPECT_EQ(2, run.code) << wrong;
        EXPECT_EQ("", run.out) << wrong;
        EXPECT_NE("", run.error) << wrong;
    }
}

TEST(AutoolProgram, AnUnknownCommandIsNamedWithThoseThereAre)
{
    const AutoolRun run = runAutool({"nonsense", "5"});
    EXPECT_EQ(2, run.code);
    EXPECT_EQ(0U, run.error.find("autool: there is no command \"nonsense\", but check, explain, log, plan, state\n"))
        << run.error;
}

TEST(AutoolProgram, AFileGetsUtf8WithoutColours)
{
    const AutoolRun run = runAutoolProgram("explain 2");
    EXPECT_EQ(0, run.code);
    EXPECT_TRUE(autool::isValidUtf8(run.out));
    EXPECT_EQ(std::string::npos, run.out.find('\x1b')) << run.out;
}
} // namespace
