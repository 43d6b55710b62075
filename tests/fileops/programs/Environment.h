#ifndef AUTOOLS_TESTS_FILEOPS_PROGRAMS_ENVIRONMENT_H
#define AUTOOLS_TESTS_FILEOPS_PROGRAMS_ENVIRONMENT_H

#include <windows.h>

#include <string>

/// A variable of the process's environment as it is now, which a runtime's copy need not be.
inline std::string environmentText(const char* name)
{
    char text[1024];
    const DWORD length = ::GetEnvironmentVariableA(name, text, sizeof text);
    return length < sizeof text ? std::string(text, length) : std::string();
}

/// Appends a line to the file that AUTTEST_RECORD names.
inline void appendToRecord(const std::string& line)
{
    const HANDLE file = ::CreateFileA(environmentText("AUTTEST_RECORD").c_str(), FILE_APPEND_DATA,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return;
    const std::string bytes = line + "\n";
    DWORD written = 0;
    ::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    ::CloseHandle(file);
}

#endif
