#include "fileops/RT_File.h"

#include "platform/UniqueResource.h"

#include <optional>

namespace
{
/// Windows' own key of shared files, one count by full path. It is there on every system and never created here.
aut::UniqueKey openSharedFiles()
{
    aut::UniqueKey key;
    if (::RegOpenKeyExA(HKEY_LOCAL_MACHINE, "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\SharedDLLs", 0,
                        KEY_READ | KEY_WRITE, key.put()) != ERROR_SUCCESS)
        return aut::UniqueKey();
    return key;
}

/// The count of a file; nothing when it is missing or no 32-bit number.
std::optional<DWORD> readCount(const aut::UniqueKey& key, const char* path)
{
    DWORD type = REG_NONE;
    DWORD count = 0;
    DWORD size = sizeof count;
    if (::RegQueryValueExA(key.get(), path, nullptr, &type, reinterpret_cast<BYTE*>(&count), &size) != ERROR_SUCCESS ||
        type != REG_DWORD || size != sizeof count)
        return std::nullopt;
    return count;
}

void writeCount(const aut::UniqueKey& key, const char* path, DWORD count)
{
    ::RegSetValueExA(key.get(), path, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&count), sizeof count);
}
} // namespace

bool RT_File::Share()
{
    const aut::UniqueKey key = openSharedFiles();
    if (!key)
        return false;
    writeCount(key, m_fullPath, readCount(key, m_fullPath).value_or(0) + 1);
    return true;
}

bool RT_File::UnShare()
{
    const aut::UniqueKey key = openSharedFiles();
    if (!key)
        return false;
    const std::optional<DWORD> count = readCount(key, m_fullPath);
    if (!count)
        return true;
    if (*count <= 1) // a count that somebody left at 0 cannot go lower
        ::RegDeleteValueA(key.get(), m_fullPath);
    else
        writeCount(key, m_fullPath, *count - 1);
    return true;
}
