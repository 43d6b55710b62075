#ifndef AUTOOLS_CATALOGUE_RELEASEFILE_H
#define AUTOOLS_CATALOGUE_RELEASEFILE_H

#include "foundation/String.h"

namespace aut
{
/// Whether a release of this name can have a file and registry entries of its own.
///
/// The name comes from a server. Without one, "its" registry key would be the one above it, with the records of all
/// releases; one with separators would lead out of the client's folder and key.
bool isReleaseName(const char* name);

/// The file in the client's data folder that keeps a release between cycles; one without certificate ID is local.
/// Empty when the name has no file or stands for a device, the client has no data folder, or the path would not fit
/// MAX_PATH.
String releaseFile(const char* name, bool local);
/// Deletes it. That it is not there is no failure; any other is logged.
void deleteReleaseFile(const char* name, bool local);
} // namespace aut

#endif
