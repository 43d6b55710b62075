#include "fileops/DirectoryPlace.h"
#include "fileops/DirectoryWalk.h"
#include "fileops/RT_Dir.h"
#include "fileops/RT_File.h"

#include <windows.h>

#include <new>

using aut::DirectoryWalk;
using aut::kindOf;
using aut::PathKind;
using aut::Placement;
using aut::placementOf;
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
    if (kindOf(targetPath.c_str()) == PathKind::Link && placementOf(source, targetPath.c_str()) != Placement::Apart)
        return false;
    RT_Dir target(targetPath.c_str());
    return prepareTarget(target, overwrite) && copyContents(at, targetPath.c_str());
}

/// Of an existing directory onto a target that lies apart from it.
int copyTree(const char* source, RT_Dir& target, OVERWRITEFLAG overwrite)
{
    if (!prepareTarget(target, overwrite))
        return 0;
    const std::string targetRoot(target.GetFullPath());
    TreePosition at(source);
    bool isWhole = copyContents(at, targetRoot.c_str());
    while (at.advance())
        isWhole = copySubdirectory(at, source, targetRoot + at.pathBelowRoot(), overwrite) && isWhole;
    return isWhole ? 1 : 0;
}

/// Both parts are equal on one volume; the one that a path does not have says nothing.
bool isSamePart(const String& one, const String& other) { return !one.IsEmpty() && one == other; }

bool isLink(const char* path) { return kindOf(path) == PathKind::Link; }
} // namespace

int RT_Dir::CopyTo(const String& destination, OVERWRITEFLAG overwrite)
{
    RT_Dir target(destination + '\\' + m_dirName);
    if (!IsExisting() || target.m_fullPath.IsEmpty())
        return 0;
    try
    {
        // Copied into itself, a tree would have no end; removing a target around the source would remove the source.
        if (placementOf(m_fullPath, target.m_fullPath) != Placement::Apart)
            return 0;
        return copyTree(m_fullPath, target, overwrite);
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
        const Placement placement = placementOf(m_fullPath, target.m_fullPath);
        if (placement == Placement::Same) // a link to the source does not mean that the source is there
            return isLink(m_fullPath) || isLink(target.m_fullPath) ? 0 : 1;
        if (placement == Placement::Nested)
            return 0;

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
        return copyTree(m_fullPath, target, overwrite) ? Remove(OVERWRITE_AT_REBOOT, DIR_RECURSIVE) : 0;
    }
    catch (const std::bad_alloc&)
    {
        return 0;
    }
}
