#include "7xAutoUpdateTools.h"
#include "tests/torture/leaks/Calls.h"
#include "tests/torture/leaks/ClientInstallation.h"

#include <windows.h>

#include <comdef.h>

#include <string>

namespace torture
{
namespace
{
/// Makes a call whose COM failures rise, as they do where the caller has not initialised COM.
template <typename F> void withComErrors(F call)
{
    try
    {
        call();
    }
    catch (const _com_error&)
    {
    }
}

void freeReleases(RT_List<CRelease*, CRelease*>& list)
{
    while (!list.IsEmpty())
        delete list.RemoveHead();
}

void addProductLists(Calls& calls, const ClientInstallation& client)
{
    const std::string url =
        client.server().url("wcfgGetProductList.asp", std::string("CertificateID=") + ClientInstallation::kCid);
    for (const bool good : {true, false})
    {
        const std::string address = good ? url : client.server().url("malformed.asp");
        calls.push_back({good ? "a product list, fetched, parsed, saved and read again" : "a malformed product list",
                         [=]
                         {
                             withComErrors(
                                 [&]
                                 {
                                     RT_List<CRelease*, CRelease*> list;
                                     RT_List<String, String&> cids;
                                     phase1xml document(address.c_str(), "P");
                                     document.GetXMLDoc(nullptr);
                                     document.IsNewConfiguration(&list, ClientInstallation::kCid);
                                     document.ParseXMLDocument(&list, ClientInstallation::kCid);
                                     document.GetPreviousXMLDoc();
                                     String text("<r><c></r>");
                                     document.ConcatenateCIDs(&cids, text);
                                     freeReleases(list);
                                 });
                         },
                         Cost::heavy});
    }
    calls.push_back({"a product list that was never saved",
                     [] { withComErrors([] { phase1xml("http://host/", "none").GetPreviousXMLDoc(); }); }});
}

void addConfiguration(Calls& calls, const ClientInstallation& client)
{
    const std::string host = client.server().host();
    calls.push_back({"CConfig::GetValues", []
                     {
                         withComErrors(
                             []
                             {
                                 CConfig config;
                                 config.GetValues();
                                 config.GetTransferSettings(nullptr);
                             });
                     }});
    calls.push_back({"DataCaching::GetAUData, IsAUValidForWebServer",
                     [=]
                     {
                         DataCaching caching;
                         caching.GetAUData(host.c_str());
                         caching.IsAUValidForWebServer(host.c_str());
                     },
                     Cost::heavy});
    for (const bool there : {true, false})
    {
        const std::string server = there ? host : "127.0.0.1:1";
        calls.push_back({there ? "DataCaching::GetComponentData" : "DataCaching::GetComponentData from no server",
                         [=]
                         {
                             DataCaching caching;
                             caching.GetComponentData(server.c_str(), ClientInstallation::kCid, "Editor", "1.0", "B1",
                                                      "EN", there ? "AUKernelData" : "comp");
                         },
                         there ? Cost::heavy : Cost::slow});
    }
    calls.push_back({"SetDataInCache", [=]
                     {
                         SetDataInCache(host.c_str(), ClientInstallation::kCid, "Editor", "", "data");
                         SetDataInCache(host.c_str(), "..\\..\\..\\..\\cid", "Editor", "", "data");
                     }});
    calls.push_back({"CCIDListManager",
                     []
                     {
                         CCIDListManager manager;
                         manager.InitManager(false);
                         manager.IsTestCIDSet(0);
                         manager.GetCIDsCount();
                     },
                     Cost::heavy});
    calls.push_back({"DataExchange::ExtractXmlNode", []
                     {
                         DataExchange::ExtractXmlNode("<a><b>c</b></a>", "a/b");
                         DataExchange::ExtractXmlNode("<a>", "a");
                     }});
}

void addNetwork(Calls& calls, const ClientInstallation& client)
{
    const std::string good = client.server().url("wcfgGetProductList.asp");
    const std::string missing = client.server().url("nothing.asp");
    const std::string noServer = "http://127.0.0.1:1/";
    for (const std::string& url : {good, missing, noServer, std::string("nonsense:")})
    {
        calls.push_back(
            {"GetDataFromStream of " + url.substr(0, url.find("127")) + (url == good ? "a page" : "nothing"),
             [=]
             {
                 String data;
                 int status = 0;
                 GetDataFromStream(url.c_str(), &status, nullptr, data);
             },
             Cost::heavy});
    }
    calls.push_back({"DetectProxySettings",
                     []
                     {
                         char proxy[MAX_PATH];
                         char bypass[MAX_PATH];
                         DetectProxySettings(proxy, bypass);
                         DetectProxySettings(nullptr, bypass);
                     },
                     Cost::heavy});
    calls.push_back({"Internet settings", []
                     {
                         SetTrustedDomain(HKEY_CURRENT_USER, "www.example.test");
                         SetAUExtraSettings();
                         char host[MAX_PATH] = "";
                         char directory[MAX_PATH] = "";
                         GetWebServer(host, directory);
                         SetWebServer(host, directory);
                     }});
    calls.push_back({"IsInternetUp", [] { IsInternetUp(nullptr); }});
}
} // namespace

void addWebCalls(Calls& calls, const ClientInstallation& client)
{
    addProductLists(calls, client);
    addConfiguration(calls, client);
    addNetwork(calls, client);
}
} // namespace torture
