#include "system/KernelControl.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/DetailedLog.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogFile.h"
#include "tests/system/Kernel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace auttest;
using Events = std::vector<LogEvent>;

namespace
{
class KernelKillTest : public ::testing::Test
{
protected:
    KernelKillTest()
    {
        m_log.mark();
        s_terminated.clear();
    }
    /// Without a configured maximum.
    static Events noLimit(int running)
    {
        return {{"Info",
                 "--- Citrix Limitation --- : MaxUsers not defined in Registry Keys ! Not limited for AutoUpdate.exe"},
                limit(running)};
    }
    static LogEvent limit(int users)
    {
        return {"Info",
                "--- Citrix Limitation --- : Nb max of user connected in the same time = " + std::to_string(users)};
    }
    std::vector<Child> startKernels(int count) const
    {
        std::vector<Child> kernels;
        for (int i = 0; i < count; ++i)
            kernels.push_back(m_kernel.start());
        return kernels;
    }
    static bool runs(const Child& kernel) { return ::WaitForSingleObject(kernel.handle(), 0) == WAIT_TIMEOUT; }
    static long countRunning(const std::vector<Child>& kernels)
    {
        return static_cast<long>(std::count_if(kernels.begin(), kernels.end(), runs));
    }
    /// How many run in the end. One that was terminated may take a moment, so more than `expected` are waited for, and
    /// those that were not to be terminated get the same moment.
    static long countRunning(const std::vector<Child>& kernels, long expected)
    {
        for (int wait = 0; countRunning(kernels) > expected && wait < 200; ++wait)
            ::Sleep(50);
        ::Sleep(200);
        return countRunning(kernels);
    }
    static BOOL WINAPI failFirst(HANDLE process, UINT status)
    {
        return s_terminated.empty() ? refuse() : end(process, status);
    }
    static BOOL WINAPI failSecond(HANDLE process, UINT status)
    {
        return s_terminated.size() == 1 ? refuse() : end(process, status);
    }

    const DetailedLog m_details;
    const Registry m_registry{HKEY_LOCAL_MACHINE, ClientRegistry::kPath};
    KernelProgram m_kernel;
    LogFile m_log;

    static inline std::vector<UINT> s_terminated;

private:
    static BOOL refuse()
    {
        s_terminated.push_back(~0U);
        ::SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    static BOOL end(HANDLE process, UINT status)
    {
        s_terminated.push_back(status);
        return ::TerminateProcess(process, status);
    }
};
} // namespace

TEST_F(KernelKillTest, WithoutAKernelThereIsNothingToKill)
{
    EXPECT_TRUE(KillAU());
    EXPECT_EQ(noLimit(0), m_log.events());
}

TEST_F(KernelKillTest, EveryKernelIsKilledWithExitCodeZero)
{
    const std::vector<Child> kernels = startKernels(3);
    EXPECT_TRUE(KillAU());
    for (const Child& kernel : kernels)
        EXPECT_EQ(0U, kernel.wait());
    EXPECT_EQ(noLimit(3), m_log.events());
}

TEST_F(KernelKillTest, OnlyProcessesOfThatNameAreKilled)
{
    const KernelProgram reload("ReloadAutoUpdate.exe");
    const KernelProgram upper("AUTOUPDATE.EXE");
    const Child other = reload.start();
    const Child kernel = upper.start();
    EXPECT_TRUE(KillAU());
    EXPECT_EQ(0U, kernel.wait());
    EXPECT_TRUE(runs(other));
}

TEST_F(KernelKillTest, NoMoreAreKilledThanThereMayBeUsers)
{
    const std::vector<Child> kernels = startKernels(3);
    m_registry.write("Citrix", "UsersNumber", 2);
    EXPECT_TRUE(KillAU());
    EXPECT_EQ(1, countRunning(kernels, 1));
    EXPECT_EQ(Events{limit(2)}, m_log.events());
    m_registry.write("Citrix", "UsersNumber", 1);
    EXPECT_TRUE(KillAU());
    EXPECT_EQ(0, countRunning(kernels, 0));
}

TEST_F(KernelKillTest, AMaximumAboveTheNumberOfProcessesKillsAll)
{
    for (const DWORD maximum : {3UL, 1000000UL, 0xFFFFFFFFUL})
    {
        const std::vector<Child> kernels = startKernels(2);
        m_registry.write("Citrix", "UsersNumber", maximum);
        m_log.mark();
        EXPECT_TRUE(KillAU());
        EXPECT_EQ(0, countRunning(kernels, 0));
        EXPECT_EQ(Events{limit(static_cast<int>(maximum))}, m_log.events());
    }
}

TEST_F(KernelKillTest, TheLimitsAreDetailsOfLevelFive)
{
    m_registry.write("Config", "TestEnv", 4);
    for (int call = 0; call < 10; ++call)
        Log(0xFFFF0000, "never written");
    EXPECT_TRUE(KillAU());
    EXPECT_EQ(Events{}, m_log.events());
}

TEST_F(KernelKillTest, TheLastTerminationDecides)
{
    {
        const std::vector<Child> kernels = startKernels(2);
        const ImportPatch terminate("TerminateProcess", &failFirst);
        EXPECT_TRUE(KillAU());
        EXPECT_EQ((std::vector<UINT>{~0U, 0}), s_terminated);
        EXPECT_EQ(1, countRunning(kernels, 1));
    }
    s_terminated.clear();
    const std::vector<Child> kernels = startKernels(2);
    const ImportPatch terminate("TerminateProcess", &failSecond);
    EXPECT_FALSE(KillAU());
    EXPECT_EQ((std::vector<UINT>{0, ~0U}), s_terminated);
    EXPECT_EQ(1, countRunning(kernels, 1));
}

TEST_F(KernelKillTest, AKernelThatMayNotBeTerminatedIsPassedOver)
{
    const std::vector<Child> kernels = startKernels(2);
    for (const Child& kernel : kernels)
        allowOnly(kernel.handle(), PROCESS_QUERY_INFORMATION | PROCESS_VM_READ | SYNCHRONIZE | WRITE_DAC);
    EXPECT_TRUE(KillAU()); // none could be opened
    EXPECT_EQ(2, countRunning(kernels, 2));

    const Child open = m_kernel.start();
    EXPECT_TRUE(KillAU());
    EXPECT_EQ(0U, open.wait());
    EXPECT_EQ(2, countRunning(kernels, 2));
}

TEST_F(KernelKillTest, AKernelIsOpenedToTerminateItOnly)
{
    static std::vector<DWORD> accesses;
    struct Note
    {
        static HANDLE WINAPI open(DWORD access, BOOL inherit, DWORD pid)
        {
            accesses.push_back(access);
            return ::OpenProcess(access, inherit, pid);
        }
    };
    const Child kernel = m_kernel.start();
    const ImportPatch open("OpenProcess", &Note::open);
    EXPECT_TRUE(KillAU());
    ASSERT_FALSE(accesses.empty());
    EXPECT_EQ(1U, accesses.back());
}

TEST_F(KernelKillTest, AKernelThatCallsIsKilledToo)
{
    ::SetEnvironmentVariableA("PATH", (programFolder() + ";C:\\windows\\system32").c_str());
    const TestFolder folder;
    const std::string self = folder / "AutoUpdate.exe";
    ASSERT_TRUE(::CopyFileA((programFolder() + "\\kernelcontrol_helper.exe").c_str(), self.c_str(), FALSE));
    const HelperRun run = runProgram(self, "kill");
    EXPECT_EQ(0U, run.status);
    EXPECT_EQ(std::vector<std::string>{}, run.lines);
}

TEST_F(KernelKillTest, KillingLeavesNoHandleOpen)
{
    const auto kill = [this]
    {
        const Child kernel = m_kernel.start();
        EXPECT_TRUE(KillAU());
        kernel.wait();
    };
    kill();
    const std::size_t before = openHandles();
    for (int round = 0; round < 10; ++round)
        kill();
    EXPECT_EQ(before, openHandles());
}
