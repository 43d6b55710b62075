#include "tests/examples/ChildProgram.h"
#include "tests/examples/RawClient.h"
#include "tests/support/TestFolder.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

using auttest::bodyOf;
using auttest::getPage;

namespace
{
class Program : public auttest::ChildProgram
{
public:
    explicit Program(const std::string& arguments) : ChildProgram("webconfigurator.exe", arguments) {}
};

/// The port of the program's first line, 0 when it is another one.
unsigned short portOf(const std::string& line)
{
    return line.substr(0, 5) == "port " ? static_cast<unsigned short>(std::atoi(line.c_str() + 5))
                                        : static_cast<unsigned short>(0);
}
} // namespace

TEST(WebConfiguratorProgram, SaysItsPortServesAndListsUntilItsInputEnds)
{
    const auttest::TestFolder folder;
    folder.writeFile("pages.rules", "page=p.asp, file=p.xml");
    folder.writeFile("p.xml", "<p/>");
    Program program("--templates \"" + folder.path() + "\" --rule \"page=p.asp, status=203\" --rule status=500");
    const unsigned short port = portOf(program.readLine());
    ASSERT_NE(0, port);
    const std::string answer = getPage(port, "/p.asp");
    EXPECT_EQ("HTTP/1.1 203 ", answer.substr(0, 13)); // the rule given first goes first
    EXPECT_EQ("<p/>", bodyOf(answer));
    EXPECT_EQ("GET /p.asp HTTP/1.1", program.readLine());
    program.endInput();
    EXPECT_EQ(0u, program.exitCode());
}

TEST(WebConfiguratorProgram, ServesADepot)
{
    const auttest::TestFolder folder;
    folder.writeFile("Part\\part.txt", "bytes");
    Program program("--templates . --depot \"" + folder.path() + "\"");
    const unsigned short port = portOf(program.readLine());
    ASSERT_NE(0, port);
    EXPECT_EQ("bytes", bodyOf(getPage(port, "/Depot/Part/part.txt")));
}

TEST(WebConfiguratorProgram, ListsNothingWhenItIsToBeQuiet)
{
    Program program("--quiet --templates . --rule body=x");
    const unsigned short port = portOf(program.readLine());
    ASSERT_NE(0, port);
    EXPECT_EQ("x", bodyOf(getPage(port, "/")));
    program.endInput();
    EXPECT_EQ("", program.readLine());
    EXPECT_EQ(0u, program.exitCode());
}

TEST(WebConfiguratorProgram, UnknownArgumentsShowItsUsage)
{
    for (const char* arguments : {"--odd 1", "--port", "--port many"})
    {
        Program program(arguments);
        EXPECT_EQ("webconfigurator [--port N] [--templates FOLDER] [--depot FOLDER] [--rule RULE]... [--quiet]",
                  program.readLine());
        EXPECT_EQ(2u, program.exitCode()) << arguments;
    }
}

TEST(WebConfiguratorProgram, ABadRuleEndsIt)
{
    Program program("--rule odd=1");
    EXPECT_EQ("webconfigurator: rule setting \"odd\": unknown", program.readLine());
    EXPECT_EQ(1u, program.exitCode());
}
