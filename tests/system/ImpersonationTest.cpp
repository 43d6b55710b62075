#include "foundation/EventLog.h"
#include "system/CProcessListManager.h"
#include "system/UserProcesses.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/LogFile.h"
#include "tests/system/Processes.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using namespace auttest;
using Events = std::vector<LogEvent>;

namespace
{
/// Starts with nobody logged on and every detail logged. `Explorer.exe` are idle programs, so that a test can have as
/// many shells as it likes.
class ImpersonationTest : public ::testing::Test
{
protected:
    ImpersonationTest()
    {
        endAllShells();
        logDetails(5);
        m_log.mark();
    }
    ~ImpersonationTest() override
    {
        ::RevertToSelf();
        logDetails(0);
    }
    /// The log reads its detail level at every tenth call.
    void logDetails(DWORD level) const
    {
        m_registry.write("Config", "TestEnv", level);
        for (int call = 0; call < 10; ++call)
            Log(0xFFFF0000, "never written");
    }
    Child startShell() const { return m_shells.start(); }
    /// A shell whose owner cannot be named.
    Child startNamelessShell() const
    {
        Child shell = startShell();
        allowOnly(tokenOf(shell.handle()).get(), 0);
        return shell;
    }
    /// What is logged before any shell is looked at, without a configured maximum.
    static Events noLimit(int shells)
    {
        return {{"Info",
                 "--- Citrix Limitation --- : MaxUsers not defined in Registry Keys ! Not limited for AutoUpdate.exe"},
                limit(shells)};
    }
    static LogEvent limit(int users)
    {
        return {"Info",
                "--- Citrix Limitation --- : Nb max of user connected in the same time = " + std::to_string(users)};
    }
    static Events join(Events events, const Events& more)
    {
        events.insert(events.end(), more.begin(), more.end());
        return events;
    }
    static Events impersonated()
    {
        return {{"Info", "ImpersonateUserFromPID: SUCCESS"}, {"Info", "User " + ownUser() + " Impersonated"}};
    }
    static Events defaultImpersonated()
    {
        return join({{"Info", "Trying to Impersonate default User " + ownUser()}}, impersonated());
    }

    ClientRegistry m_registry;
    IdleProcesses m_shells{"Explorer.exe"};
    LogFile m_log;
};

bool hasPrivilege(HANDLE token, const char* name)
{
    LUID privilege{};
    EXPECT_TRUE(::LookupPrivilegeValueA(nullptr, name, &privilege));
    PRIVILEGE_SET set{1, PRIVILEGE_SET_ALL_NECESSARY, {{privilege, 0}}};
    BOOL enabled = FALSE;
    EXPECT_TRUE(::PrivilegeCheck(token, &set, &enabled));
    return enabled != FALSE;
}

void disableAllPrivileges(HANDLE token)
{
    ASSERT_TRUE(::AdjustTokenPrivileges(token, TRUE, nullptr, 0, nullptr, nullptr));
}
} // namespace

TEST_F(ImpersonationTest, OfPid0SucceedsAndDoesNothing)
{
    EXPECT_TRUE(ImpersonateUserFromPID(0));
    EXPECT_FALSE(impersonating());
    EXPECT_EQ(Events{}, m_log.events());
}

TEST_F(ImpersonationTest, OfAProcessImpersonatesItsTokenOnThisThread)
{
    const Child shell = startShell();
    disableAllPrivileges(tokenOf(shell.handle()).get());
    EXPECT_TRUE(ImpersonateUserFromPID(shell.pid()));
    EXPECT_EQ((Events{{"Info", "ImpersonateUserFromPID: SUCCESS"}}), m_log.events());

    aut::UniqueHandle token;
    ASSERT_TRUE(::OpenThreadToken(::GetCurrentThread(), TOKEN_QUERY, TRUE, token.put()));
    SECURITY_IMPERSONATION_LEVEL level{};
    DWORD size = 0;
    EXPECT_TRUE(::GetTokenInformation(token.get(), TokenImpersonationLevel, &level, sizeof level, &size));
    EXPECT_EQ(SecurityImpersonation, level);
    EXPECT_FALSE(hasPrivilege(token.get(), SE_CHANGE_NOTIFY_NAME)) << "this is the shell's token";
    EXPECT_TRUE(hasPrivilege(tokenOf(::GetCurrentProcess()).get(), SE_CHANGE_NOTIFY_NAME));
}

TEST_F(ImpersonationTest, TakesPlaceOnTheCallingThreadOnly)
{
    const Child shell = startShell();
    const aut::UniqueHandle asked{::CreateEventA(nullptr, TRUE, FALSE, nullptr)};
    const aut::UniqueHandle mainImpersonates{::CreateEventA(nullptr, TRUE, FALSE, nullptr)};
    bool otherBefore = true;
    bool otherBeside = true;
    std::thread other(
        [&]
        {
            otherBefore = impersonating();
            ::SetEvent(asked.get());
            ::WaitForSingleObject(mainImpersonates.get(), INFINITE);
            otherBeside = impersonating();
        });
    ::WaitForSingleObject(asked.get(), INFINITE);
    EXPECT_TRUE(ImpersonateUserFromPID(shell.pid()));
    ::SetEvent(mainImpersonates.get());
    other.join();
    EXPECT_FALSE(otherBefore);
    EXPECT_FALSE(otherBeside) << "a thread that ran all the while";

    bool laterThread = true;
    std::thread([&laterThread] { laterThread = impersonating(); }).join();
    EXPECT_FALSE(laterThread) << "a thread started meanwhile";
    EXPECT_TRUE(impersonating());
    ::RevertToSelf();

    bool otherImpersonated = false;
    std::thread(
        [&]
        {
            ImpersonateUser();
            otherImpersonated = impersonating();
        })
        .join();
    EXPECT_TRUE(otherImpersonated);
    EXPECT_FALSE(impersonating()) << "another thread's impersonation is its own";
}

TEST_F(ImpersonationTest, LastsUntilTheCallerReverts)
{
    const Child shell = startShell();
    EXPECT_TRUE(ImpersonateUserFromPID(shell.pid()));
    EXPECT_TRUE(impersonating());
    ASSERT_TRUE(::RevertToSelf());
    EXPECT_FALSE(impersonating());
}

TEST_F(ImpersonationTest, LeavesTheUserHivesUsable)
{
    const Child shell = startShell();
    EXPECT_TRUE(ImpersonateUserFromPID(shell.pid()));
    for (const HKEY root : {HKEY_CURRENT_USER, HKEY_USERS})
    {
        aut::UniqueKey key;
        EXPECT_EQ(ERROR_SUCCESS, ::RegOpenKeyExA(root, "", 0, KEY_READ, key.put()));
    }
}

TEST_F(ImpersonationTest, OfAProcessThatCannotBeOpenedSucceedsAndDoesNothing)
{
    const Child hidden = startShell();
    allowOnly(hidden.handle(), 0);
    for (const unsigned long pid : {hidden.pid(), 0xFFFFFFF0UL})
    {
        m_log.mark();
        EXPECT_TRUE(ImpersonateUserFromPID(pid));
        EXPECT_FALSE(impersonating());
        EXPECT_EQ((Events{{"Warning", "Process token access failed"}}), m_log.events());
    }
}

TEST_F(ImpersonationTest, OfAProcessWhoseTokenCannotBeOpenedFails)
{
    const Child shell = startNamelessShell();
    EXPECT_FALSE(ImpersonateUserFromPID(shell.pid()));
    EXPECT_FALSE(impersonating());
    EXPECT_EQ((Events{{"Warning", "ImpersonateUserFromPID: OpenProcessToken FAILED"}}), m_log.events());
}

TEST_F(ImpersonationTest, OfAProcessNeedsMoreThanQueryingItsToken)
{
    const Child shell = startShell();
    allowOnly(tokenOf(shell.handle()).get(), TOKEN_QUERY);
    EXPECT_FALSE(ImpersonateUserFromPID(shell.pid()));
    EXPECT_EQ((Events{{"Warning", "ImpersonateUserFromPID: OpenProcessToken FAILED"}}), m_log.events());
}

TEST_F(ImpersonationTest, OfAProcessLeaksNoHandles)
{
    const Child shell = startShell();
    logDetails(0);
    const std::size_t before = openHandles();
    for (int round = 0; round < 1000; ++round)
    {
        ASSERT_TRUE(ImpersonateUserFromPID(shell.pid()));
        ::RevertToSelf();
    }
    EXPECT_EQ(before, openHandles());
}

TEST_F(ImpersonationTest, OfNobodySucceeds)
{
    EXPECT_TRUE(ImpersonateUser());
    EXPECT_FALSE(impersonating());
    EXPECT_EQ(join(noLimit(0), {{"Warning", "No explorer processfound for impersonation"}}), m_log.events());
}

TEST_F(ImpersonationTest, WithoutALogonNameTakesTheFirstShell)
{
    const Child first = startShell();
    const Child second = startShell();
    EXPECT_TRUE(ImpersonateUser());
    EXPECT_TRUE(impersonating());
    EXPECT_EQ(join(noLimit(2), defaultImpersonated()), m_log.events());
}

TEST_F(ImpersonationTest, TakesTheUserOfTheLogonNameWhateverItsCase)
{
    std::string name = ownUser();
    for (char& c : name)
        c = static_cast<char>(::isupper(c) ? ::tolower(c) : ::toupper(c));
    m_registry.write("Config", "LogonName", name);
    const Child shell = startShell();
    EXPECT_TRUE(ImpersonateUser());
    EXPECT_TRUE(impersonating());
    EXPECT_EQ(join(noLimit(1), impersonated()), m_log.events());
}

TEST_F(ImpersonationTest, LooksForTheLogonNameBeyondTheFirstShell)
{
    m_registry.write("Config", "LogonName", ownUser());
    const Child first = startNamelessShell();
    const Child second = startShell();
    EXPECT_TRUE(ImpersonateUser());
    EXPECT_TRUE(impersonating());
    EXPECT_EQ(join(noLimit(2), impersonated()), m_log.events());
}

TEST_F(ImpersonationTest, WhenTheLogonNameIsNotLoggedOnTakesTheFirstShell)
{
    m_registry.write("Config", "LogonName", "host\\somebody else");
    const Child first = startShell();
    const Child second = startShell();
    allowOnly(tokenOf(second.handle()).get(), TOKEN_QUERY); // to be named, not to be impersonated
    EXPECT_TRUE(ImpersonateUser());
    EXPECT_TRUE(impersonating());
    EXPECT_EQ(join(noLimit(2), defaultImpersonated()), m_log.events());
}

TEST_F(ImpersonationTest, ALogonNameThatIsTooLongOrOfAnotherTypeCountsAsNone)
{
    const Child shell = startShell();
    m_registry.write("Config", "LogonName", std::string(10000, 'n'));
    EXPECT_TRUE(ImpersonateUser());
    EXPECT_EQ(join(noLimit(1), defaultImpersonated()), m_log.events());
    ::RevertToSelf();
    m_log.mark();
    m_registry.write("Config", "LogonName", DWORD{0});
    EXPECT_TRUE(ImpersonateUser());
    EXPECT_EQ(join(noLimit(1), defaultImpersonated()), m_log.events());
}

TEST_F(ImpersonationTest, WhenTheFirstShellHasNoNameableOwnerSucceedsWithoutImpersonating)
{
    const Child first = startNamelessShell();
    const Child second = startShell();
    EXPECT_TRUE(ImpersonateUser());
    EXPECT_FALSE(impersonating());
    EXPECT_EQ(join(noLimit(2), {{"Warning", "No custom user to impersonate"}, {"Info", "User  Impersonated"}}),
              m_log.events());
}

TEST_F(ImpersonationTest, FailsWhenTheShellsTokenCannotBeImpersonated)
{
    const Child shell = startShell();
    allowOnly(tokenOf(shell.handle()).get(), TOKEN_QUERY);
    EXPECT_FALSE(ImpersonateUser());
    EXPECT_FALSE(impersonating());
    EXPECT_EQ(join(noLimit(1), {{"Info", "Trying to Impersonate default User " + ownUser()},
                                {"Warning", "ImpersonateUserFromPID: OpenProcessToken FAILED"}}),
              m_log.events());
}

TEST_F(ImpersonationTest, LooksAtNoMoreShellsThanUsersAreAllowed)
{
    m_registry.write("Citrix", "UsersNumber", 1);
    m_registry.write("Config", "LogonName", ownUser());
    const Child first = startNamelessShell();
    const Child second = startShell(); // would do, but is beyond the limit
    EXPECT_TRUE(ImpersonateUser());
    EXPECT_FALSE(impersonating());
    EXPECT_EQ(join({limit(1)}, {{"Warning", "No custom user to impersonate"}, {"Info", "User  Impersonated"}}),
              m_log.events());
}

TEST_F(ImpersonationTest, AnyLimitIsBearable)
{
    m_registry.write("Citrix", "UsersNumber", 0xFFFFFFFF);
    const Child shell = startShell();
    EXPECT_TRUE(ImpersonateUser());
    EXPECT_TRUE(impersonating());
    EXPECT_EQ(join({limit(-1)}, defaultImpersonated()), m_log.events());
}

TEST_F(ImpersonationTest, DetailsAreLoggedAtTheirLevelsOnly)
{
    const Child shell = startShell();
    logDetails(4); // the limitation is level 5
    m_log.mark();
    EXPECT_TRUE(ImpersonateUser());
    EXPECT_EQ(defaultImpersonated(), m_log.events());
    ::RevertToSelf();

    logDetails(2); // all else is level 2
    m_log.mark();
    EXPECT_TRUE(ImpersonateUser());
    EXPECT_EQ(defaultImpersonated(), m_log.events());
    ::RevertToSelf();

    logDetails(1);
    m_log.mark();
    EXPECT_TRUE(ImpersonateUser());
    EXPECT_EQ(Events{}, m_log.events());
}

TEST_F(ImpersonationTest, WarningsAreLoggedWithoutDetails)
{
    logDetails(0);
    m_log.mark();
    EXPECT_TRUE(ImpersonateUser());
    EXPECT_EQ((Events{{"Warning", "No explorer processfound for impersonation"}}), m_log.events());

    m_log.mark();
    EXPECT_TRUE(ImpersonateUserFromPID(0xFFFFFFF0UL));
    EXPECT_EQ((Events{{"Warning", "Process token access failed"}}), m_log.events());

    const Child nameless = startNamelessShell();
    m_log.mark();
    EXPECT_TRUE(ImpersonateUser());
    EXPECT_EQ((Events{{"Warning", "No custom user to impersonate"}}), m_log.events());
    m_log.mark();
    EXPECT_FALSE(ImpersonateUserFromPID(nameless.pid()));
    EXPECT_EQ((Events{{"Warning", "ImpersonateUserFromPID: OpenProcessToken FAILED"}}), m_log.events());
}

TEST_F(ImpersonationTest, ThatItIsNotNecessaryIsLoggedFromDetailLevelTwoOn)
{
    const HelperWindowsVersion setting("win98");
    for (const DWORD level : {1ul, 2ul})
    {
        logDetails(level);
        m_log.mark();
        runHelper("users");
        EXPECT_EQ(level == 2 ? (Events{{"Info", "ImpersonateUser not necessary"}}) : Events{}, m_log.events()) << level;
    }
}

TEST_F(ImpersonationTest, IsNotNecessaryOnTheOlderFamilyAndOnUnknownSystems)
{
    const Child shell = startShell();
    for (const char* const version : {"win98", "win10"})
    {
        const HelperWindowsVersion setting(version);
        m_log.mark();
        const HelperRun run = runHelper("users");
        EXPECT_EQ((std::vector<std::string>{"logged on: 1", "impersonate: 1", "thread token: 0"}), run.lines)
            << version;
        EXPECT_EQ((Events{{"Info", "ImpersonateUser not necessary"}}), m_log.events()) << version;
    }
}

TEST_F(ImpersonationTest, IsNecessaryFromNt4On)
{
    const Child shell = startShell();
    const HelperWindowsVersion setting("nt40");
    const HelperRun run = runHelper("users");
    EXPECT_EQ((std::vector<std::string>{"logged on: 1", "impersonate: 1", "thread token: 1"}), run.lines);
    EXPECT_EQ(join(noLimit(1), defaultImpersonated()), m_log.events());
}

TEST_F(ImpersonationTest, LeaksNoHandles)
{
    const Child shell = startShell();
    ASSERT_TRUE(ImpersonateUser());
    ::RevertToSelf();
    logDetails(0);
    const std::size_t before = openHandles();
    for (int round = 0; round < 10; ++round)
    {
        ASSERT_TRUE(ImpersonateUser());
        ::RevertToSelf();
    }
    EXPECT_EQ(before, openHandles());
}
