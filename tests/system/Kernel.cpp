#include "tests/system/Kernel.h"

#include <gtest/gtest.h>

#include <windows.h>
#include <winsvc.h>

namespace auttest
{
namespace
{
constexpr char kService[] = "Velmora Automatic Update";
constexpr DWORD kPatienceMs = 30000;
constexpr DWORD kPollMs = 20;

struct ServiceTraits
{
    using Type = SC_HANDLE;
    static Type none() noexcept { return nullptr; }
    static void close(Type handle) noexcept { ::CloseServiceHandle(handle); }
};
using UniqueService = aut::UniqueResource<ServiceTraits>;

UniqueService openManager() { return UniqueService{::OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS)}; }

UniqueService openService(DWORD access) { return UniqueService{::OpenServiceA(openManager().get(), kService, access)}; }

SERVICE_STATUS_PROCESS statusOf(SC_HANDLE service)
{
    SERVICE_STATUS_PROCESS status{};
    DWORD size = 0;
    EXPECT_TRUE(::QueryServiceStatusEx(service, SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status), sizeof status,
                                       &size));
    return status;
}

/// Says for a service whose process was killed that it has stopped. Windows finds that out by itself; the emulator
/// never does, keeps the name taken, and has no other kind of status handle than a service handle with this right.
void reportEnd()
{
    constexpr DWORD kSetStatus = 0x8000;
    const UniqueService service = openService(kSetStatus);
    SERVICE_STATUS status{};
    status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
    status.dwCurrentState = SERVICE_STOPPED;
    if (service)
        ::SetServiceStatus(reinterpret_cast<SERVICE_STATUS_HANDLE>(service.get()), &status);
}

/// Whether `state()` becomes true before patience ends.
template <typename State> bool comes(State state)
{
    for (DWORD waitedMs = 0; waitedMs < kPatienceMs; waitedMs += kPollMs)
    {
        if (state())
            return true;
        ::Sleep(kPollMs);
    }
    return false;
}
} // namespace

KernelProgram::KernelProgram(const std::string& name) : m_path(m_folder / name)
{
    EXPECT_TRUE(::CopyFileA((programFolder() + "\\kernel_standin.exe").c_str(), m_path.c_str(), FALSE));
}

Child KernelProgram::start(const std::string& arguments) const
{
    const std::string name = "kernel_standin " + std::to_string(::GetCurrentProcessId());
    const aut::UniqueHandle ready{::CreateEventA(nullptr, FALSE, FALSE, name.c_str())};
    Child child("\"" + m_path + "\" \"ready=" + name + "\" " + arguments);
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(ready.get(), kPatienceMs));
    return child;
}

KernelService::KernelService(const KernelProgram& program, const std::string& arguments)
{
    const std::string commandLine = "\"" + program.path() + "\" service " + arguments;
    const UniqueService manager = openManager();
    UniqueService service;
    // The one of the test before may not be gone altogether.
    const bool made = comes(
        [&]
        {
            service.reset(::CreateServiceA(manager.get(), kService, kService, SERVICE_ALL_ACCESS,
                                           SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START, SERVICE_ERROR_IGNORE,
                                           commandLine.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr));
            return service || ::GetLastError() != ERROR_SERVICE_MARKED_FOR_DELETE;
        });
    EXPECT_TRUE(made && service) << "error " << ::GetLastError();
    EXPECT_TRUE(::StartServiceA(service.get(), 0, nullptr)) << "error " << ::GetLastError();
    EXPECT_TRUE(comes([&] { return statusOf(service.get()).dwCurrentState == SERVICE_RUNNING; }));
    m_process.reset(::OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, statusOf(service.get()).dwProcessId));
    EXPECT_TRUE(m_process);
}

KernelService::~KernelService()
{
    ::TerminateProcess(m_process.get(), 0);
    ::WaitForSingleObject(m_process.get(), kPatienceMs);
    reportEnd();
    const UniqueService service = openService(SERVICE_ALL_ACCESS);
    EXPECT_TRUE(comes([&service] { return statusOf(service.get()).dwCurrentState == SERVICE_STOPPED; }));
    EXPECT_TRUE(::DeleteService(service.get()));
}

DWORD KernelService::state() const { return statusOf(openService(SERVICE_QUERY_STATUS).get()).dwCurrentState; }

OwnMutex::OwnMutex(const char* name) : m_mutex(::CreateMutexA(nullptr, FALSE, name))
{
    EXPECT_TRUE(m_mutex && ::GetLastError() != ERROR_ALREADY_EXISTS) << name;
}
} // namespace auttest
