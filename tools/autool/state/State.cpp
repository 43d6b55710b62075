#include "state/State.h"

#include "common/Text.h"
#include "machine/Client.h"
#include "machine/Owners.h"
#include "machine/RebootQueue.h"
#include "plan/Decision.h"
#include "plan/ReleaseFile.h"
#include "state/RegistryState.h"

#include <7xAutoUpdateTools.h>

#include <algorithm>
#include <ctime>
#include <set>

namespace autool
{
namespace
{
constexpr char kFormat[] = "autool-state";
constexpr int kFormatVersion = 1;

std::string computerName()
{
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = L"";
    DWORD size = static_cast<DWORD>(std::size(name));
    return ::GetComputerNameW(name, &size) ? fromWide(std::wstring(name, size)) : std::string();
}

/// Texts and names anywhere in it, once more: a section may quote what the registry holds.
void maskAll(Json& json, const Secrets& secrets)
{
    if (json.is_string())
        json = secrets.mask(json.get<std::string>());
    else if (json.is_structured())
        for (auto& element : json)
            maskAll(element, secrets);
    if (!json.is_object())
        return;
    std::vector<std::string> names;
    for (const auto& item : json.items())
        if (secrets.mask(item.key()) != item.key())
            names.push_back(item.key());
    for (const std::string& name : names)
    {
        Json value = std::move(json[name]);
        json.erase(name);
        json[secrets.mask(name)] = std::move(value);
    }
}

const RegistryKey* keyAt(const RegistryKey& tree, std::initializer_list<const wchar_t*> path)
{
    const RegistryKey* key = &tree;
    for (const wchar_t* const name : path)
        if ((key = key->key(name)) == nullptr)
            return nullptr;
    return key;
}

const FileEntry* findFile(const std::vector<FileEntry>& files, const std::string& name)
{
    for (const FileEntry& file : files)
        if (::_stricmp(file.name.c_str(), name.c_str()) == 0)
            return &file;
    return nullptr;
}

class CacheReader
{
public:
    explicit CacheReader(const std::string& dataFolder) : m_files(filesOf(dataFolder, "*.dat", true)) {}

    Json read(const RegistryKey& tree)
    {
        if (const RegistryKey* const stamps = keyAt(tree, {L"Config", L"Cache", L"Data"}))
            addStamps(*stamps, "");
        for (const FileEntry& file : m_files)
            if (m_seen.count(lowerCase(file.name)) == 0)
                addFile(file.name, &file, "no time stamp: it is never used");
        return std::move(m_caches);
    }

private:
    void addStamps(const RegistryKey& key, const std::string& path)
    {
        for (const RegistryValue& value : key.values)
        {
            std::string name = path + fromWide(value.name) + ".dat";
            std::replace(name.begin(), name.end(), '/', '\\'); // in a certificate ID it leads into a folder
            const FileEntry* const file = findFile(m_files, name);
            const std::string stamp = fromWide(value.text());
            const bool isEmpty = stamp.empty() || stamp == "Nothing In Cache.";
            addFile(name, file,
                    file == nullptr && !isEmpty ? "its file is missing: the next request asks for everything"
                                                : "")["timeStamp"] = stamp;
            m_seen.insert(lowerCase(name));
        }
        for (const RegistryKey& child : key.keys)
            addStamps(child, path + fromWide(child.name) + "\\");
    }

    Json& addFile(const std::string& name, const FileEntry* file, const char* note)
    {
        Json& cache = m_caches[name];
        cache["timeStamp"] = nullptr;
        if (file != nullptr)
        {
            cache["size"] = file->size;
            cache["written"] = timeText(file->written);
        }
        if (*note != '\0')
            cache["note"] = note;
        return cache;
    }

    const std::vector<FileEntry> m_files;
    std::set<std::string> m_seen;
    Json m_caches = Json::object();
};
} // namespace

Json cacheState(const RegistryKey& tree, const std::string& dataFolder) { return CacheReader(dataFolder).read(tree); }

Json releaseFileState(const std::string& dataFolder)
{
    Json files = Json::object();
    for (const FileEntry& file : filesOf(dataFolder, "*.lst"))
    {
        Json& state = files[file.name];
        state["size"] = file.size;
        state["written"] = timeText(file.written);
        std::string why;
        if (const auto release = readReleaseFile(toSystem(dataFolder + "\\" + file.name), why))
        {
            state["release"] = jsonText(release->name);
            state["version"] = jsonText(release->fullVersion);
            state["action"] = actionName(release->action);
            state["components"] = release->components.size();
            state["certificateId"] = jsonText(release->certificateId);
        }
        else
            state["error"] = why;
    }
    return files;
}

Json sharedCountState()
{
    Json counts = Json::object();
    const auto key = readTree(HKEY_LOCAL_MACHINE, L"Software\\Microsoft\\Windows\\CurrentVersion\\SharedDLLs");
    if (!key)
        return counts;
    const RebootOwnership ownership = RebootOwnership::ofClient();
    for (const RegistryValue& value : key->values)
    {
        RebootEntry entry;
        entry.source = fromWide(value.name);
        ownership.judge(entry);
        if (!entry.isOurs)
            continue;
        const auto number = value.number();
        Json& count = counts[entry.source];
        count["count"] = number ? Json(*number) : Json(nullptr);
        count["belongsTo"] = entry.why;
        if (!number)
            count["note"] = "no number: " + typeName(value.type);
        else if (!isFile(entry.source))
            count["note"] = "the file is missing";
    }
    return counts;
}

Json rebootState()
{
    Json entries = Json::array();
    for (const RebootEntry& entry : readRebootQueue(RebootOwnership::ofClient()))
    {
        Json state = {{"queue", entry.queue}, {"ours", entry.isOurs}};
        if (entry.queue == "RunServicesOnce")
            state["command"] = entry.source;
        else
        {
            state["action"] = entry.target.empty() ? "delete" : "move";
            state["source"] = entry.source;
            if (!entry.target.empty())
                state["target"] = entry.target;
        }
        if (entry.isOurs)
            state["because"] = entry.why;
        if (entry.isDamaged)
            state["note"] = "the list is cut off here";
        else if (entry.isStale)
            state["note"] = "its source is missing: nothing will happen";
        entries.push_back(std::move(state));
    }
    return entries;
}

Json fileState()
{
    const ClientFolders folders = readClientFolders();
    Json files = Json::object();
    CFileVersion version;
    const auto addFolder = [&](const std::string& folder)
    {
        for (const char* const pattern : {"*.exe", "*.dll"})
            for (const FileEntry& file : filesOf(folder, pattern))
            {
                const std::string path = folder + "\\" + file.name;
                Json& state = files[path];
                const bool hasVersion = version.Open(toSystem(path).c_str()) == 1;
                state["version"] =
                    hasVersion ? jsonText(static_cast<const char*>(version.GetFixedFileVersion())) : Json(nullptr);
                state["size"] = file.size;
                state["written"] = timeText(file.written);
                version.Close();
            }
    };
    addFolder(folders.path);
    addFolder(folders.kernel);
    return files;
}

MachineState readMachineState(const Step& step)
{
    MachineState state;
    const ClientFolders folders = readClientFolders();
    step("Reading the registry");
    const auto tree = readTree(HKEY_LOCAL_MACHINE, kClientTree);
    if (tree)
        state.tree = *tree;
    state.secrets = Secrets(state.tree);

    Json& json = state.json;
    json["format"] = kFormat;
    json["formatVersion"] = kFormatVersion;
    json["time"] = timeText(::_time64(nullptr));
    json["machine"] = computerName();
    json["clientPresent"] = tree.has_value();
    json["registry"] = tree ? registryState(state.tree, state.secrets) : Json::object();
    step("Looking at the caches");
    json["caches"] = cacheState(state.tree, folders.data);
    step("Reading the release files");
    json["releaseFiles"] = releaseFileState(folders.data);
    step("Reading the shared counts");
    json["sharedCounts"] = sharedCountState();
    step("Reading what waits for the restart");
    json["reboot"] = rebootState();
    step("Looking at sessions and shells");
    json["sessions"] = sessionState();
    step("Reading file versions");
    json["files"] = fileState();
    maskAll(json, state.secrets);
    return state;
}
} // namespace autool
