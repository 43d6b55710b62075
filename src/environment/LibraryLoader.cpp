#include "environment/ClientFolders.h"
#include "foundation/EventLog.h"
#include "platform/BoundedText.h"
#include "registry/CRegAutoUpdate.h"
#include "system/COperatingSystem.h"

#include <cstring>

namespace
{
using Path = char[MAX_PATH];

SRWLOCK g_failureLock = SRWLOCK_INIT;
Path g_lastFailure = ""; ///< the path that failed last, so that repeated failures are logged once

/// Sets `path` to "folder\name" and loads it. A path that does not fit is never loaded: cut, it would name another
/// file. Nor is one without a folder, for which memory ran out: it would lie in the root of the current drive.
HMODULE loadFrom(Path& path, const char* folder, const char* name)
{
    const bool fits = aut::formatText(path, sizeof path, "%s\\%s", folder, name);
    return fits && *folder != '\0' ? ::LoadLibraryExA(path, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH) : nullptr;
}

HMODULE loadBare(Path& path, const char* name)
{
    const bool fits = aut::copyText(path, name);
    return fits && *path != '\0' ? ::LoadLibraryExA(path, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH) : nullptr;
}

/// Remembers the path; false when it was the last one already.
bool isNewFailure(const Path& path)
{
    ::AcquireSRWLockExclusive(&g_failureLock);
    const bool isNew = std::strcmp(g_lastFailure, path) != 0;
    aut::copyText(g_lastFailure, path);
    ::ReleaseSRWLockExclusive(&g_failureLock);
    return isNew;
}
} // namespace

HMODULE LoadDLL(const char* name, const char* folder)
{
    name = aut::orEmpty(name);
    CRegAutoUpdate settings(true);
    Path path = "";
    HMODULE module = nullptr;
    if (!aut::isEmpty(folder))
        module = loadFrom(path, folder, name);
    else
    {
        const char* const installPath = settings.GetPath();
        if (*installPath != '\0')
            module = loadFrom(path, installPath, name);
        if (module == nullptr)
            module = loadBare(path, name);
    }
    if (module == nullptr && COperatingSystem::GetInstance()->IsOSx64() != 0)
        module = loadFrom(path, settings.GetKernelPath(), name);
    if (module == nullptr && isNewFailure(path))
        Log(2, "Unable to load the DLL %s", path);
    return module;
}

bool FreeDLL(HMODULE module) { return module == nullptr || ::FreeLibrary(module) != FALSE; }
