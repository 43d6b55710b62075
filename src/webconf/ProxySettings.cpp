#include "webconf/ProxySettings.h"

#include "foundation/EventLog.h"
#include "foundation/String.h"
#include "platform/BoundedText.h"
#include "system/AsLoggedOnUser.h"
#include "webconf/Network.h"

#include <windows.h>

#include <wininet.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace
{
/// What every caller's text buffer holds.
constexpr std::size_t kCallerBufferSize = 260;

struct FreeMemory
{
    void operator()(void* memory) const { std::free(memory); }
};

/// Texts of the option's record may be null.
std::string textOf(const void* text) { return aut::orEmpty(static_cast<const char*>(text)); }

/// A list that is too long loses whole entries: half of one would name another host.
void copyEntries(char* out, const std::string& list, char separator, const char* name)
{
    if (aut::copyText(out, kCallerBufferSize, list.c_str()))
        return;
    const bool cutsAnEntry = list[kCallerBufferSize - 1] != separator;
    char* const lastSeparator = std::strrchr(out, separator);
    if (cutsAnEntry)
        *(lastSeparator != nullptr ? lastSeparator : out) = '\0';
    Log(1, "The proxy %s is too long: %u characters.", name, static_cast<unsigned>(list.size()));
}

BOOL queryWinInet(void* buffer, DWORD* size)
{
    return ::InternetQueryOptionA(nullptr, INTERNET_OPTION_PROXY, buffer, size);
}

bool querySettings(aut::QueryProxyOption query, char* proxy, char* bypass)
{
    DWORD size = 0;
    query(nullptr, &size);
    if (size == 0)
    {
        Log(1, "No Proxy settings to query.");
        return true;
    }
    const std::unique_ptr<void, FreeMemory> option(
        std::calloc(1, std::max<std::size_t>(size, sizeof(INTERNET_PROXY_INFO))));
    if (option == nullptr)
    {
        Log(2, "DetectProxySettings Memory Failure");
        return false;
    }
    if (!query(option.get(), &size))
    {
        Log(1, "Unable to detect Proxy settings.");
        return false;
    }
    const auto* const info = static_cast<const INTERNET_PROXY_INFO*>(option.get());
    const std::string proxyList = textOf(info->lpszProxy);
    copyEntries(proxy, aut::httpProxyOf(proxyList), ' ', "list");
    copyEntries(bypass, aut::bypassOf(textOf(info->lpszProxyBypass), proxyList), ';', "bypass list");
    return true;
}
} // namespace

std::string aut::httpProxyOf(const std::string& proxyList)
{
    constexpr char kScheme[] = "http=";
    const char* const entry = stristr(proxyList.c_str(), kScheme);
    if (entry == nullptr)
        return proxyList;
    const std::string address(entry + sizeof kScheme - 1);
    return address.substr(0, address.find(' '));
}

std::string aut::bypassOf(const std::string& bypassList, const std::string& proxyList)
{
    std::string bypass(bypassList);
    const std::string repeated = proxyList + ' ';
    // Without a proxy list only a blank would be left to remove, and the entries would run into each other.
    if (!proxyList.empty())
        for (std::size_t at = bypass.find(repeated); at != std::string::npos; at = bypass.find(repeated, at))
            bypass.erase(at, repeated.size());
    std::replace(bypass.begin(), bypass.end(), ' ', ';');
    return bypass;
}

bool aut::detectProxySettings(QueryProxyOption query, char* proxy, char* bypass)
try
{
    if (proxy == nullptr || bypass == nullptr)
        return false;
    proxy[0] = '\0';
    bypass[0] = '\0';
    const aut::AsLoggedOnUser impersonation;
    return querySettings(query, proxy, bypass);
}
catch (const std::bad_alloc&)
{
    Log(2, "DetectProxySettings Memory Failure");
    return false;
}

bool DetectProxySettings(char* proxy, char* bypass) { return aut::detectProxySettings(queryWinInet, proxy, bypass); }
