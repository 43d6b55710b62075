#include "fileops/RT_Dir.h"

#include "fileops/PathSplitting.h"
#include "platform/Layout.h"

#include <windows.h>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<RT_Dir>
{
    static_assert(sizeof(RT_Dir) == 88);
    static_assert(offsetof(RT_Dir, m_drive) == 8);
    static_assert(offsetof(RT_Dir, m_server) == 24);
    static_assert(offsetof(RT_Dir, m_path) == 40);
    static_assert(offsetof(RT_Dir, m_dirName) == 56);
    static_assert(offsetof(RT_Dir, m_fullPath) == 72);
};
AUT_LAYOUT_END

RT_Dir::RT_Dir(const String& fullPath)
{
    InitMembers();
    SetFullPath(fullPath);
}

RT_Dir::RT_Dir(const String& parent, const String& name)
{
    InitMembers();
    SetFullPath(parent, name);
}

RT_Dir::RT_Dir(const RT_Dir& other)
{
    InitMembers();
    *this = other;
}

RT_Dir& RT_Dir::operator=(const RT_Dir& other)
{
    m_drive = other.m_drive;
    m_server = other.m_server;
    m_path = other.m_path;
    m_dirName = other.m_dirName;
    m_fullPath = other.m_fullPath;
    const auto isWhole = [](const String& copy, const String& text) { return copy.GetLength() == text.GetLength(); };
    if (!isWhole(m_drive, other.m_drive) || !isWhole(m_server, other.m_server) || !isWhole(m_path, other.m_path) ||
        !isWhole(m_dirName, other.m_dirName))
        m_fullPath.Empty(); // a directory that lost its name would be copied and moved onto its target's parent
    return *this;
}

RT_Dir::~RT_Dir() = default;

void RT_Dir::InitMembers()
{
    m_drive.Empty();
    m_server.Empty();
    m_path.Empty();
    m_dirName.Empty();
    m_fullPath.Empty();
}

void RT_Dir::CleanPath(String& path) { aut::cleanPath(path); }

bool RT_Dir::Initialize(const String& text) { return aut::splitRoot(text, m_drive, m_server, m_path); }

void RT_Dir::SetFullPath(const String& fullPath)
{
    if (!Initialize(fullPath))
        return;
    if (aut::splitLastComponent(m_path, m_dirName))
        aut::joinPath(m_drive, m_server, m_path, m_dirName, m_fullPath);
    else
        m_fullPath.Empty();
}

void RT_Dir::SetFullPath(const String& parent, const String& name)
{
    const int length = name.GetLength();
    m_dirName = name; // first, so that it stands even when the parent is refused
    if (m_dirName.GetLength() != length)
        m_fullPath.Empty(); // without its name, this would be the parent
    else if (Initialize(parent))
        aut::joinPath(m_drive, m_server, m_path, m_dirName, m_fullPath);
}

String RT_Dir::GetFullPath() { return m_fullPath; }

String RT_Dir::GetDirName() { return m_dirName; }

String RT_Dir::GetPath() { return m_path; }

namespace
{
constexpr int kLongestPathChars = 32767; // of any path that the system knows

bool isDirectory(const char* path)
{
    const DWORD attributes = ::GetFileAttributesA(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

/// Another process may create the same folder between our test and our attempt; what counts is that it is there.
bool makeDirectory(const char* path)
{
    return ::CreateDirectoryA(path, nullptr) != FALSE ||
           (::GetLastError() == ERROR_ALREADY_EXISTS && isDirectory(path));
}
} // namespace

int RT_Dir::IsExisting() { return isDirectory(m_fullPath) ? 1 : 0; }

int RT_Dir::Create()
{
    if (m_fullPath.GetLength() > kLongestPathChars)
        return 0;
    // Up to the nearest ancestor that exists, then down again. Not by recursion: the depth is the caller's text.
    int end = m_fullPath.GetLength();
    for (;;)
    {
        const String ancestor = m_fullPath.Left(end);
        if (isDirectory(ancestor))
            break;
        const bool isServer = !m_server.IsEmpty() && ancestor == m_server;
        const bool isDrive = !m_drive.IsEmpty() && ancestor == m_drive;
        if (isServer || isDrive)
            return 0; // a root that does not exist cannot be made
        const int last = ancestor.ReverseFind('\\');
        if (last == -1)
            break; // a name without any folder deliberately counts as there
        end = last;
    }
    while (end < m_fullPath.GetLength())
    {
        const int next = m_fullPath.Find('\\', end + 1);
        end = next == -1 ? m_fullPath.GetLength() : next;
        if (!makeDirectory(m_fullPath.Left(end)))
            return 0;
    }
    return 1;
}
