#ifndef AUTOOLS_FILEOPS_DIRECTORYPLACE_H
#define AUTOOLS_FILEOPS_DIRECTORYPLACE_H

namespace aut
{
// Where directories lie on the disk, whatever their paths look like: links, substituted drives, 8.3 names and case are
// seen through as far as the system tells. Both functions throw std::bad_alloc.

/// Whether both paths name one and the same existing directory.
bool isSameDirectory(const char* one, const char* other);

/// Whether one of the directories is the other or lies in it, at any depth. What does not exist lies where its nearest
/// existing parent is.
bool directoriesOverlap(const char* one, const char* other);
} // namespace aut

#endif
