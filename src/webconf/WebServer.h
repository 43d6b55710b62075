#ifndef AUTOOLS_WEBCONF_WEBSERVER_H
#define AUTOOLS_WEBCONF_WEBSERVER_H

#include "foundation/Export.h"

/// Stores the Web Configurator's host and virtual directory; an empty or null argument leaves its value untouched.
/// False when a write failed.
AUTOOLS_API bool SetWebServer(const char* host, const char* virtualDirectory);
/// Reads both into buffers of at least 256 bytes, cutting at 255 characters; the second may be null and is "WebConfV1"
/// when none is stored. False when no host is stored.
AUTOOLS_API bool GetWebServer(char* host, char* virtualDirectory);

#endif
