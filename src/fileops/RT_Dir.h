#ifndef AUTOOLS_FILEOPS_RT_DIR_H
#define AUTOOLS_FILEOPS_RT_DIR_H

#include "fileops/FileFlags.h"
#include "foundation/Export.h"
#include "foundation/String.h"

/// One directory on a local drive or a network share. The path is split as `RT_File` does.
///
/// The layout is part of the exported interface. Results are 1 and 0; nothing is logged or left in `result` here.
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
    /// 1 when no file is found, also for a missing directory. Under `DIR_TOP_ONLY` subdirectories deliberately do not
    /// count; under `DIR_RECURSIVE` the answer of the last subdirectory examined stands.
    int IsEmpty(DIRTESTFLAG flag);
    /// Deletes the files and the directory, with its subdirectories under `DIR_RECURSIVE`. Files in use go at the next
    /// start of Windows under `OVERWRITE_AT_REBOOT`; the directory then stays and the result is 0.
    int Remove(OVERWRITEFLAG overwrite, DIRTESTFLAG flag);
    /// Copies the tree into `destination`. With `OVERWRITE_AT_REBOOT` an existing target is removed first.
    int CopyTo(const String& destination, OVERWRITEFLAG overwrite);
    /// Moves the tree into `destination`: by renaming on the same volume, else by copying and removing.
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
