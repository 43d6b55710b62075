#include "platform/UniqueResource.h"
#include "registry/CRegAutoUpdate.h"
#include "system/KernelControl.h"
#include "system/KernelNames.h"
#include "system/OsFamily.h"
#include "system/UserLimit.h"

#include <winsvc.h>

#include <algorithm>
#include <new>

namespace
{
constexpr unsigned long kStopRequest = 4; ///< the exception value on which the kernel ends itself

constexpr int kServiceReadings = 180;
constexpr DWORD kShortestServicePauseMs = 1000;
constexpr DWORD kLongestServicePauseMs = 10000;

constexpr int kKernelChecks = 60;
constexpr DWORD kKernelPauseMs = 500;

struct ServiceHandleTraits
{
    using Type = SC_HANDLE;
    static Type none() noexcept { return nullptr; }
    static void close(Type handle) noexcept { ::CloseServiceHandle(handle); }
};
using UniqueService = aut::UniqueResource<ServiceHandleTraits>;

/// Stops the kernel's service and waits for it as long as it asked for in its first status. Without such a service, or
/// when it takes no stop control, there is nothing to wait for.
void stopService()
{
    const UniqueService manager{::OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS)};
    if (!manager)
        return;
    const UniqueService service{::OpenServiceA(manager.get(), aut::kKernelName, SERVICE_STOP | SERVICE_QUERY_STATUS)};
    if (!service)
        return;

    SERVICE_STATUS status{};
    if (!::ControlService(service.get(), SERVICE_CONTROL_STOP, &status) ||
        !::QueryServiceStatus(service.get(), &status))
        return;
    const DWORD pauseMs = std::clamp(status.dwWaitHint / 10, kShortestServicePauseMs, kLongestServicePauseMs);
    for (int reading = 0; reading < kServiceReadings && status.dwCurrentState != SERVICE_STOPPED; ++reading)
    {
        ::Sleep(pauseMs);
        if (!::QueryServiceStatus(service.get(), &status))
            return; // no later reading will say more
    }
}

/// Whether the kernel ends within the time it is given.
bool kernelEnds()
{
    for (int check = 1; IsAURunning(false); ++check)
    {
        if (check == kKernelChecks)
            return false;
        ::Sleep(kKernelPauseMs);
    }
    return true;
}
} // namespace

bool StopAU()
{
    if (!IsAURunning(false))
        return true;
    CRegAutoUpdate(false).SetException(kStopRequest);
    if (aut::isNtFamily(aut::osValue()))
        stopService();
    return kernelEnds() || KillAU();
}

bool KillAU()
try
{
    CProcessListManager manager;
    const unsigned long maximum = aut::maximumOfUsers(manager, aut::kKernelProcess);
    bool killed = true;
    for (const unsigned long pid : aut::runningProcesses(manager, aut::kKernelProcess, maximum))
    {
        const aut::UniqueHandle process{::OpenProcess(PROCESS_TERMINATE, FALSE, pid)};
        if (process)
            killed = ::TerminateProcess(process.get(), 0) != FALSE;
    }
    return killed;
}
catch (const std::bad_alloc&)
{
    return false;
}
