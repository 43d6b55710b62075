#ifndef AUTOOLS_FILEOPS_RT_FILE_H
#define AUTOOLS_FILEOPS_RT_FILE_H

#include "fileops/FileFlags.h"
#include "foundation/Export.h"
#include "foundation/String.h"

#include <windows.h>

/// One file on a local drive or a network share: its path, its open handle, questions about it and the shared count.
///
/// The layout is part of the exported interface. The object owns its handle; both 0 and INVALID_HANDLE_VALUE mean
/// closed. A copy deliberately has the same handle value (the first to close it wins): copy closed objects only.
/// Failures worth reporting are left in `result`. Nothing throws. Not thread-safe.
class AUTOOLS_API RT_File
{
public:
    RT_File();
    RT_File(const char* fullPath);
    RT_File(const char* path, const char* fileName);
    RT_File(const RT_File& other);
    RT_File& operator=(const RT_File& other);
    virtual ~RT_File();

    /// Splits a path that begins with a drive or with \\server. Any other form leaves the object as it was. A drive or
    /// server alone is the full path, with neither directory nor name.
    void SetFullPath(const char* fullPath);
    /// The name is taken as it is and stands even when the directory is refused.
    void SetFullPath(const char* path, const char* fileName);
    const char* GetFullPath();
    const char* GetFileName();
    const char* GetPath();
    /// Stays owned by the object.
    HANDLE GetFileHandle();

    /// Opens or creates the file; non-zero when open. Bits 0-1: 0 read, 1 write, 2 both. Bits 4-6: 0 or 0x10 not
    /// shared, 0x20 others may read, 0x30 write, 0x40 both. 0x80: handle not inheritable. 0x1000: create or truncate;
    /// with 0x2000 open or create. Writing, creating and sharing for writing create the folder.
    int Open(unsigned int flags);
    /// Bytes read, 0 on failure.
    unsigned long Read(void* buffer, int count);
    /// `data` is only read.
    bool Write(void* data, int count);
    /// Writes text with a carriage return before every line feed, also where one is already there.
    bool Write(const char* text);
    /// Reads up to a NUL, a line feed or a carriage return (consumed, not stored) or 1,024 characters into a buffer of
    /// 1,025 bytes. 0 only at the end of the file.
    int ReadLine(char* buffer);
    /// Moves the file pointer; `origin` is FILE_BEGIN, FILE_CURRENT or FILE_END.
    unsigned long Seek(unsigned long offset, unsigned long origin);
    unsigned long SeekToEnd();
    void Flush();
    void Close();

    /// The low 32 bits of the size, 0 on failure.
    unsigned long GetLength();
    /// Tests the full path, or this file's name in `directory` when given.
    bool IsFileExisting(const char* directory);
    /// The fixed file version as "a,b,c,d" into a buffer of at least 24 bytes, which may be null; "" and false
    /// when there is none.
    bool HasVersionInfo(char* versionOut);
    /// Compares a version text (A, B and P stand for ,1 ,2 ,3; commas for points) with this file's: -1, 0 or 1 as the
    /// sign of given minus own. False without versions.
    bool VersionCmp(const char* version, int* comparison);
    /// True when `other` has a lower version or either has none.
    bool IsNewerByVersion(RT_File& other);
    /// The rule of copying, with this file as source and `other` as target.
    bool IsDifferent(RT_File& other, WHEN when);
    /// The 32-bit sum of the contents as little-endian words, chunk by chunk of 16,000 bytes; 0 on failure and for an
    /// empty file.
    unsigned long GetCheckSum();

    /// Copies this file into `directory`, which is created. A target in use is replaced at the next start of Windows;
    /// see `CopyFileAtNextReboot` for several of one name. A copy that breaks off (the disk is full) leaves no target,
    /// or the old one where a condition is given. So does a process that dies on the way, but for `WHEN_ALWAYS`: that
    /// writes into the target itself and leaves half of it, until it is done again.
    /// Any other `when` copies nothing and gives true. A null directory is refused here and by `MoveTo`.
    bool CopyTo(const char* directory, WHEN when);
    /// Moves this file into `directory`, which must exist.
    bool MoveTo(const char* directory, OVERWRITEFLAG flag);
    /// Deletes this file. Deliberately true, with a record in `result`, when the file is in use and must go now only.
    bool Remove(OVERWRITEFLAG flag);

    /// Register (unregister) this file as a COM server: a program with its own switches, anything else with the
    /// system's registration tool. When the tool fails to register a library it is loaded here, unless the tool crashed
    /// with it; a library that crashes only here takes the process with it.
    bool Register();
    bool UnRegister();
    /// Runs this file as an installer and waits for it, without a limit. Type 8: switches of this client; 16: silent
    /// set-up switches; any other: none. Only exit code 0 counts as success, also when the installer asks for a
    /// restart; it costs three seconds more.
    bool Execute(int type, bool install);

    /// Count this file up (down) in the registry's SharedDLLs; a count that reaches 0 is deleted.
    bool Share();
    bool UnShare();

protected:
    template <typename T> friend struct aut::LayoutOf;

    void InitMembers();
    bool Initialize(const String& text);
    bool IsReadOnly();
    bool RemoveReadOnlyAttribIfAny();
    bool IsFileLocked();
    bool IsOverWriteable();
    bool IsDifferentByVersion(RT_File& other, WHEN when, COMPFLAG& flag);
    bool IsDifferentByLastModTime(RT_File& other, WHEN when, COMPFLAG& flag);
    bool IsDifferentByCheckSum(RT_File& other);
    /// Has Windows move this file onto `target` at its next start, or delete this file; sets `bRebootNeeded`. Systems
    /// below the NT family do it by the [Rename] section of WinInit.ini or a command that runs once.
    bool OverWriteFileAtNextReboot(const char* target, OVERWRITE mode);
    /// Copies this file now to a temporary name and has Windows move the copy onto `target` at its next start. The
    /// temporary name comes from this file's name without its extension alone. Two copies that wait on one drive and
    /// differ in nothing but folder or extension (app.exe and app.dll, too) therefore deliberately share one temporary
    /// file: the first target gets what was copied last, the second stays as it is. `OverWriteFileAtNextReboot` needs
    /// none.
    bool CopyFileAtNextReboot(const char* target);
    /// Replaces the target path in `path` by a temporary name on its volume.
    bool GetTemporaryFilePath(String& path);

private:
    long GetFileCRC(const char* directory, const char* fileName, unsigned long length, unsigned long* sum);

protected:
    String m_drive;
    String m_server;
    String m_path;
    String m_fileName;
    String m_fullPath;
    HANDLE m_handle;
};

/// Set as soon as something waits for the next start of Windows; never cleared by the library.
extern AUTOOLS_API bool bRebootNeeded;

/// Commits a file to disk; false when it does not exist.
AUTOOLS_API bool FlushFile(const char* path);

#endif
