#include "catalogue/MapFileLibrary.h"

#include "environment/ClientFolders.h"
#include "platform/EntryPoint.h"

namespace aut
{
MapFileLibrary& MapFileLibrary::instance()
{
    static MapFileLibrary library;
    return library;
}

template <typename Function> Function MapFileLibrary::resolve(Function& cached, const char* name)
{
    if (m_module == nullptr)
        m_module = LoadDLL("MapFile.dll", nullptr);
    if (cached == nullptr)
        cached = entryPoint<Function>(m_module, name);
    return cached;
}

MapFileLibrary::Load MapFileLibrary::load() { return resolve(m_load, "MapFileLoad"); }

MapFileLibrary::Release MapFileLibrary::release() { return resolve(m_release, "MapFileRelease"); }

MapFileLibrary::GetParam MapFileLibrary::getParam() { return resolve(m_getParam, "MapFileGetParam"); }

MapFileLibrary::Check MapFileLibrary::check() { return resolve(m_check, "MapFileCheck"); }

void MapFileLibrary::resolveAll()
{
    load();
    release();
    getParam();
    check();
    resolve(m_itemGetDestinationPath, "MapFileItemGetDestinationPath");
}

void MapFileLibrary::unload()
{
    m_load = nullptr;
    m_release = nullptr;
    m_getParam = nullptr;
    m_check = nullptr;
    m_itemGetDestinationPath = nullptr;
    FreeDLL(m_module);
    m_module = nullptr;
}
} // namespace aut
