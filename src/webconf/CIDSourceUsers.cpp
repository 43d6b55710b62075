#include "webconf/CCIDListManager.h"

#include "registry/CRegBase.h"
#include "webconf/CertificateIds.h"

namespace
{
constexpr char kUsersKey[] = "Software\\Velmora\\7xAutoUpdate\\Config\\Cache\\User";
constexpr char kRevoked[] = "Revoked";

/// Appends the certificate IDs kept for one user: they are the names of the key's values.
void appendUsersCIDs(const char* user, aut::CIDAppender& list)
{
    CRegBase key(kUsersKey, user, true);
    aut::CIDList names;
    key.GetValues(names);
    for (POSITION position = names.GetHeadPosition(); position != nullptr;)
    {
        const String& cid = names.GetNext(position); // empty when it is the key's unnamed value
        String state;
        key.QueryValue(cid, state);
        if (!(state == kRevoked))
            list.append(cid);
    }
}
} // namespace

void CCIDListManager::AppendLocalUserCIDs()
{
    RT_List<String, String&> users;
    CRegBase(kUsersKey, true).GetSubKeys(users);
    aut::CIDAppender list(*m_list);
    for (POSITION position = users.GetHeadPosition(); position != nullptr;)
        appendUsersCIDs(users.GetNext(position), list);
}
