#include "webconf/Network.h"

#include "platform/BoundedText.h"
#include "webconf/CHTTPServer.h"
#include "webconf/Transfer.h"
#include "webconf/WebServer.h"

#include <windows.h>

#include <wininet.h>

int aut::serverAnswers(const char* server)
{
    char configured[256] = "";
    if (isEmpty(server))
    {
        GetWebServer(configured, nullptr);
        server = configured;
    }
    CHTTPServer address;
    if (!address.ParseServerURL(String(server)))
        return 0;
    String data;
    return GetDataFromStream(address.GetCompleteURL(String()), nullptr, nullptr, data) != 0 ? 1 : 0;
}

int IsInternetUp(const char* server)
{
    DWORD flags = 0;
    const BOOL connected = ::InternetGetConnectedState(&flags, 0);
    return connected != FALSE ? connected : aut::serverAnswers(server);
}
