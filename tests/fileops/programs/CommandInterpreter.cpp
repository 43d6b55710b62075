// Stands in for Command.com, which the emulator lacks: "Command.com /C <command line>" runs that and waits for its end.
#include <windows.h>

#include <cstring>
#include <string>

int main()
{
    const char* const option = std::strstr(::GetCommandLineA(), "/C ");
    if (option == nullptr)
        return 1;
    std::string commandLine(option + 3);
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    if (!::CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                          &started))
        return 2;
    ::WaitForSingleObject(started.hProcess, INFINITE);
    return 0;
}
