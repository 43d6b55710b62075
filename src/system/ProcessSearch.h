#ifndef AUTOOLS_SYSTEM_PROCESSSEARCH_H
#define AUTOOLS_SYSTEM_PROCESSSEARCH_H

#include "system/CProcessListManager.h"

namespace aut
{
/// The shell, by which an interactive user is recognised.
constexpr char kShellName[] = "Explorer.exe";

/// Walks the running processes of one name.
struct ProcessSearch
{
    /// Hands the id of each process called `name` to `visit(id)`, in enumeration order, until that returns false. With
    /// a `user` (domain\user) only that user's processes count. Processes that cannot be read are skipped.
    template <typename Visitor>
    static void forEach(CProcessListManager& manager, const char* name, const char* user, Visitor visit)
    {
        if (!manager.GetProcessIdList())
            return;
        String text;
        for (int i = 0; i < manager.m_capacity; ++i)
        {
            const unsigned long pid = manager.m_ids[i];
            if (!manager.GetProcessNameFromPID(pid, text) || !(text == name))
                continue;
            if (user != nullptr && !(CProcessListManager::GetUserNameFromPID(pid, text) && text == user))
                continue;
            if (!visit(pid))
                return;
        }
    }
};
} // namespace aut

#endif
