// A stand-in for the reload program: writes beside itself, into "report.txt", how it was started, then signals the
// event that the environment variable AUTTEST_RELOADED names. AUTTEST_HANDLE is the value of a handle of the starting
// process.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

int main()
{
    char text[1024] = "";
    ::GetModuleFileNameA(nullptr, text, sizeof text);
    std::strcpy(std::strrchr(text, '\\') + 1, "report.txt");
    std::FILE* const file = std::fopen(text, "wb");
    if (file == nullptr)
        return 1;
    std::fprintf(file, "command line=%s\n", ::GetCommandLineA());
    ::GetCurrentDirectoryA(sizeof text, text);
    std::fprintf(file, "folder=%s\n", text);
    ::GetEnvironmentVariableA("AUTTEST_HANDLE", text, sizeof text);
    DWORD flags = 0;
    auto* const handle = reinterpret_cast<HANDLE>(static_cast<std::size_t>(std::strtoull(text, nullptr, 10)));
    std::fprintf(file, "inherited=%d\n", ::GetHandleInformation(handle, &flags) != 0);
    std::fprintf(file, "process=%lu", ::GetCurrentProcessId());
    std::fclose(file);

    ::GetEnvironmentVariableA("AUTTEST_RELOADED", text, sizeof text);
    const HANDLE done = ::OpenEventA(EVENT_MODIFY_STATE, FALSE, text);
    ::SetEvent(done);
    ::CloseHandle(done);
    return 0;
}
