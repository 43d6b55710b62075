#ifndef AUTOOLS_FILEOPS_PATHSPLITTING_H
#define AUTOOLS_FILEOPS_PATHSPLITTING_H

#include "foundation/String.h"

namespace aut
{
// How RT_File and RT_Dir take a path apart and put it together again. Nothing here touches the disk. A text that finds
// no memory comes out short, and a path cut short names another folder, which must never be removed or written to
// instead: then each of these gives false, and joinPath() no path.

/// Makes every run of backslashes one and trims those at both ends.
bool cleanPath(String& path);

/// Takes a path apart into its root (a drive of two characters, or a server with its two backslashes) and the cleaned
/// rest; the root that the path does not have becomes empty. Slashes count as backslashes. Any form but C:... and
/// \\server... is refused, and then nothing is written.
bool splitRoot(const char* text, String& drive, String& server, String& path);

/// Cuts the last component off a path without a root; the whole path is the component when it has no backslash.
bool splitLastComponent(String& path, String& name);

/// Puts the root before `path`, a directory, and gives both together with `name` as the full path. What is empty gets
/// no backslash. A root alone has neither directory nor name: its path stays empty, the full path is the root.
void joinPath(const String& drive, const String& server, String& path, const String& name, String& fullPath);
} // namespace aut

#endif
