#include "platform/BoundedText.h"
#include "platform/UniqueResource.h"
#include "registry/CRegAutoUpdate.h"
#include "system/CProcessListManager.h"
#include "system/KernelControl.h"
#include "system/KernelNames.h"
#include "system/OsFamily.h"
#include "system/SharedNames.h"

#include <cstring>

namespace
{
/// Kernels of the first generation own no mutex. A version that is missing counts as one of theirs.
bool isFirstGeneration(const char* version) { return std::strncmp(version, "1.", 2) <= 0; }

bool isRunning(const char* processName, bool excludeSelf)
{
    int count = 0;
    CProcessListManager().IsProcessRunning(processName, &count, nullptr);
    // Who calls is not looked at: only the kernel itself asks to be left out.
    if (excludeSelf && count > 0)
        --count;
    return count != 0;
}

/// Whether there is a mutex called prefix + name that this process may use.
bool mutexExists(const char* prefix, const char* name)
{
    char fullName[64];
    aut::formatText(fullName, sizeof fullName, "%s%s", prefix, name);
    const aut::UniqueHandle mutex{::OpenMutexA(MUTEX_ALL_ACCESS, FALSE, fullName)};
    return static_cast<bool>(mutex);
}
} // namespace

bool IsAURunning(bool excludeSelf)
{
    if (isFirstGeneration(CRegAutoUpdate(true).GetKernelVersion()))
        return isRunning(aut::kKernelProcess, excludeSelf);
    return mutexExists(aut::hasSessionNames(aut::osValue()) ? "Global\\" : "", aut::kKernelName);
}

bool IsMsgServerRunning() { return mutexExists(aut::sharedNamePrefix(), "AU_SM_Mutex"); }
