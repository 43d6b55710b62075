#ifndef AUTOOLS_REGISTRY_CREGNETWORK_H
#define AUTOOLS_REGISTRY_CREGNETWORK_H

#include "registry/CRegBase.h"

/// Key "Software\Velmora\7xAutoUpdate\Config\Network": proxy address, bypass list and credentials.
///
/// Getters report false, with emptied outputs, for a missing value; output buffers hold 260 bytes, and a null output
/// is skipped. Credentials above 259 characters are cut in them; an address or a list above that is as good as missing.
/// Every setter returns true whatever the registry did, and deletes the value when it has nothing to
/// store. Credentials are stored in Base64, which is an encoding and no protection.
class AUTOOLS_API CRegNetwork : public CRegBase
{
public:
    explicit CRegNetwork(bool readOnly);

    bool GetServerAddress(String& address);
    bool GetServerAddress(char* address);
    /// Splits host:port at the first ":"; without one the port is "".
    bool GetServerAddress(char* host, char* port);
    bool SetServerAddress(const char* address);
    bool SetServerAddress(const char* host, const char* port);

    bool GetBypassList(String& list);
    bool GetBypassList(char* list);
    bool SetBypassList(const char* list);

    /// The user ends at the first ":", so that a user name must not contain one; a password may.
    bool GetProxyAuthentication(char* user, char* password);
    /// Deletes the value when `user` is null or empty or `password` is null.
    bool SetProxyAuthentication(const char* user, const char* password);
    /// Stores an already encoded text.
    bool SetProxyAuthentication(const char* encoded);
    bool GetServerAuthentication(char* user, char* password);
    bool SetServerAuthentication(const char* user, const char* password);
    bool SetServerAuthentication(const char* encoded);

    bool IsConfigForced();
    void ForceConfig(bool on);
};

#endif
