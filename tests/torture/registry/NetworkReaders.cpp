#include "registry/CRegNetwork.h"
#include "tests/torture/registry/GuardedBuffer.h"
#include "tests/torture/registry/Readers.h"

#include <algorithm>

namespace torture
{
namespace
{
constexpr char kNetwork[] = "Config\\Network";

/// Base64 by its bits: blanks and line ends are skipped, each four characters are read on their own, padding at their
/// end holds nothing, and what is no character of Base64 counts as zero bits.
std::string decoded(const std::string& text)
{
    static const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string characters;
    for (const char c : text)
        if (c != ' ' && (c < 7 || c > 13))
            characters += static_cast<char>(c & 0x7F); // the top bit does not matter
    std::string bytes;
    for (std::size_t at = 0; at < characters.size(); at += 4)
    {
        std::string group = characters.substr(at, 4);
        group.erase(group.find_last_not_of('=') + 1);
        std::string bits;
        for (const char c : group)
        {
            const std::size_t value = kAlphabet.find(c);
            for (int bit = 5; bit >= 0; --bit)
                bits += value != std::string::npos && (value >> bit & 1) != 0 ? '1' : '0';
        }
        for (std::size_t bit = 0; bit + 8 <= bits.size(); bit += 8)
            bytes += static_cast<char>(std::stoi(bits.substr(bit, 8), nullptr, 2));
    }
    return bytes.substr(0, bytes.find('\0'));
}

std::string documentedCredentials(const StoredData& data)
{
    const std::string encoded = data.text();
    if (encoded.empty())
        return told(false, "|");
    const std::string pair = decoded(encoded);
    const std::size_t colon = std::min(pair.find(':'), pair.size());
    const std::string password = colon < pair.size() ? pair.substr(colon + 1) : "";
    return told(true, pair.substr(0, std::min<std::size_t>(colon, 259)) + "|" + password.substr(0, 259));
}

std::string credentials(bool (CRegNetwork::*read)(char*, char*))
{
    CRegNetwork& key = opened<CRegNetwork>();
    GuardedBuffer user;
    GuardedBuffer password;
    const bool found = (key.*read)(user, password);
    return told(found, user.text() + "|" + password.text());
}

template <typename Text> std::string oneText(bool (CRegNetwork::*read)(Text))
{
    CRegNetwork& key = opened<CRegNetwork>();
    if constexpr (std::is_same_v<Text, char*>)
    {
        GuardedBuffer buffer;
        const bool found = (key.*read)(buffer);
        return told(found, buffer.text());
    }
    else
    {
        String text("before");
        const bool found = (key.*read)(text);
        return told(found, std::string(text));
    }
}

std::string documentedString(const StoredData& data) { return told(true, data.text()); }
std::string documentedBuffer(const StoredData& data) { return told(fitsBuffer(data), bufferText(data)); }
} // namespace

std::vector<Reader> networkReaders()
{
    return {
        {kNetwork, "ProxyFirewallAddress", "CRegNetwork::GetServerAddress(String)",
         [] { return oneText<String&>(&CRegNetwork::GetServerAddress); }, documentedString},
        {kNetwork, "ProxyFirewallAddress", "CRegNetwork::GetServerAddress(buffer)",
         [] { return oneText<char*>(&CRegNetwork::GetServerAddress); }, documentedBuffer},
        {kNetwork, "ProxyFirewallAddress", "CRegNetwork::GetServerAddress(host, port)",
         []
         {
             GuardedBuffer host;
             GuardedBuffer port;
             const bool found = opened<CRegNetwork>().GetServerAddress(host, port);
             return told(found, host.text() + "|" + port.text());
         },
         [](const StoredData& data)
         {
             const std::string address = bufferText(data);
             const std::size_t colon = address.find(':');
             return told(fitsBuffer(data), colon == std::string::npos
                                               ? address + "|"
                                               : address.substr(0, colon) + "|" + address.substr(colon + 1));
         }},
        {kNetwork, "ProxyFirewallBypass", "CRegNetwork::GetBypassList(String)",
         [] { return oneText<String&>(&CRegNetwork::GetBypassList); }, documentedString},
        {kNetwork, "ProxyFirewallBypass", "CRegNetwork::GetBypassList(buffer)",
         [] { return oneText<char*>(&CRegNetwork::GetBypassList); }, documentedBuffer},
        {kNetwork, "ProxyAuthorization", "CRegNetwork::GetProxyAuthentication",
         [] { return credentials(&CRegNetwork::GetProxyAuthentication); }, documentedCredentials},
        {kNetwork, "ServerAuthorization", "CRegNetwork::GetServerAuthentication",
         [] { return credentials(&CRegNetwork::GetServerAuthentication); }, documentedCredentials},
        {kNetwork, "AdminMode", "CRegNetwork::IsConfigForced",
         [] { return told(opened<CRegNetwork>().IsConfigForced()); }, documentedFlag},
    };
}
} // namespace torture
