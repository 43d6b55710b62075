#include "fileops/StartupRenames.h"

#include "foundation/String.h"
#include "registry/CRegBase.h"

#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
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

/// The lines of the section.
using Entries = std::vector<std::string>;

/// Deletions are the entries of one key, which may occur any number of times.
std::string deletionOf(const std::string& path) { return std::string(kDelete) + "=" + path; }
bool isDeletion(const std::string& entry) { return String(entry.c_str()).Find(deletionOf("").c_str()) == 0; }

Entries readSection(const std::string& file)
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
    Entries entries;
    for (const char* line = buffer.data(); *line != '\0'; line += std::strlen(line) + 1)
        entries.emplace_back(line);
    return entries;
}

bool writeSection(const Entries& entries, const std::string& file)
{
    std::string lines;
    for (const std::string& entry : entries)
        lines.append(entry) += '\0';
    lines += '\0';
    return ::WritePrivateProfileSectionA(kSection, lines.data(), file.c_str()) != FALSE;
}

/// Takes out what deletes `path`; whether there was any.
bool dropDeletions(Entries& entries, const std::string& path)
{
    const String deletion(deletionOf(path).c_str());
    const auto rest = std::remove_if(entries.begin(), entries.end(),
                                     [&](const std::string& entry) { return deletion == entry.c_str(); });
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
        Entries entries = readSection(file);
        if (dropDeletions(entries, shortTarget) && !writeSection(entries, file))
            return false; // a deletion registered earlier would take the new file away
        return ::WritePrivateProfileStringA(kSection, shortTarget.c_str(), shortSource.c_str(), file.c_str()) != FALSE;
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
    Entries entries = readSection(file);
    dropDeletions(entries, shortName);
    // Written as one key, it would replace the deletions that wait already. They all follow the replacements, whose new
    // files they may concern, and the latest goes first: it is the one that a reader of the key finds.
    const auto deletions = std::stable_partition(entries.begin(), entries.end(), std::not_fn(isDeletion));
    entries.insert(deletions, deletionOf(shortName));
    return writeSection(entries, file);
}
catch (const std::bad_alloc&)
{
    return refuse(ERROR_NOT_ENOUGH_MEMORY);
}
} // namespace aut
