#ifndef AUTOOLS_SYSTEM_ASLOGGEDONUSER_H
#define AUTOOLS_SYSTEM_ASLOGGEDONUSER_H

#include "platform/UniqueResource.h"
#include "system/UserProcesses.h"

#include <windows.h>

namespace aut
{
/// Works in the name of the logged-on user until the end of the block, then in whosever name it was before. Without
/// such a user, or when it cannot be impersonated, the block runs in the name it has.
class AsLoggedOnUser
{
public:
    AsLoggedOnUser()
    {
        ::OpenThreadToken(::GetCurrentThread(), TOKEN_IMPERSONATE, TRUE, m_before.put());
        ImpersonateUser();
    }
    AsLoggedOnUser(const AsLoggedOnUser&) = delete;
    AsLoggedOnUser& operator=(const AsLoggedOnUser&) = delete;
    ~AsLoggedOnUser()
    {
        ::RevertToSelf();
        if (m_before)
            ::SetThreadToken(nullptr, m_before.get());
        ::RegCloseKey(HKEY_CURRENT_USER); // cached by the process: without this it would stay the other user's hive
    }

private:
    UniqueHandle m_before;
};
} // namespace aut

#endif
