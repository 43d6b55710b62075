#include "fileops/RT_File.h"

#include "fileops/FileState.h"
#include "fileops/PathSplitting.h"
#include "foundation/WholeText.h"
#include "platform/BoundedText.h"
#include "platform/Layout.h"

#include <cstddef>
#include <cstring>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<RT_File>
{
    static_assert(sizeof(RT_File) == 96);
    static_assert(offsetof(RT_File, m_drive) == 8);
    static_assert(offsetof(RT_File, m_server) == 24);
    static_assert(offsetof(RT_File, m_path) == 40);
    static_assert(offsetof(RT_File, m_fileName) == 56);
    static_assert(offsetof(RT_File, m_fullPath) == 72);
    static_assert(offsetof(RT_File, m_handle) == 88);
};
AUT_LAYOUT_END

RT_File::RT_File() { InitMembers(); }

RT_File::RT_File(const char* fullPath)
{
    InitMembers();
    SetFullPath(fullPath);
}

RT_File::RT_File(const char* path, const char* fileName)
{
    InitMembers();
    SetFullPath(path, fileName);
}

RT_File::RT_File(const RT_File& other) // the handle value too: callers copy closed files only
{
    InitMembers();
    *this = other;
}

RT_File& RT_File::operator=(const RT_File& other)
{
    if (this == &other)
        return *this;
    if (m_handle != other.m_handle) // a copy of `other` may hold the very handle that it is about to take over
        Close();
    m_drive = other.m_drive;
    m_server = other.m_server;
    m_path = other.m_path;
    m_fileName = other.m_fileName;
    m_fullPath = other.m_fullPath;
    m_handle = other.m_handle;
    if (m_fileName.GetLength() != other.m_fileName.GetLength())
        m_fullPath.Empty();
    return *this;
}

RT_File::~RT_File() { Close(); }

void RT_File::InitMembers()
{
    m_drive.Empty();
    m_server.Empty();
    m_path.Empty();
    m_fileName.Empty();
    m_fullPath.Empty();
    m_handle = INVALID_HANDLE_VALUE;
}

bool RT_File::Initialize(const String& text) { return aut::splitRoot(text, m_drive, m_server, m_path); }

void RT_File::SetFullPath(const char* fullPath)
{
    if (!Initialize(fullPath))
        return;
    if (aut::splitLastComponent(m_path, m_fileName))
        aut::joinPath(m_drive, m_server, m_path, m_fileName, m_fullPath);
    else
        m_fullPath.Empty();
}

namespace
{
bool hasLength(const String& text, std::size_t length) { return static_cast<std::size_t>(text.GetLength()) == length; }
} // namespace

void RT_File::SetFullPath(const char* path, const char* fileName)
{
    const String directory(path); // either text may lie in this object
    const std::size_t directoryLength = std::strlen(aut::orEmpty(path));
    const std::size_t nameLength = std::strlen(aut::orEmpty(fileName));
    m_fileName = fileName; // first, so that it stands even when the directory is refused
    if (!hasLength(directory, directoryLength) || !hasLength(m_fileName, nameLength))
        m_fullPath.Empty(); // without its name, this would be the directory
    else if (Initialize(directory))
        aut::joinPath(m_drive, m_server, m_path, m_fileName, m_fullPath);
}

const char* RT_File::GetFullPath() { return m_fullPath; }

const char* RT_File::GetFileName() { return m_fileName; }

const char* RT_File::GetPath() { return m_path; }

HANDLE RT_File::GetFileHandle() { return m_handle; }

bool RT_File::IsFileExisting(const char* directory)
{
    if (directory == nullptr)
        return aut::pathExists(m_fullPath);
    return aut::pathExists(aut::wholeText({directory, "\\", m_fileName}));
}
