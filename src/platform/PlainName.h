#ifndef AUTOOLS_PLATFORM_PLAINNAME_H
#define AUTOOLS_PLATFORM_PLAINNAME_H

#include <cstring>

namespace aut
{
/// Whether a name that came from outside stays one element when it is put into a file or registry path: without a
/// separator of either kind it cannot climb out of the folder or key, and without a colon it names neither a drive
/// nor a file's second stream. Nothing but points (Windows drops blanks at the end) names the folder itself or one
/// above it. The empty name is plain.
inline bool isPlainName(const char* name) noexcept
{
    return std::strpbrk(name, "\\/:") == nullptr && (*name == '\0' || name[std::strspn(name, ". ")] != '\0');
}

/// Whether a path, or a bare name, stands for a device. Windows takes some names for devices in every folder and with
/// every extension; which ones, only it knows. What is written to one is lost.
bool isDevice(const char* path) noexcept;

/// Whether a plain name names a folder of its own when it is one element of a path as it stands. Windows drops points
/// and blanks at an element's end, so that "1.0." would be the folder of "1.0"; a device is no folder.
bool isFolderName(const char* name) noexcept;
} // namespace aut

#endif
