// Loading the library, against loading one that looks the same things up in the registry and on the disk, and nothing
// else.

#include "bench/Figures.h"

#include <windows.h>

namespace
{
void load(const char* name)
{
    const HMODULE library = ::LoadLibraryA(name);
    bench::require(library != nullptr, name);
    ::FreeLibrary(library);
}
} // namespace

int main()
{
    load("7xAutoUpdateTools.dll"); // which makes the log's folder
    const auto ours = [] { load("7xAutoUpdateTools.dll"); };
    const auto bare = [] { load("look_ups.dll"); };
    const bench::Times cold = bench::inTurns(ours, bare, 20);
    // A program that uses the library has the system's own libraries anyway.
    for (const char* const name : {"ole32.dll", "oleaut32.dll", "user32.dll", "wininet.dll", "crypt32.dll",
                                   "shell32.dll", "userenv.dll", "libstdc++-6.dll"})
        ::LoadLibraryA(name);
    const bench::Times warm = bench::inTurns(ours, bare, 20);
    bench::atMost("loading the DLL into an empty process; a DLL of the same look-ups", cold, 1.3);
    bench::atMost("loading the DLL beside the system's libraries; a DLL of the same look-ups", warm, 1.3);
    return bench::status();
}
