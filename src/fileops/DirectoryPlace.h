#ifndef AUTOOLS_FILEOPS_DIRECTORYPLACE_H
#define AUTOOLS_FILEOPS_DIRECTORYPLACE_H

namespace aut
{
/// How two directories lie to each other on the disk.
enum class Placement
{
    Apart,
    Same,
    Nested ///< one lies in the other, at any depth
};

/// Whatever the paths look like: links, substituted drives, 8.3 names and case are seen through as far as the system
/// tells. What does not exist lies where its nearest existing parent is. Throws std::bad_alloc.
Placement placementOf(const char* one, const char* other);
} // namespace aut

#endif
