#include "fileops/DirectoryPlace.h"
#include "fileops/DirectoryWalk.h"
#include "fileops/RT_Dir.h"
#include "fileops/RT_File.h"
#include "foundation/WholeText.h"

#include <windows.h>

#include <algorithm>
#include <new>
#include <string>

using aut::DirectoryWalk;
using aut::kindOf;
using aut::PathKind;
using aut::Placement;
using aut::placementOf;
using aut::TreePosition;

namespace
{
/// What a copy finds at its target.
enum class Room
{
    None,  ///< the target cannot be had
    Taken, ///< there may be files of the same names
    Fresh  ///< made or removed by this copy: there is nothing
};

/// Makes room for what is copied. What has been removed is not created again here: each file creates its folder.
Room prepareTarget(RT_Dir& target, OVERWRITEFLAG overwrite)
{
    if (!target.IsExisting())
        return target.Create() != 0 ? Room::Fresh : Room::None;
    if (overwrite != OVERWRITE_AT_REBOOT)
        return Room::Taken;
    return target.Remove(OVERWRITE_AT_REBOOT, DIR_RECURSIVE) != 0 ? Room::Fresh : Room::None;
}

/// Copies a file to where nothing is: the copy itself tells whether source and folder are there, and nothing has to be
/// asked before. False when there is nothing new at the target, for whatever reason.
bool copyIntoFresh(const std::string& source, const std::string& target)
{
    constexpr BOOL kNeverOver = TRUE;
    if (::CopyFileA(source.c_str(), target.c_str(), kNeverOver))
        return true;
    const DWORD error = ::GetLastError();
    if (error != ERROR_FILE_EXISTS && error != ERROR_ALREADY_EXISTS && error != ERROR_PATH_NOT_FOUND)
        ::DeleteFileA(target.c_str()); // half a copy of ours, if anything
    return false;
}

bool copyFile(const std::string& source, const char* name, const char* target, Room room)
{
    if (room == Room::Fresh && copyIntoFresh(source + '\\' + name, std::string(target) + '\\' + name))
        return true;
    // Also what could not be copied there for some reason: this finds it again, and reports it.
    return RT_File(source.c_str(), name).CopyTo(target, WHEN_ALWAYS);
}

/// What came of copying a tree, better ones first.
enum class Outcome
{
    Whole,
    FileMissing, ///< which that file has reported
    Incomplete   ///< for any other reason
};

/// Copies the files of the directory at hand and notes its subdirectories.
Outcome copyContents(TreePosition& at, const char* target, Room room)
{
    Outcome outcome = Outcome::Whole;
    DirectoryWalk walk(at.path().c_str());
    while (walk.next())
    {
        if (walk.isLink())
            outcome = Outcome::Incomplete;
        else if (walk.isDirectory())
            at.addSubdirectory(walk.name());
        else if (!copyFile(at.path(), walk.name(), target, room))
            outcome = std::max(outcome, Outcome::FileMissing);
    }
    return walk.isComplete() ? outcome : Outcome::Incomplete;
}

/// One subdirectory. A link in its place at the target must not lead the copy back to where it comes from.
Outcome copySubdirectory(TreePosition& at, const char* source, const std::string& targetPath, OVERWRITEFLAG overwrite)
{
    if (kindOf(at.path().c_str()) != PathKind::Directory)
        return Outcome::Incomplete;
    if (kindOf(targetPath.c_str()) == PathKind::Link && placementOf(source, targetPath.c_str()) != Placement::Apart)
        return Outcome::Incomplete;
    RT_Dir target(targetPath.c_str());
    const Room room = prepareTarget(target, overwrite);
    return room != Room::None ? copyContents(at, targetPath.c_str(), room) : Outcome::Incomplete;
}

/// Of an existing directory.
Outcome copyTree(const char* source, RT_Dir& target, OVERWRITEFLAG overwrite)
{
    const Room room = prepareTarget(target, overwrite);
    if (room == Room::None)
        return Outcome::Incomplete;
    const std::string targetRoot(target.GetFullPath());
    TreePosition at(source);
    Outcome outcome = copyContents(at, targetRoot.c_str(), room);
    while (at.advance())
        outcome = std::max(outcome, copySubdirectory(at, source, targetRoot + at.pathBelowRoot(), overwrite));
    return outcome;
}

/// Copied into itself, a tree would have no end; removing a target around the source would remove the source.
bool canCopy(Placement target, OVERWRITEFLAG overwrite)
{
    return target == Placement::Apart || (target == Placement::Around && overwrite != OVERWRITE_AT_REBOOT);
}

/// Both parts are equal on one volume; the one that a path does not have says nothing.
bool isSamePart(const String& one, const String& other) { return !one.IsEmpty() && one == other; }

bool isLink(const char* path) { return kindOf(path) == PathKind::Link; }
} // namespace

int RT_Dir::CopyTo(const String& destination, OVERWRITEFLAG overwrite)
{
    RT_Dir target(aut::wholeText({destination, "\\", m_dirName}));
    if (!IsExisting() || target.m_fullPath.IsEmpty())
        return 0;
    try
    {
        if (!canCopy(placementOf(m_fullPath, target.m_fullPath), overwrite))
            return 0;
        // Deliberately a success although a file is missing.
        return copyTree(m_fullPath, target, overwrite) != Outcome::Incomplete ? 1 : 0;
    }
    catch (const std::bad_alloc&)
    {
        return 0;
    }
}

int RT_Dir::MoveTo(const String& destination, OVERWRITEFLAG overwrite)
{
    RT_Dir parent(destination);
    RT_Dir target(aut::wholeText({destination, "\\", m_dirName}));
    if (!IsExisting() || target.m_fullPath.IsEmpty())
        return 0; // before anything is done to the target
    try
    {
        const Placement placement = placementOf(m_fullPath, target.m_fullPath);
        if (placement == Placement::Same) // a link to the source does not mean that the source is there
            return isLink(m_fullPath) || isLink(target.m_fullPath) ? 0 : 1;
        if (placement != Placement::Apart) // also around: what is copied may lie in the source, which is removed
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
        // Unlike a copy not without a file: on a full disk all of them would be lost.
        const bool isWhole = copyTree(m_fullPath, target, overwrite) == Outcome::Whole;
        return isWhole ? Remove(OVERWRITE_AT_REBOOT, DIR_RECURSIVE) : 0;
    }
    catch (const std::bad_alloc&)
    {
        return 0;
    }
}
