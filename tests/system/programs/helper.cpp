// The other process of the tests: `system_helper.exe <command> [arguments]` prints lines and returns 0 when all is
// well.
#include "system/CAUEvent.h"
#include "system/CInterruptionEvent.h"
#include "system/CProcessListManager.h"
#include "system/SharedMemory.h"
#include "system/UserProcesses.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

// Shows the private name, which is the first member of the layout.
template <> struct aut::LayoutOf<struct HelperAccess>
{
    static const char* nameOf(const SharedMemory& memory) { return memory.m_name; }
};
using Access = aut::LayoutOf<struct HelperAccess>;

namespace
{
using Arguments = std::vector<const char*>;

/// The names that kernel objects get on this system.
int names(const Arguments&)
{
    CAUEvent event;
    event.Create("helper");
    const SharedMemory memory("helper");
    std::printf("%s\n%s\n", event.GetName(1), Access::nameOf(memory));
    return 0;
}

/// Names of unnamed blocks and what they hold: the first two, and those around the end of the counter. The first stays
/// open. The many between are only named, because a block takes a millisecond to make here.
int counter(const Arguments&)
{
    SharedMemory first;
    auto* const text = static_cast<char*>(first.Create(64));
    if (text == nullptr)
        return 1;
    std::memcpy(text, "first", sizeof "first");
    std::printf("%s\n", Access::nameOf(first));
    for (long i = 1; i <= 65536; ++i)
    {
        SharedMemory memory;
        if (i > 1 && i <= 65534)
            continue;
        const auto* const block = static_cast<const char*>(memory.Create(64));
        if (block == nullptr)
            return 1;
        std::printf("%s '%s'\n", Access::nameOf(memory), block);
        memory.Close();
    }
    first.Close();
    return 0;
}

int signalEvent(const Arguments& arguments)
{
    CAUEvent event;
    return event.Create(arguments.at(0)) && event.SignalEvent() ? 0 : 1;
}

int raise(const Arguments& arguments)
{
    CInterruptionEvent event;
    String name = arguments.at(0);
    return event.Create(name) && event.RaiseIT() ? 0 : 1;
}

int answer(const Arguments& arguments)
{
    SharedMemory memory(arguments.at(0));
    auto* const text = static_cast<char*>(memory.Open());
    if (text == nullptr || std::strcmp(text, "question") != 0)
        return 1;
    std::memcpy(text, "answer", sizeof "answer");
    return 0;
}

/// The functions about users, where they have nothing to do.
int users(const Arguments&)
{
    std::printf("logged on: %d\n", IsUserLogged(3));
    std::printf("impersonate: %d\n", ImpersonateUser());
    HANDLE token = nullptr;
    std::printf("thread token: %d\n", ::OpenThreadToken(::GetCurrentThread(), TOKEN_QUERY, TRUE, &token));
    return 0;
}

/// Every question of the process list manager, twice: a first failure must not spoil the second try.
int processes(const Arguments&)
{
    CProcessListManager manager;
    const unsigned long self = ::GetCurrentProcessId();
    for (int round = 0; round < 2; ++round)
    {
        String text = "left over";
        String dll = "kernel32.dll";
        String path;
        int count = 7;
        int userCount = 7;
        const int list = manager.GetProcessIdList();
        const int name = manager.GetProcessNameFromPID(self, text);
        const int running = manager.IsProcessRunning("system_helper.exe", &count, nullptr);
        const int loaded = manager.IsDllLoadedByProcess(self, dll, path);
        const int userRunning = manager.IsUserProcessRunning("x", "system_helper.exe", &userCount, nullptr);
        const int run = manager.RunUserProcess("x", "y");
        std::printf("%d %d '%s' %d %d %d %d %d %d\n", list, name, static_cast<const char*>(text), running, count,
                    loaded, userRunning, userCount, run);
    }
    String owner;
    std::printf("owner: %d\n", CProcessListManager::GetUserNameFromPID(self, owner));
    return 0;
}

/// Writes what a program sees that was started for a user: arguments are a file, an event to signal at the end, and
/// the value of a handle of the starting process.
int report(const Arguments& arguments)
{
    FILE* const file = std::fopen(arguments.at(0), "w");
    if (file == nullptr)
        return 1;
    char text[1024] = "";
    DWORD size = 0;
    ::GetUserObjectInformationA(::GetThreadDesktop(::GetCurrentThreadId()), UOI_NAME, text, sizeof text, &size);
    std::fprintf(file, "desktop=%s\n", text);
    ::GetCurrentDirectoryA(sizeof text, text);
    std::fprintf(file, "folder=%s\n", text);
    std::fprintf(file, "command line=%s\n", ::GetCommandLineA());
    String user;
    CProcessListManager::GetUserNameFromPID(::GetCurrentProcessId(), user);
    std::fprintf(file, "user=%s\n", static_cast<const char*>(user));
    DWORD consoleProcesses[4];
    std::fprintf(file, "processes on the console=%lu\n", ::GetConsoleProcessList(consoleProcesses, 4));
    std::fprintf(file, "normal priority=%d\n", ::GetPriorityClass(::GetCurrentProcess()) == NORMAL_PRIORITY_CLASS);
    DWORD flags = 0;
    auto* const handle =
        reinterpret_cast<HANDLE>(static_cast<std::size_t>(std::strtoull(arguments.at(2), nullptr, 10)));
    std::fprintf(file, "inherited=%d\n", ::GetHandleInformation(handle, &flags) != 0);
    for (char** variable = _environ; variable != nullptr && *variable != nullptr; ++variable)
        std::fprintf(file, "variable %s\n", *variable);
    std::fclose(file);

    CAUEvent done;
    return done.Create(arguments.at(1)) && done.SignalEvent() ? 0 : 1;
}

struct Command
{
    const char* name;
    std::size_t arguments;
    int (*run)(const Arguments&);
};
constexpr Command kCommands[] = {{"names", 0, names},         {"counter", 0, counter}, {"signal", 1, signalEvent},
                                 {"raise", 1, raise},         {"answer", 1, answer},   {"users", 0, users},
                                 {"processes", 0, processes}, {"report", 3, report}};
} // namespace

int main(int argc, char** argv)
{
    const Arguments arguments(argv + (argc > 1 ? 2 : 1), argv + argc);
    for (const Command& command : kCommands)
    {
        if (argc > 1 && std::strcmp(argv[1], command.name) == 0 && arguments.size() == command.arguments)
            return command.run(arguments);
    }
    std::printf("unknown command\n");
    return 2;
}
