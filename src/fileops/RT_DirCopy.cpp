#include "fileops/DirectoryPlace.h"
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
/// Makes room for what is copied. What has been removed is not created again here: each file creates its folder.
bool prepareTarget(RT_Dir& target, OVERWRITEFLAG overwrite)
{
    if (!target.IsExisting())
        return target.Create() != 0;
    return overwrite != OVERWRITE_AT_REBOOT || target.Remove(OVERWRITE_AT_REBOOT, DIR_RECURSIVE) != 0;
}

/// Copies the files of the directory at hand and notes its subdirectories. False when something of it was not copied
/// for another reason than a single file's, which that file has reported.
bool copyContents(TreePosition& at, const char* target)
{
    bool isWhole = true;
    DirectoryWalk walk(at.path().c_str());
    while (walk.next())
    {
        if (walk.isLink())
            isWhole = false;
        else if (walk.isDirectory())
            at.addSubdirectory(walk.name());
        else
            RT_File(at.path().c_str(), walk.name()).CopyTo(target, WHEN_ALWAYS);
    }
    return isWhole && walk.isComplete();
}

/// One subdirectory. A link in its place at the target must not lead the copy back to where it comes from.
bool copySubdirectory(TreePosition& at, const char* source, const std::string& targetPath, OVERWRITEFLAG overwrite)
{
    if (kindOf(at.path().c_str()) != PathKind::Directory)
        return false;
    if (kindOf(targetPath.c_str()) == PathKind::Link && aut::directoriesOverlap(source, targetPath.c_str()))
        return false;
    RT_Dir target(targetPath.c_str());
    return prepareTarget(target, overwrite) && copyContents(at, targetPath.c_str());
}

bool copyTree(const char* source, RT_Dir& target, OVERWRITEFLAG overwrite)
{
    const String targetRoot = target.GetFullPath();
    if (targetRoot.IsEmpty() || aut::directoriesOverlap(source, targetRoot) || !prepareTarget(target, overwrite))
        return false;
    TreePosition at(source);
    bool isWhole = copyContents(at, targetRoot);
    while (at.advance())
        isWhole = copySubdirectory(at, source, std::string(targetRoot) + at.pathBelowRoot(), overwrite) && isWhole;
    return isWhole;
}

/// Both parts are equal on one volume; the one that a path does not have says nothing.
bool isSamePart(const String& one, const String& other) { return !one.IsEmpty() && one == other; }

/// Whether a directory already is where it shall be moved. A link makes two paths the same place, too, but one of them
/// then still is a link.
bool isAlreadyThere(const char* source, const char* target)
{
    return aut::isSameDirectory(source, target) && kindOf(source) != PathKind::Link && kindOf(target) != PathKind::Link;
}
} // namespace

int RT_Dir::CopyTo(const String& destination, OVERWRITEFLAG overwrite)
{
    RT_Dir target(destination + '\\' + m_dirName);
    if (!IsExisting())
        return 0;
    try
    {
        return copyTree(m_fullPath, target, overwrite) ? 1 : 0;
    }
    catch (const std::bad_alloc&)
    {
        return 0;
    }
}

int RT_Dir::MoveTo(const String& destination, OVERWRITEFLAG overwrite)
{
    RT_Dir parent(destination);
    RT_Dir target(destination + '\\' + m_dirName);
    if (!IsExisting() || target.m_fullPath.IsEmpty())
        return 0; // before anything is done to the target
    try
    {
        if (isAlreadyThere(m_fullPath, target.m_fullPath))
            return 1;
        if (aut::directoriesOverlap(m_fullPath, target.m_fullPath))
            return 0;
    }
    catch (const std::bad_alloc&)
    {
        return 0;
    }

    if (isSamePart(m_drive, parent.m_drive) || isSamePart(m_server, parent.m_server))
    {
        DWORD flags = MOVEFILE_WRITE_THROUGH;
        if (overwrite == OVERWRITE_AT_REBOOT)
        {
            flags |= MOVEFILE_REPLACE_EXISTING;
            target.Remove(OVERWRITE_AT_REBOOT, DIR_TOP_ONLY);
        }
        parent.Create();
        if (::MoveFileExA(m_fullPath, target.m_fullPath, flags))
            return 1;
    }
    return CopyTo(destination, overwrite) ? Remove(OVERWRITE_AT_REBOOT, DIR_RECURSIVE) : 0;
}
