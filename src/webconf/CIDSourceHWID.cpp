#include "webconf/CCIDListManager.h"

#include "foundation/EventLog.h"
#include "foundation/NumberScan.h"
#include "foundation/RT_RESULT.h"
#include "productlist/phase1xml.h"
#include "registry/CRegConfig.h"
#include "webconf/AutoUpdateServer.h"
#include "webconf/CHTTPServer.h"
#include "webconf/CertificateIds.h"
#include "webconf/WebServer.h"

#include <comdef.h>

#include <string>

// The certificate IDs that belong to the workstation's hardware ID: the local server knows that number, the Web
// Configurator the certificate IDs, and the registry keeps its last answer for the time when it cannot be reached.

namespace
{
constexpr unsigned long kTrace = 0x20000;
constexpr char kCacheKey[] = "Software\\Velmora\\7xAutoUpdate\\Config\\Cache\\HWIDs";
constexpr char kPage[] = "wcfgGetCidListFromHWID1.asp";
constexpr int kLongestValueName = 259; // what the registry classes can list

/// The hardware ID configured for tests, else the local server's; 0 when there is none.
long workstationHWID(aut::AutoUpdateServer& server)
{
    CRegConfig config(true);
    const char* configured = config.GetTestHWID();
    if (*configured != '\0')
    {
        int number = 0;
        aut::scanNumber(configured, number);
        Log(0, "Test HWID = %d", number);
        return number;
    }
    LONG number = 0;
    if (FAILED(server.KxGetHWIDForDeployment(&number)))
        number = 0;
    Log(0, "KxGetHWIDForDeployment returned HWID = %d", static_cast<int>(number));
    return number;
}

String requestUrl(const char* host, const char* directory, long hwid)
{
    String location;
    location.Format("%s\\%s", host, directory);
    CHTTPServer server;
    server.ParseServerURL(location);
    String url;
    url.Format("%s?HWID1=%d", static_cast<const char*>(server.GetCompleteURL(kPage)), static_cast<int>(hwid));
    return url;
}

/// Appends the Web Configurator's answer; false when it gave none. Which certificate ID it calls the master makes no
/// difference here: all of them are asked for, in the order of the answer.
bool fetch(const String& url, aut::CIDList& list)
try
{
    String master;
    phase1xml document(url);
    return document.GetXMLCIDListFromHWID(&list, master) != 0;
}
catch (const _com_error&)
{
    return false;
}

/// The key of one hardware ID: its values are named by the certificate IDs.
class CacheKey : public CRegBase
{
public:
    CacheKey(const char* hwid, bool readOnly) : CRegBase(kCacheKey, hwid, readOnly) {}

    /// Leaves the flush to the caller, who may have thousands: each flush waits for the disk.
    void add(const char* cid) { ::RegSetValueExA(m_key, cid, 0, REG_SZ, reinterpret_cast<const BYTE*>(""), 1); }
};

void writeCache(const char* hwid, const aut::CIDList& list)
{
    CacheKey(hwid, false).DeleteKey();
    CacheKey cache(hwid, false);
    for (POSITION position = list.GetHeadPosition(); position != nullptr;)
    {
        const String& cid = list.GetNext(position);
        Log(0, "associated CID = %s", static_cast<const char*>(cid));
        // A longer name could be written, but not be listed again, nor anything behind it.
        if (cid.GetLength() <= kLongestValueName)
            cache.add(cid);
    }
    cache.Flush();
}

/// As it was written: what was revoked then is not in it.
void readCache(const char* hwid, aut::CIDList& list)
{
    aut::CIDList cached;
    CacheKey(hwid, true).GetValues(cached);
    for (POSITION position = cached.GetHeadPosition(); position != nullptr;)
    {
        const String& cid = cached.GetNext(position);
        if (cid.IsEmpty()) // the key's unnamed value
            continue;
        Log(0, "associated CID = %s", static_cast<const char*>(cid));
        aut::appendCID(list, cid);
    }
}

/// Fills the list for one hardware ID.
void getAssociated(long hwid, aut::CIDList& list)
{
    Log(0, "Getting CID associated with HWID %d", static_cast<int>(hwid));
    char host[256];
    char directory[256];
    if (!GetWebServer(host, directory))
    {
        Log(1, "(GetCIDListFromHWID) No Web Server set");
        return;
    }
    const String url = requestUrl(host, directory, hwid);
    Log(kTrace, "(GetCIDListFromHWID) URL = %s", static_cast<const char*>(url));
    const std::string cacheName = std::to_string(hwid);
    if (fetch(url, list))
    {
        aut::dropRepeatedCIDs(list); // each is asked for once
        writeCache(cacheName.c_str(), list);
        return;
    }
    Log(1, "Getting CID associated with HWID in cache");
    list.RemoveAll();
    readCache(cacheName.c_str(), list);
}
} // namespace

int CCIDListManager::GetCIDListFromHWID(long hwid)
{
    Log(0, "Call to GetCIDListFromHWID(%d)", static_cast<int>(hwid));
    aut::AutoUpdateServerPtr server;
    if (FAILED(aut::createAutoUpdateServer(server)))
        Log(1, "GetCIDListFromHWID: 'AutoUpdateSRV.dll' is not registered");
    else
    {
        if (hwid == 0)
            hwid = workstationHWID(*server.Get());
        if (hwid != 0)
            getAssociated(hwid, *m_list);
    }

    if (m_list->IsEmpty())
    {
        result->Set(301, "Empty CID list", "GetCIDListFromHWID", "cids");
        return 0;
    }
    Log(0, "CID List from HWID : %s", aut::joinedCIDs(*m_list).c_str());
    return 1;
}
