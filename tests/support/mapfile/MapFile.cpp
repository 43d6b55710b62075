// Stands in for the map-file library, which is another product. It keeps what the tool library relies on: a map file
// belongs to one folder and component, a handle is good until it is released or the library goes away, and whoever
// brings another one is told so.
//
// Its map file is a text "<component>.map" in the version folder: lines "name=value", and one line "item=path" for each
// file that the component consists of.

#include <windows.h>

#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace
{
struct MapFile
{
    std::map<std::string, std::string> parameters;
    std::vector<std::string> items;
    std::vector<int> states; ///< of each item at the last check: 1 there, 0 missing
};

using Handle = unsigned long long;

/// No handle outlives the library: each load counts from another number.
Handle firstHandle()
{
    LARGE_INTEGER now;
    ::QueryPerformanceCounter(&now);
    return static_cast<Handle>(now.QuadPart) << 16;
}

std::map<Handle, std::unique_ptr<MapFile>> g_loaded;
Handle g_next = firstHandle();

MapFile* find(Handle handle)
{
    const auto found = g_loaded.find(handle);
    return found != g_loaded.end() ? found->second.get() : nullptr;
}
} // namespace

extern "C"
{
    __declspec(dllexport) Handle MapFileLoad(const char* versionFolder, const char* component)
    {
        std::ifstream file(std::string(versionFolder) + "\\" + component + ".map");
        if (!file.is_open())
            return 0;
        auto loaded = std::make_unique<MapFile>();
        for (std::string line; std::getline(file, line);)
        {
            const std::size_t equals = line.find('=');
            if (equals == std::string::npos)
                return 0; // no map file
            if (line.compare(0, equals, "item") == 0)
                loaded->items.push_back(line.substr(equals + 1));
            else
                loaded->parameters[line.substr(0, equals)] = line.substr(equals + 1);
        }
        g_loaded[++g_next] = std::move(loaded);
        return g_next;
    }

    __declspec(dllexport) void MapFileRelease(Handle handle) { g_loaded.erase(handle); }

    __declspec(dllexport) void MapFileGetParam(Handle handle, const char* name, char* out)
    {
        const MapFile* const loaded = find(handle);
        if (loaded == nullptr)
            return;
        const auto found = loaded->parameters.find(name);
        if (found != loaded->parameters.end())
            std::memcpy(out, found->second.c_str(), found->second.size() + 1);
    }

    /// How many items are missing, or with `countPresent` how many are there; -1 for a handle that is none.
    __declspec(dllexport) int MapFileCheck(Handle handle, int** states, bool countPresent)
    {
        MapFile* const loaded = find(handle);
        if (loaded == nullptr)
            return -1;
        int present = 0;
        loaded->states.clear();
        for (const std::string& item : loaded->items)
        {
            const bool there = ::GetFileAttributesA(item.c_str()) != INVALID_FILE_ATTRIBUTES;
            loaded->states.push_back(there ? 1 : 0);
            present += there ? 1 : 0;
        }
        if (states != nullptr)
            *states = loaded->states.data();
        return countPresent ? present : static_cast<int>(loaded->items.size()) - present;
    }

    __declspec(dllexport) const char* MapFileItemGetDestinationPath(Handle handle, int item)
    {
        const MapFile* const loaded = find(handle);
        return loaded != nullptr && item >= 0 && static_cast<std::size_t>(item) < loaded->items.size()
                   ? loaded->items[static_cast<std::size_t>(item)].c_str()
                   : nullptr;
    }
}
