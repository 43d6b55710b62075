#include "registry/CRegUpdatingConfigs.h"

#include "platform/BoundedText.h"
#include "registry/TypedValues.h"

#include <cstring>

namespace
{
constexpr char kUpdating[] = "updating";

String markName(const char* cid) { return String(cid) + "__config"; }
} // namespace

CRegUpdatingConfigs::CRegUpdatingConfigs(const char* a, const char* /*b*/, const char* c, bool readOnly)
    : CRegBase(aut::kAutoUpdateKey, "Config\\Cache\\UpdatingConfigs", c, a, readOnly)
{
}

void CRegUpdatingConfigs::SetUpdatingConfigForCID(const char* cid)
{
    if (!aut::isEmpty(cid))
        SetValue(markName(cid), kUpdating);
}

bool CRegUpdatingConfigs::IsUpdatingConfigForCID(const char* cid)
{
    return !aut::isEmpty(cid) && std::strcmp(aut::readText(*this, m_value, markName(cid)), kUpdating) == 0;
}

void CRegUpdatingConfigs::DeleteUpdatingConfigForCID(const char* cid)
{
    if (!aut::isEmpty(cid))
        DeleteValue(markName(cid));
}
