#include "foundation/RT_RESULT.h"
#include "system/KernelControl.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogFile.h"
#include "tests/system/Kernel.h"

#include <gtest/gtest.h>

#include <windows.h>
#include <winsvc.h>

#include <ostream>
#include <string>
#include <vector>

using namespace auttest;
using Pauses = std::vector<DWORD>;

namespace
{
constexpr DWORD kObeyedStatus = 7; // what a stand-in leaves with that was asked to, not killed
const std::string kOwnsMutex = "\"mutex=" + std::string(kKernelMutex) + "\"";

/// A kernel of today; how long the library pauses is noted.
class KernelStopTest : public ::testing::Test
{
protected:
    KernelStopTest()
    {
        m_registry.write("", "Current_Kernel_Version", "3.3.302.1_EN");
        s_pauses.clear();
        s_readings = 0;
        s_readingsBeforeFailure = 0;
    }
    static Pauses times(std::size_t count, DWORD pauseMs) { return Pauses(count, pauseMs); }

    static void WINAPI noteAndPause(DWORD pauseMs)
    {
        s_pauses.push_back(pauseMs);
        ::Sleep(pauseMs);
    }
    static void WINAPI noteOnly(DWORD pauseMs) { s_pauses.push_back(pauseMs); }
    static BOOL WINAPI failToRead(SC_HANDLE service, SERVICE_STATUS* status)
    {
        if (++s_readings > s_readingsBeforeFailure)
            return FALSE;
        return ::QueryServiceStatus(service, status);
    }
    static BOOL WINAPI countReading(SC_HANDLE service, SERVICE_STATUS* status)
    {
        ++s_readings;
        return ::QueryServiceStatus(service, status);
    }

    ClientRegistry m_registry;
    KernelProgram m_kernel;

    static inline Pauses s_pauses;
    static inline int s_readings = 0;
    static inline int s_readingsBeforeFailure = 0;
};
} // namespace

TEST_F(KernelStopTest, AKernelThatDoesNotRunNeedsNotToBeStopped)
{
    const KernelService service(m_kernel, "stop=0"); // runs, but owns no mutex
    const ImportPatch sleep("Sleep", &noteOnly);
    EXPECT_TRUE(StopAU());
    EXPECT_FALSE(m_registry.valueExists("", "Exception"));
    EXPECT_EQ(SERVICE_RUNNING, service.state());
    EXPECT_EQ(Pauses{}, s_pauses);
}

TEST_F(KernelStopTest, AKernelIsAskedByTheExceptionValueAndEndsItself)
{
    const Child kernel = m_kernel.start(kOwnsMutex + " obeys");
    m_registry.write("", "Exception", 2);
    const ImportPatch sleep("Sleep", &noteAndPause);
    EXPECT_TRUE(StopAU());
    EXPECT_EQ(4U, m_registry.readNumber("", "Exception"));
    EXPECT_FALSE(IsAURunning(false));
    EXPECT_EQ(kObeyedStatus, kernel.wait());
    EXPECT_EQ(times(s_pauses.size(), 500), s_pauses);
    EXPECT_GT(20U, s_pauses.size()); // far from the end of patience
}

TEST_F(KernelStopTest, AKernelOfTheFirstGenerationIsAskedInTheSameWay)
{
    m_registry.write("", "Current_Kernel_Version", "1.9");
    const Child kernel = m_kernel.start("obeys");
    EXPECT_TRUE(StopAU());
    EXPECT_EQ(kObeyedStatus, kernel.wait());
}

TEST_F(KernelStopTest, AKernelThatIgnoresTheRequestIsKilledAfterHalfAMinute)
{
    const Child kernel = m_kernel.start(kOwnsMutex);
    const ULONGLONG begin = ::GetTickCount64();
    EXPECT_TRUE(StopAU());
    const ULONGLONG tookMs = ::GetTickCount64() - begin;
    EXPECT_LE(29500U, tookMs);
    EXPECT_GE(60000U, tookMs);
    EXPECT_EQ(0U, kernel.wait());
    EXPECT_FALSE(IsAURunning(false));
}

TEST_F(KernelStopTest, AKernelIsCheckedSixtyTimesHalfASecondApart)
{
    const Child kernel = m_kernel.start(kOwnsMutex);
    const ImportPatch sleep("Sleep", &noteOnly);
    EXPECT_TRUE(StopAU());
    EXPECT_EQ(times(59, 500), s_pauses);
    EXPECT_EQ(0U, kernel.wait());
}

TEST_F(KernelStopTest, AKernelThatEndsAtTheLastCheckIsNotKilled)
{
    static Child* running = nullptr;
    struct Pause
    {
        static void WINAPI endKernel(DWORD pauseMs)
        {
            s_pauses.push_back(pauseMs);
            if (s_pauses.size() == 59)
                running->end();
        }
    };
    Child kernel = m_kernel.start(kOwnsMutex);
    const Child other = m_kernel.start(); // what would be killed
    running = &kernel;
    const ImportPatch sleep("Sleep", &Pause::endKernel);
    EXPECT_TRUE(StopAU());
    EXPECT_EQ(WAIT_TIMEOUT, ::WaitForSingleObject(other.handle(), 0));
}

TEST_F(KernelStopTest, WhatKillsTheKernelIsTheResult)
{
    // The mutex is this process's own: nothing that is killed frees it.
    const OwnMutex mutex(kKernelMutex);
    const ImportPatch sleep("Sleep", &noteOnly);
    EXPECT_TRUE(StopAU()); // no process to kill
    struct Refusal
    {
        static BOOL WINAPI terminate(HANDLE, UINT) { return FALSE; }
    };
    const Child kernel = m_kernel.start();
    const ImportPatch refusal("TerminateProcess", &Refusal::terminate);
    EXPECT_FALSE(StopAU());
}

TEST_F(KernelStopTest, AServiceThatStopsAtOnceIsNotWaitedFor)
{
    const KernelService service(m_kernel, kOwnsMutex + " stop=0");
    const ImportPatch sleep("Sleep", &noteAndPause);
    EXPECT_TRUE(StopAU());
    EXPECT_EQ(SERVICE_STOPPED, service.state());
    EXPECT_EQ(Pauses{}, s_pauses);
}

TEST_F(KernelStopTest, TheRequestIsMadeBeforeTheService)
{
    const KernelService service(m_kernel, kOwnsMutex + " stop=0");
    EXPECT_TRUE(StopAU());
    EXPECT_EQ(4U, m_registry.readNumber("", "ExceptionWhenTold"));
}

TEST_F(KernelStopTest, AServiceThatTakesItsTimeIsWaitedForWithAPauseOfATenthOfItsHint)
{
    const KernelService service(m_kernel, kOwnsMutex + " stop=3000 hint=20000");
    const ImportPatch sleep("Sleep", &noteAndPause);
    EXPECT_TRUE(StopAU());
    EXPECT_EQ(SERVICE_STOPPED, service.state());
    EXPECT_EQ((Pauses{2000, 2000}), s_pauses);
}

namespace
{
struct Hint
{
    DWORD hintMs;
    DWORD pauseMs;
};
void PrintTo(const Hint& hint, std::ostream* out) { *out << hint.hintMs << " gives " << hint.pauseMs; }
class ServicePauseTest : public KernelStopTest, public ::testing::WithParamInterface<Hint>
{
};
} // namespace

// Also: a service that never stops, and is killed in the end.
TEST_P(ServicePauseTest, OneHundredAndEightyReadingsApartByATenthOfTheHint)
{
    const KernelService service(m_kernel, kOwnsMutex + " stop=never hint=" + std::to_string(GetParam().hintMs));
    const ImportPatch sleep("Sleep", &noteOnly);
    const ImportPatch query("QueryServiceStatus", &countReading);
    EXPECT_TRUE(StopAU());
    Pauses expected = times(180, GetParam().pauseMs);
    expected.insert(expected.end(), 59, 500);
    EXPECT_EQ(expected, s_pauses);
    EXPECT_EQ(181, s_readings); // the first one is not waited for
    EXPECT_FALSE(IsAURunning(false));
}
INSTANTIATE_TEST_SUITE_P(Hints, ServicePauseTest,
                         ::testing::Values(Hint{0, 1000}, Hint{9999, 1000}, Hint{10010, 1001}, Hint{25009, 2500},
                                           Hint{100000, 10000}, Hint{100010, 10000}, Hint{0xFFFFFFFF, 10000}),
                         [](const auto& test) { return "Ms" + std::to_string(test.param.hintMs); });

TEST_F(KernelStopTest, TheFirstStatusDecidesThePause)
{
    struct Growing
    {
        static BOOL WINAPI read(SC_HANDLE, SERVICE_STATUS* status)
        {
            *status = SERVICE_STATUS{};
            status->dwCurrentState = ++s_readings < 4 ? SERVICE_STOP_PENDING : SERVICE_STOPPED;
            status->dwWaitHint = 10000UL + 10000UL * static_cast<DWORD>(s_readings);
            return TRUE;
        }
    };
    const KernelService service(m_kernel, kOwnsMutex + " stop=0");
    const ImportPatch sleep("Sleep", &noteOnly);
    const ImportPatch query("QueryServiceStatus", &Growing::read);
    EXPECT_TRUE(StopAU());
    EXPECT_EQ((Pauses{2000, 2000, 2000}), s_pauses);
}

TEST_F(KernelStopTest, AServiceThatRefusesTheControlIsNotWaitedFor)
{
    const KernelService service(m_kernel, kOwnsMutex + " refuses");
    const ImportPatch sleep("Sleep", &noteOnly);
    const ImportPatch query("QueryServiceStatus", &countReading);
    EXPECT_TRUE(StopAU());
    EXPECT_EQ(times(59, 500), s_pauses);
    EXPECT_EQ(0, s_readings);
}

TEST_F(KernelStopTest, AStatusThatCannotBeReadEndsTheWaiting)
{
    for (const int readings : {0, 3})
    {
        s_pauses.clear();
        s_readings = 0;
        s_readingsBeforeFailure = readings;
        const KernelService service(m_kernel, kOwnsMutex + " stop=never hint=20000");
        const ImportPatch sleep("Sleep", &noteOnly);
        const ImportPatch query("QueryServiceStatus", &failToRead);
        EXPECT_TRUE(StopAU());
        Pauses expected = times(static_cast<std::size_t>(readings), 2000);
        expected.insert(expected.end(), 59, 500);
        EXPECT_EQ(expected, s_pauses) << readings;
    }
}

TEST_F(KernelStopTest, WithoutItsServiceTheKernelIsStillWaitedForAndKilled)
{
    const Child kernel = m_kernel.start(kOwnsMutex);
    const ImportPatch sleep("Sleep", &noteOnly);
    EXPECT_TRUE(StopAU());
    EXPECT_EQ(times(59, 500), s_pauses);
}

TEST_F(KernelStopTest, TheServiceIsOpenedForStoppingAndQueryingOnly)
{
    static DWORD managerAccess;
    static DWORD serviceAccess;
    static std::string serviceName;
    static const char* machine;
    struct Note
    {
        static SC_HANDLE WINAPI manager(const char* name, const char* database, DWORD access)
        {
            managerAccess = access;
            machine = name;
            return ::OpenSCManagerA(name, database, access);
        }
        static SC_HANDLE WINAPI service(SC_HANDLE manager, const char* name, DWORD access)
        {
            serviceName = name;
            serviceAccess = access;
            return ::OpenServiceA(manager, name, access);
        }
    };
    const KernelService service(m_kernel, kOwnsMutex + " stop=0");
    const ImportPatch manager("OpenSCManagerA", &Note::manager);
    const ImportPatch opened("OpenServiceA", &Note::service);
    EXPECT_TRUE(StopAU());
    EXPECT_EQ(0xF003FU, managerAccess);
    EXPECT_EQ(nullptr, machine);
    EXPECT_EQ("Velmora Automatic Update", serviceName);
    EXPECT_EQ(0x24U, serviceAccess); // stop and query status
}

TEST_F(KernelStopTest, AServiceManagerThatCannotBeOpenedIsSkipped)
{
    struct Refusal
    {
        static SC_HANDLE WINAPI manager(const char*, const char*, DWORD) { return nullptr; }
    };
    const KernelService service(m_kernel, kOwnsMutex + " stop=0");
    const ImportPatch sleep("Sleep", &noteOnly);
    const ImportPatch manager("OpenSCManagerA", &Refusal::manager);
    EXPECT_TRUE(StopAU());
    EXPECT_EQ(times(59, 500), s_pauses);
    EXPECT_FALSE(m_registry.valueExists("", "ExceptionWhenTold")); // it was killed unasked
}

TEST_F(KernelStopTest, BelowTheNtFamilyTheServiceIsLeftAlone)
{
    const Child kernel = m_kernel.start("\"mutex=Velmora Automatic Update\" obeys");
    const KernelService service(m_kernel, "stop=0");
    for (const char* const version : {"win98", "win10"})
    {
        const HelperWindowsVersion setting(version, "kernelcontrol_helper.exe");
        EXPECT_EQ((std::vector<std::string>{"1"}), runHelper("stop", "kernelcontrol_helper.exe").lines) << version;
        EXPECT_EQ(SERVICE_RUNNING, service.state()) << version;
    }
    EXPECT_EQ(kObeyedStatus, kernel.wait());
}

TEST_F(KernelStopTest, FromTheNtFamilyOnTheServiceIsStopped)
{
    for (const char* const version : {"nt40", "win2k"})
    {
        const std::string prefix = version == std::string("nt40") ? "" : "Global\\";
        const KernelService service(m_kernel, "\"mutex=" + prefix + "Velmora Automatic Update\" stop=0");
        const HelperWindowsVersion setting(version, "kernelcontrol_helper.exe");
        EXPECT_EQ((std::vector<std::string>{"1"}), runHelper("stop", "kernelcontrol_helper.exe").lines) << version;
        EXPECT_EQ(SERVICE_STOPPED, service.state()) << version;
    }
}

TEST_F(KernelStopTest, NothingIsLoggedOrRecordedForAKernelThatObeys)
{
    const RT_RESULT before = *result;
    const LogFile log;
    const Child kernel = m_kernel.start(kOwnsMutex + " obeys");
    EXPECT_TRUE(StopAU());
    EXPECT_EQ(std::vector<LogEvent>{}, log.events());
    EXPECT_EQ(String(RT_RESULT(before).GetErrorMessage("")), result->GetErrorMessage(""));
    EXPECT_EQ(RT_RESULT(before).GetStatusCode(), result->GetStatusCode());
}

TEST_F(KernelStopTest, TheServiceAndItsManagerAreClosed)
{
    static int open; // handles of the service manager are no kernel handles, which openHandles() counts
    open = 0;
    struct Count
    {
        static SC_HANDLE WINAPI manager(const char* machine, const char* database, DWORD access)
        {
            ++open;
            return ::OpenSCManagerA(machine, database, access);
        }
        static SC_HANDLE WINAPI service(SC_HANDLE manager, const char* name, DWORD access)
        {
            ++open;
            return ::OpenServiceA(manager, name, access);
        }
        static SC_HANDLE WINAPI noService(SC_HANDLE, const char*, DWORD) { return nullptr; }
        static BOOL WINAPI close(SC_HANDLE handle)
        {
            --open;
            return ::CloseServiceHandle(handle);
        }
    };
    const OwnMutex mutex(kKernelMutex);
    const KernelService service(m_kernel, "stop=0");
    const ImportPatch sleep("Sleep", &noteOnly);
    const ImportPatch manager("OpenSCManagerA", &Count::manager);
    const ImportPatch closed("CloseServiceHandle", &Count::close);
    {
        const ImportPatch opened("OpenServiceA", &Count::service);
        EXPECT_TRUE(StopAU());
        EXPECT_EQ(SERVICE_STOPPED, service.state());
        EXPECT_EQ(0, open) << "of a service that stops";
        EXPECT_TRUE(StopAU());
        EXPECT_EQ(0, open) << "of a stopped service, which refuses the control";
    }
    const ImportPatch missing("OpenServiceA", &Count::noService);
    EXPECT_TRUE(StopAU());
    EXPECT_EQ(0, open) << "of the manager alone";
}

TEST_F(KernelStopTest, StoppingLeavesNoHandleOpen)
{
    const OwnMutex mutex(kKernelMutex); // never freed: every round goes all the way
    const KernelService service(m_kernel, "stop=never");
    const ImportPatch sleep("Sleep", &noteOnly);
    const ImportPatch query("QueryServiceStatus", &countReading);
    EXPECT_TRUE(StopAU());
    const std::size_t before = openHandles();
    for (int round = 0; round < 5; ++round)
        EXPECT_TRUE(StopAU());
    EXPECT_EQ(before, openHandles());
}
