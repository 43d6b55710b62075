#ifndef AUTOOLS_REGISTRY_CREGCITRIX_H
#define AUTOOLS_REGISTRY_CREGCITRIX_H

#include "registry/CRegBase.h"

/// Key "Software\Velmora\7xAutoUpdate\Citrix": limits for terminal-server farms, read only, 0 when missing.
class AUTOOLS_API CRegCitrix : public CRegBase
{
public:
    explicit CRegCitrix(bool readOnly);

    unsigned long GetUserNumber();
    unsigned long GetMsgNumber();
};

#endif
