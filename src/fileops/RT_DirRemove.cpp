#include "fileops/DirectoryWalk.h"
#include "fileops/RT_Dir.h"
#include "fileops/RT_File.h"

#include <windows.h>

#include <new>

using aut::DirectoryWalk;
using aut::kindOf;
using aut::PathKind;
using aut::TreePosition;

namespace
{
/// What one listing says about being empty.
struct Contents
{
    bool hasFile = false;
    std::string lastSubdirectory;
};

Contents contentsOf(const std::string& directory)
{
    Contents contents;
    DirectoryWalk walk(directory.c_str());
    while (!contents.hasFile && walk.next())
    {
        if (walk.isDirectory())
            contents.lastSubdirectory = walk.name();
        else
            contents.hasFile = true;
    }
    return contents;
}

/// Each subdirectory's answer replaces the one before, so that only the last one need be looked into. A link holds
/// nothing of this tree: it counts as an empty subdirectory.
bool isEmptyTree(std::string directory, bool recursive)
{
    for (;;)
    {
        const Contents contents = contentsOf(directory);
        if (contents.hasFile)
            return false;
        if (!recursive || contents.lastSubdirectory.empty())
            return true;
        directory += '\\';
        directory += contents.lastSubdirectory;
        if (kindOf(directory.c_str()) != PathKind::Directory)
            return true;
    }
}

/// Removes the files of the directory at hand and notes its subdirectories. A link has neither: it goes itself, what it
/// points to is another tree's.
void removeContents(TreePosition& at, OVERWRITEFLAG overwrite, bool recursive)
{
    if (kindOf(at.path().c_str()) != PathKind::Directory)
        return;
    DirectoryWalk walk(at.path().c_str());
    while (walk.next())
    {
        if (!walk.isDirectory())
        {
            if (!RT_File(at.path().c_str(), walk.name()).Remove(overwrite))
                at.setFailed();
        }
        else if (recursive)
            at.addSubdirectory(walk.name());
    }
}

/// What another process has removed meanwhile is removed, too.
bool removeDirectory(const char* path) { return ::RemoveDirectoryA(path) || kindOf(path) == PathKind::Missing; }

/// A bare server cannot be removed, nor can a drive: to Windows "C:" is the current folder of that drive.
bool isRoot(const char* path, const String& drive, const String& server)
{
    const String whole(path);
    return whole == server || whole == drive;
}
} // namespace

int RT_Dir::IsEmpty(DIRTESTFLAG flag)
{
    if (!IsExisting())
        return 1;
    try
    {
        return isEmptyTree(std::string(m_fullPath), flag == DIR_RECURSIVE) ? 1 : 0;
    }
    catch (const std::bad_alloc&)
    {
        return 0; // nobody should remove what could not be looked at
    }
}

int RT_Dir::Remove(OVERWRITEFLAG overwrite, DIRTESTFLAG flag)
{
    if (!IsExisting())
        return 1;
    try
    {
        TreePosition at(m_fullPath);
        removeContents(at, overwrite, flag == DIR_RECURSIVE);
        for (;;)
        {
            while (at.enter())
                removeContents(at, overwrite, true);
            const bool removed =
                !at.hasFailed() && !isRoot(at.path().c_str(), m_drive, m_server) && removeDirectory(at.path().c_str());
            if (!at.leave())
                return removed ? 1 : 0;
            if (!removed)
                at.setFailed();
        }
    }
    catch (const std::bad_alloc&)
    {
        return 0;
    }
}
