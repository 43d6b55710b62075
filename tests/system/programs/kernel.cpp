// A stand-in for the update kernel, for tests that find, stop and kill it. Copied to "AutoUpdate.exe" and run with
//
//     ready=<event>   signals the event once all below is done
//     mutex=<name>    owns this mutex
//     window=<title>  has this main window
//     obeys           ends, with exit status 7, once it is asked to by the value "Exception"
//
// or, as a service, with `service`, `mutex=` and
//
//     refuses         takes no stop control
//     stop=<ms>       how long it takes to stop; 0 stops before the control returns, `never` does not stop
//     hint=<ms>       the wait hint of its status while it stops
//
// A service notes in the registry what "Exception" was when it was told to stop.
#include <windows.h>
#include <winsvc.h>

#include <cstdlib>
#include <cstring>

namespace
{
constexpr char kClientKey[] = "Software\\Velmora\\7xAutoUpdate";
constexpr DWORD kStopRequest = 4;
constexpr DWORD kPollMs = 20;
constexpr int kObeyedStatus = 7;

struct Settings
{
    const char* ready = nullptr;
    const char* mutex = nullptr;
    const char* window = nullptr;
    const char* stop = nullptr;
    DWORD hintMs = 0;
    bool service = false;
    bool obeys = false;
    bool refuses = false;
};
Settings g_settings;
HANDLE g_mutex = nullptr;
SERVICE_STATUS_HANDLE g_status = nullptr;
HANDLE g_toldToStop = nullptr;

/// The text behind `name` when the argument begins with it.
void take(const char* argument, const char* name, const char*& value)
{
    const std::size_t length = std::strlen(name);
    if (std::strncmp(argument, name, length) == 0)
        value = argument + length;
}

void readArguments(int count, char** arguments)
{
    const char* hint = "0";
    for (int i = 1; i < count; ++i)
    {
        take(arguments[i], "ready=", g_settings.ready);
        take(arguments[i], "mutex=", g_settings.mutex);
        take(arguments[i], "window=", g_settings.window);
        take(arguments[i], "stop=", g_settings.stop);
        take(arguments[i], "hint=", hint);
        g_settings.service |= std::strcmp(arguments[i], "service") == 0;
        g_settings.obeys |= std::strcmp(arguments[i], "obeys") == 0;
        g_settings.refuses |= std::strcmp(arguments[i], "refuses") == 0;
    }
    g_settings.hintMs = std::strtoul(hint, nullptr, 10);
}

DWORD exceptionValue()
{
    DWORD value = 0;
    DWORD size = sizeof value;
    HKEY key = nullptr;
    if (::RegOpenKeyExA(HKEY_LOCAL_MACHINE, kClientKey, 0, KEY_READ | KEY_WOW64_64KEY, &key) == ERROR_SUCCESS)
    {
        if (::RegQueryValueExA(key, "Exception", nullptr, nullptr, reinterpret_cast<BYTE*>(&value), &size) !=
            ERROR_SUCCESS)
            value = 0;
        ::RegCloseKey(key);
    }
    return value;
}

void noteException()
{
    const DWORD value = exceptionValue();
    HKEY key = nullptr;
    if (::RegOpenKeyExA(HKEY_LOCAL_MACHINE, kClientKey, 0, KEY_WRITE | KEY_WOW64_64KEY, &key) == ERROR_SUCCESS)
    {
        ::RegSetValueExA(key, "ExceptionWhenTold", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value);
        ::RegCloseKey(key);
    }
}

void ownMutex()
{
    if (g_settings.mutex != nullptr)
        g_mutex = ::CreateMutexA(nullptr, TRUE, g_settings.mutex);
}

void report(DWORD state)
{
    SERVICE_STATUS status{};
    status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
    status.dwCurrentState = state;
    status.dwControlsAccepted = state == SERVICE_RUNNING && !g_settings.refuses ? SERVICE_ACCEPT_STOP : 0;
    status.dwWaitHint = state == SERVICE_STOP_PENDING ? g_settings.hintMs : 0;
    ::SetServiceStatus(g_status, &status);
}

void stopNow()
{
    ::CloseHandle(g_mutex); // before it counts as stopped, so that nobody sees a stopped service with a running kernel
    report(SERVICE_STOPPED);
}

DWORD WINAPI control(DWORD code, DWORD, void*, void*)
{
    if (code != SERVICE_CONTROL_STOP)
        return code == SERVICE_CONTROL_INTERROGATE ? NO_ERROR : ERROR_CALL_NOT_IMPLEMENTED;
    noteException();
    if (std::strcmp(g_settings.stop, "0") == 0)
        stopNow();
    else
        report(SERVICE_STOP_PENDING);
    ::SetEvent(g_toldToStop);
    return NO_ERROR;
}

void WINAPI serviceMain(DWORD, char**)
{
    g_toldToStop = ::CreateEventA(nullptr, TRUE, FALSE, nullptr);
    g_status = ::RegisterServiceCtrlHandlerExA("Velmora Automatic Update", control, nullptr);
    ownMutex();
    report(SERVICE_RUNNING);
    ::WaitForSingleObject(g_toldToStop, INFINITE);
    if (std::strcmp(g_settings.stop, "0") == 0)
        return;
    ::Sleep(std::strcmp(g_settings.stop, "never") == 0 ? INFINITE : std::strtoul(g_settings.stop, nullptr, 10));
    stopNow();
}

int runService()
{
    char name[] = "";
    const SERVICE_TABLE_ENTRYA table[] = {{name, serviceMain}, {nullptr, nullptr}};
    return ::StartServiceCtrlDispatcherA(table) ? 0 : 1;
}

int runProgram()
{
    ownMutex();
    if (g_settings.window != nullptr)
        ::CreateWindowExA(0, "STATIC", g_settings.window, WS_OVERLAPPED, 0, 0, 10, 10, nullptr, nullptr, nullptr,
                          nullptr);
    const HANDLE ready = ::OpenEventA(EVENT_MODIFY_STATE, FALSE, g_settings.ready);
    ::SetEvent(ready);
    ::CloseHandle(ready);
    while (!g_settings.obeys || exceptionValue() != kStopRequest)
    {
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, kPollMs, QS_ALLINPUT);
        for (MSG message; ::PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE);)
            ::DispatchMessageA(&message);
    }
    return kObeyedStatus;
}
} // namespace

int main(int count, char** arguments)
{
    readArguments(count, arguments);
    return g_settings.service ? runService() : runProgram();
}
