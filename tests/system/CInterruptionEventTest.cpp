#include "system/CInterruptionEvent.h"

#include "tests/support/LogFile.h"
#include "tests/system/Processes.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

using namespace auttest;

// Private members, by the layout.
template <> struct aut::LayoutOf<struct InterruptionAccess>
{
    static HANDLE threadOf(const CInterruptionEvent& event) { return event.m_thread; }
    static unsigned long threadIdOf(const CInterruptionEvent& event) { return event.m_threadId; }
    static void replaceEvent(CInterruptionEvent& event, HANDLE handle) { event.m_event = handle; }
    static void requestStop(CInterruptionEvent& event) { event.m_stopRequest = 1; }
    static int stopRequestOf(const CInterruptionEvent& event) { return event.m_stopRequest; }
};
using Access = aut::LayoutOf<struct InterruptionAccess>;

namespace
{
constexpr DWORD kPatienceMs = 10000;

class CInterruptionEventTest : public ::testing::Test
{
protected:
    /// Asks again and again, for as long as it takes the watching thread; false when it never comes.
    template <typename Condition> static bool comesTrue(Condition condition)
    {
        for (const ULONGLONG end = ::GetTickCount64() + kPatienceMs; ::GetTickCount64() < end; ::Sleep(1))
        {
            if (condition())
                return true;
        }
        return false;
    }
    bool watcherSees()
    {
        return comesTrue([this] { return m_event.IsITRaised() != 0; });
    }
    bool isSignalled() { return ::WaitForSingleObject(m_event.GetEventHandle(), 0) == WAIT_OBJECT_0; }

    String m_name = "CInterruptionEventTest";
    CInterruptionEvent m_event;
};

bool eventExists(const char* name)
{
    return static_cast<bool>(aut::UniqueHandle{::OpenEventA(EVENT_ALL_ACCESS, FALSE, name)});
}
} // namespace

TEST_F(CInterruptionEventTest, ConstructionCostsNothing)
{
    const std::size_t before = openHandles();
    const auto events = std::make_unique<CInterruptionEvent[]>(1000);
    EXPECT_EQ(before, openHandles());
    EXPECT_EQ(nullptr, events[999].GetEventHandle());
    EXPECT_EQ(0, events[999].IsITRaised());
}

TEST_F(CInterruptionEventTest, CreateUsesTheNameAsItIsGiven)
{
    ASSERT_EQ(1, m_event.Create(m_name));
    EXPECT_TRUE(eventExists("CInterruptionEventTest"));
    EXPECT_FALSE(eventExists("Global\\CInterruptionEventTest"));

    String global = "Global\\CInterruptionEventTest";
    ASSERT_EQ(1, m_event.Create(global));
    EXPECT_TRUE(eventExists("Global\\CInterruptionEventTest"));
    EXPECT_FALSE(eventExists("CInterruptionEventTest")) << "the event of the old name is closed";
}

TEST_F(CInterruptionEventTest, CreateFailsForAnEmptyName)
{
    String empty;
    EXPECT_EQ(0, m_event.Create(empty));
    EXPECT_EQ(nullptr, m_event.GetEventHandle());
    ASSERT_EQ(1, m_event.Create(m_name));
    EXPECT_EQ(0, m_event.Create(empty));
    EXPECT_EQ(nullptr, m_event.GetEventHandle()) << "the event of the old name is closed";
}

TEST_F(CInterruptionEventTest, CreateFailsForNamesThatCannotBe)
{
    String tooLong = std::string(10000, 'n').c_str();
    String path = "no such folder\\name";
    const aut::UniqueHandle mutex{::CreateMutexA(nullptr, FALSE, "CInterruptionEventTestKind")};
    String otherKind = "CInterruptionEventTestKind";
    for (String* const name : {&tooLong, &path, &otherKind})
    {
        EXPECT_EQ(0, m_event.Create(*name));
        EXPECT_EQ(nullptr, m_event.GetEventHandle());
        EXPECT_EQ(0, m_event.RaiseIT());
    }
}

TEST_F(CInterruptionEventTest, IsCreatedNotSignalledAndResetsManually)
{
    ASSERT_EQ(1, m_event.Create(m_name));
    EXPECT_FALSE(isSignalled());
    EXPECT_EQ(1, m_event.RaiseIT());
    EXPECT_TRUE(isSignalled());
    EXPECT_TRUE(isSignalled());
}

TEST_F(CInterruptionEventTest, OpensAnEventThatExists)
{
    CInterruptionEvent other;
    ASSERT_EQ(1, other.Create(m_name));
    ASSERT_EQ(1, other.RaiseIT());
    ASSERT_EQ(1, m_event.Create(m_name));
    EXPECT_TRUE(isSignalled());
}

TEST_F(CInterruptionEventTest, IsOpenToEveryoneAndInheritable)
{
    for (const char* const name : {"CInterruptionEventTest", "CInterruptionEventTest2"}) // the descriptor is made once
    {
        String text = name;
        ASSERT_EQ(1, m_event.Create(text));
        EXPECT_TRUE(hasNullAccessList(m_event.GetEventHandle()));
        EXPECT_TRUE(isInheritable(m_event.GetEventHandle()));
    }
}

TEST_F(CInterruptionEventTest, RaisingFailsWithoutAnEvent) { EXPECT_EQ(0, m_event.RaiseIT()); }

TEST_F(CInterruptionEventTest, RaisingDoesNotSetTheFlagByItself)
{
    ASSERT_EQ(1, m_event.Create(m_name));
    ASSERT_EQ(1, m_event.RaiseIT());
    EXPECT_EQ(0, m_event.IsITRaised());
    EXPECT_TRUE(isSignalled()) << "asking resets the event only when the flag is set";
}

TEST_F(CInterruptionEventTest, TheWatchingThreadSeesTheEvent)
{
    ASSERT_EQ(1, m_event.Create(m_name));
    ASSERT_EQ(1, m_event.StartPooling());
    EXPECT_EQ(0, m_event.IsITRaised());
    ASSERT_EQ(1, m_event.RaiseIT());
    EXPECT_TRUE(watcherSees());
    EXPECT_FALSE(isSignalled()) << "asking resets the event";
    EXPECT_EQ(1, m_event.IsITRaised()) << "the flag stays";
    EXPECT_EQ(1, m_event.IsITRaised());
    m_event.ResetFlag();
    EXPECT_EQ(0, m_event.IsITRaised());
    EXPECT_EQ(1, m_event.StopPooling());
}

TEST_F(CInterruptionEventTest, TheWatchingThreadSeesASecondSignalAfterTheReset)
{
    ASSERT_EQ(1, m_event.Create(m_name));
    ASSERT_EQ(1, m_event.StartPooling());
    for (int round = 0; round < 20; ++round)
    {
        ASSERT_EQ(1, m_event.RaiseIT());
        ASSERT_TRUE(watcherSees());
        m_event.ResetFlag();
    }
}

TEST_F(CInterruptionEventTest, AnotherProcessCanRaiseIt)
{
    ASSERT_EQ(1, m_event.Create(m_name));
    ASSERT_EQ(1, m_event.StartPooling());
    EXPECT_EQ(0U, runHelper("raise CInterruptionEventTest").status);
    EXPECT_TRUE(watcherSees());
}

TEST_F(CInterruptionEventTest, ResetFlagResetsTheEventToo)
{
    ASSERT_EQ(1, m_event.Create(m_name));
    m_event.RaiseIT();
    m_event.SetFlag();
    m_event.ResetFlag();
    EXPECT_FALSE(isSignalled());
    EXPECT_EQ(0, m_event.IsITRaised());
}

TEST_F(CInterruptionEventTest, SetFlagDoesNotTouchTheEvent)
{
    ASSERT_EQ(1, m_event.Create(m_name));
    m_event.SetFlag();
    EXPECT_FALSE(isSignalled());
    EXPECT_EQ(1, m_event.IsITRaised());
}

TEST_F(CInterruptionEventTest, FlagsWorkWithoutAnEvent)
{
    m_event.SetFlag();
    EXPECT_EQ(1, m_event.IsITRaised());
    m_event.ResetFlag();
    EXPECT_EQ(0, m_event.IsITRaised());
}

TEST_F(CInterruptionEventTest, SetStopDoneClearsTheStopRequest)
{
    Access::requestStop(m_event);
    m_event.SetStopDone();
    EXPECT_EQ(0, Access::stopRequestOf(m_event));
}

TEST_F(CInterruptionEventTest, TheThreadClearsTheStopRequestWhenItEnds)
{
    ASSERT_EQ(1, m_event.Create(m_name));
    ASSERT_EQ(1, m_event.StartPooling());
    Access::requestStop(m_event);
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(Access::threadOf(m_event), kPatienceMs));
    EXPECT_EQ(0, Access::stopRequestOf(m_event));
}

TEST_F(CInterruptionEventTest, StartingTwiceStartsOneThread)
{
    ASSERT_EQ(1, m_event.Create(m_name));
    ASSERT_EQ(1, m_event.StartPooling());
    const HANDLE thread = Access::threadOf(m_event);
    const unsigned long id = Access::threadIdOf(m_event);
    ASSERT_NE(nullptr, thread);
    EXPECT_NE(0U, id);
    EXPECT_EQ(1, m_event.StartPooling());
    EXPECT_EQ(thread, Access::threadOf(m_event));
    EXPECT_EQ(id, Access::threadIdOf(m_event));
}

TEST_F(CInterruptionEventTest, StartingStartsNoThreadWhenTheFlagIsRaised)
{
    ASSERT_EQ(1, m_event.Create(m_name));
    m_event.SetFlag();
    EXPECT_EQ(1, m_event.StartPooling());
    EXPECT_EQ(nullptr, Access::threadOf(m_event));
}

TEST_F(CInterruptionEventTest, StoppingWithoutAThreadSucceeds)
{
    EXPECT_EQ(1, m_event.StopPooling());
    EXPECT_EQ(0, Access::stopRequestOf(m_event));
}

TEST_F(CInterruptionEventTest, StoppingEndsTheThread)
{
    ASSERT_EQ(1, m_event.Create(m_name));
    ASSERT_EQ(1, m_event.StartPooling());
    HANDLE copy = nullptr;
    ASSERT_TRUE(::DuplicateHandle(::GetCurrentProcess(), Access::threadOf(m_event), ::GetCurrentProcess(), &copy, 0,
                                  FALSE, DUPLICATE_SAME_ACCESS));
    const aut::UniqueHandle thread{copy};
    EXPECT_EQ(1, m_event.StopPooling());
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(thread.get(), 0));
    EXPECT_EQ(nullptr, Access::threadOf(m_event));
    EXPECT_EQ(0U, Access::threadIdOf(m_event));
    EXPECT_EQ(0, Access::stopRequestOf(m_event));
    EXPECT_NE(nullptr, m_event.GetEventHandle()) << "the event stays";
    EXPECT_EQ(1, m_event.StopPooling());
}

TEST_F(CInterruptionEventTest, ASignalBeforeAShortWatchIsNotLost)
{
    ASSERT_EQ(1, m_event.Create(m_name));
    const std::size_t before = openHandles();
    for (int round = 0; round < 100; ++round)
    {
        ASSERT_EQ(1, m_event.RaiseIT());
        ASSERT_EQ(1, m_event.StartPooling());
        ASSERT_EQ(1, m_event.StopPooling());
        ASSERT_EQ(1, m_event.IsITRaised()) << "round " << round;
        m_event.ResetFlag();
    }
    EXPECT_EQ(before, openHandles());
}

TEST_F(CInterruptionEventTest, TenThousandWatchesLoseNoSignalAndLeakNothing)
{
    constexpr int kOwners = 25; // at once, because each watch takes a moment
    CInterruptionEvent events[kOwners];
    for (int i = 0; i < kOwners; ++i)
    {
        String name = ("CInterruptionEventTest owner " + std::to_string(i)).c_str();
        ASSERT_EQ(1, events[i].Create(name));
    }
    // Counted, because what the test framework notes belongs to its own thread.
    std::atomic<int> seen{0};
    std::atomic<int> leftOver{0};
    const auto watchAgainAndAgain = [&seen, &leftOver](CInterruptionEvent& event, int rounds)
    {
        for (int round = 0; round < rounds; ++round)
        {
            const bool raiseFirst = round % 2 == 0;
            const bool done =
                (raiseFirst ? event.RaiseIT() && event.StartPooling() : event.StartPooling() && event.RaiseIT()) &&
                event.StopPooling();
            if (done && event.IsITRaised() != 0)
                ++seen;
            event.ResetFlag();
            if (event.IsITRaised() != 0 || ::WaitForSingleObject(event.GetEventHandle(), 0) != WAIT_TIMEOUT)
                ++leftOver;
        }
    };
    const auto watchAll = [&events, &watchAgainAndAgain](int rounds)
    {
        std::vector<std::thread> owners;
        for (CInterruptionEvent& event : events)
            owners.emplace_back(watchAgainAndAgain, std::ref(event), rounds);
        for (std::thread& owner : owners)
            owner.join();
    };
    watchAll(4); // what the threads of the test keep for themselves is there from now on
    const std::size_t before = openHandles();
    watchAll(396);
    EXPECT_EQ(10000, seen);
    EXPECT_EQ(0, leftOver);
    EXPECT_EQ(before, openHandles());
}

TEST_F(CInterruptionEventTest, ANewNameStopsTheThreadAndClearsTheFlag)
{
    ASSERT_EQ(1, m_event.Create(m_name));
    ASSERT_EQ(1, m_event.StartPooling());
    m_event.SetFlag();
    String other = "CInterruptionEventTest2";
    m_event.SetName(other);
    EXPECT_EQ(nullptr, Access::threadOf(m_event));
    EXPECT_EQ(nullptr, m_event.GetEventHandle());
    EXPECT_EQ(0, m_event.IsITRaised());
    EXPECT_FALSE(eventExists("CInterruptionEventTest"));
    EXPECT_FALSE(eventExists("CInterruptionEventTest2")) << "a name alone creates nothing";
}

TEST_F(CInterruptionEventTest, TheFirstNameLeavesTheFlag)
{
    m_event.SetFlag();
    ASSERT_EQ(1, m_event.Create(m_name));
    EXPECT_EQ(1, m_event.IsITRaised());
}

TEST_F(CInterruptionEventTest, TheDestructorStopsTheThreadAndClosesTheEvent)
{
    const std::size_t before = openHandles();
    {
        CInterruptionEvent event;
        ASSERT_EQ(1, event.Create(m_name));
        ASSERT_EQ(1, event.StartPooling());
    }
    EXPECT_EQ(before, openHandles());
    EXPECT_FALSE(eventExists("CInterruptionEventTest"));
    EXPECT_TRUE(std::has_virtual_destructor_v<CInterruptionEvent>);
}

TEST_F(CInterruptionEventTest, WatchingWithoutAnEventIsLoggedAndEnds)
{
    const LogFile log;
    EXPECT_EQ(1, m_event.StartPooling());
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(Access::threadOf(m_event), kPatienceMs));
    EXPECT_EQ((std::vector<LogEvent>{{"Error", "Cancel Update unavailable"}}), log.events());
    EXPECT_EQ(1, m_event.StartPooling()) << "there is a thread, even if it has ended";
    EXPECT_EQ(1, m_event.StopPooling());
}

TEST_F(CInterruptionEventTest, AThreadThatFoundNoEventDoesNotStopTheNext)
{
    ASSERT_EQ(1, m_event.StartPooling());
    ASSERT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(Access::threadOf(m_event), kPatienceMs));
    ASSERT_EQ(1, m_event.StopPooling());
    ASSERT_EQ(1, m_event.Create(m_name));
    ASSERT_EQ(1, m_event.StartPooling());
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), ::WaitForSingleObject(Access::threadOf(m_event), 250));
}

TEST_F(CInterruptionEventTest, AFailingWaitIsLoggedWithItsOwnFailureValue)
{
    // A handle that may signal the event but not wait for it.
    Access::replaceEvent(m_event, ::CreateEventExA(nullptr, nullptr, CREATE_EVENT_MANUAL_RESET, EVENT_MODIFY_STATE));
    const LogFile log;
    ASSERT_EQ(1, m_event.StartPooling());
    char expected[100];
    std::snprintf(expected, sizeof expected, "Wait for Cancel failed: 0xffffffff error code for (0x%lx thread)",
                  Access::threadIdOf(m_event));
    EXPECT_TRUE(comesTrue([&] { return log.has("Error", expected); }));
    EXPECT_EQ(0, m_event.IsITRaised());
    EXPECT_EQ(1, m_event.StopPooling()) << "the thread goes on until it is stopped";
    EXPECT_LE(log.events().size(), 20U) << "a dead handle must not fill the log";
}
