#include "fileops/DirectoryWalk.h"

#include <cstring>

namespace aut
{
namespace
{
/// Windows itself knows which kinds of reparse points stand for another place. One without a kind comes from a file
/// system that has nothing but links.
bool isLinkTag(DWORD tag) { return tag == 0 || IsReparseTagNameSurrogate(tag); }

bool isDots(const char* name) { return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0; }
} // namespace

PathKind kindOf(const char* path)
{
    const DWORD attributes = ::GetFileAttributesA(path);
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return PathKind::Missing;
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
        return PathKind::File;
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
        return PathKind::Directory;
    WIN32_FIND_DATAA entry{};
    const UniqueFind search(::FindFirstFileA(path, &entry)); // nothing but a listing tells the kind
    return search && !isLinkTag(entry.dwReserved0) ? PathKind::Directory : PathKind::Link;
}

DirectoryWalk::DirectoryWalk(const char* directory)
{
    const std::string pattern = std::string(directory) + "\\*.*";
    m_search = UniqueFind(::FindFirstFileA(pattern.c_str(), &m_entry));
    m_hasEntry = static_cast<bool>(m_search);
    if (!m_hasEntry)
        m_error = ::GetLastError();
}

bool DirectoryWalk::next()
{
    while (m_search)
    {
        if (!m_hasEntry && !::FindNextFileA(m_search.get(), &m_entry))
        {
            m_error = ::GetLastError();
            m_search.reset();
            break;
        }
        m_hasEntry = false;
        if (!isDots(m_entry.cFileName))
            return true;
    }
    return false;
}

const char* DirectoryWalk::name() const
{
    const bool isWhole = std::strchr(m_entry.cFileName, '?') == nullptr;
    return isWhole || m_entry.cAlternateFileName[0] == '\0' ? m_entry.cFileName : m_entry.cAlternateFileName;
}

bool DirectoryWalk::isLink() const
{
    return isDirectory() && (m_entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           isLinkTag(m_entry.dwReserved0);
}

TreePosition::TreePosition(const char* root) : m_path(root), m_rootLength(m_path.size())
{
    m_levels.push_back({m_rootLength, {}});
}

void TreePosition::addSubdirectory(const char* name) { m_levels.back().subdirectories.emplace_back(name); }

bool TreePosition::enter()
{
    Level& level = m_levels.back();
    if (level.entered == level.subdirectories.size())
        return false;
    m_path += '\\';
    m_path += level.subdirectories[level.entered++];
    m_levels.push_back({m_path.size(), {}}); // ends the use of `level`
    return true;
}

bool TreePosition::leave()
{
    if (m_levels.size() == 1)
        return false;
    m_levels.pop_back();
    m_path.resize(m_levels.back().pathLength);
    return true;
}

bool TreePosition::advance()
{
    while (!enter())
        if (!leave())
            return false;
    return true;
}
} // namespace aut
