#include "registry/CRegBase.h"

#include "platform/BoundedText.h"
#include "platform/Layout.h"
#include "registry/KeyPath.h"
#include "registry/TypedValues.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<CRegBase>
{
    static_assert(sizeof(CRegBase) == 536);
    static_assert(offsetof(CRegBase, m_key) == 0);
    static_assert(offsetof(CRegBase, m_value) == 8);
    static_assert(offsetof(CRegBase, m_path) == 268);
    static_assert(offsetof(CRegBase, m_access) == 528);
    static_assert(offsetof(CRegBase, m_valueCount) == 532);
};
AUT_LAYOUT_END

static_assert(KEY_READ == 0x20019 && aut::kReadWriteAccess == 0x3001F);

namespace
{
/// What fits a value buffer or a path with its terminator; names of subkeys and values are read into as much.
constexpr DWORD kBufferSize = 260;

bool isReadOnly(unsigned long access) { return (access & ~static_cast<unsigned long>(KEY_WOW64_64KEY)) == KEY_READ; }

/// Appends the names that `enumerate(index, buffer, sizeChars)` gives for the indexes below `count`.
template <typename Enumerate> bool collectNames(RT_List<String, String&>& list, DWORD count, Enumerate enumerate)
{
    list.RemoveAll();
    for (DWORD index = 0; index < count; ++index)
    {
        char name[kBufferSize] = "";
        DWORD size = kBufferSize;
        if (enumerate(index, name, &size) != ERROR_SUCCESS || !aut::appendTo(list, name))
            return false;
    }
    return true;
}
} // namespace

CRegBase::CRegBase() : m_key(nullptr), m_value{}, m_path{}, m_access(KEY_READ), m_valueCount(0) {}

CRegBase::CRegBase(const char* path, bool readOnly) : CRegBase() { Open(path, aut::accessFor(readOnly)); }

CRegBase::CRegBase(const char* part1, const char* part2, bool readOnly) : CRegBase()
{
    Open(aut::KeyPath{part1, part2}, aut::accessFor(readOnly));
}

CRegBase::CRegBase(const char* part1, const char* part2, const char* part3, bool readOnly) : CRegBase()
{
    Open(aut::KeyPath{part1, part2, part3}, aut::accessFor(readOnly));
}

CRegBase::CRegBase(const char* part1, const char* part2, const char* part3, const char* part4, bool readOnly)
    : CRegBase()
{
    Open(aut::KeyPath{part1, part2, part3, part4}, aut::accessFor(readOnly));
}

CRegBase::CRegBase(const CRegBase& other) = default;
CRegBase& CRegBase::operator=(const CRegBase& other) = default;

CRegBase::~CRegBase() { Close(); }

bool CRegBase::Open(HKEY root, const char* path, int access)
{
    Close();
    // Always the 64-bit view: both views asked for at once would be refused by the system.
    m_access = (static_cast<REGSAM>(access) & ~static_cast<REGSAM>(KEY_WOW64_32KEY)) | KEY_WOW64_64KEY;
    if (!aut::copyText(m_path, path))
    {
        m_path[0] = '\0';
        return false;
    }

    HKEY opened = nullptr;
    LSTATUS status = ::RegOpenKeyExA(root, m_path, 0, m_access, &opened);
    if (status != ERROR_SUCCESS && !isReadOnly(m_access))
        status =
            ::RegCreateKeyExA(root, m_path, 0, nullptr, REG_OPTION_NON_VOLATILE, m_access, nullptr, &opened, nullptr);
    m_key = status == ERROR_SUCCESS ? opened : nullptr;
    return m_key != nullptr;
}

bool CRegBase::Open(const char* path, int access) { return Open(HKEY_LOCAL_MACHINE, path, access); }

void CRegBase::Close()
{
    if (m_key != nullptr)
        ::RegCloseKey(m_key);
    m_key = nullptr;
    m_access = aut::kReadWriteAccess;
}

void CRegBase::Flush()
{
    if (m_key != nullptr)
        ::RegFlushKey(m_key);
}

bool CRegBase::QueryValue(const char* name, unsigned long& value)
{
    value = 0;
    if (m_key == nullptr)
        return false;
    DWORD stored = 0;
    DWORD size = sizeof stored;
    if (::RegQueryValueExA(m_key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(&stored), &size) != ERROR_SUCCESS)
        return false;
    value = stored;
    return true;
}

bool CRegBase::QueryValue(const char* name, char* buffer)
{
    if (buffer == nullptr)
        return false;
    DWORD size = kBufferSize;
    const bool found = m_key != nullptr && ::RegQueryValueExA(m_key, name, nullptr, nullptr,
                                                              reinterpret_cast<BYTE*>(buffer), &size) == ERROR_SUCCESS;
    // Data as long as the buffer fits only when its text ends in there.
    const bool fits = found && (size < kBufferSize || std::memchr(buffer, '\0', kBufferSize) != nullptr);
    buffer[fits ? std::min(size, kBufferSize - 1) : 0] = '\0';
    return fits;
}

bool CRegBase::QueryValue(const char* name, String& text)
{
    // Nearly all texts fit a buffer: those take one query.
    char fitting[kBufferSize + 1];
    DWORD size = kBufferSize;
    const LSTATUS status =
        m_key == nullptr ? ERROR_INVALID_HANDLE
                         : ::RegQueryValueExA(m_key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(fitting), &size);
    if (status == ERROR_SUCCESS)
    {
        fitting[size] = '\0';
        if (size > 0)
            text = fitting;
        return true;
    }
    if (status != ERROR_MORE_DATA)
    {
        text.Empty();
        return false;
    }

    // One byte more than the data: a text may be stored without its terminator.
    DWORD capacity = size + 1;
    const std::unique_ptr<char[]> data(new (std::nothrow) char[std::size_t{capacity} + 1]);
    if (data == nullptr || ::RegQueryValueExA(m_key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(data.get()),
                                              &capacity) != ERROR_SUCCESS)
    {
        text.Empty();
        return false;
    }
    data[capacity] = '\0';
    text = data.get();
    return true;
}

bool CRegBase::QueryAnyTypeValue(const char* name, String& text)
{
    text.Empty();
    DWORD type = REG_NONE;
    DWORD size = 0;
    if (m_key == nullptr || ::RegQueryValueExA(m_key, name, nullptr, &type, nullptr, &size) != ERROR_SUCCESS)
        return false;

    unsigned long number = 0;
    if (type == REG_SZ)
        QueryValue(name, text);
    else if (type == REG_DWORD && QueryValue(name, number))
        text.Format("%lu", number);
    else if (type == REG_BINARY)
        text.Format("%x", static_cast<unsigned int>(size)); // a number is promised, the data is not: its size
    return true;
}

bool CRegBase::SetValue(const char* name, const char* text)
{
    const char* const stored = aut::orEmpty(text);
    return WriteValue(name, REG_SZ, stored, static_cast<unsigned long>(std::strlen(stored) + 1));
}

bool CRegBase::SetValue(const char* name, unsigned long value)
{
    return WriteValue(name, REG_DWORD, &value, sizeof value);
}

bool CRegBase::DeleteValue(const char* name)
{
    if (!ReopenForWriting())
        return false;
    if (m_key == nullptr)
        return true;
    if (::RegDeleteValueA(m_key, name) != ERROR_SUCCESS)
        return false;
    Flush();
    return true;
}

bool CRegBase::DeleteKey()
{
    if (!ReopenForWriting())
        return false;
    if (m_key == nullptr)
        return true;
    if (m_path[0] == '\0')
        return false; // the whole hive is never meant

    // A subkey that stays would be met as number 0 for ever: it ends the walk, and then the key itself stays too.
    char name[kBufferSize];
    char previous[kBufferSize] = "";
    for (;;)
    {
        DWORD size = kBufferSize;
        if (::RegEnumKeyExA(m_key, 0, name, &size, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS ||
            std::strcmp(name, previous) == 0)
            break;
        CRegBase subKey(m_path, name, false);
        if (subKey.m_key == nullptr || !subKey.DeleteKey())
            break;
        aut::copyText(previous, name);
    }

    Close();
    return ::RegDeleteKeyExA(HKEY_LOCAL_MACHINE, m_path, KEY_WOW64_64KEY, 0) == ERROR_SUCCESS;
}

bool CRegBase::GetSubKeys(RT_List<String, String&>& list)
{
    DWORD count = 0;
    if (m_key == nullptr || ::RegQueryInfoKeyA(m_key, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr,
                                               nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
        return false;
    return collectNames(list, count,
                        [this](DWORD index, char* name, DWORD* size)
                        { return ::RegEnumKeyExA(m_key, index, name, size, nullptr, nullptr, nullptr, nullptr); });
}

bool CRegBase::GetValues(RT_List<String, String&>& list)
{
    DWORD count = 0;
    if (m_key == nullptr || ::RegQueryInfoKeyA(m_key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count,
                                               nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
        return false;
    return collectNames(list, count,
                        [this](DWORD index, char* name, DWORD* size)
                        { return ::RegEnumValueA(m_key, index, name, size, nullptr, nullptr, nullptr, nullptr); });
}

unsigned long CRegBase::GetSubValuesCount()
{
    m_valueCount = 0;
    DWORD count = 0;
    if (m_key != nullptr && ::RegQueryInfoKeyA(m_key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &count,
                                               nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS)
        m_valueCount = count;
    return m_valueCount;
}

String CRegBase::EnumerateStringValues(unsigned long& index)
{
    if (m_valueCount == 0)
        GetSubValuesCount();
    if (m_valueCount == 0 || m_key == nullptr || index >= m_valueCount)
        return String();

    char name[kBufferSize];
    DWORD size = kBufferSize;
    DWORD type = REG_NONE;
    const LSTATUS status = ::RegEnumValueA(m_key, index, name, &size, nullptr, &type, nullptr, nullptr);
    ++index;
    return status == ERROR_SUCCESS && type == REG_SZ ? String(name) : String();
}

bool CRegBase::ReopenForWriting()
{
    if (!isReadOnly(m_access))
        return true;
    return m_path[0] != '\0' && Open(m_path, aut::kReadWriteAccess);
}

bool CRegBase::WriteValue(const char* name, unsigned long type, const void* data, unsigned long size)
{
    if (!ReopenForWriting() || m_key == nullptr)
        return false;
    if (::RegSetValueExA(m_key, name, 0, type, static_cast<const BYTE*>(data), size) != ERROR_SUCCESS)
        return false;
    Flush();
    return true;
}
