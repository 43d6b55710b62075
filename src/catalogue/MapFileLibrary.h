#ifndef AUTOOLS_CATALOGUE_MAPFILELIBRARY_H
#define AUTOOLS_CATALOGUE_MAPFILELIBRARY_H

#include <mutex>
#include <windows.h>

namespace aut
{
/// The library that reads map files, one for the process: loaded on first need, its entry points looked up one by one
/// on first need, and all of it dropped by `unload`. Every getter is null when the library or the function is missing.
///
/// A component that releases its map file unloads the library for all of them, so whoever calls an entry point holds
/// the lock from looking it up until it has returned. The lock may be taken again by the same thread.
class MapFileLibrary
{
public:
    using Handle = unsigned __int64;
    using Load = Handle (*)(const char* versionFolder, const char* component);
    using Release = void (*)(Handle mapFile);
    using GetParam = void (*)(Handle mapFile, const char* name, char* out);
    using Check = int (*)(Handle mapFile, int** items, bool flag);
    using ItemGetDestinationPath = void (*)(); // never called here

    static MapFileLibrary& instance();

    std::recursive_mutex& lock() { return m_lock; }
    void resolveAll();
    Load load();
    Release release();
    GetParam getParam();
    Check check();
    void unload();

private:
    MapFileLibrary() = default;

    template <typename Function> Function resolve(Function& cached, const char* name);

    // Raw, because it must outlive every component: nothing frees a library while the process ends.
    HMODULE m_module = nullptr;
    Load m_load = nullptr;
    Release m_release = nullptr;
    GetParam m_getParam = nullptr;
    Check m_check = nullptr;
    ItemGetDestinationPath m_itemGetDestinationPath = nullptr;
    std::recursive_mutex m_lock;
};
} // namespace aut

#endif
