#ifndef AUTOOLS_REGISTRY_CREGLOGON_H
#define AUTOOLS_REGISTRY_CREGLOGON_H

#include "registry/CRegBase.h"

/// Key "Software\Velmora\7xAutoUpdate\Config\Logon": one value per logon name, with the name as name and data.
class AUTOOLS_API CRegLogon : public CRegBase
{
public:
    explicit CRegLogon(bool readOnly);

    /// An empty name is ignored.
    void SetLogonName(const char* name);
    void RemoveLogonName(const char* name);
    bool GetLogonNameList(RT_List<String, String&>& list);
};

#endif
