#include "webconf/CacheFile.h"

#include "environment/ClientFolders.h"
#include "fileops/RT_Dir.h"
#include "foundation/EventLog.h"
#include "foundation/WholeText.h"
#include "platform/BoundedText.h"
#include "platform/FileReplacement.h"
#include "platform/PlainName.h"
#include "registry/CRegAutoUpdate.h"
#include "webconf/DataCaching.h"

#include <windows.h>

#include <cstddef>
#include <new>
#include <string>

namespace aut
{
namespace
{
struct CachePlace
{
    String folder;
    String fileName;
    bool isOurs = false; ///< below the data folder
};

/// Whether a path of names that others chose stays below the folder that it is put behind. A separator leads into a
/// folder further down, as the "/" of a certificate ID does.
bool staysBelow(const char* path)
{
    std::string element;
    for (const char* at = orEmpty(path);; ++at)
    {
        if (*at != '\0' && *at != '\\' && *at != '/')
        {
            element += *at;
            continue;
        }
        // A host may bring its port; any other colon would name a drive or a file's second stream.
        const std::size_t colon = element.find(':');
        const bool hasPort = colon != std::string::npos && colon > 1 &&
                             element.find_first_not_of("0123456789", colon + 1) == std::string::npos;
        if (hasPort)
            element.resize(colon);
        if (!isPlainName(element.c_str()) || isDevice(element.c_str()))
            return false;
        if (*at == '\0')
            return true;
        element.clear();
    }
}

/// The names in it are taken as they are.
CachePlace cachePlace(const char* host, const char* certificateId, const char* product, const char* component)
{
    char folder[MAX_PATH];
    char fileName[MAX_PATH];
    ::GetDataFilePath(folder, fileName, host, certificateId, product, component);
    // Without a data folder the rest would be a path at the root of whatever drive is current, or even a server's.
    const bool isOurs = !isEmpty(CRegAutoUpdate(true).GetDataPath()) && staysBelow(host) && staysBelow(product) &&
                        staysBelow(certificateId) && staysBelow(component);
    return {folder, fileName, isOurs};
}

String pathOf(const CachePlace& place)
{
    String path = wholeText({place.folder, "\\", place.fileName});
    path.Replace('/', '\\');
    const bool exists =
        place.isOurs && !place.folder.IsEmpty() && !place.fileName.IsEmpty() && path.GetLength() < MAX_PATH;
    return exists ? path : String(); // a request whose names are too long or lead elsewhere has no file
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
