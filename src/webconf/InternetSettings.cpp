#include "webconf/Network.h"

#include "foundation/String.h"
#include "platform/BoundedText.h"
#include "registry/CRegBase.h"

#include <cstring>
#include <new>
#include <string>

namespace
{
constexpr char kInternetSettings[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
constexpr unsigned long kTrustedSites = 2;

struct SplitHost
{
    std::string host;   ///< what stands before the last two labels, often nothing
    std::string domain; ///< the last two labels; empty for a host without a dot
};

SplitHost splitHost(const std::string& name)
{
    const std::size_t lastDot = name.rfind('.');
    if (lastDot == std::string::npos)
        return {};
    const std::size_t dotBefore = lastDot == 0 ? std::string::npos : name.rfind('.', lastDot - 1);
    if (dotBefore == std::string::npos)
        return {"", name};
    return {name.substr(0, dotBefore), name.substr(dotBefore + 1)};
}

void trust(HKEY root, const SplitHost& split)
{
    std::string path = std::string(kInternetSettings) + "\\ZoneMap\\Domains\\" + split.domain;
    if (!split.host.empty())
        path += "\\" + split.host;
    CRegBase key;
    if (key.Open(root, path.c_str(), KEY_ALL_ACCESS))
        key.SetValue("http", kTrustedSites);
}
} // namespace

void SetTrustedDomain(HKEY root, const char* host)
try
{
    const SplitHost split = splitHost(aut::orEmpty(host));
    if (split.domain.empty())
        return;
    trust(root, split);
    if (!(String(split.domain.c_str()) == AUTOOLS_TRUSTED_DOMAIN_1))
        return;
    const SplitHost second =
        splitHost(AUTOOLS_TRUSTED_DOMAIN_2); // not by a call of ourselves: the two may be one domain
    if (!second.domain.empty())
        trust(root, second);
}
catch (const std::bad_alloc&)
{
    return; // nothing is reported here
}

void SetAUExtraSettings()
{
    CRegBase key;
    if (!key.Open(HKEY_CURRENT_USER, kInternetSettings, KEY_ALL_ACCESS))
        return;
    key.SetValue("EnableHttp1_1", 1UL);
    key.SetValue("ProxyHttp1.1", 1UL);
}
