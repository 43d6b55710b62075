#ifndef AUTOOL_STATE_KNOWNVALUES_H
#define AUTOOL_STATE_KNOWNVALUES_H

#include <windows.h>

#include <string>
#include <vector>

namespace autool
{
/// A value of the client's registry tree that the library reads.
struct KnownValue
{
    const wchar_t* key; ///< below the tree's own key, which is ""
    const wchar_t* name;
    DWORD type;
    const char* missing; ///< what the library takes when it is not there
    bool isTime = false; ///< seconds since 1970
};
const std::vector<KnownValue>& knownValues();
/// Null when the library does not know it.
const KnownValue* knownValue(const std::wstring& key, const std::wstring& name);
} // namespace autool

#endif
