#include "registry/CRegNetwork.h"

#include "platform/BoundedText.h"
#include "registry/TypedValues.h"
#include "webconf/Base64Coder.h"

#include <cstring>

namespace
{
constexpr char kServerAddress[] = "ProxyFirewallAddress";
constexpr char kBypassList[] = "ProxyFirewallBypass";
constexpr char kProxyAuthorization[] = "ProxyAuthorization";
constexpr char kServerAuthorization[] = "ServerAuthorization";
constexpr char kForced[] = "AdminMode";

/// What the callers' buffers hold.
constexpr std::size_t kBufferSize = 260;

bool getText(CRegBase& key, const char* name, String& text)
{
    text.Empty(); // a value of no size would leave it
    return key.QueryValue(name, text);
}

/// A null output is skipped, as in everything below.
bool getText(CRegBase& key, const char* name, char* text)
{
    char buffer[kBufferSize];
    const bool found = key.QueryValue(name, buffer);
    aut::copyText(text, kBufferSize, buffer);
    return found;
}

bool setText(CRegBase& key, const char* name, const char* text)
{
    aut::writeOrDelete(key, name, text);
    return true;
}

bool getCredentials(CRegBase& key, const char* name, char* user, char* password)
{
    String encoded;
    String userText;
    String passwordText;
    key.QueryValue(name, encoded);
    const bool decoded = Base64Decode(encoded, userText, passwordText);
    aut::copyText(user, kBufferSize, userText);
    aut::copyText(password, kBufferSize, passwordText);
    return decoded;
}

bool setCredentials(CRegBase& key, const char* name, const char* user, const char* password)
{
    String encoded;
    if (!aut::isEmpty(user) && password != nullptr)
        Base64Encode(user, password, encoded);
    return setText(key, name, encoded);
}
} // namespace

CRegNetwork::CRegNetwork(bool readOnly) : CRegBase(aut::kAutoUpdateKey, "Config\\Network", readOnly) {}

bool CRegNetwork::GetServerAddress(String& address) { return getText(*this, kServerAddress, address); }
bool CRegNetwork::GetServerAddress(char* address) { return getText(*this, kServerAddress, address); }
bool CRegNetwork::SetServerAddress(const char* address) { return setText(*this, kServerAddress, address); }

bool CRegNetwork::GetBypassList(String& list) { return getText(*this, kBypassList, list); }
bool CRegNetwork::GetBypassList(char* list) { return getText(*this, kBypassList, list); }
bool CRegNetwork::SetBypassList(const char* list) { return setText(*this, kBypassList, list); }

bool CRegNetwork::IsConfigForced() { return aut::readFlag(*this, kForced); }
void CRegNetwork::ForceConfig(bool on) { aut::writeFlag(*this, kForced, on); }

bool CRegNetwork::GetProxyAuthentication(char* user, char* password)
{
    return getCredentials(*this, kProxyAuthorization, user, password);
}
bool CRegNetwork::SetProxyAuthentication(const char* user, const char* password)
{
    return setCredentials(*this, kProxyAuthorization, user, password);
}
bool CRegNetwork::SetProxyAuthentication(const char* encoded) { return setText(*this, kProxyAuthorization, encoded); }
bool CRegNetwork::GetServerAuthentication(char* user, char* password)
{
    return getCredentials(*this, kServerAuthorization, user, password);
}
bool CRegNetwork::SetServerAuthentication(const char* user, const char* password)
{
    return setCredentials(*this, kServerAuthorization, user, password);
}
bool CRegNetwork::SetServerAuthentication(const char* encoded) { return setText(*this, kServerAuthorization, encoded); }

bool CRegNetwork::GetServerAddress(char* host, char* port)
{
    char address[kBufferSize];
    const bool found = QueryValue(kServerAddress, address);
    char* const colon = std::strchr(address, ':');
    aut::copyText(port, kBufferSize, colon != nullptr ? colon + 1 : "");
    if (colon != nullptr)
        *colon = '\0';
    aut::copyText(host, kBufferSize, address);
    return found;
}

bool CRegNetwork::SetServerAddress(const char* host, const char* port)
{
    String address(host);
    if (!address.IsEmpty() && !aut::isEmpty(port))
    {
        address += ':';
        address += port;
    }
    return SetServerAddress(address);
}
