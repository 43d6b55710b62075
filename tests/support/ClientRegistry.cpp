#include "tests/support/ClientRegistry.h"

#include "platform/UniqueResource.h"

#include <gtest/gtest.h>

namespace auttest
{
namespace
{
// RegDeleteTreeA knows no 64-bit view of its own; the tests are 64-bit programs, so the view is theirs anyway.
aut::UniqueKey open(HKEY root, const std::string& path, REGSAM access)
{
    HKEY key = nullptr;
    ::RegOpenKeyExA(root, path.c_str(), 0, access | KEY_WOW64_64KEY, &key);
    return aut::UniqueKey(key);
}

aut::UniqueKey create(HKEY root, const std::string& path)
{
    HKEY key = nullptr;
    EXPECT_EQ(ERROR_SUCCESS, ::RegCreateKeyExA(root, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                               KEY_ALL_ACCESS | KEY_WOW64_64KEY, nullptr, &key, nullptr))
        << path;
    return aut::UniqueKey(key);
}
} // namespace

std::string Registry::full(std::string_view key) const
{
    std::string path = m_path;
    if (!path.empty() && !key.empty())
        path += '\\';
    return path.append(key);
}

void Registry::write(std::string_view key, const char* name, DWORD number) const
{
    writeRaw(key, name, REG_DWORD, {reinterpret_cast<const char*>(&number), sizeof number});
}

void Registry::write(std::string_view key, const char* name, std::string_view text) const
{
    const std::string terminated(text);
    writeRaw(key, name, REG_SZ, {terminated.c_str(), terminated.size() + 1});
}

void Registry::writeRaw(std::string_view key, const char* name, DWORD type, std::string_view bytes) const
{
    const aut::UniqueKey opened = create(m_root, full(key));
    // Windows looks behind a text without a terminator, and stores the one it finds there too.
    const std::string followed = std::string(bytes) + "##";
    EXPECT_EQ(ERROR_SUCCESS,
              ::RegSetValueExA(opened.get(), name, 0, type, reinterpret_cast<const BYTE*>(followed.data()),
                               static_cast<DWORD>(bytes.size())))
        << full(key) << ", " << name;
}

void Registry::createKey(std::string_view key) const { create(m_root, full(key)); }

std::optional<StoredValue> Registry::readRaw(std::string_view key, const char* name) const
{
    const aut::UniqueKey opened = open(m_root, full(key), KEY_QUERY_VALUE);
    DWORD size = 0;
    if (!opened || ::RegQueryValueExA(opened.get(), name, nullptr, nullptr, nullptr, &size) != ERROR_SUCCESS)
        return std::nullopt;
    StoredValue value;
    value.bytes.resize(size + 1u); // Windows may add a terminator that is not stored
    size = static_cast<DWORD>(value.bytes.size());
    if (::RegQueryValueExA(opened.get(), name, nullptr, &value.type, reinterpret_cast<BYTE*>(value.bytes.data()),
                           &size) != ERROR_SUCCESS)
        return std::nullopt;
    value.bytes.resize(size);
    return value;
}

std::optional<DWORD> Registry::readNumber(std::string_view key, const char* name) const
{
    const std::optional<StoredValue> value = readRaw(key, name);
    DWORD number = 0;
    if (!value || value->type != REG_DWORD || value->bytes.size() != sizeof number)
        return std::nullopt;
    value->bytes.copy(reinterpret_cast<char*>(&number), sizeof number);
    return number;
}

std::optional<std::string> Registry::readText(std::string_view key, const char* name) const
{
    const std::optional<StoredValue> value = readRaw(key, name);
    if (!value || value->type != REG_SZ)
        return std::nullopt;
    return std::string(value->bytes.c_str());
}

bool Registry::keyExists(std::string_view key) const
{
    return static_cast<bool>(open(m_root, full(key), KEY_QUERY_VALUE));
}

std::vector<std::string> Registry::subkeys(std::string_view key) const
{
    std::vector<std::string> names;
    const aut::UniqueKey opened = open(m_root, full(key), KEY_ENUMERATE_SUB_KEYS);
    char name[256];
    for (DWORD size = sizeof name;
         opened && ::RegEnumKeyExA(opened.get(), static_cast<DWORD>(names.size()), name, &size, nullptr, nullptr,
                                   nullptr, nullptr) == ERROR_SUCCESS;
         size = sizeof name)
        names.emplace_back(name, size);
    return names;
}

std::vector<std::string> Registry::valueNames(std::string_view key) const
{
    std::vector<std::string> names;
    const aut::UniqueKey opened = open(m_root, full(key), KEY_QUERY_VALUE);
    std::string name(16384, '\0');
    for (DWORD size = 16384; opened && ::RegEnumValueA(opened.get(), static_cast<DWORD>(names.size()), name.data(),
                                                       &size, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         size = 16384)
        names.push_back(name.substr(0, size));
    return names;
}

void Registry::removeValue(std::string_view key, const char* name) const
{
    const aut::UniqueKey opened = open(m_root, full(key), KEY_SET_VALUE);
    if (opened)
        ::RegDeleteValueA(opened.get(), name);
}

void Registry::removeKey(std::string_view key) const
{
    const LSTATUS removed = ::RegDeleteTreeA(m_root, full(key).c_str());
    EXPECT_TRUE(removed == ERROR_SUCCESS || removed == ERROR_FILE_NOT_FOUND) << full(key) << ", error " << removed;
}

ClientRegistry::ClientRegistry() : Registry(HKEY_LOCAL_MACHINE, kPath) { removeKey(""); }

ClientRegistry::~ClientRegistry() { removeKey(""); }
} // namespace auttest
