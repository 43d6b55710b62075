#ifndef AUTOOL_MACHINE_REGISTRYREADER_H
#define AUTOOL_MACHINE_REGISTRYREADER_H

#include <windows.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace autool
{
constexpr wchar_t kClientTree[] = L"Software\\Velmora\\7xAutoUpdate";

/// One value as it is stored. Whatever the type, `data` may be cut off anywhere.
struct RegistryValue
{
    std::wstring name; ///< "" is the key's unnamed value
    DWORD type = REG_NONE;
    std::vector<BYTE> data;

    /// The data as text, up to its first terminator; of a multi-text value all its texts.
    std::wstring text() const;
    std::vector<std::wstring> texts() const;
    /// The number in the first bytes; nothing when there are not enough for its type.
    std::optional<unsigned __int64> number() const;
};

/// A key with everything below it, in the order of its names.
struct RegistryKey
{
    std::wstring name;
    __int64 written = 0;           ///< when it or a value of it was last changed, seconds since 1970
    LSTATUS error = ERROR_SUCCESS; ///< why it, or part of it, could not be read
    std::vector<RegistryValue> values;
    std::vector<RegistryKey> keys;

    const RegistryValue* value(const wchar_t* valueName) const;
    const RegistryKey* key(const wchar_t* keyName) const;
};

/// Reads a tree of the 64-bit view with read access only. Nothing when there is no such key.
/// @param progress  Called for each key.
std::optional<RegistryKey> readTree(HKEY root, const std::wstring& path, const std::function<void()>& progress = {});
/// One value of the 64-bit view; nothing when it is missing or may not be read.
std::optional<RegistryValue> readValue(HKEY root, const std::wstring& path, const wchar_t* name);

/// "REG_SZ"; "type 7531" for what has no name.
std::string typeName(DWORD type);
} // namespace autool

#endif
