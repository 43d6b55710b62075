#include "system/KernelControl.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/ImportPatch.h"
#include "tests/system/Kernel.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

using namespace auttest;
using Lines = std::vector<std::string>;

namespace
{
class KernelStateTest : public ::testing::Test
{
protected:
    void setVersion(const char* version) const { m_registry.write("", "Current_Kernel_Version", version); }

    ClientRegistry m_registry;
    KernelProgram m_kernel;
};

struct Generation
{
    const char* name;
    const char* version;
    bool first;
};
void PrintTo(const Generation& generation, std::ostream* out) { *out << generation.version; }
class KernelGenerationTest : public KernelStateTest, public ::testing::WithParamInterface<Generation>
{
};
} // namespace

TEST_P(KernelGenerationTest, DecidesWhetherTheProcessOrTheMutexCounts)
{
    setVersion(GetParam().version);
    {
        const Child process = m_kernel.start();
        EXPECT_EQ(GetParam().first, IsAURunning(false)) << "process without mutex";
    }
    const OwnMutex mutex(kKernelMutex);
    EXPECT_EQ(!GetParam().first, IsAURunning(false)) << "mutex without process";
}
INSTANTIATE_TEST_SUITE_P(
    Versions, KernelGenerationTest,
    ::testing::Values(Generation{"OnePointNine", "1.9", true}, Generation{"OnePointZero", "1.0.5B2_EN", true},
                      Generation{"One", "1", true}, Generation{"Zero", "0.9", true}, Generation{"Empty", "", true},
                      Generation{"LowerSeparator", "1,5", true}, Generation{"HigherSeparator", "1_5", false},
                      Generation{"Ten", "10.1", false}, Generation{"Two", "2.0", false},
                      Generation{"Three", "3.3.302.1_EN", false}, Generation{"Letters", "abc", false},
                      Generation{"BeyondAscii", "\xE9.1", false}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(KernelStateTest, AMissingOrOverlongVersionCountsAsTheFirstGeneration)
{
    const Child process = m_kernel.start();
    EXPECT_TRUE(IsAURunning(false));
    setVersion(std::string(10000, '9').c_str());
    EXPECT_TRUE(IsAURunning(false));
}

TEST_F(KernelStateTest, AVersionOfTheWrongTypeIsReadAsItsBytes)
{
    const OwnMutex mutex(kKernelMutex);
    m_registry.writeRaw("", "Current_Kernel_Version", REG_BINARY, "3.3"); // without a terminator
    EXPECT_TRUE(IsAURunning(false));
}

TEST_F(KernelStateTest, NothingRunsWhenThereIsNeitherProcessNorMutex)
{
    for (const char* const version : {"1.9", "3.3"})
    {
        setVersion(version);
        EXPECT_FALSE(IsAURunning(false)) << version;
        EXPECT_FALSE(IsAURunning(true)) << version;
    }
}

TEST_F(KernelStateTest, OneProcessIsSubtractedWhoeverCalls)
{
    setVersion("1.9");
    const Child first = m_kernel.start();
    EXPECT_TRUE(IsAURunning(false));
    EXPECT_FALSE(IsAURunning(true)); // this process is none of them
    const Child second = m_kernel.start();
    EXPECT_TRUE(IsAURunning(true));
}

TEST_F(KernelStateTest, TheProcessNameIsComparedWithoutCaseAndWhole)
{
    setVersion("1.9");
    const KernelProgram reload("ReloadAutoUpdate.exe");
    const Child other = reload.start();
    EXPECT_FALSE(IsAURunning(false));
    const KernelProgram upper("AUTOUPDATE.EXE");
    const Child process = upper.start();
    EXPECT_TRUE(IsAURunning(false));
}

TEST_F(KernelStateTest, TheOwnerOfTheMutexIsNotSubtracted)
{
    setVersion("3.3");
    const Child kernel = m_kernel.start("\"mutex=" + std::string(kKernelMutex) + "\"");
    EXPECT_TRUE(IsAURunning(false));
    EXPECT_TRUE(IsAURunning(true));
}

TEST_F(KernelStateTest, AKernelThatEndsTakesItsMutexWithIt)
{
    setVersion("3.3");
    Child kernel = m_kernel.start("\"mutex=" + std::string(kKernelMutex) + "\"");
    ASSERT_TRUE(IsAURunning(false));
    kernel.end();
    EXPECT_FALSE(IsAURunning(false));
}

TEST_F(KernelStateTest, TheOnlyKernelProcessDoesNotFindAnother)
{
    // The library lies beside the test programs, not beside the copy.
    ::SetEnvironmentVariableA("PATH", (programFolder() + ";C:\\windows\\system32").c_str());
    const TestFolder folder;
    const std::string self = folder / "AutoUpdate.exe";
    ASSERT_TRUE(::CopyFileA((programFolder() + "\\kernelcontrol_helper.exe").c_str(), self.c_str(), FALSE));
    setVersion("1.9");
    const auto run = [&folder](const char* arguments) { return runProgram(folder / "AutoUpdate.exe", arguments); };
    EXPECT_EQ((Lines{"kernel: 1", "other kernel: 0", "server: 0"}), run("running").lines);
    const Child other = m_kernel.start();
    EXPECT_EQ((Lines{"kernel: 1", "other kernel: 1", "server: 0"}), run("running").lines);
}

TEST_F(KernelStateTest, AnotherNameOrKindOfObjectIsNotTheKernel)
{
    setVersion("3.3");
    const OwnMutex local("Velmora Automatic Update");
    const OwnMutex longer("Global\\Velmora Automatic Update 2");
    const aut::UniqueHandle event{::CreateEventA(nullptr, FALSE, FALSE, kKernelMutex)};
    EXPECT_FALSE(IsAURunning(false));
}

TEST_F(KernelStateTest, TheMutexMustBeThereForFullAccess)
{
    setVersion("3.3");
    const OwnMutex kernel(kKernelMutex);
    const OwnMutex server("Local\\AU_SM_Mutex");
    for (const HANDLE mutex : {kernel.handle(), server.handle()})
        allowOnly(mutex, MUTEX_ALL_ACCESS & ~MUTEX_MODIFY_STATE);
    EXPECT_FALSE(IsAURunning(false));
    EXPECT_FALSE(IsMsgServerRunning());
    for (const HANDLE mutex : {kernel.handle(), server.handle()})
        allowOnly(mutex, MUTEX_ALL_ACCESS);
    EXPECT_TRUE(IsAURunning(false));
    EXPECT_TRUE(IsMsgServerRunning());
}

TEST_F(KernelStateTest, TheMessageServerIsLocalWithoutTheService)
{
    EXPECT_FALSE(IsMsgServerRunning());
    const OwnMutex mutex("Local\\AU_SM_Mutex");
    EXPECT_TRUE(IsMsgServerRunning());
    m_registry.write("Config", "ServiceInstalled", 1);
    EXPECT_FALSE(IsMsgServerRunning());
    m_registry.write("Config", "ServiceInstalled", DWORD{0});
    EXPECT_TRUE(IsMsgServerRunning());
}

TEST_F(KernelStateTest, TheMessageServerIsGlobalWithTheService)
{
    const OwnMutex mutex("Global\\AU_SM_Mutex");
    EXPECT_FALSE(IsMsgServerRunning());
    m_registry.write("Config", "ServiceInstalled", 1);
    EXPECT_TRUE(IsMsgServerRunning());
}

TEST_F(KernelStateTest, TheNamesAreBareBelowWindows2000)
{
    setVersion("3.3");
    m_registry.write("Config", "ServiceInstalled", 1);
    const OwnMutex kernel("Velmora Automatic Update");
    const OwnMutex server("AU_SM_Mutex");
    for (const char* const version : {"win98", "nt40", "win10"})
    {
        const HelperWindowsVersion setting(version, "kernelcontrol_helper.exe");
        EXPECT_EQ((Lines{"kernel: 1", "other kernel: 1", "server: 1"}),
                  runHelper("running", "kernelcontrol_helper.exe").lines)
            << version;
    }
}

TEST_F(KernelStateTest, TheNamesHaveAPrefixFromWindows2000On)
{
    setVersion("3.3");
    m_registry.write("Config", "ServiceInstalled", 1);
    const OwnMutex kernel("Velmora Automatic Update");
    const OwnMutex server("AU_SM_Mutex");
    for (const char* const version : {"win2k", "win7"})
    {
        const HelperWindowsVersion setting(version, "kernelcontrol_helper.exe");
        EXPECT_EQ((Lines{"kernel: 0", "other kernel: 0", "server: 0"}),
                  runHelper("running", "kernelcontrol_helper.exe").lines)
            << version;
        const OwnMutex globalKernel("Global\\Velmora Automatic Update");
        const OwnMutex globalServer("Global\\AU_SM_Mutex");
        EXPECT_EQ((Lines{"kernel: 1", "other kernel: 1", "server: 1"}),
                  runHelper("running", "kernelcontrol_helper.exe").lines)
            << version;
    }
}

TEST_F(KernelStateTest, AskingLeavesNoHandleOpen)
{
    const OwnMutex kernel(kKernelMutex);
    const OwnMutex server("Local\\AU_SM_Mutex");
    const Child process = m_kernel.start();
    const auto ask = [this]
    {
        for (const char* const version : {"1.9", "3.3"})
        {
            setVersion(version);
            EXPECT_TRUE(IsAURunning(false));
        }
        EXPECT_TRUE(IsMsgServerRunning());
    };
    ask();
    const std::size_t before = openHandles();
    for (int round = 0; round < 20; ++round)
        ask();
    EXPECT_EQ(before, openHandles());
}
