#include "tests/examples/RawClient.h"
#include "tests/support/TestFolder.h"

#include <windows.h>

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

using auttest::bodyOf;
using auttest::getPage;

namespace
{
/// webconfigurator.exe, beside this program, with its streams at our end.
class Program
{
public:
    explicit Program(const std::string& arguments)
    {
        SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
        HANDLE childIn = nullptr;
        HANDLE childOut = nullptr;
        EXPECT_TRUE(::CreatePipe(&childIn, &m_input, &inherited, 0));
        EXPECT_TRUE(::CreatePipe(&m_output, &childOut, &inherited, 0));
        ::SetHandleInformation(m_input, HANDLE_FLAG_INHERIT, 0);
        ::SetHandleInformation(m_output, HANDLE_FLAG_INHERIT, 0);
        STARTUPINFOA startup{};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = childIn;
        startup.hStdOutput = childOut;
        startup.hStdError = childOut;
        std::string command = "\"" + folder() + "webconfigurator.exe\" " + arguments;
        PROCESS_INFORMATION process{};
        EXPECT_TRUE(
            ::CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process));
        m_process = process.hProcess;
        ::CloseHandle(process.hThread);
        ::CloseHandle(childIn);
        ::CloseHandle(childOut);
    }
    ~Program()
    {
        endInput();
        if (::WaitForSingleObject(m_process, 10000) != WAIT_OBJECT_0)
            ::TerminateProcess(m_process, 99);
        ::CloseHandle(m_process);
        ::CloseHandle(m_output);
    }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    std::string readLine()
    {
        std::string line;
        char c = '\0';
        DWORD read = 0;
        while (::ReadFile(m_output, &c, 1, &read, nullptr) && read == 1 && c != '\n')
            if (c != '\r')
                line += c;
        return line;
    }
    void endInput()
    {
        if (m_input != nullptr)
            ::CloseHandle(m_input);
        m_input = nullptr;
    }
    DWORD exitCode()
    {
        DWORD code = 98;
        EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(m_process, 10000));
        ::GetExitCodeProcess(m_process, &code);
        return code;
    }

private:
    static std::string folder()
    {
        char path[MAX_PATH];
        ::GetModuleFileNameA(nullptr, path, MAX_PATH);
        const std::string self = path;
        return self.substr(0, self.find_last_of("\\/") + 1);
    }

    HANDLE m_input = nullptr;
    HANDLE m_output = nullptr;
    HANDLE m_process = nullptr;
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
        EXPECT_EQ("webconfigurator [--port N] [--templates FOLDER] [--rule RULE]... [--quiet]", program.readLine());
        EXPECT_EQ(2u, program.exitCode()) << arguments;
    }
}

TEST(WebConfiguratorProgram, ABadRuleEndsIt)
{
    Program program("--rule odd=1");
    EXPECT_EQ("webconfigurator: rule setting \"odd\": unknown", program.readLine());
    EXPECT_EQ(1u, program.exitCode());
}
