#ifndef AUTOOLS_TESTS_FILEOPS_FILEPROBE_H
#define AUTOOLS_TESTS_FILEOPS_FILEPROBE_H

#include "fileops/RT_File.h"

namespace auttest
{
/// A file as those see it that derive from it.
class FileProbe : public RT_File
{
public:
    using RT_File::CopyFileAtNextReboot;
    using RT_File::GetTemporaryFilePath;
    using RT_File::Initialize;
    using RT_File::InitMembers;
    using RT_File::IsDifferentByCheckSum;
    using RT_File::IsDifferentByLastModTime;
    using RT_File::IsDifferentByVersion;
    using RT_File::IsFileLocked;
    using RT_File::IsOverWriteable;
    using RT_File::IsReadOnly;
    using RT_File::m_drive;
    using RT_File::m_fileName;
    using RT_File::m_fullPath;
    using RT_File::m_handle;
    using RT_File::m_path;
    using RT_File::m_server;
    using RT_File::OverWriteFileAtNextReboot;
    using RT_File::RemoveReadOnlyAttribIfAny;
    using RT_File::RT_File;
};
} // namespace auttest

#endif
