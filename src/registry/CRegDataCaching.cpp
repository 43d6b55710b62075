#include "registry/CRegDataCaching.h"

#include "platform/BoundedText.h"
#include "registry/TypedValues.h"

CRegDataCaching::CRegDataCaching(const char* a, const char* b, const char* c, const char* d, bool readOnly)
    : CRegBase(aut::kAutoUpdateKey, "Config\\Cache\\Data", c, a, readOnly), m_entryName{}
{
    aut::copyText(m_entryName, b);
    if (!aut::isEmpty(d))
        aut::formatText(m_entryName, sizeof m_entryName, "%s__%s", aut::orEmpty(b), d);
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
