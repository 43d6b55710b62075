#include "machine/RegistryReader.h"

#include "machine/Client.h"
#include "machine/Owners.h"

#include <algorithm>
#include <cstring>

namespace autool
{
namespace
{
constexpr DWORD kNameSize = 16384; ///< more than any name of a key or value has

RegistryKey readKey(Key key, std::wstring name, const std::function<void()>& progress)
{
    RegistryKey read;
    read.name = std::move(name);
    if (progress)
        progress();
    FILETIME written{};
    if (::RegQueryInfoKeyW(key.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                           nullptr, &written) == ERROR_SUCCESS)
        read.written = secondsOf(written);
    std::vector<wchar_t> buffer(kNameSize);
    for (DWORD index = 0;; ++index)
    {
        DWORD nameSize = kNameSize;
        DWORD size = 0;
        RegistryValue value;
        LSTATUS status =
            ::RegEnumValueW(key.get(), index, buffer.data(), &nameSize, nullptr, &value.type, nullptr, &size);
        if (status == ERROR_NO_MORE_ITEMS)
            break;
        value.name.assign(buffer.data(), nameSize);
        // Another process may write it in between: asked once more with room for a longer one.
        value.data.resize(size + 64u);
        size = static_cast<DWORD>(value.data.size());
        if (status == ERROR_SUCCESS)
            status = ::RegQueryValueExW(key.get(), value.name.c_str(), nullptr, &value.type, value.data.data(), &size);
        if (status != ERROR_SUCCESS)
        {
            read.error = status;
            break;
        }
        value.data.resize(size);
        read.values.push_back(std::move(value));
    }
    for (DWORD index = 0;; ++index)
    {
        DWORD nameSize = kNameSize;
        const LSTATUS status =
            ::RegEnumKeyExW(key.get(), index, buffer.data(), &nameSize, nullptr, nullptr, nullptr, nullptr);
        if (status == ERROR_NO_MORE_ITEMS)
            break;
        if (status != ERROR_SUCCESS)
        {
            read.error = status;
            break;
        }
        std::wstring childName(buffer.data(), nameSize);
        Key child;
        const LSTATUS opened =
            ::RegOpenKeyExW(key.get(), childName.c_str(), 0, KEY_READ | KEY_WOW64_64KEY, child.put());
        if (opened == ERROR_SUCCESS)
            read.keys.push_back(readKey(std::move(child), std::move(childName), progress));
        else
        {
            RegistryKey& closed = read.keys.emplace_back();
            closed.name = std::move(childName);
            closed.error = opened;
        }
    }
    const auto byName = [](const auto& left, const auto& right)
    { return ::_wcsicmp(left.name.c_str(), right.name.c_str()) < 0; };
    std::sort(read.values.begin(), read.values.end(), byName);
    std::sort(read.keys.begin(), read.keys.end(), byName);
    return read;
}
} // namespace

std::wstring RegistryValue::text() const
{
    std::wstring whole(data.size() / sizeof(wchar_t), L'\0');
    if (!whole.empty())
        std::memcpy(whole.data(), data.data(), whole.size() * sizeof(wchar_t));
    if (type == REG_MULTI_SZ)
        return whole;
    return whole.substr(0, whole.find(L'\0'));
}

std::vector<std::wstring> RegistryValue::texts() const
{
    const std::wstring whole = text();
    std::vector<std::wstring> found;
    for (std::size_t at = 0; at < whole.size();)
    {
        const std::size_t end = std::min(whole.find(L'\0', at), whole.size());
        found.push_back(whole.substr(at, end - at));
        at = end + 1;
    }
    while (!found.empty() && found.back().empty())
        found.pop_back(); // the end of the list
    return found;
}

std::optional<unsigned __int64> RegistryValue::number() const
{
    const std::size_t size = type == REG_QWORD ? sizeof(unsigned __int64) : sizeof(DWORD);
    if ((type != REG_QWORD && type != REG_DWORD) || data.size() < size)
        return std::nullopt;
    unsigned __int64 read = 0;
    std::memcpy(&read, data.data(), size);
    return read;
}

const RegistryValue* RegistryKey::value(const wchar_t* valueName) const
{
    for (const RegistryValue& candidate : values)
        if (::_wcsicmp(candidate.name.c_str(), valueName) == 0)
            return &candidate;
    return nullptr;
}

const RegistryKey* RegistryKey::key(const wchar_t* keyName) const
{
    for (const RegistryKey& candidate : keys)
        if (::_wcsicmp(candidate.name.c_str(), keyName) == 0)
            return &candidate;
    return nullptr;
}

std::optional<RegistryKey> readTree(HKEY root, const std::wstring& path, const std::function<void()>& progress)
{
    Key key;
    const LSTATUS status = ::RegOpenKeyExW(root, path.c_str(), 0, KEY_READ | KEY_WOW64_64KEY, key.put());
    if (status == ERROR_FILE_NOT_FOUND)
        return std::nullopt;
    if (status == ERROR_SUCCESS)
        return readKey(std::move(key), L"", progress);
    RegistryKey closed;
    closed.error = status;
    return closed;
}

std::optional<RegistryValue> readValue(HKEY root, const std::wstring& path, const wchar_t* name)
{
    Key key;
    RegistryValue value;
    value.name = name;
    DWORD size = 0;
    if (::RegOpenKeyExW(root, path.c_str(), 0, KEY_READ | KEY_WOW64_64KEY, key.put()) != ERROR_SUCCESS ||
        ::RegQueryValueExW(key.get(), name, nullptr, &value.type, nullptr, &size) != ERROR_SUCCESS)
        return std::nullopt;
    value.data.resize(size + 64u);
    size = static_cast<DWORD>(value.data.size());
    if (::RegQueryValueExW(key.get(), name, nullptr, &value.type, value.data.data(), &size) != ERROR_SUCCESS)
        return std::nullopt;
    value.data.resize(size);
    return value;
}

std::string typeName(DWORD type)
{
    static const char* const kNames[] = {"REG_NONE",
                                         "REG_SZ",
                                         "REG_EXPAND_SZ",
                                         "REG_BINARY",
                                         "REG_DWORD",
                                         "REG_DWORD_BIG_ENDIAN",
                                         "REG_LINK",
                                         "REG_MULTI_SZ",
                                         "REG_RESOURCE_LIST",
                                         "REG_FULL_RESOURCE_DESCRIPTOR",
                                         "REG_RESOURCE_REQUIREMENTS_LIST",
                                         "REG_QWORD"};
    return type < std::size(kNames) ? kNames[type] : "type " + std::to_string(type);
}
} // namespace autool
