#include "foundation/EventLog.h"
#include "platform/UniqueResource.h"
#include "registry/CRegConfig.h"
#include "system/CProcessListManager.h"
#include "system/OsFamily.h"
#include "system/ProcessSearch.h"
#include "system/UserLimit.h"
#include "system/UserProcesses.h"

#include <new>
#include <vector>

namespace
{
constexpr unsigned long kInformation = 0x20000;

/// The shell of the user named in the configuration, 0 when that user has none. `owner` is left with the last owner
/// that was asked for.
unsigned long shellOfConfiguredUser(const std::vector<unsigned long>& shells, String& owner)
{
    char logonName[260] = "";
    CRegConfig(true).QueryValue("LogonName", logonName);
    if (logonName[0] == '\0')
        return 0;
    for (const unsigned long pid : shells)
    {
        if (CProcessListManager::GetUserNameFromPID(pid, owner) && owner == logonName)
            return pid;
    }
    return 0;
}

/// The first shell, 0 when its owner cannot be named: impersonating 0 succeeds and does nothing.
unsigned long shellOfDefaultUser(const std::vector<unsigned long>& shells, String& owner)
{
    if (!CProcessListManager::GetUserNameFromPID(shells.front(), owner))
    {
        Log(1, "No custom user to impersonate");
        return 0;
    }
    Log(kInformation, "Trying to Impersonate default User %s", static_cast<const char*>(owner));
    return shells.front();
}
} // namespace

bool ImpersonateUserFromPID(unsigned long pid)
{
    if (pid == 0)
        return true;
    const aut::UniqueHandle process{::OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, pid)};
    if (!process)
    {
        Log(1, "Process token access failed");
        return true; // deliberately lenient: the caller goes on as itself
    }
    aut::UniqueHandle token;
    if (!::OpenProcessToken(process.get(), TOKEN_DUPLICATE | TOKEN_IMPERSONATE | TOKEN_QUERY, token.put()))
    {
        Log(1, "ImpersonateUserFromPID: OpenProcessToken FAILED");
        return false;
    }
    if (!::ImpersonateLoggedOnUser(token.get()))
    {
        Log(1, "ImpersonateUserFromPID: ImpersonateLoggedOnUser FAILED");
        return false;
    }
    Log(kInformation, "ImpersonateUserFromPID: SUCCESS");
    // The predefined handles stay bound to the hives of the user who first used them, until they are closed.
    ::RegCloseKey(HKEY_CURRENT_USER);
    ::RegCloseKey(HKEY_USERS);
    return true;
}

bool ImpersonateUser()
try
{
    if (!aut::isNtFamily(aut::osValue()))
    {
        Log(kInformation, "ImpersonateUser not necessary");
        return true;
    }
    CProcessListManager manager;
    const unsigned long maximum = aut::maximumOfUsers(manager, aut::kShellName);
    const std::vector<unsigned long> shells = aut::runningProcesses(manager, aut::kShellName, maximum);
    if (shells.empty())
    {
        Log(1, "No explorer processfound for impersonation");
        return true;
    }
    String owner;
    unsigned long pid = shellOfConfiguredUser(shells, owner);
    if (pid == 0)
        pid = shellOfDefaultUser(shells, owner);
    if (!ImpersonateUserFromPID(pid))
        return false;
    Log(kInformation, "User %s Impersonated", static_cast<const char*>(owner));
    return true;
}
catch (const std::bad_alloc&)
{
    return false;
}
