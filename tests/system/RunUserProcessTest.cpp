#include "system/CAUEvent.h"
#include "system/CProcessListManager.h"
#include "tests/support/LogFile.h"
#include "tests/support/TestFolder.h"
#include "tests/system/Processes.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

using namespace auttest;
using Events = std::vector<LogEvent>;

namespace
{
constexpr DWORD kPatienceMs = 30000;

class RunUserProcessTest : public ::testing::Test
{
protected:
    RunUserProcessTest() { endAllShells(); }
    ~RunUserProcessTest() override { endAllShells(); }

    int run(const std::string& commandLine) { return m_manager.RunUserProcess(ownUser().c_str(), commandLine.c_str()); }
    /// The id of the process that the last event of the log tells of.
    unsigned long loggedPid() const
    {
        const Events events = m_log.events();
        unsigned long pid = 0;
        if (!events.empty())
            std::sscanf(events.back().text.c_str(), "Process 0x%lx created", &pid);
        return pid;
    }

    IdleProcesses m_shells{"explorer.exe"};
    TestFolder m_folder;
    CProcessListManager m_manager;
    const LogFile m_log;
};

bool has(const std::vector<std::string>& lines, const std::string& wanted)
{
    for (const std::string& line : lines)
    {
        if (line == wanted)
            return true;
    }
    return false;
}

bool anyStartsWith(const std::vector<std::string>& lines, const std::string& start)
{
    for (const std::string& line : lines)
    {
        if (::_strnicmp(line.c_str(), start.c_str(), start.size()) == 0)
            return true;
    }
    return false;
}

/// A variable of the user's own environment, in the registry, while this lives.
class UserVariable
{
public:
    UserVariable(const char* name, const char* value) : m_name(name)
    {
        EXPECT_EQ(ERROR_SUCCESS, ::RegSetKeyValueA(HKEY_CURRENT_USER, "Environment", name, REG_SZ, value,
                                                   static_cast<DWORD>(std::strlen(value) + 1)));
    }
    ~UserVariable() { ::RegDeleteKeyValueA(HKEY_CURRENT_USER, "Environment", m_name); }
    UserVariable(const UserVariable&) = delete;
    UserVariable& operator=(const UserVariable&) = delete;

private:
    const char* m_name;
};

std::string text(std::size_t number) { return std::to_string(number); }
} // namespace

TEST_F(RunUserProcessTest, StartsTheProgramOnTheUsersDesktopWithTheUsersEnvironment)
{
    const Child shell = m_shells.start();
    CAUEvent reported;
    ASSERT_EQ(1, reported.Create("RunUserProcessTest"));
    // An inheritable handle whose number no other process has by chance.
    std::vector<aut::UniqueHandle> handles;
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    for (int i = 0; i < 500; ++i)
        handles.emplace_back(::CreateEventA(&inheritable, TRUE, FALSE, nullptr));
    ::SetEnvironmentVariableA("AUTOOLS_CALLERS_OWN", "1");
    const UserVariable usersOwn("AUTOOLS_USERS_OWN", "of the user");
    ::SetPriorityClass(::GetCurrentProcess(), BELOW_NORMAL_PRIORITY_CLASS);

    const std::string file = m_folder / "report.txt";
    const std::string commandLine = helperProgram() + " report \"" + file + "\" RunUserProcessTest " +
                                    text(reinterpret_cast<std::size_t>(handles.back().get()));
    EXPECT_EQ(1, run(commandLine));
    ::SetPriorityClass(::GetCurrentProcess(), NORMAL_PRIORITY_CLASS);
    ::SetEnvironmentVariableA("AUTOOLS_CALLERS_OWN", nullptr);
    ASSERT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(reported.GetHandle(), kPatienceMs));

    std::vector<std::string> lines;
    std::istringstream report(readFile(file));
    for (std::string line; std::getline(report, line);)
        lines.push_back(line.substr(0, line.find('\r')));
    char folder[MAX_PATH] = "";
    ::GetCurrentDirectoryA(sizeof folder, folder);
    EXPECT_TRUE(has(lines, "desktop=Default"));
    EXPECT_TRUE(has(lines, "folder=" + std::string(folder))) << "that of the starting process";
    EXPECT_TRUE(has(lines, "command line=" + commandLine));
    EXPECT_TRUE(has(lines, "processes on the console=1")) << "it has a console of its own";
    EXPECT_TRUE(has(lines, "normal priority=1")) << "not that of the starting process";
    EXPECT_TRUE(has(lines, "inherited=0"));
    EXPECT_TRUE(has(lines, "user=" + ownUser()));
    EXPECT_TRUE(anyStartsWith(lines, "variable SystemRoot="));
    EXPECT_TRUE(anyStartsWith(lines, "variable USERPROFILE="));
    EXPECT_TRUE(has(lines, "variable AUTOOLS_USERS_OWN=of the user")) << "this process has started without it";
    EXPECT_FALSE(anyStartsWith(lines, "variable AUTOOLS_CALLERS_OWN")) << "the caller's additions are not passed on";
}

TEST_F(RunUserProcessTest, LogsTheCommandLineAndTheNewProcess)
{
    const Child shell = m_shells.start();
    const IdleProcesses idle("for the user.exe");
    const aut::UniqueHandle ready{::CreateEventA(nullptr, FALSE, FALSE, "RunUserProcessTest")};
    const std::string commandLine = "\"" + idle.program() + "\" RunUserProcessTest";
    ASSERT_EQ(1, run(commandLine));
    ASSERT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(ready.get(), kPatienceMs));

    const unsigned long pid = loggedPid();
    char created[100];
    std::snprintf(created, sizeof created, "Process 0x%lx created for user ", pid);
    EXPECT_EQ((Events{{"Info", "Trying to run " + commandLine}, {"Info", created + ownUser()}}), m_log.events());

    const aut::UniqueHandle process{::OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, pid)};
    ASSERT_TRUE(process);
    String name;
    EXPECT_EQ(1, m_manager.GetProcessNameFromPID(pid, name));
    EXPECT_STREQ("for the user.exe", name);
    ::TerminateProcess(process.get(), 0);
    ::WaitForSingleObject(process.get(), kPatienceMs);
}

TEST_F(RunUserProcessTest, FailsWithoutAShellOfTheUser)
{
    EXPECT_EQ(0, run("never.exe"));
    EXPECT_EQ((Events{{"Warning", "Unable to find Explorer process running for user " + ownUser()}}), m_log.events());
}

TEST_F(RunUserProcessTest, FailsWhenOnlyOtherUsersHaveAShell)
{
    const Child shell = m_shells.start();
    EXPECT_EQ(0, m_manager.RunUserProcess("host\\nobody", "never.exe"));
    EXPECT_EQ(0, m_manager.RunUserProcess(nullptr, "never.exe"));
    EXPECT_EQ((Events{{"Warning", "Unable to find Explorer process running for user host\\nobody"},
                      {"Warning", "Unable to find Explorer process running for user "}}),
              m_log.events());
}

TEST_F(RunUserProcessTest, FailsWhenTheShellsTokenMayNotBeUsed)
{
    const Child shell = m_shells.start();
    allowOnly(tokenOf(shell.handle()).get(), TOKEN_QUERY); // its owner can be named, no more
    EXPECT_EQ(0, run("never.exe"));
    EXPECT_EQ((Events{{"Warning", "Error 5 : Failed to access Explorer process Token for user " + ownUser()}}),
              m_log.events());
}

TEST_F(RunUserProcessTest, FailsForAProgramThatIsNotThere)
{
    const Child shell = m_shells.start();
    EXPECT_EQ(0, run("no such program.exe"));
    EXPECT_EQ((Events{{"Info", "Trying to run no such program.exe"},
                      {"Warning", "Error 2 : Failed to create GUI process for user " + ownUser()}}),
              m_log.events());
}

TEST_F(RunUserProcessTest, FailsForCommandLinesThatCannotBe)
{
    const Child shell = m_shells.start();
    const std::string endless(100000, 'n');
    for (const char* const commandLine : {"", static_cast<const char*>(nullptr), endless.c_str()})
        EXPECT_EQ(0, m_manager.RunUserProcess(ownUser().c_str(), commandLine));
    EXPECT_EQ(6U, m_log.events().size());
}

TEST_F(RunUserProcessTest, TakesAnyOfManyShells)
{
    std::vector<Child> shells;
    for (int i = 0; i < 5; ++i)
        shells.push_back(m_shells.start());
    EXPECT_EQ(1, run(helperProgram() + " names"));
}

TEST_F(RunUserProcessTest, LeaksNoHandles)
{
    const Child shell = m_shells.start();
    ASSERT_EQ(1, run(helperProgram() + " names"));
    const std::size_t before = openHandles();
    for (int round = 0; round < 5; ++round)
    {
        ASSERT_EQ(1, run(helperProgram() + " names"));
        ASSERT_EQ(0, run("no such program.exe"));
    }
    EXPECT_EQ(before, openHandles());
}
