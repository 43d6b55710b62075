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
} // namespace aut

#endif
