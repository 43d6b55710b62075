#include "system/CAUEvent.h"

#include "tests/system/Processes.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>

using namespace auttest;

namespace
{
bool isSignalled(HANDLE event) { return ::WaitForSingleObject(event, 0) == WAIT_OBJECT_0; }

aut::UniqueHandle openEvent(const char* name) { return aut::UniqueHandle{::OpenEventA(EVENT_ALL_ACCESS, FALSE, name)}; }

const char kName[] = "CAUEventTest";
} // namespace

TEST(CAUEvent, HasNoNameAndNoHandleAtFirst)
{
    CAUEvent event;
    EXPECT_EQ(nullptr, event.GetName(0));
    EXPECT_EQ(nullptr, event.GetName(1));
    EXPECT_EQ(nullptr, event.GetHandle());
    EXPECT_EQ(0, event.SignalEvent());
}

TEST(CAUEvent, ConstructionOpensNoHandle)
{
    const std::size_t before = openHandles();
    CAUEvent events[100];
    EXPECT_EQ(before, openHandles());
    EXPECT_EQ(nullptr, events[99].GetHandle());
}

TEST(CAUEvent, PutsTheGlobalPrefixBeforeItsName)
{
    CAUEvent event;
    ASSERT_EQ(1, event.Create(kName));
    EXPECT_STREQ("CAUEventTest", event.GetName(0));
    EXPECT_STREQ("Global\\CAUEventTest", event.GetName(1));
    EXPECT_STREQ("Global\\CAUEventTest", event.GetName(-1));
    EXPECT_TRUE(openEvent("Global\\CAUEventTest"));
    EXPECT_FALSE(openEvent("Local\\CAUEventTest"));
}

TEST(CAUEvent, HasNoPrefixBelowWindows2000)
{
    for (const char* const version : {"win98", "nt40", "win10"}) // a version above 6.1 counts as unknown, hence as old
    {
        const HelperWindowsVersion setting(version);
        const HelperRun run = runHelper("names");
        ASSERT_EQ(2U, run.lines.size()) << version;
        EXPECT_EQ("helper", run.lines[0]) << version;
    }
}

TEST(CAUEvent, HasThePrefixFromWindows2000On)
{
    for (const char* const version : {"win2k", "winxp", "vista", "win7"})
    {
        const HelperWindowsVersion setting(version);
        const HelperRun run = runHelper("names");
        ASSERT_EQ(2U, run.lines.size()) << version;
        EXPECT_EQ("Global\\helper", run.lines[0]) << version;
    }
}

TEST(CAUEvent, IsCreatedNotSignalledAndResetsItself)
{
    CAUEvent event;
    ASSERT_EQ(1, event.Create(kName));
    EXPECT_FALSE(isSignalled(event.GetHandle()));
    EXPECT_EQ(1, event.SignalEvent());
    EXPECT_TRUE(isSignalled(event.GetHandle()));
    EXPECT_FALSE(isSignalled(event.GetHandle())) << "the first wait resets it";
}

TEST(CAUEvent, OpensAnEventThatExists)
{
    CAUEvent first;
    CAUEvent second;
    ASSERT_EQ(1, first.Create(kName));
    ASSERT_EQ(1, second.Create(kName));
    EXPECT_EQ(1, first.SignalEvent());
    EXPECT_TRUE(isSignalled(second.GetHandle()));
}

TEST(CAUEvent, KeepsTheKindAndStateOfAnEventThatExists)
{
    const aut::UniqueHandle other{::CreateEventA(nullptr, TRUE, TRUE, "Global\\CAUEventTest")};
    CAUEvent event;
    ASSERT_EQ(1, event.Create(kName));
    EXPECT_TRUE(isSignalled(event.GetHandle()));
    EXPECT_TRUE(isSignalled(event.GetHandle())) << "it still resets manually";
}

TEST(CAUEvent, IsSharedByTwoProcesses)
{
    CAUEvent event;
    ASSERT_EQ(1, event.Create(kName));
    EXPECT_EQ(0U, runHelper("signal CAUEventTest").status);
    EXPECT_TRUE(isSignalled(event.GetHandle()));
}

TEST(CAUEvent, LastsNoLongerThanItsHandles)
{
    {
        CAUEvent event;
        ASSERT_EQ(1, event.Create(kName));
    }
    EXPECT_FALSE(openEvent("Global\\CAUEventTest"));
}

TEST(CAUEvent, IsOpenToEveryoneAndInheritable)
{
    CAUEvent event;
    ASSERT_EQ(1, event.Create(kName));
    EXPECT_TRUE(hasNullAccessList(event.GetHandle()));
    EXPECT_TRUE(isInheritable(event.GetHandle()));
}

TEST(CAUEvent, GeneratesANameForAnEmptyOne)
{
    for (const char* const name : {static_cast<const char*>(nullptr), ""})
    {
        std::srand(1);
        CAUEvent event;
        ASSERT_EQ(1, event.Create(name));
        EXPECT_STREQ("AUSynchroEvent_41", event.GetName(0)) << "the runtime's first random number after this seed";
        EXPECT_STREQ("Global\\AUSynchroEvent_41", event.GetName(1));
    }
}

TEST(CAUEvent, TakesANewNameInPlaceOfTheOld)
{
    CAUEvent event;
    ASSERT_EQ(1, event.Create(kName));
    ASSERT_EQ(1, event.Create("CAUEventTest2"));
    EXPECT_STREQ("CAUEventTest2", event.GetName(0));
    EXPECT_FALSE(openEvent("Global\\CAUEventTest")) << "the old event must be closed";
    EXPECT_TRUE(openEvent("Global\\CAUEventTest2"));
}

TEST(CAUEvent, CanBeCreatedAgainUnderItsOwnName)
{
    CAUEvent event;
    ASSERT_EQ(1, event.Create(kName));
    ASSERT_EQ(1, event.Create(event.GetName(0)));
    EXPECT_STREQ("CAUEventTest", event.GetName(0));
}

TEST(CAUEvent, CutsANameTo128Characters)
{
    CAUEvent event;
    ASSERT_EQ(1, event.Create(std::string(10000, 'n').c_str()));
    EXPECT_EQ(std::string(128, 'n'), event.GetName(0));
    EXPECT_EQ("Global\\" + std::string(128, 'n'), event.GetName(1));

    ASSERT_EQ(1, event.Create(std::string(128, 'm').c_str()));
    EXPECT_EQ(std::string(128, 'm'), event.GetName(0));
}

TEST(CAUEvent, FailsForANameThatIsAPath)
{
    CAUEvent event;
    EXPECT_EQ(0, event.Create("no such folder\\name"));
    EXPECT_EQ(nullptr, event.GetHandle());
    EXPECT_EQ(0, event.SignalEvent());
    EXPECT_STREQ("Global\\no such folder\\name", event.GetName(1));
}

TEST(CAUEvent, FailsForANameThatAnotherKindOfObjectHas)
{
    const aut::UniqueHandle mutex{::CreateMutexA(nullptr, FALSE, "Global\\CAUEventTest")};
    CAUEvent event;
    EXPECT_EQ(0, event.Create(kName));
    EXPECT_EQ(nullptr, event.GetHandle());
}

TEST(CAUEvent, SetsItsPrefixBeforeANameThatHasOne)
{
    CAUEvent event;
    event.Create("Global\\CAUEventTest");
    EXPECT_STREQ("Global\\CAUEventTest", event.GetName(0));
    EXPECT_STREQ("Global\\Global\\CAUEventTest", event.GetName(1));
}

TEST(CAUEvent, CopiesShareTheHandle)
{
    {
        CAUEvent event;
        ASSERT_EQ(1, event.Create(kName));
        CAUEvent copy(event);
        CAUEvent assigned;
        assigned = event;
        EXPECT_EQ(event.GetHandle(), copy.GetHandle());
        EXPECT_EQ(event.GetHandle(), assigned.GetHandle());
        EXPECT_STREQ("Global\\CAUEventTest", copy.GetName(1));
        EXPECT_STREQ("CAUEventTest", assigned.GetName(0));
    }
}

TEST(CAUEvent, HasAVirtualDestructor) { EXPECT_TRUE(std::has_virtual_destructor_v<CAUEvent>); }

TEST(CAUEvent, LeaksNothing)
{
    const std::size_t before = openHandles();
    for (int round = 0; round < 1000; ++round)
    {
        CAUEvent event;
        ASSERT_EQ(1, event.Create(kName));
        ASSERT_EQ(1, event.Create("CAUEventTest2"));
    }
    EXPECT_EQ(before, openHandles());
}
