#ifndef AUTOOLS_SYSTEM_ASLOGGEDONUSER_H
#define AUTOOLS_SYSTEM_ASLOGGEDONUSER_H

#include "platform/UniqueResource.h"
#include "system/UserProcesses.h"

#include <windows.h>

namespace aut
{
/// Works in the name of the logged-on user until the end of the block, then in whosever name it was before. Without
/// such a user, when it cannot be impersonated, or when the name before could not be given back, the block runs in the
/// name it has.
class AsLoggedOnUser
{
public:
    AsLoggedOnUser()
        : m_changesName(::OpenThreadToken(::GetCurrentThread(), TOKEN_IMPERSONATE, TRUE, m_before.put()) ||
                        ::GetLastError() == ERROR_NO_TOKEN)
    {
        if (m_changesName)
            ImpersonateUser();
    }
    AsLoggedOnUser(const AsLoggedOnUser&) = delete;
    AsLoggedOnUser& operator=(const AsLoggedOnUser&) = delete;
    ~AsLoggedOnUser()
    {
        if (!m_changesName)
            return;
        ::RevertToSelf();
        if (m_before)
            ::SetThreadToken(nullptr, m_before.get());
        // Cached by the process: without this they would stay the other user's hive, and what that user may open.
        ::RegCloseKey(HKEY_CURRENT_USER);
        ::RegCloseKey(HKEY_USERS);
    }

private:
    UniqueHandle m_before; ///< null when the block began in the process's own name
    bool m_changesName;
};
} // namespace aut

#endif
