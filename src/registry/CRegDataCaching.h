#ifndef AUTOOLS_REGISTRY_CREGDATACACHING_H
#define AUTOOLS_REGISTRY_CREGDATACACHING_H

#include "registry/CRegBase.h"

/// Key "Software\Velmora\7xAutoUpdate\Config\Cache\Data" + "\" + c + "\" + a: the time stamp of a cached answer, in the
/// value named b, or b and d joined by "__" when d is not empty. The request cycle passes the Web Configurator's host
/// as a, the certificate ID as b, the product as c and the component as d. With neither certificate ID nor component
/// (requests may go out without an ID) it is the key's default value. An entry whose name would be longer than 259
/// characters does not exist: its object is closed, and no time stamp is kept for it.
class AUTOOLS_API CRegDataCaching : public CRegBase
{
public:
    CRegDataCaching(const char* a, const char* b, const char* c, const char* d, bool readOnly);
    CRegDataCaching(const CRegDataCaching& other);
    CRegDataCaching& operator=(const CRegDataCaching& other);

    /// "1980-01-01 00:00:00" when missing or empty.
    String GetTimeStamp();
    void SetTimeStamp(String& timeStamp);
    /// The value's name, which is also the base name of the cache file; "" too when it would be too long.
    const char* GetEntryName() const;

private:
    char m_entryName[260];
};

#endif
