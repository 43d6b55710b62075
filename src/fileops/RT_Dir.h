#ifndef AUTOOLS_FILEOPS_RT_DIR_H
#define AUTOOLS_FILEOPS_RT_DIR_H

#include "fileops/FileFlags.h"
#include "foundation/Export.h"
#include "foundation/String.h"

/// One directory on a local drive or a network share. The path is split as `RT_File` does.
///
/// The layout is part of the exported interface. Results are 1 and 0; nothing is logged or left in `result` here, only
/// by the operations of the single files.
///
/// No walk goes through a link to a directory (a junction, a symbolic link, a mounted volume): what lies behind it
/// belongs to another tree. Only a directory that is itself named by a link is read through it. Nothing throws. A walk
/// needs as much memory as the tree is deep and its widest directories have subdirectories, and no stack.
class AUTOOLS_API RT_Dir
{
public:
    RT_Dir(const String& fullPath);
    /// The name is taken as it is.
    RT_Dir(const String& parent, const String& name);
    RT_Dir(const RT_Dir& other);
    RT_Dir& operator=(const RT_Dir& other);
    virtual ~RT_Dir();

    void SetFullPath(const String& fullPath);
    String GetFullPath();
    /// The last component.
    String GetDirName();
    /// The parent, beginning with drive or server.
    String GetPath();

    int IsExisting();
    /// Creates the directory with all missing parents.
    int Create();
    /// 1 when no file is found, also for a directory that is missing or cannot be listed. Under `DIR_TOP_ONLY`
    /// subdirectories deliberately do not count; under `DIR_RECURSIVE` the answer of the last subdirectory examined
    /// stands. A link counts as an empty subdirectory.
    int IsEmpty(DIRTESTFLAG flag);
    /// Deletes the files and the directory, with its subdirectories under `DIR_RECURSIVE`. Files in use go at the next
    /// start of Windows under `OVERWRITE_AT_REBOOT`; the directory then stays and the result is 0. A failure does not
    /// stop the walk. A link is removed itself, never what it points to. A drive or server is emptied but stays: 0.
    int Remove(OVERWRITEFLAG overwrite, DIRTESTFLAG flag);
    /// Copies the tree into `destination`, under this directory's name. With `OVERWRITE_AT_REBOOT` an existing target
    /// is removed first; otherwise it is copied over. 0 when a directory could not be listed or a subdirectory not be
    /// copied (the others are), a link among them. A file that could not be copied is deliberately not seen in the
    /// result; it has left its own report. A target that is this directory or lies in it is refused before anything is
    /// touched, and so is one that holds it when it would be removed.
    int CopyTo(const String& destination, OVERWRITEFLAG overwrite);
    /// Moves the tree into `destination`: by renaming on the same volume, else, and when that fails, by copying and
    /// then removing it. Nothing is removed, and the result is 0, when a single file could not be copied. 1 without
    /// doing anything when it is there already; a target that lies in this directory or holds it is refused.
    int MoveTo(const String& destination, OVERWRITEFLAG overwrite);

protected:
    template <typename T> friend struct aut::LayoutOf;

    void SetFullPath(const String& parent, const String& name);
    void CleanPath(String& path);
    bool Initialize(const String& text);
    void InitMembers();

    String m_drive;
    String m_server;
    String m_path;
    String m_dirName;
    String m_fullPath;
};

#endif
