#include "foundation/EventLog.h"
#include "platform/UniqueResource.h"
#include "registry/CRegCitrix.h"
#include "registry/CRegConfig.h"
#include "system/CProcessListManager.h"
#include "system/OsFamily.h"
#include "system/ProcessSearch.h"
#include "system/UserProcesses.h"

#include <new>
#include <vector>

namespace
{
constexpr unsigned long kInformation = 0x20000;
constexpr unsigned long kCitrixDetail = 0x50000;

/// How many shells are looked at: the configured number of simultaneous users, else all that run now.
unsigned long maximumOfUsers(CProcessListManager& manager)
{
    unsigned long maximum = CRegCitrix(true).GetUserNumber();
    if (maximum == 0)
    {
        Log(kCitrixDetail, "--- Citrix Limitation --- : MaxUsers not defined in Registry Keys ! Not limited for %s",
            "AutoUpdate.exe");
        int running = 0;
        manager.IsProcessRunning(aut::kShellName, &running, nullptr);
        maximum = static_cast<unsigned long>(running);
    }
    Log(kCitrixDetail, "--- Citrix Limitation --- : Nb max of user connected in the same time = %d",
        static_cast<int>(maximum));
    return maximum;
}

/// The ids of the running shells, at most `maximum` of them.
std::vector<unsigned long> runningShells(CProcessListManager& manager, unsigned long maximum)
{
    std::vector<unsigned long> shells;
    if (maximum == 0)
        return shells;
    aut::ProcessSearch::forEach(manager, aut::kShellName, nullptr,
                                [&shells, maximum](unsigned long pid)
                                {
                                    shells.push_back(pid);
                                    return shells.size() < maximum;
                                });
    return shells;
}

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
    const unsigned long maximum = maximumOfUsers(manager);
    const std::vector<unsigned long> shells = runningShells(manager, maximum);
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
