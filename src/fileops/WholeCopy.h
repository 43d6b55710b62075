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

/// The same, for a target whose half would be taken for the whole: a process that dies on the way, or a disk that gets
/// full, leaves it as it was. The copy is made beside the target and then moved onto it; a target that can be written
/// to but not be replaced (a reader has it open) is copied over, as copyWhole() does it. It is another file that stands
/// at the target then: an access list of the old one's own does not pass to it, and what a hard link to the old one
/// shows stays old.
bool copyAside(const char* source, const char* target, const FileStamp& before);
} // namespace aut

#endif
