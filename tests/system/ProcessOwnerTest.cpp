#include "system/CProcessListManager.h"
#include "system/UserProcesses.h"
#include "tests/system/Processes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>

using namespace auttest;

TEST(GetUserNameFromPID, GivesDomainAndUser)
{
    String user = "left over";
    EXPECT_EQ(1, CProcessListManager::GetUserNameFromPID(::GetCurrentProcessId(), user));
    EXPECT_EQ(ownUser(), std::string(user));
}

TEST(GetUserNameFromPID, GivesTheOwnerOfAnotherProcess)
{
    const IdleProcesses idle("owned.exe");
    const Child child = idle.start();
    String user;
    EXPECT_EQ(1, CProcessListManager::GetUserNameFromPID(child.pid(), user));
    EXPECT_EQ(ownUser(), std::string(user));
}

TEST(GetUserNameFromPID, EmptiesTheTextOnFailure)
{
    const IdleProcesses idle("owned.exe");
    const Child hidden = idle.start();
    allowOnly(hidden.handle(), 0);
    const Child hiddenToken = idle.start();
    allowOnly(tokenOf(hiddenToken.handle()).get(), 0);
    for (const unsigned long pid : {0UL, 0xFFFFFFF0UL, hidden.pid(), hiddenToken.pid()})
    {
        String user = "left over";
        EXPECT_EQ(0, CProcessListManager::GetUserNameFromPID(pid, user));
        EXPECT_TRUE(user.IsEmpty());
    }
}

TEST(GetUserNameFromPID, CopiesIntoABuffer)
{
    char user[521];
    std::fill(std::begin(user), std::end(user), 'x');
    EXPECT_TRUE(GetUserNameFromPID(user, ::GetCurrentProcessId()));
    EXPECT_EQ(ownUser(), user);
    EXPECT_EQ('x', user[ownUser().size() + 1]) << "nothing behind the text is touched";
}

TEST(GetUserNameFromPID, RefusesANullBuffer) { EXPECT_FALSE(GetUserNameFromPID(nullptr, ::GetCurrentProcessId())); }

TEST(GetUserNameFromPID, LeavesAnEmptyTextInTheBufferOnFailure)
{
    char user[521] = "left over";
    EXPECT_FALSE(GetUserNameFromPID(user, 0));
    EXPECT_STREQ("", user);
}

TEST(GetUserNameFromPID, LeaksNoHandles)
{
    String user;
    ASSERT_EQ(1, CProcessListManager::GetUserNameFromPID(::GetCurrentProcessId(), user));
    const std::size_t before = openHandles();
    for (int round = 0; round < 1000; ++round)
        ASSERT_EQ(1, CProcessListManager::GetUserNameFromPID(::GetCurrentProcessId(), user));
    EXPECT_EQ(before, openHandles());
}
