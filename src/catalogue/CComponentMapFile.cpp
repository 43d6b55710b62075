#include "catalogue/CComponent.h"

#include "catalogue/MapFileLibrary.h"
#include "fileops/RT_File.h"
#include "foundation/EventLog.h"
#include "platform/BoundedText.h"
#include "platform/PlainName.h"
#include "registry/CRegAutoUpdate.h"

namespace
{
constexpr std::size_t kPathSize = 260;
using Lock = std::lock_guard<std::recursive_mutex>;
} // namespace

bool CComponent::VersionFolder(const char* componentRoot, char* folder) const
{
    folder[0] = '\0';
    if (!aut::isFolderName(m_name) || !aut::isFolderName(m_fullVersion))
    {
        // Both came from the server, and a map file says where files are to be put.
        Log(2, "CComponent - component %s %s refused: no folder of its own", m_name, m_fullVersion);
        return false;
    }
    if (componentRoot != nullptr)
        return aut::formatText(folder, kPathSize, "%s\\%s\\%s", componentRoot, m_name, m_fullVersion);
    CRegAutoUpdate client(true);
    return aut::formatText(folder, kPathSize, "%s\\%s\\%s", client.GetComponentPath(), m_name, m_fullVersion);
}

bool CComponent::LoadMapFile(char* componentRoot)
{
    aut::MapFileLibrary& library = aut::MapFileLibrary::instance();
    const Lock lock(library.lock());
    library.resolveAll();
    if (m_mapFile == 0)
    {
        const auto load = library.load();
        char folder[kPathSize];
        if (load == nullptr || !VersionFolder(componentRoot, folder)) // a folder cut short would be another one
            return false;
        m_mapFile = load(folder, m_name);
    }
    return m_mapFile != 0;
}

void CComponent::ReleaseMapFile()
{
    aut::MapFileLibrary& library = aut::MapFileLibrary::instance();
    const Lock lock(library.lock());
    if (m_mapFile != 0)
    {
        if (const auto release = library.release())
        {
            release(m_mapFile);
            m_mapFile = 0;
            delete m_attachment;
            m_attachment = nullptr;
        }
    }
    library.unload();
}

int CComponent::CheckMapFile(int** items, bool flag)
{
    aut::MapFileLibrary& library = aut::MapFileLibrary::instance();
    const Lock lock(library.lock());
    const auto check = library.check();
    if (m_mapFile == 0)
        LoadMapFile(nullptr);
    return check != nullptr ? check(m_mapFile, items, flag) : 0;
}

char* CComponent::GetMapFileParam(const char* name, char* out)
{
    if (out == nullptr)
        return nullptr;
    *out = '\0';
    aut::MapFileLibrary& library = aut::MapFileLibrary::instance();
    const Lock lock(library.lock());
    const auto getParam = library.getParam();
    if (getParam == nullptr)
        return nullptr;
    if (m_mapFile != 0)
        getParam(m_mapFile, name, out);
    return out;
}

bool CComponent::IsFromMSIComponent(char* outPath)
{
    return outPath != nullptr && VersionFolder(nullptr, outPath) && RT_File(outPath, "FromMSI").IsFileExisting(outPath);
}
