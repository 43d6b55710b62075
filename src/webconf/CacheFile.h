#ifndef AUTOOLS_WEBCONF_CACHEFILE_H
#define AUTOOLS_WEBCONF_CACHEFILE_H

#include "foundation/String.h"
#include "webconf/DataExchange.h"

#include <windows.h>

namespace aut
{
/// Replaces a file whole or not at all: what is to come lies beside it under a temporary name until `commit`, and is
/// deleted when that never happens or fails.
class FileReplacement
{
public:
    /// The file's folder must exist.
    explicit FileReplacement(const String& path);
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;
    ~FileReplacement();

    /// Each fills the temporary file and commits it to disk.
    bool write(const char* data, int size);
    bool copyFrom(const char* path);
    bool commit();

private:
    const String m_path;
    char m_temporary[MAX_PATH];
};

/// The full path of the cache file of a request; empty when it has none.
String cacheFilePath(const char* host, const char* certificateId, const char* product, const char* component);
String cacheFilePath(const DataExchange& request);

/// Puts an answer into the cache file; false, and logged, when the old one had to stay.
bool writeCacheFile(const DataExchange& request, const String& data);
} // namespace aut

#endif
