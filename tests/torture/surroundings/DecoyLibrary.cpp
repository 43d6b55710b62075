// Notes that it was loaded: the path of its own file, as a line of the file that AUTTEST_RECORD names.

#include "tests/fileops/programs/Environment.h"

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void*)
{
    if (reason == DLL_PROCESS_ATTACH)
    {
        char path[MAX_PATH];
        const DWORD length = ::GetModuleFileNameA(module, path, sizeof path);
        appendToRecord(std::string(path, length));
    }
    return TRUE;
}
