#include "webconf/CCIDListManager.h"

#include "catalogue/ReleaseLists.h"
#include "foundation/EventLog.h"
#include "platform/ComValues.h"
#include "platform/Xml.h"
#include "webconf/AutoUpdateServer.h"
#include "webconf/CertificateIds.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace
{
/// Without the blanks and line ends around it.
std::string_view trimmed(std::string_view text)
{
    constexpr char kBlanks[] = " \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == text.npos ? std::string_view() : text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Appends what the server's text contains and the list does not have: what is malformed is skipped, what was refused
/// is logged.
void appendCIDs(aut::CIDAppender& list, std::string_view text)
{
    for (std::size_t begin = 0; begin <= text.size();)
    {
        const std::size_t end = std::min(text.find(aut::kCIDSeparator, begin), text.size());
        const std::string candidate(trimmed(text.substr(begin, end - begin)));
        begin = end + 1;
        if (!aut::isWellFormedCID(candidate))
            continue;
        const String cid(candidate.c_str());
        if (IsCIDRevoked(cid))
            Log(0, "CID %s revoked or expired", candidate.c_str());
        else
            list.append(cid);
    }
}
} // namespace

int CCIDListManager::GetLarkspurCIDs()
{
    Log(0, "Call to GetCIDListFromHWID()");
    aut::AutoUpdateServerPtr server;
    if (FAILED(aut::createAutoUpdateServer(server)))
    {
        Log(1, "GetLarkspurCIDs: 'AutoUpdateSRV.dll' is not registered");
        return 0;
    }
    aut::UniqueBstr text;
    if (FAILED(server->KxGetLocalCIDList(text.put())))
    {
        Log(1, "GetCIDListFromHWID: FAILED to retrive local CID List");
        return 0;
    }
    const String cids = aut::ansiFromWide(text);
    Log(0, "GetCIDListFromHWID: local CID List = %s", static_cast<const char*>(cids));
    aut::CIDAppender list(*m_list);
    appendCIDs(list, static_cast<const char*>(cids));
    return 1;
}
