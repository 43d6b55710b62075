#ifndef AUTOOLS_REGISTRY_CREGAUTOUPDATE_H
#define AUTOOLS_REGISTRY_CREGAUTOUPDATE_H

#include "registry/CRegBase.h"

/// Key "Software\Velmora\7xAutoUpdate": paths, versions and status of the client.
///
/// As in every key class: a text getter returns a pointer into the object that stays valid until the next read through
/// it, "" for a missing value; a number is 0 and a flag false when missing. Setters write at once.
class AUTOOLS_API CRegAutoUpdate : public CRegBase
{
public:
    /// Bits of `Status`. The service and the user interface give them their meaning; bit 0 says that the kernel
    /// component may be asked for.
    enum AUStatus : unsigned int
    {
    };

    explicit CRegAutoUpdate(bool readOnly);

    const char* GetPath();
    void SetPath(const char* text);
    const char* GetDataPath();
    void SetDataPath(const char* text);
    const char* GetDownloadPath();
    void SetDownloadPath(const char* text);
    const char* GetComponentPath();
    void SetComponentPath(const char* text);
    const char* GetVelmoraPath();
    void SetVelmoraPath(const char* text);
    const char* GetKernelVersion();
    void SetKernelVersion(const char* text);
    const char* GetAUProductVersion();
    void SetAUProductVersion(const char* text);
    const char* GetCABKernelVersion();
    const char* GetCABProductVersion();
    const char* GetZone();
    void SetZone(const char* text);
    const char* GetCountryCode();
    void SetCountryCode(const char* text);
    const char* GetMarketingName();
    void SetMarketingName(const char* text);
    const char* GetTechnicalName();
    void SetTechnicalName(const char* text);

    bool IsLocalInstall();
    void LocalInstall(bool on);
    bool GetAUWinLogonStatus();
    void SetAUWinLogonStatus(bool on);

    unsigned long GetStatus();
    /// Adds bits to `Status`.
    void SetStatus(AUStatus flags);
    /// Clears bits of `Status`, all of them when `flags` is 0; writes nothing when `Status` is missing.
    void ResetStatus(AUStatus flags);

    /// 1 to 7; anything else stored reads as 0.
    unsigned long GetException();
    void SetException(unsigned long value);

    /// `Path` followed by "\Compressed"; "" when `Path` is missing.
    String GetCompressedPath();
    /// The component path, "Kernel" and the kernel version joined by "\".
    String GetKernelPath();
};

#endif
