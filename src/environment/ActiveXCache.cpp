#include "environment/ActiveXCache.h"

#include "environment/ControlCache.h"
#include "platform/BoundedText.h"
#include "registry/CRegBase.h"

#include <cstring>

namespace
{
constexpr char kClientClassId[] = "{051FE707-9706-11D5-A836-000102A7C938}";
constexpr char kDistributionUnits[] = "SOFTWARE\\Microsoft\\Code Store Database\\Distribution Units";
constexpr char kInformationFile[] = "AutoUpdateATL.inf";
constexpr std::size_t kPathSize = 260;
/// A storage is in use by somebody else (STG_E_SHAREVIOLATION).
constexpr HRESULT kInUse = static_cast<HRESULT>(0x80030020);

bool isSame(const char* left, const char* right) { return ::_stricmp(left, right) == 0; }

/// Releases the control's handle.
bool removeControl(aut::ControlCache& cache, HANDLE control, const char* classId)
{
    using Info = aut::ControlCache::Info;
    aut::ControlCache::Text file = "";
    aut::ControlCache::Text typeLibraryId = "";
    DWORD isDistributionUnit = 0;
    const bool isKnown = cache.read(control, Info::File, file) &&
                         cache.read(control, Info::TypeLibraryId, typeLibraryId) &&
                         cache.read(control, Info::IsDistributionUnit, isDistributionUnit);
    cache.release(control);
    if (!isKnown)
        return true;
    if (cache.forceRemove(file, classId, typeLibraryId, isDistributionUnit) != kInUse)
        return true;
    aut::setRemovalBlocked();
    return false;
}

bool endsInFileName(const char* path, const char* fileName)
{
    const std::size_t pathLength = std::strlen(path);
    const std::size_t nameLength = std::strlen(fileName);
    if (pathLength <= nameLength)
        return false;
    const char* const tail = path + (pathLength - nameLength);
    return tail[-1] == '\\' && isSame(tail, fileName);
}
} // namespace

bool RemoveCABFromCLSID(const char* classId)
{
    // A control that names no class is none that could be meant by an empty text.
    if (aut::isEmpty(classId) || isSame(classId, kClientClassId))
        return false;
    aut::ControlCache cache;
    if (!cache.isLoaded())
        return false;
    for (HANDLE control = cache.first(); control != nullptr; control = cache.next())
    {
        // One whose class ID cannot be read is passed by: nothing says that it is the one that is meant.
        aut::ControlCache::Text found = "";
        if (cache.read(control, aut::ControlCache::Info::ClassId, found) && isSame(found, classId))
            return removeControl(cache, control, found);
        cache.release(control);
    }
    return false;
}

bool SearchFileInDownloadedProgramFiles(const char* fileName, char* path)
{
    if (path == nullptr)
        return false;
    path[0] = '\0';
    if (aut::isEmpty(fileName))
        return false;

    if (isSame(fileName, kInformationFile))
    {
        // Windows records here where a unit came from ("CODEBASE") and where its information file was put ("INF").
        CRegBase download(kDistributionUnits, kClientClassId, "DownloadInformation", true);
        return download.QueryValue("INF", path) && path[0] != '\0';
    }
    CRegBase files(kDistributionUnits, kClientClassId, "Contains\\Files", true);
    RT_List<String, String&> paths;
    files.GetValues(paths);
    for (POSITION pos = paths.GetHeadPosition(); pos != nullptr;)
    {
        const String& known = paths.GetNext(pos);
        if (endsInFileName(known, fileName))
            return aut::copyText(path, kPathSize, known);
    }
    return false;
}
