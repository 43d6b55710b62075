#include "registry/CRegDataCaching.h"

#include "platform/BoundedText.h"
#include "registry/TypedValues.h"

CRegDataCaching::CRegDataCaching(const char* a, const char* b, const char* c, const char* d, bool readOnly)
    : CRegBase(aut::kAutoUpdateKey, "Config\\Cache\\Data", c, a, readOnly), m_entryName{}
{
    const bool fits = aut::isEmpty(d) ? aut::copyText(m_entryName, b)
                                      : aut::formatText(m_entryName, sizeof m_entryName, "%s__%s", aut::orEmpty(b), d);
    if (!fits)
    {
        m_entryName[0] = '\0'; // cut, it could be the name of another entry
        Close();               // and the empty name is that of requests without a certificate ID
    }
}

CRegDataCaching::CRegDataCaching(const CRegDataCaching& other) = default;
CRegDataCaching& CRegDataCaching::operator=(const CRegDataCaching& other) = default;

String CRegDataCaching::GetTimeStamp()
{
    String timeStamp;
    QueryValue(m_entryName, timeStamp);
    return timeStamp.IsEmpty() ? String("1980-01-01 00:00:00") : timeStamp;
}

void CRegDataCaching::SetTimeStamp(String& timeStamp) { SetValue(m_entryName, timeStamp); }

const char* CRegDataCaching::GetEntryName() const { return m_entryName; }
