#ifndef AUTOOLS_REGISTRY_CREGCONFIG_H
#define AUTOOLS_REGISTRY_CREGCONFIG_H

#include "registry/CRegBase.h"

/// Key "Software\Velmora\7xAutoUpdate\Config": the client's settings. Times are seconds since 1970 in 64 bits.
class AUTOOLS_API CRegConfig : public CRegBase
{
public:
    explicit CRegConfig(bool readOnly);

    bool IsSilentMode();
    void SilentMode(bool on);
    bool NoIcon();
    void NoIcon(bool on);
    bool IsAdminMode();
    void AdminMode(bool on);
    /// The negation of `NoService`: true when that is missing.
    bool RunAsService();
    bool GetFlag(const char* name);
    void SetFlag(const char* name, bool on);

    /// The value named after `file` without its last extension and ".LastDate". A null or empty date deletes it.
    const char* GetLastDate(const char* file);
    void SetLastDate(const char* file, const char* date);

    __int64 GetNextProductListDate();
    void SetNextProductListDate(__int64 time);
    __int64 GetNextPendingUpdate();
    void SetNextPendingUpdate(__int64 time);
    /// Seconds to add to local time for the Web Configurator's time.
    __int64 GetWebConfDiffDate();
    void SetWebConfDiffDate(__int64 seconds);

    unsigned long GetConfigCounter(const char* prefix);
    void SetConfigCounter(const char* prefix, unsigned long n);

    const char* GetTestCID();
    void SetTestCID(const char* text);
    const char* GetTestHWID();
    void SetTestHWID(const char* text);
    const char* GetIntermediateServersPath();
    void SetIntermediateServersPath(const char* text);
    unsigned long GetLanguageID();
    void SetLanguageID(unsigned long id);
    const char* GetDeploymentCID();
    void SetDeploymentCID(const char* text);
    /// True when `MergeProductLists` is missing or non-zero: only an explicit 0 turns merging off.
    bool IsMergeOptionSet();
    unsigned long GetTestEnvValue();
    /// True when `TestEnv` exists and is at least `n`: a level, deliberately not a bit test.
    bool IsTestEnvFlagSet(unsigned long n);

protected:
    /// Reads 8 bytes, or deliberately also 4 as a sign-extended number; any other size, a missing value or a null
    /// name gives 0.
    __int64 GetTimeValue(const char* name);
    /// Writes REG_QWORD; 0 on failure.
    int SetTimeValue(const char* name, __int64 time);
};

#endif
