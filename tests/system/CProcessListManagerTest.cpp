#include "system/CProcessListManager.h"

#include "foundation/RT_RESULT.h"
#include "system/UserProcesses.h"
#include "tests/support/LogFile.h"
#include "tests/system/Processes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

using namespace auttest;

// Private members, by the layout.
template <> struct aut::LayoutOf<struct ManagerAccess>
{
    using Enumerate = int(__stdcall*)(unsigned long*, unsigned long, unsigned long*);

    static int capacityOf(const CProcessListManager& manager) { return manager.m_capacity; }
    static unsigned long bytesReturnedOf(const CProcessListManager& manager) { return manager.m_bytesReturned; }
    static const unsigned long* idsOf(const CProcessListManager& manager) { return manager.m_ids; }
    static bool loaded(const CProcessListManager& manager)
    {
        return manager.m_initialised != 0 && manager.m_processStatus != nullptr && manager.m_userEnvironment != nullptr;
    }
    static bool nothingLoaded(const CProcessListManager& manager)
    {
        return manager.m_initialised == 0 && manager.m_processStatus == nullptr && manager.m_userEnvironment == nullptr;
    }
    /// Any number of processes, whatever runs here.
    static void enumerateWith(CProcessListManager& manager, Enumerate enumerate)
    {
        manager.m_enumProcesses = enumerate;
    }
};
using Access = aut::LayoutOf<struct ManagerAccess>;

namespace
{
std::vector<unsigned long> idsOf(const CProcessListManager& manager)
{
    return {Access::idsOf(manager), Access::idsOf(manager) + Access::capacityOf(manager)};
}

bool contains(const std::vector<unsigned long>& ids, unsigned long pid)
{
    return std::find(ids.begin(), ids.end(), pid) != ids.end();
}

/// A system on which `g_processes` processes run, and which notes how much room it was offered each time.
unsigned long g_processes = 0;
std::vector<unsigned long> g_room;
int __stdcall enumerateProcesses(unsigned long* ids, unsigned long bytes, unsigned long* bytesReturned)
{
    g_room.push_back(bytes / sizeof *ids);
    const unsigned long count = std::min<unsigned long>(g_processes, bytes / sizeof *ids);
    std::fill(ids, ids + count, ::GetCurrentProcessId());
    *bytesReturned = count * sizeof *ids;
    return 1;
}
int __stdcall failToEnumerate(unsigned long*, unsigned long, unsigned long*) { return 0; }

/// A manager with room for 50 that has loaded everything and enumerates in another way.
class CountedProcesses : public ::testing::Test
{
protected:
    CountedProcesses()
    {
        String name;
        EXPECT_EQ(0, manager.GetProcessNameFromPID(0, name)); // loads, but enumerates nothing
        Access::enumerateWith(manager, enumerateProcesses);
        g_room.clear();
    }
    CProcessListManager manager;
};
} // namespace

TEST(CProcessListManager, HasRoomFor50AndLoadsNothingAtFirst)
{
    const CProcessListManager manager;
    EXPECT_EQ(50, Access::capacityOf(manager));
    EXPECT_EQ(nullptr, Access::idsOf(manager));
    EXPECT_TRUE(Access::nothingLoaded(manager));
    EXPECT_TRUE(std::has_virtual_destructor_v<CProcessListManager>);
}

TEST(CProcessListManager, ListsTheRunningProcesses)
{
    const IdleProcesses idle("listed.exe");
    const Child child = idle.start();
    CProcessListManager manager;
    ASSERT_EQ(1, manager.GetProcessIdList());
    EXPECT_TRUE(Access::loaded(manager));
    const auto ids = idsOf(manager);
    EXPECT_TRUE(contains(ids, child.pid()));
    EXPECT_TRUE(contains(ids, ::GetCurrentProcessId()));
    EXPECT_EQ(ids.size() * 4, Access::bytesReturnedOf(manager));
}

TEST(CProcessListManager, ListsMoreProcessesThanItHasRoomForAtFirst)
{
    const IdleProcesses idle("many.exe");
    std::vector<Child> children;
    for (int i = 0; i < 52; ++i)
        children.push_back(idle.startWithoutWaiting());
    CProcessListManager manager;
    ASSERT_EQ(1, manager.GetProcessIdList());
    for (const Child& child : children)
        EXPECT_TRUE(contains(idsOf(manager), child.pid()));
}

TEST(CProcessListManager, FailsWhenALibraryIsMissing)
{
    for (const char* const library : {"psapi", "userenv"})
    {
        const HelperWithoutLibrary setting(library);
        const HelperRun run = runHelper("processes");
        // Texts and counts are cleared; the owner of a process is asked of the system itself.
        EXPECT_EQ((std::vector<std::string>{"0 0 '' 0 0 0 0 0 0", "0 0 '' 0 0 0 0 0 0", "owner: 1"}), run.lines)
            << library;
    }
    const HelperRun run = runHelper("processes");
    EXPECT_EQ((std::vector<std::string>{"1 1 'system_helper.exe' 1 1 1 0 0 0", "1 1 'system_helper.exe' 1 1 1 0 0 0",
                                        "owner: 1"}),
              run.lines);
}

TEST_F(CountedProcesses, AListThatLeavesRoomIsWhole)
{
    g_processes = 49;
    EXPECT_EQ(1, manager.GetProcessIdList());
    EXPECT_EQ((std::vector<unsigned long>{50}), g_room);
    EXPECT_EQ(49, Access::capacityOf(manager));
    EXPECT_EQ(196U, Access::bytesReturnedOf(manager));
}

TEST_F(CountedProcesses, AListThatFillsTheRoomIsReadAgainWithRoomFor10More)
{
    g_processes = 50;
    EXPECT_EQ(1, manager.GetProcessIdList());
    EXPECT_EQ((std::vector<unsigned long>{50, 60}), g_room);
    EXPECT_EQ(50, Access::capacityOf(manager));
}

TEST_F(CountedProcesses, RoomGrowsUntilTheListFits)
{
    g_processes = 75;
    EXPECT_EQ(1, manager.GetProcessIdList());
    EXPECT_EQ((std::vector<unsigned long>{50, 60, 70, 80}), g_room);
    EXPECT_EQ(75, Access::capacityOf(manager));
    EXPECT_EQ(75U, idsOf(manager).size());
}

TEST_F(CountedProcesses, TheNextListStartsWithRoomForTheLastCount)
{
    g_processes = 20;
    EXPECT_EQ(1, manager.GetProcessIdList());
    EXPECT_EQ(1, manager.GetProcessIdList());
    EXPECT_EQ((std::vector<unsigned long>{50, 20, 30}), g_room);
    EXPECT_EQ(20, Access::capacityOf(manager));
}

TEST_F(CountedProcesses, NoProcessesAreAListToo)
{
    g_processes = 0;
    EXPECT_EQ(1, manager.GetProcessIdList());
    EXPECT_EQ(0, Access::capacityOf(manager));
    g_processes = 3;
    EXPECT_EQ(1, manager.GetProcessIdList());
    EXPECT_EQ((std::vector<unsigned long>{50, 0, 10}), g_room);
    EXPECT_EQ(3, Access::capacityOf(manager));
}

TEST_F(CountedProcesses, ThousandsOfProcessesAreListed)
{
    g_processes = 5000;
    EXPECT_EQ(1, manager.GetProcessIdList());
    EXPECT_EQ(5000, Access::capacityOf(manager));
}

TEST_F(CountedProcesses, AFailedEnumerationDropsTheList)
{
    g_processes = 20;
    ASSERT_EQ(1, manager.GetProcessIdList());
    Access::enumerateWith(manager, failToEnumerate);
    EXPECT_EQ(0, manager.GetProcessIdList());
    EXPECT_EQ(nullptr, Access::idsOf(manager));
    int count = 7;
    EXPECT_EQ(0, manager.IsProcessRunning("system_tests.exe", &count, nullptr));
    EXPECT_EQ(0, count);
}

TEST(CProcessListManager, NamesAProcessByItsMainModule)
{
    CProcessListManager manager;
    String name = "left over";
    EXPECT_EQ(1, manager.GetProcessNameFromPID(::GetCurrentProcessId(), name));
    EXPECT_EQ(String("system_tests.exe"), name);

    const IdleProcesses idle("Other Name.exe");
    const Child child = idle.start();
    EXPECT_EQ(1, manager.GetProcessNameFromPID(child.pid(), name));
    EXPECT_STREQ("Other Name.exe", name);
}

TEST(CProcessListManager, CannotNameAProcessThatIsNotThere)
{
    CProcessListManager manager;
    for (const unsigned long pid : {0UL, 0xFFFFFFF0UL})
    {
        String name = "left over";
        EXPECT_EQ(0, manager.GetProcessNameFromPID(pid, name));
        EXPECT_TRUE(name.IsEmpty());
    }
}

TEST(CProcessListManager, CountsTheProcessesOfAName)
{
    const IdleProcesses idle("counted.exe");
    const Child first = idle.start();
    const Child second = idle.start();
    unsigned long ids[10] = {};
    unsigned long* buffer = ids;
    int count = 7;
    CProcessListManager manager;
    EXPECT_EQ(1, manager.IsProcessRunning("COUNTED.exe", &count, &buffer)) << "case is ignored";
    EXPECT_EQ(2, count);
    EXPECT_TRUE(contains({ids[0], ids[1]}, first.pid()));
    EXPECT_TRUE(contains({ids[0], ids[1]}, second.pid()));
    EXPECT_EQ(0U, ids[2]);

    count = 7;
    EXPECT_EQ(1, manager.IsProcessRunning("counted.exe", &count, nullptr)) << "counting needs no buffer";
    EXPECT_EQ(2, count);
    unsigned long* none = nullptr;
    EXPECT_EQ(1, manager.IsProcessRunning("counted.exe", &count, &none));
    EXPECT_EQ(2, count);
}

TEST(CProcessListManager, CountsNoneForANameThatDoesNotRun)
{
    CProcessListManager manager;
    const std::string longName(10000, 'n');
    for (const char* const name :
         {"nobody.exe", "system_tests", "", static_cast<const char*>(nullptr), longName.c_str()})
    {
        int count = 7;
        EXPECT_EQ(0, manager.IsProcessRunning(name, &count, nullptr));
        EXPECT_EQ(0, count);
    }
}

TEST(CProcessListManager, RefusesToCountWithoutACounter)
{
    CProcessListManager manager;
    EXPECT_EQ(0, manager.IsProcessRunning("system_tests.exe", nullptr, nullptr));
    EXPECT_EQ(0, manager.IsUserProcessRunning(ownUser().c_str(), "system_tests.exe", nullptr, nullptr));
    EXPECT_FALSE(IsProcessRunning("system_tests.exe", nullptr, nullptr, true));
}

TEST(CProcessListManager, SkipsAProcessThatCannotBeReadInSilence)
{
    *result = RT_RESULT();
    const LogFile log;
    const IdleProcesses idle("protected.exe");
    const Child readable = idle.start();
    const Child hidden = idle.start();
    allowOnly(hidden.handle(), 0);
    CProcessListManager manager;
    unsigned long ids[10] = {};
    unsigned long* buffer = ids;
    int count = 0;
    EXPECT_EQ(1, manager.IsProcessRunning("protected.exe", &count, &buffer));
    EXPECT_EQ(1, count);
    EXPECT_EQ(readable.pid(), ids[0]);
    EXPECT_EQ(std::vector<LogEvent>{}, log.events());
    EXPECT_EQ(0, result->GetStatusCode());
}

TEST(CProcessListManager, CountsTheProcessesOfAUser)
{
    const IdleProcesses idle("owned.exe");
    const Child child = idle.start();
    std::string otherCase = ownUser();
    std::transform(otherCase.begin(), otherCase.end(), otherCase.begin(),
                   [](char c) { return static_cast<char>(::isupper(c) ? ::tolower(c) : ::toupper(c)); });
    CProcessListManager manager;
    for (const std::string& user : {ownUser(), otherCase})
    {
        unsigned long ids[10] = {};
        unsigned long* buffer = ids;
        int count = 7;
        EXPECT_EQ(1, manager.IsUserProcessRunning(user.c_str(), "OWNED.exe", &count, &buffer));
        EXPECT_EQ(1, count);
        EXPECT_EQ(child.pid(), ids[0]);
    }
}

TEST(CProcessListManager, CountsNoneForAnotherUser)
{
    const IdleProcesses idle("owned.exe");
    const Child child = idle.start();
    CProcessListManager manager;
    for (const char* const user : {"nobody", "host\\nobody", "", static_cast<const char*>(nullptr)})
    {
        int count = 7;
        EXPECT_EQ(0, manager.IsUserProcessRunning(user, "owned.exe", &count, nullptr));
        EXPECT_EQ(0, count);
    }
}

TEST(CProcessListManager, DoesNotCountAProcessWhoseOwnerCannotBeNamed)
{
    const IdleProcesses idle("owned.exe");
    const Child child = idle.start();
    allowOnly(tokenOf(child.handle()).get(), 0);
    CProcessListManager manager;
    int count = 7;
    EXPECT_EQ(0, manager.IsUserProcessRunning(ownUser().c_str(), "owned.exe", &count, nullptr));
    EXPECT_EQ(0, count);
}

TEST(IsProcessRunning, AnswersLikeAManagerWhateverItsLastArgument)
{
    const IdleProcesses idle("free.exe");
    const Child child = idle.start();
    for (const bool unused : {false, true})
    {
        unsigned long ids[10] = {};
        unsigned long* buffer = ids;
        int count = 7;
        EXPECT_TRUE(IsProcessRunning("free.exe", &count, &buffer, unused));
        EXPECT_EQ(1, count);
        EXPECT_EQ(child.pid(), ids[0]);
        EXPECT_FALSE(IsProcessRunning("nobody.exe", &count, nullptr, unused));
        EXPECT_EQ(0, count);
    }
}

TEST(CProcessListManager, LeaksNoHandles)
{
    CProcessListManager manager;
    String text;
    int count = 0;
    ASSERT_EQ(1, manager.GetProcessNameFromPID(::GetCurrentProcessId(), text));
    const std::size_t before = openHandles();
    for (int round = 0; round < 200; ++round)
        ASSERT_EQ(1, manager.GetProcessNameFromPID(::GetCurrentProcessId(), text));
    for (int round = 0; round < 10; ++round)
    {
        CProcessListManager other;
        ASSERT_EQ(1, other.IsProcessRunning("system_tests.exe", &count, nullptr));
    }
    EXPECT_EQ(before, openHandles());
}
