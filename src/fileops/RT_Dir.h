#ifndef AUTOOLS_FILEOPS_RT_DIR_H
#define AUTOOLS_FILEOPS_RT_DIR_H

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
