#ifndef AUTOOLS_FILEOPS_DIRECTORYPLACE_H
#define AUTOOLS_FILEOPS_DIRECTORYPLACE_H

namespace aut
{
/// How a copy's target lies to its source on the disk.
enum class Placement
{
    Apart,
    Same,
    Inside, ///< in the source, at any depth
    Around  ///< the source lies in it, at any depth
};

/// Whatever the paths look like: links, substituted drives, 8.3 names and case are seen through as far as the system
/// tells. What does not exist lies where its nearest existing parent is. Throws std::bad_alloc.
Placement placementOf(const char* source, const char* target);
} // namespace aut

#endif
