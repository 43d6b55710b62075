#include "check/Check.h"
#include "check/UserProxy.h"
#include "common/Text.h"
#include "machine/Client.h"
#include "machine/Owners.h"
#include "machine/RegistryReader.h"
#include "plan/Decision.h"

#include <7xAutoUpdateTools.h>

#include <windows.h>

#include <winhttp.h>

#include <ctime>
#include <cwchar>

namespace autool
{
namespace
{
constexpr int kPatienceMs = 10'000;
constexpr __int64 kClockToleranceSeconds = 5 * 60;

inline void closeInternet(HINTERNET handle) { ::WinHttpCloseHandle(handle); }
using InternetHandle = Owner<HINTERNET, closeInternet>;

/// How a request goes out.
struct Route
{
    std::wstring proxy; ///< "" is directly
    std::wstring bypass;
    std::string text; ///< for people
};

/// Without what stands before an "@": that may be a user and a password.
std::wstring withoutUser(const std::wstring& address)
{
    const std::size_t at = address.rfind(L'@');
    if (at == std::wstring::npos)
        return address;
    const std::size_t scheme = address.find(L"//");
    return (scheme < at ? address.substr(0, scheme + 2) : std::wstring()) + address.substr(at + 1);
}

/// The client's transfers use what the user's Internet settings say; a proxy in the client's own settings is named,
/// too.
Route readRoute()
{
    const UserProxy settings = readUserProxy();
    Route route;
    route.proxy = withoutUser(settings.proxy);
    route.bypass = settings.bypass;
    // "http=a:1;https=b:2": each scheme has its own.
    if (const std::size_t http = route.proxy.find(L"http="); http != std::wstring::npos)
    {
        route.proxy = route.proxy.substr(http + 5);
        route.proxy = route.proxy.substr(0, route.proxy.find_first_of(L"; "));
    }
    route.text = route.proxy.empty()
                     ? "directly"
                     : "through the proxy " + fromWide(route.proxy) + " of this user's Internet settings";
    if (!settings.script.empty())
        route.text += " (not through the configuration script " + fromWide(withoutUser(settings.script)) +
                      ", which is not run here)";
    const auto own =
        readValue(HKEY_LOCAL_MACHINE, std::wstring(kClientTree) + L"\\Config\\Network", L"ProxyFirewallAddress");
    if (own && !own->text().empty())
        route.text += "; the client's settings name the proxy " + fromWide(withoutUser(own->text()));
    return route;
}

struct Reply
{
    DWORD error = ERROR_SUCCESS;
    DWORD status = 0;
    __int64 serverTime = 0; ///< 0 when the server does not tell it
};

/// "Sun, 22 Nov 2026 01:20:00 GMT". Parsed here: the system takes whatever is no date for the present time.
__int64 parseHttpDate(const wchar_t* text)
{
    static const wchar_t kMonths[] = L"JanFebMarAprMayJunJulAugSepOctNovDec";
    wchar_t month[4] = L"";
    unsigned day = 0;
    unsigned year = 0;
    unsigned hour = 0;
    unsigned minute = 0;
    unsigned second = 0;
    const wchar_t* const rest = std::wcschr(text, L',');
    if (rest == nullptr || std::swscanf(rest + 1, L" %2u %3l[A-Za-z] %4u %2u:%2u:%2u GMT", &day, month, &year, &hour,
                                        &minute, &second) != 6)
        return 0;
    const wchar_t* const found = std::wcslen(month) == 3 ? std::wcsstr(kMonths, month) : nullptr;
    if (found == nullptr || (found - kMonths) % 3 != 0)
        return 0;
    SYSTEMTIME date{};
    date.wYear = static_cast<WORD>(year);
    date.wMonth = static_cast<WORD>((found - kMonths) / 3 + 1);
    date.wDay = static_cast<WORD>(day);
    date.wHour = static_cast<WORD>(hour);
    date.wMinute = static_cast<WORD>(minute);
    date.wSecond = static_cast<WORD>(second);
    FILETIME time{};
    return ::SystemTimeToFileTime(&date, &time) ? secondsOf(time) : 0;
}

__int64 dateOf(HINTERNET request)
{
    wchar_t text[64] = L"";
    DWORD size = sizeof text - sizeof(wchar_t);
    if (!::WinHttpQueryHeaders(request, WINHTTP_QUERY_DATE, WINHTTP_HEADER_NAME_BY_INDEX, text, &size,
                               WINHTTP_NO_HEADER_INDEX))
        return 0;
    return parseHttpDate(text);
}

/// Asks for the folder of the Web Configurator's pages, without a page: nothing there takes it for a request of a
/// client.
Reply ask(const std::wstring& host, int port, const std::wstring& folder, const Route& route)
{
    Reply reply;
    const auto failed = [&reply]
    {
        reply.error = ::GetLastError();
        return reply;
    };
    const InternetHandle session(
        ::WinHttpOpen(L"autool", route.proxy.empty() ? WINHTTP_ACCESS_TYPE_NO_PROXY : WINHTTP_ACCESS_TYPE_NAMED_PROXY,
                      route.proxy.empty() ? WINHTTP_NO_PROXY_NAME : route.proxy.c_str(),
                      route.proxy.empty() || route.bypass.empty() ? WINHTTP_NO_PROXY_BYPASS : route.bypass.c_str(), 0));
    if (!session)
        return failed();
    ::WinHttpSetTimeouts(session.get(), kPatienceMs, kPatienceMs, kPatienceMs, kPatienceMs);
    const InternetHandle connection(::WinHttpConnect(session.get(), host.c_str(), static_cast<INTERNET_PORT>(port), 0));
    if (!connection)
        return failed();
    const InternetHandle request(::WinHttpOpenRequest(connection.get(), L"GET", folder.c_str(), nullptr,
                                                      WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES, 0));
    DWORD off = WINHTTP_DISABLE_COOKIES | WINHTTP_DISABLE_REDIRECTS | WINHTTP_DISABLE_AUTHENTICATION;
    if (!request || !::WinHttpSetOption(request.get(), WINHTTP_OPTION_DISABLE_FEATURE, &off, sizeof off) ||
        !::WinHttpSendRequest(request.get(), WINHTTP_NO_ADDITIONAL_HEADERS, 0, WINHTTP_NO_REQUEST_DATA, 0, 0, 0) ||
        !::WinHttpReceiveResponse(request.get(), nullptr))
        return failed();
    DWORD size = sizeof reply.status;
    ::WinHttpQueryHeaders(request.get(), WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER,
                          WINHTTP_HEADER_NAME_BY_INDEX, &reply.status, &size, WINHTTP_NO_HEADER_INDEX);
    reply.serverTime = dateOf(request.get());
    return reply;
}

std::string errorText(DWORD error)
{
    switch (error)
    {
    case ERROR_WINHTTP_TIMEOUT:
        return "no answer within " + std::to_string(kPatienceMs / 1000) + " seconds";
    case ERROR_WINHTTP_NAME_NOT_RESOLVED:
        return "its name is not known";
    case ERROR_WINHTTP_CANNOT_CONNECT:
        return "no connection";
    case ERROR_WINHTTP_CONNECTION_ERROR:
    case ERROR_WINHTTP_INVALID_SERVER_RESPONSE:
        return "the connection was broken off, or what answered is no web server";
    default:
        return "error " + std::to_string(error);
    }
}

void checkReply(CheckList& list, const std::string& where, const Reply& reply, const Route& route)
{
    constexpr DWORD kProxyAuthentication = 407;
    constexpr DWORD kServerErrors = 500;
    if (reply.error != ERROR_SUCCESS)
        list.add("SERVER-REACHED", Verdict::fail,
                 "The Web Configurator " + where + " is not reached " + route.text + ": " + errorText(reply.error) +
                     ".");
    else if (reply.status == kProxyAuthentication)
        list.add("SERVER-REACHED", Verdict::warn,
                 "The proxy wants credentials before it lets anybody through to " + where + " (status 407).");
    else
        list.add("SERVER-REACHED", reply.status >= kServerErrors ? Verdict::warn : Verdict::pass,
                 "The Web Configurator " + where + " answers " + route.text + " (status " +
                     std::to_string(reply.status) + ").");
}

void checkClock(CheckList& list, const Reply& reply)
{
    if (reply.error != ERROR_SUCCESS)
        return; // said already
    if (reply.serverTime == 0)
    {
        list.add("CLOCK", Verdict::warn, "The server does not tell its time, so the clocks cannot be compared.");
        return;
    }
    const __int64 ahead = ::_time64(nullptr) - reply.serverTime;
    const __int64 difference = ahead < 0 ? -ahead : ahead;
    const std::string stored = " (stored difference " + std::to_string(CRegConfig(true).GetWebConfDiffDate()) + " s)";
    if (difference <= kClockToleranceSeconds)
        list.add("CLOCK", Verdict::pass,
                 "This machine's clock is within " + std::to_string(difference) + " s of the server's" + stored + ".");
    else
        list.add("CLOCK", Verdict::warn,
                 "This machine's clock is " + ageText(difference) + (ahead > 0 ? " ahead of" : " behind") +
                     " the server's" + stored + ": activation dates and hours come at other times than planned.");
}
} // namespace

void checkServer(CheckList& list)
{
    if (!readClientFolders().isPresent)
        return;
    char host[256] = "";
    char directory[256] = "";
    if (!GetWebServer(host, directory) || *host == '\0')
    {
        list.add("SERVER-SET", Verdict::fail, "No Web Configurator is set (value WebServer of the key Config).");
        return;
    }
    CHTTPServer server;
    server.ParseServerURL(host);
    std::string name = fromSystem(server.GetServerName());
    name = name.substr(name.rfind('@') + 1); // in front of it may be a user and a password
    const int port = server.GetPort();
    const std::string where = name + ":" + std::to_string(port) + "/" + fromSystem(directory);
    constexpr int kHttp = 3;
    if (name.empty() || server.GetServiceType() != kHttp)
    {
        list.add("SERVER-SET", Verdict::fail, "The Web Configurator that is set is no web server's address.");
        return;
    }
    list.add("SERVER-SET", Verdict::pass, "The Web Configurator is " + where + ".");
    list.begin("Asking " + where);
    const Route route = readRoute();
    const Reply reply = ask(toWide(name), port, toWide("/" + fromSystem(directory) + "/"), route);
    checkReply(list, where, reply, route);
    checkClock(list, reply);
}
} // namespace autool
