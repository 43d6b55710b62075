#ifndef AUTOOLS_FILEOPS_WHOLECOPY_H
#define AUTOOLS_FILEOPS_WHOLECOPY_H

#include <windows.h>

namespace aut
{
/// Size and time of a file, to see whether it was touched; all zero when it is not there.
struct FileStamp
{
    FileStamp() = default;
    explicit FileStamp(const char* path);
    bool operator==(const FileStamp& other) const;

    WIN32_FILE_ATTRIBUTE_DATA data{};
};

/// Copies `source` over `target`, which looked like `before`. On failure, GetLastError() says why, a target that was
/// not touched stays, and half a file (the disk is full) is deleted: it must not be taken for the newer one.
bool copyWhole(const char* source, const char* target, const FileStamp& before);
} // namespace aut

#endif
