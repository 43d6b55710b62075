#ifndef AUTOOLS_ENVIRONMENT_CLIENTFOLDERS_H
#define AUTOOLS_ENVIRONMENT_CLIENTFOLDERS_H

#include "foundation/Export.h"
#include "foundation/String.h"

#include <windows.h>

/// Loads a companion library from `folder`, or with a null folder from the client's install path, else by its bare
/// name, else (on a 64-bit system) from the kernel path. Null on failure, which is logged unless the same path was the
/// one that failed last.
AUTOOLS_API HMODULE LoadDLL(const char* name, const char* folder);
/// True when the handle is null or was freed.
AUTOOLS_API bool FreeDLL(HMODULE module);

/// The client's data folder: the user's own when `perUser` is non-zero, otherwise (or when the shell cannot tell) the
/// machine-wide one of the registry, which may be empty.
AUTOOLS_API void GetAUDataPath(String& path, int perUser);

/// False when the drive of `path` (its first character) has fewer than `bytesNeeded` bytes free for the caller; the
/// details are left in `result` with status 459. True when the free space cannot be read.
AUTOOLS_API bool IsEnoughDiskSpace(const char* path, unsigned long bytesNeeded);

/// Writes the path of the ini file in the Windows folder into the buffer of `size` bytes; returns its length, 0 when
/// the buffer is too small.
AUTOOLS_API unsigned int Get7xAutoUpdateIniFile(char* buffer, unsigned int size);

/// Folder and file name of the cache file of a configuration request, each into a buffer of 260 bytes. One that does
/// not fit is "": cut, it would name another request's file.
AUTOOLS_API void GetDataFilePath(char* folder, char* fileName, const char* host, const char* certificateId,
                                 const char* product, const char* component);

#endif
