#ifndef AUTOOLS_FILEOPS_DIRECTORYWALK_H
#define AUTOOLS_FILEOPS_DIRECTORYWALK_H

#include "platform/UniqueResource.h"

#include <windows.h>

#include <string>
#include <vector>

namespace aut
{
/// What a path names. A link is a directory that stands for another place (a junction, a symbolic link, a mounted
/// volume): what lies behind it does not belong to the tree that holds it. Other reparse points (compressed or
/// offline data) hold their own contents and are directories like any other.
enum class PathKind
{
    Missing,
    File,
    Directory,
    Link
};

/// Asks the system now: between a listing and its use another process may have put a link there.
PathKind kindOf(const char* path);

/// One listing of a directory, "." and ".." left out. Move-only owner of the search.
class DirectoryWalk
{
public:
    explicit DirectoryWalk(const char* directory);

    /// Goes to the first, then to each next entry; false at the end.
    bool next();
    /// Whether everything has been listed, once next() was false. Not when the listing could not be started or broke
    /// off.
    bool isComplete() const { return m_error == ERROR_NO_MORE_FILES || m_error == ERROR_FILE_NOT_FOUND; }

    /// Of the entry at hand, until the next one. The 8.3 name where the long one has characters that the code page
    /// lacks: those were replaced by question marks, and nothing could be done to a file of that name.
    const char* name() const;
    bool isDirectory() const { return (m_entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }
    bool isLink() const;

private:
    UniqueFind m_search;
    WIN32_FIND_DATAA m_entry{};
    DWORD m_error = ERROR_SUCCESS;
    bool m_hasEntry = false; ///< the search begins with an entry that next() has not given yet
};

/// Where a walk through a tree stands, parents before their children.
///
/// A walk lists a directory to its end and only then goes into its subdirectories: the depth, which the disk decides,
/// costs neither stack nor open searches, and what a walk puts into the directory it lists cannot mislead it.
/// Throws std::bad_alloc.
class TreePosition
{
public:
    explicit TreePosition(const char* root);

    /// The directory at hand.
    const std::string& path() const { return m_path; }
    /// The same, seen from the root: empty, or beginning with a backslash.
    const char* pathBelowRoot() const { return m_path.c_str() + m_rootLength; }

    /// Notes a subdirectory of the directory at hand, to be entered later.
    void addSubdirectory(const char* name);
    /// Goes down into the next subdirectory noted; false when none is left.
    bool enter();
    /// Goes back up; false at the root.
    bool leave();
    /// Down if possible, else up until there is something to enter; false when the whole tree has been walked.
    bool advance();

    /// A mark of the directory at hand.
    bool hasFailed() const { return m_levels.back().failed; }
    void setFailed() { m_levels.back().failed = true; }

private:
    struct Level
    {
        std::size_t pathLength;
        std::vector<std::string> subdirectories;
        std::size_t entered = 0;
        bool failed = false;
    };

    std::string m_path;
    std::size_t m_rootLength;
    std::vector<Level> m_levels;
};
} // namespace aut

#endif
