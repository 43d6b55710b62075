#include "system/UserProcesses.h"

#include "tests/support/ClientRegistry.h"
#include "tests/support/LogFile.h"
#include "tests/system/Processes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace auttest;

namespace
{
/// Starts with nobody logged on.
class IsUserLoggedTest : public ::testing::Test
{
protected:
    IsUserLoggedTest() { endAllShells(); }
    ~IsUserLoggedTest() override { endAllShells(); }

    ClientRegistry m_registry;
    const LogFile m_log;
};
} // namespace

TEST_F(IsUserLoggedTest, TheShellOfTheSystemCounts)
{
    const Child shell("C:\\windows\\explorer.exe");
    ::WaitForInputIdle(shell.handle(), 30000);
    EXPECT_TRUE(IsUserLogged(0));
    EXPECT_TRUE(IsUserLogged(3));
    EXPECT_TRUE(m_log.events().empty());
}

TEST_F(IsUserLoggedTest, AnyExplorerCountsWhateverItsCase)
{
    const IdleProcesses idle("EXPLORER.exe");
    EXPECT_FALSE(IsUserLogged(0));
    const Child shell = idle.start();
    EXPECT_TRUE(IsUserLogged(0));
}

TEST_F(IsUserLoggedTest, WithoutTriesItChecksOnceAndDoesNotSleep)
{
    const ULONGLONG start = ::GetTickCount64();
    EXPECT_FALSE(IsUserLogged(0));
    EXPECT_LT(::GetTickCount64() - start, 1500U);
    EXPECT_TRUE(m_log.events().empty());
}

TEST_F(IsUserLoggedTest, ATryThatFailsIsLoggedAndTakes2Seconds)
{
    const ULONGLONG start = ::GetTickCount64();
    EXPECT_FALSE(IsUserLogged(1));
    EXPECT_GE(::GetTickCount64() - start, 1950U);
    EXPECT_EQ((std::vector<LogEvent>{{"Info", "Try 1 : Explorer Not Found"}}), m_log.events());
}

TEST_F(IsUserLoggedTest, InAdminModeALocalInstallationDecides)
{
    m_registry.write("Config", "AdminMode", 1);
    EXPECT_FALSE(IsUserLogged(3)) << "no tries are made";
    m_registry.write("", "LocalInstall", 1);
    EXPECT_TRUE(IsUserLogged(0));

    const IdleProcesses idle("explorer.exe");
    const Child shell = idle.start();
    m_registry.write("", "LocalInstall", DWORD{0});
    EXPECT_FALSE(IsUserLogged(0)) << "a shell does not count";
    EXPECT_TRUE(m_log.events().empty());
}

TEST_F(IsUserLoggedTest, AlwaysOnTheOlderFamilyAndOnUnknownSystems)
{
    for (const char* const version : {"win95", "win98", "winme", "win10"})
    {
        const HelperWindowsVersion setting(version);
        const HelperRun run = runHelper("users");
        ASSERT_EQ(3U, run.lines.size()) << version;
        EXPECT_EQ("logged on: 1", run.lines[0]) << version;
    }
}
