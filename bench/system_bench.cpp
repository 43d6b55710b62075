// Version resources and process names, against the bare system calls that they consist of.

#include "bench/Figures.h"

#include "7xAutoUpdateTools.h"

#include <windows.h>

#include <psapi.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace
{
constexpr int kTimes = 1000;
constexpr double kAllowedMicroseconds = 10;

template <typename Function> Function entry(HMODULE library, const char* name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(library, name)));
}

/// The version of a file, with Version.dll loaded for it as the class does.
unsigned long bareVersion(const char* path)
{
    const HMODULE library = ::LoadLibraryA("Version.dll");
    const auto getSize = entry<DWORD(WINAPI*)(const char*, DWORD*)>(library, "GetFileVersionInfoSizeA");
    const auto getInfo = entry<BOOL(WINAPI*)(const char*, DWORD, DWORD, void*)>(library, "GetFileVersionInfoA");
    const auto query = entry<BOOL(WINAPI*)(const void*, const char*, void**, UINT*)>(library, "VerQueryValueA");
    DWORD ignored = 0;
    const DWORD size = getSize(path, &ignored);
    void* const block = std::malloc(size);
    void* table = nullptr;
    void* record = nullptr;
    UINT bytes = 0;
    unsigned long version = 0;
    if (getInfo(path, 0, size, block) && query(block, "\\VarFileInfo\\Translation", &table, &bytes) &&
        query(block, "\\", &record, &bytes))
        version = static_cast<const VS_FIXEDFILEINFO*>(record)->dwFileVersionMS;
    std::free(block);
    ::FreeLibrary(library);
    return version;
}

void bareName(DWORD pid, char (&name)[MAX_PATH])
{
    const HANDLE process = ::OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, TRUE, pid);
    HMODULE modules[100];
    DWORD bytes = 0;
    ::EnumProcessModules(process, modules, sizeof modules, &bytes);
    ::GetModuleFileNameExA(process, modules[0], name, MAX_PATH);
    ::CloseHandle(process);
}

void above(const char* what, const bench::Times& times)
{
    const double extra = (times.ours - times.theirs) * 1e6;
    bench::figure(what, bench::text("%+.2f us (%.2f us, %.2f us)", extra, times.ours * 1e6, times.theirs * 1e6),
                  "at most +10 us", extra <= kAllowedMicroseconds);
}
} // namespace

int main()
{
    // Held, so that loading it is what it is in a program that uses it more than once.
    const HMODULE version = ::LoadLibraryA("Version.dll");
    char path[MAX_PATH];
    ::GetModuleFileNameA(::GetModuleHandleA("7xAutoUpdateTools.dll"), path, MAX_PATH);
    bench::require(bareVersion(path) != 0, "reading a version");
    above("CFileVersion, opened and asked, each of 1,000; its system calls",
          bench::inTurns(
              [&]
              {
                  CFileVersion file;
                  bench::require(file.Open(path) == 1 && !file.GetFixedFileVersion().IsEmpty(), "opening a version");
              },
              [&] { bench::keep(bareVersion(path)); }, kTimes));

    CProcessListManager processes;
    const DWORD pid = ::GetCurrentProcessId();
    char bare[MAX_PATH];
    bareName(pid, bare);
    above("GetProcessNameFromPID, each of 1,000; its system calls",
          bench::inTurns(
              [&]
              {
                  String name;
                  bench::require(processes.GetProcessNameFromPID(pid, name) == 1, "naming a process");
              },
              [&] { bareName(pid, bare); }, kTimes));
    ::FreeLibrary(version);
    return bench::status();
}
