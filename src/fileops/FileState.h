#ifndef AUTOOLS_FILEOPS_FILESTATE_H
#define AUTOOLS_FILEOPS_FILESTATE_H

#include <windows.h>

namespace aut
{
/// Whether there is anything, a file or a folder, whose attributes can be read.
inline bool pathExists(const char* path) { return ::GetFileAttributesA(path) != INVALID_FILE_ATTRIBUTES; }

/// Both values that stand for "no handle" in a file object: all ones after construction, 0 after closing.
inline bool isOpen(HANDLE handle) { return handle != nullptr && handle != INVALID_HANDLE_VALUE; }
} // namespace aut

#endif
