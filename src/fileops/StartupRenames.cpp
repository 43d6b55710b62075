#include "fileops/StartupRenames.h"

#include "foundation/String.h"
#include "registry/CRegBase.h"

#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <string>
#include <vector>

namespace aut
{
namespace
{
constexpr char kSection[] = "Rename";
constexpr char kDelete[] = "NUL"; ///< the key under which files are deleted
constexpr char kRunOnce[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\RunServicesOnce";
constexpr int kDrawings = 100;

std::mutex g_sectionLock; ///< for reading the section and writing it back

bool refuse(DWORD error)
{
    ::SetLastError(error);
    return false;
}

std::string windowsDirectory()
{
    char directory[MAX_PATH] = "";
    const UINT length = ::GetWindowsDirectoryA(directory, sizeof directory);
    return std::string(directory, length < sizeof directory ? length : 0);
}

std::string settingsFile() { return windowsDirectory() + "\\WinInit.ini"; }

/// The 8.3 form; the path itself when it has none, for instance because the file is not there. False when it is too
/// long for this family.
bool shortPath(const char* path, std::string& out)
{
    char buffer[MAX_PATH] = "";
    const DWORD length = ::GetShortPathNameA(path, buffer, sizeof buffer);
    if (length >= sizeof buffer || (length == 0 && std::strlen(path) >= sizeof buffer))
        return refuse(ERROR_FILENAME_EXCED_RANGE);
    out = length > 0 ? buffer : path;
    return true;
}

/// One line of the section. The key of a deletion may occur any number of times.
struct Entry
{
    explicit Entry(const char* text) : line(text)
    {
        const std::size_t equals = line.find('=');
        key = line.substr(0, equals).c_str();
        if (equals != std::string::npos)
            value = line.substr(equals + 1).c_str();
    }

    std::string line;
    String key;
    String value;

    bool deletes(const char* path) const { return key == kDelete && value == path; }
    bool names(const char* path) const { return key == path || value == path; }
};

std::vector<Entry> readSection(const std::string& file)
{
    std::vector<char> buffer(4096);
    for (;;)
    {
        const DWORD length =
            ::GetPrivateProfileSectionA(kSection, buffer.data(), static_cast<DWORD>(buffer.size()), file.c_str());
        if (length + 2 < buffer.size())
            break;
        buffer.resize(buffer.size() * 2);
    }
    std::vector<Entry> entries;
    for (const char* line = buffer.data(); *line != '\0'; line += std::strlen(line) + 1)
        entries.emplace_back(line);
    return entries;
}

bool writeSection(const std::vector<Entry>& entries, const std::string& file)
{
    std::string lines;
    for (const Entry& entry : entries)
        lines.append(entry.line) += '\0';
    lines += '\0';
    return ::WritePrivateProfileSectionA(kSection, lines.data(), file.c_str()) != FALSE;
}

bool writeEntry(const char* key, const char* value, const std::string& file)
{
    return ::WritePrivateProfileStringA(kSection, key, value, file.c_str()) != FALSE;
}

/// Takes out what deletes `path`; whether there was any.
bool dropDeletions(std::vector<Entry>& entries, const char* path)
{
    const auto rest =
        std::remove_if(entries.begin(), entries.end(), [&](const Entry& entry) { return entry.deletes(path); });
    const bool any = rest != entries.end();
    entries.erase(rest, entries.end());
    return any;
}

/// The plain name of the value is the next random number. One that is taken belongs to a command that has not run yet.
bool runAtStartup(const std::string& command)
{
    CRegBase key(kRunOnce, false);
    for (int i = 0; i < kDrawings; ++i)
    {
        const std::string name = std::to_string(std::rand());
        String taken;
        if (!key.QueryValue(name.c_str(), taken))
            return key.SetValue(name.c_str(), command.c_str()) || refuse(ERROR_REGISTRY_IO_FAILED);
    }
    return refuse(ERROR_ALREADY_EXISTS);
}
} // namespace

bool replaceAtStartup(const char* target, const char* source, const char* longName)
try
{
    std::string shortTarget;
    std::string shortSource;
    if (!shortPath(target, shortTarget) || !shortPath(source, shortSource))
        return false;
    const std::size_t last = shortTarget.rfind('\\');
    if (last == std::string::npos)
        return true;

    if (String(shortTarget.c_str() + last + 1) == longName)
    {
        if (shortTarget.find('=') != std::string::npos)
            return refuse(ERROR_INVALID_NAME); // where a line is split: it would name another file
        const std::string file = settingsFile();
        const std::lock_guard<std::mutex> lock(g_sectionLock);
        std::vector<Entry> entries = readSection(file);
        if (dropDeletions(entries, shortTarget.c_str()) && !writeSection(entries, file))
            return false; // a deletion registered earlier would take the new file away
        return writeEntry(shortTarget.c_str(), shortSource.c_str(), file);
    }
    // The section would give the file its short name, so the long one needs a command.
    const std::string windows = windowsDirectory();
    return runAtStartup("Command.com /C " + windows + "\\Command\\Move.exe /Y " + shortSource + " " +
                        shortTarget.substr(0, last) + "\\" + longName);
}
catch (const std::bad_alloc&)
{
    return refuse(ERROR_NOT_ENOUGH_MEMORY);
}

bool deleteAtStartup(const char* path)
try
{
    std::string shortName;
    if (!shortPath(path, shortName))
        return false;
    const std::string file = settingsFile();
    const std::lock_guard<std::mutex> lock(g_sectionLock);
    std::vector<Entry> entries = readSection(file);
    dropDeletions(entries, shortName.c_str());
    // A key written the usual way would replace the deletion that is already there. The latest goes before the others,
    // where whoever reads the key finds it, unless a line behind them still brings or takes a file of this name.
    const auto first =
        std::find_if(entries.begin(), entries.end(), [](const Entry& entry) { return entry.key == kDelete; });
    const bool namedLater =
        std::any_of(first, entries.end(), [&](const Entry& entry) { return entry.names(shortName.c_str()); });
    entries.insert(namedLater ? entries.end() : first, Entry((kDelete + ("=" + shortName)).c_str()));
    return writeSection(entries, file);
}
catch (const std::bad_alloc&)
{
    return refuse(ERROR_NOT_ENOUGH_MEMORY);
}
} // namespace aut
