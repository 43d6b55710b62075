#include "registry/CRegLogon.h"

#include "platform/BoundedText.h"
#include "registry/TypedValues.h"

CRegLogon::CRegLogon(bool readOnly) : CRegBase(aut::kAutoUpdateKey, "Config\\Logon", readOnly) {}

void CRegLogon::SetLogonName(const char* name)
{
    if (!aut::isEmpty(name))
        SetValue(name, name);
}

void CRegLogon::RemoveLogonName(const char* name) { DeleteValue(name); }

bool CRegLogon::GetLogonNameList(RT_List<String, String&>& list) { return GetValues(list); }
