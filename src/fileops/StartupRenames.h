#ifndef AUTOOLS_FILEOPS_STARTUPRENAMES_H
#define AUTOOLS_FILEOPS_STARTUPRENAMES_H

namespace aut
{
// What systems below the NT family carry out when they start: the [Rename] section of WinInit.ini, which knows short
// (8.3) names only, and commands that run once. Windows versions too new to be classified come here, too.
//
// Each gives false and the reason in GetLastError() when nothing could be registered.

/// Has `source` take the place of `target`, whose long name is `longName`. A target without a folder is left alone,
/// which is no failure.
bool replaceAtStartup(const char* target, const char* source, const char* longName);

/// Has `path` deleted.
bool deleteAtStartup(const char* path);
} // namespace aut

#endif
