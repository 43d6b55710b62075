#ifndef AUTOOLS_REGISTRY_CREGDATACACHING_H
#define AUTOOLS_REGISTRY_CREGDATACACHING_H

#include "registry/CRegBase.h"

/// Key "Software\Velmora\7xAutoUpdate\Config\Cache\Data" + "\" + c + "\" + a: the time stamp of a cached answer, in the
/// value named b, or b and d joined by "__" when d is not empty. The request cycle passes the Web Configurator's host
/// as a, the certificate ID as b, the product as c and the component as d. An entry whose name is empty or would be
/// longer than 259 characters does not exist: it has no name, and no time stamp is kept for it.
class AUTOOLS_API CRegDataCaching : public CRegBase
{
public:
    CRegDataCaching(const char* a, const char* b, const char* c, const char* d, bool readOnly);
    CRegDataCaching(const CRegDataCaching& other);
    CRegDataCaching& operator=(const CRegDataCaching& other);

    /// "1980-01-01 00:00:00" when missing or empty, or without a name.
    String GetTimeStamp();
    /// Does nothing without a name.
    void SetTimeStamp(String& timeStamp);
    /// The value's name, which is also the base name of the cache file; "" when there is none.
    const char* GetEntryName() const;

private:
    char m_entryName[260];
};

#endif
