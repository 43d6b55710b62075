#include "webconf/CacheFile.h"

#include "environment/ClientFolders.h"
#include "fileops/RT_Dir.h"
#include "foundation/EventLog.h"
#include "platform/FileReplacement.h"
#include "webconf/DataCaching.h"

#include <windows.h>

#include <cstddef>
#include <new>

namespace aut
{
namespace
{
struct CachePlace
{
    String folder;
    String fileName;
};

/// The names in it are taken as they are: a certificate ID may hold "/", which leads into a folder of its own.
CachePlace cachePlace(const char* host, const char* certificateId, const char* product, const char* component)
{
    char folder[MAX_PATH];
    char fileName[MAX_PATH];
    ::GetDataFilePath(folder, fileName, host, certificateId, product, component);
    return {folder, fileName};
}

String pathOf(const CachePlace& place)
{
    String path = place.folder;
    path += "\\";
    path += place.fileName;
    path.Replace('/', '\\');
    const bool exists = !place.folder.IsEmpty() && !place.fileName.IsEmpty() && path.GetLength() < MAX_PATH;
    return exists ? path : String(); // a request whose names are too long has no file
}

bool writeAt(const CachePlace& place, const String& data)
{
    const String path = pathOf(place);
    RT_Dir directory(path.Left(path.ReverseFind('\\')));
    if (path.IsEmpty() || directory.Create() == 0)
    {
        Log(2, "Unable to create the data cache directory: %s", static_cast<const char*>(place.folder));
        return false;
    }
    FileReplacement file(path);
    if (file.write(data, static_cast<std::size_t>(data.GetLength())) && file.commit())
        return true;
    Log(2, "Unable to write the data cache file: %s", static_cast<const char*>(path));
    return false;
}
} // namespace

String cacheFilePath(const char* host, const char* certificateId, const char* product, const char* component)
{
    return pathOf(cachePlace(host, certificateId, product, component));
}

String cacheFilePath(const DataExchange& request)
{
    return cacheFilePath(request.m_host, request.m_certificateId, request.m_productName, request.m_componentName);
}

bool writeCacheFile(const DataExchange& request, const String& data)
{
    return writeAt(cachePlace(request.m_host, request.m_certificateId, request.m_productName, request.m_componentName),
                   data);
}
} // namespace aut

void SetDataInCache(const char* host, const char* certificateId, const char* product, const char* component,
                    const String& data)
try
{
    aut::writeAt(aut::cachePlace(host, certificateId, product, component), data);
}
catch (const std::bad_alloc&)
{
    // the old answer stays
}
