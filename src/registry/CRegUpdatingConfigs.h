#ifndef AUTOOLS_REGISTRY_CREGUPDATINGCONFIGS_H
#define AUTOOLS_REGISTRY_CREGUPDATINGCONFIGS_H

#include "registry/CRegBase.h"

/// Key "Software\Velmora\7xAutoUpdate\Config\Cache\UpdatingConfigs" + "\" + c + "\" + a: marks of the configurations
/// that some process is asking for right now. Value name: the CID and "config" joined by "__". The request cycle
/// passes the host as a, the certificate ID as b and the product as c. An empty CID has no mark.
class AUTOOLS_API CRegUpdatingConfigs : public CRegBase
{
public:
    CRegUpdatingConfigs(const char* a, const char* b, const char* c, bool readOnly);

    void SetUpdatingConfigForCID(const char* cid);
    /// True when the mark's text is exactly "updating".
    bool IsUpdatingConfigForCID(const char* cid);
    void DeleteUpdatingConfigForCID(const char* cid);
};

#endif
