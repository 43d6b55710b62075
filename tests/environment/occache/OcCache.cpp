// Stands in for OCCACHE.DLL, which the platform lacks. What its cache holds comes from the running test. The .def file
// tells which of the functions it has.

#include "tests/environment/occache/ControlCacheHost.h"

namespace
{
auttest::ControlCacheHost* g_host = nullptr;
} // namespace

extern "C"
{
    void useControlCacheHost(auttest::ControlCacheHost* host);
    LONG WINAPI FindFirstControl(HANDLE* walk, HANDLE* control, const char* cacheFolder);
    LONG WINAPI FindNextControl(HANDLE* walk, HANDLE* control);
    LONG WINAPI GetControlInfo(HANDLE control, UINT kind, DWORD* number, char* text, int textChars);
    HRESULT WINAPI RemoveControlByName(const char* file, const char* classId, const char* typeLibraryId, BOOL force,
                                       DWORD isDistributionUnit);
    BOOL WINAPI ReleaseControlHandle(HANDLE control);
    LONG WINAPI FindControlClose(HANDLE walk);

    void useControlCacheHost(auttest::ControlCacheHost* host) { g_host = host; }

    LONG WINAPI FindFirstControl(HANDLE* walk, HANDLE* control, const char* cacheFolder)
    {
        return g_host->findFirst(walk, control, cacheFolder);
    }

    LONG WINAPI FindNextControl(HANDLE* walk, HANDLE* control) { return g_host->findNext(walk, control); }

    LONG WINAPI GetControlInfo(HANDLE control, UINT kind, DWORD* number, char* text, int textChars)
    {
        return g_host->getInfo(control, kind, number, text, textChars);
    }

    HRESULT WINAPI RemoveControlByName(const char* file, const char* classId, const char* typeLibraryId, BOOL force,
                                       DWORD isDistributionUnit)
    {
        return g_host->removeByName(file, classId, typeLibraryId, force, isDistributionUnit);
    }

    BOOL WINAPI ReleaseControlHandle(HANDLE control) { return g_host->releaseHandle(control); }

    LONG WINAPI FindControlClose(HANDLE walk) { return g_host->findClose(walk); }
}
