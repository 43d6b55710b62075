#ifndef AUTOOLS_WEBCONF_CACHEFILE_H
#define AUTOOLS_WEBCONF_CACHEFILE_H

#include "foundation/String.h"
#include "webconf/DataExchange.h"

namespace aut
{
/// The full path of the cache file of a request; empty when it has none.
String cacheFilePath(const char* host, const char* certificateId, const char* product, const char* component);
String cacheFilePath(const DataExchange& request);

/// Puts an answer into the cache file; false, and logged, when the old one had to stay.
bool writeCacheFile(const DataExchange& request, const String& data);
} // namespace aut

#endif
