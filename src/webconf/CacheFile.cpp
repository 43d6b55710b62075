#include "webconf/CacheFile.h"

#include "environment/ClientFolders.h"
#include "fileops/RT_Dir.h"
#include "fileops/RT_File.h"
#include "foundation/EventLog.h"
#include "platform/BoundedText.h"
#include "platform/UniqueResource.h"
#include "webconf/DataCaching.h"

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
    if (file.write(data, data.GetLength()) && file.commit())
        return true;
    Log(2, "Unable to write the data cache file: %s", static_cast<const char*>(path));
    return false;
}
} // namespace

FileReplacement::FileReplacement(const String& path) : m_path(path)
{
    const String folder = path.Left(path.ReverseFind('\\'));
    if (::GetTempFileNameA(folder, "dat", 0, m_temporary) == 0)
        m_temporary[0] = '\0';
}

FileReplacement::~FileReplacement()
{
    if (m_temporary[0] != '\0')
        ::DeleteFileA(m_temporary);
}

bool FileReplacement::write(const char* data, int size)
{
    if (m_temporary[0] == '\0')
        return false;
    const UniqueFile file(
        ::CreateFileA(m_temporary, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    const DWORD count = static_cast<DWORD>(size);
    DWORD written = 0;
    return file && ::WriteFile(file.get(), data, count, &written, nullptr) && written == count &&
           ::FlushFileBuffers(file.get());
}

bool FileReplacement::copyFrom(const char* path)
{
    return m_temporary[0] != '\0' && ::CopyFileA(path, m_temporary, FALSE) &&
           ::SetFileAttributesA(m_temporary, FILE_ATTRIBUTE_NORMAL) && FlushFile(m_temporary);
}

bool FileReplacement::commit()
{
    if (m_temporary[0] == '\0' ||
        !::MoveFileExA(m_temporary, m_path, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return false;
    m_temporary[0] = '\0';
    return true;
}

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
