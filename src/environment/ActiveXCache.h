#ifndef AUTOOLS_ENVIRONMENT_ACTIVEXCACHE_H
#define AUTOOLS_ENVIRONMENT_ACTIVEXCACHE_H

#include "foundation/Export.h"

// The controls that the browser has downloaded. Parts of the client were once installed that way themselves.

/// Removes the downloaded control with that class ID, compared without regard to case, through Windows' own control
/// cache.
///
/// False when the control is in use, when there is none with that class ID, when Windows has no control cache, and for
/// the client's own control, which is never removed. Deliberately true when the removal fails in any other way.
AUTOOLS_API bool RemoveCABFromCLSID(const char* classId);

/// Finds a file of the client's own distribution unit by its name, without regard to case, and writes its full path
/// into `path`, a buffer of at least 260 bytes; "" and false when it is not recorded there.
AUTOOLS_API bool SearchFileInDownloadedProgramFiles(const char* fileName, char* path);

#endif
