#include "fileops/CFileVersion.h"

#include "platform/BoundedText.h"
#include "platform/EntryPoint.h"
#include "platform/Layout.h"
#include "platform/UniqueResource.h"

#include <cstring>
#include <new>
#include <string>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<CFileVersion>
{
    static_assert(sizeof(CFileVersion) == 48);
    static_assert(offsetof(CFileVersion, m_block) == 0);
    static_assert(offsetof(CFileVersion, m_translation) == 8);
    static_assert(offsetof(CFileVersion, m_library) == 16);
    static_assert(offsetof(CFileVersion, m_getSize) == 24);
    static_assert(offsetof(CFileVersion, m_getInfo) == 32);
    static_assert(offsetof(CFileVersion, m_query) == 40);
};
AUT_LAYOUT_END

CFileVersion::CFileVersion()
    : m_block(nullptr), m_translation(0), m_library(::LoadLibraryA("Version.dll")),
      m_getSize(aut::entryPoint<decltype(m_getSize)>(m_library, "GetFileVersionInfoSizeA")),
      m_getInfo(aut::entryPoint<decltype(m_getInfo)>(m_library, "GetFileVersionInfoA")),
      m_query(aut::entryPoint<decltype(m_query)>(m_library, "VerQueryValueA"))
{
}

CFileVersion::~CFileVersion()
{
    Close();
    aut::UniqueModule(m_library).reset();
}

void CFileVersion::Close()
{
    ::operator delete(m_block);
    m_block = nullptr;
    m_translation = 0;
}

int CFileVersion::Open(const char* path)
{
    Close();
    if (path == nullptr || m_getSize == nullptr || m_getInfo == nullptr || m_query == nullptr)
        return 0;

    unsigned long ignored = 0;
    const unsigned long size = m_getSize(path, &ignored);
    if (size == 0)
        return 0;
    m_block = ::operator new(size, std::nothrow);

    // Each entry of the table is a language identifier and a code page.
    unsigned short entry[2];
    void* table = nullptr;
    unsigned int tableBytes = 0;
    if (m_block == nullptr || !m_getInfo(path, 0, size, m_block) ||
        !m_query(m_block, "\\VarFileInfo\\Translation", &table, &tableBytes) || tableBytes < sizeof entry)
    {
        // Deliberately so also for a file that has a version but no translation table.
        Close();
        return 0;
    }
    std::memcpy(entry, table, sizeof entry);
    m_translation = static_cast<unsigned long>(entry[0]) << 16 | entry[1];
    return 1;
}

String CFileVersion::QueryValue(const char* name, unsigned long translation)
{
    if (m_block == nullptr)
        return String();
    try
    {
        char table[32];
        aut::formatText(table, sizeof table, "\\StringFileInfo\\%08lx\\",
                        translation != 0 ? translation : m_translation);
        const std::string query = std::string(table) + aut::orEmpty(name);

        void* value = nullptr;
        unsigned int length = 0;
        if (!m_query(m_block, query.c_str(), &value, &length) || value == nullptr)
            return String();
        // The length counts a terminator that the file need not have.
        const char* const text = static_cast<const char*>(value);
        return String(std::string(text, ::strnlen(text, length)).c_str());
    }
    catch (const std::bad_alloc&)
    {
        return String();
    }
}

int CFileVersion::GetFixedInfo(VS_FIXEDFILEINFO& info)
{
    void* record = nullptr;
    unsigned int bytes = 0;
    if (m_block == nullptr || !m_query(m_block, "\\", &record, &bytes) || bytes < sizeof info)
        return 0;
    std::memcpy(&info, record, sizeof info);
    return 1;
}

namespace
{
String fixedVersionText(DWORD mostSignificant, DWORD leastSignificant)
{
    String text;
    text.Format("%u,%u,%u,%u", static_cast<unsigned int>(HIWORD(mostSignificant)),
                static_cast<unsigned int>(LOWORD(mostSignificant)), static_cast<unsigned int>(HIWORD(leastSignificant)),
                static_cast<unsigned int>(LOWORD(leastSignificant)));
    return text;
}
} // namespace

String CFileVersion::GetFixedFileVersion()
{
    VS_FIXEDFILEINFO info;
    return GetFixedInfo(info) ? fixedVersionText(info.dwFileVersionMS, info.dwFileVersionLS) : String();
}

String CFileVersion::GetFixedProductVersion()
{
    VS_FIXEDFILEINFO info;
    return GetFixedInfo(info) ? fixedVersionText(info.dwProductVersionMS, info.dwProductVersionLS) : String();
}
