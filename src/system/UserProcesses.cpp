#include "system/UserProcesses.h"

#include "foundation/EventLog.h"
#include "platform/BoundedText.h"
#include "registry/CRegAutoUpdate.h"
#include "registry/CRegConfig.h"
#include "system/CProcessListManager.h"
#include "system/OsFamily.h"
#include "system/ProcessSearch.h"

#include <cstring>

namespace
{
constexpr std::size_t kUserNameBufferSize = 521; // domain and name of at most 259 characters, "\" and the NUL
constexpr DWORD kRetryPauseMs = 2000;
} // namespace

unsigned long IsDllLoaded(unsigned long pid, const char* dllName, char* fullPath, unsigned long size)
{
    String name = dllName;
    String path;
    CProcessListManager manager;
    if (!manager.IsDllLoadedByProcess(pid, name, path))
        return 0;

    const auto length = static_cast<unsigned long>(path.GetLength());
    if (fullPath != nullptr)
    {
        std::memset(fullPath, 0, size);
        if (size > length)
            aut::copyText(fullPath, size, path);
    }
    return length;
}

bool IsProcessRunning(const char* name, int* count, unsigned long** ids, bool)
{
    CProcessListManager manager;
    return manager.IsProcessRunning(name, count, ids) != 0;
}

bool GetUserNameFromPID(char* user, unsigned long pid)
{
    if (user == nullptr)
        return false;
    String name;
    const bool named = CProcessListManager::GetUserNameFromPID(pid, name) != 0;
    aut::copyText(user, kUserNameBufferSize, name);
    return named;
}

bool IsUserLogged(unsigned long tries)
{
    if (!aut::isNtFamily(aut::osValue()))
        return true;
    if (CRegConfig(true).IsAdminMode())
        return CRegAutoUpdate(true).IsLocalInstall();

    CProcessListManager manager;
    for (unsigned attempt = 1;; ++attempt)
    {
        int count = 0;
        const bool found = manager.IsProcessRunning(aut::kShellName, &count, nullptr) != 0;
        if (found || tries == 0)
            return found;
        Log(0, "Try %u : Explorer Not Found", attempt);
        ::Sleep(kRetryPauseMs);
        if (--tries == 0)
            return false;
    }
}
