#include "machine/Client.h"

#include "common/Text.h"
#include "machine/Owners.h"
#include "machine/Text.h"

#include <7xAutoUpdateTools.h>

#include <algorithm>
#include <cstdio>

namespace autool
{
__int64 secondsOf(const FILETIME& time)
{
    constexpr __int64 kUnitsOfSecond = 10'000'000;
    constexpr __int64 kSecondsTo1970 = 11'644'473'600;
    const __int64 units = (static_cast<__int64>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
    return units / kUnitsOfSecond - kSecondsTo1970;
}

namespace
{
bool isDotName(const wchar_t* name) { return std::wcscmp(name, L".") == 0 || std::wcscmp(name, L"..") == 0; }

bool matches(const std::wstring& name, const std::wstring& pattern)
{
    // Windows' own matching takes 8.3 names too, so that "*.xml" finds x.xml_old.
    std::size_t at = 0;
    std::size_t wanted = 0;
    std::size_t star = std::wstring::npos;
    std::size_t retry = 0;
    while (at < name.size())
    {
        if (wanted < pattern.size() && (pattern[wanted] == L'?' || pattern[wanted] == name[at]))
        {
            ++at;
            ++wanted;
        }
        else if (wanted < pattern.size() && pattern[wanted] == L'*')
        {
            star = wanted++;
            retry = at;
        }
        else if (star != std::wstring::npos)
        {
            wanted = star + 1;
            at = ++retry;
        }
        else
            return false;
    }
    return pattern.find_first_not_of(L'*', wanted) == std::wstring::npos;
}

void collect(const std::wstring& folder, const std::wstring& below, const std::wstring& pattern, bool deep,
             std::vector<FileEntry>& files)
{
    WIN32_FIND_DATAW found{};
    const FindHandle search(::FindFirstFileW((folder + L"\\" + below + L"*").c_str(), &found));
    if (!search)
        return;
    do
    {
        const bool isLink = (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        {
            if (deep && !isLink && !isDotName(found.cFileName))
                collect(folder, below + found.cFileName + L"\\", pattern, deep, files);
        }
        else if (matches(lowered(std::wstring(found.cFileName)), pattern))
        {
            const unsigned __int64 size =
                (static_cast<unsigned __int64>(found.nFileSizeHigh) << 32) | found.nFileSizeLow;
            files.push_back({fromWide(below + found.cFileName), size, secondsOf(found.ftLastWriteTime)});
        }
    } while (::FindNextFileW(search.get(), &found));
}

DWORD attributesOf(const std::string& path) { return ::GetFileAttributesW(toWide(path).c_str()); }
} // namespace

ClientFolders readClientFolders()
{
    CRegAutoUpdate client(true);
    const auto text = [](const char* systemText) { return fromSystem(systemText); };
    RT_List<String, String&> keys;
    ClientFolders folders; // each text at once: the getters share one buffer
    folders.isPresent = client.GetSubKeys(keys);
    folders.path = text(client.GetPath());
    folders.data = text(client.GetDataPath());
    folders.download = text(client.GetDownloadPath());
    folders.components = text(client.GetComponentPath());
    folders.maker = text(client.GetVelmoraPath());
    const bool hasVersion = *client.GetKernelVersion() != '\0';
    if (hasVersion && !folders.components.empty())
        folders.kernel = text(client.GetKernelPath());
    String userLog;
    GetAUDataPath(userLog, 1);
    folders.userLog = text(userLog);
    return folders;
}

std::wstring properFolder(std::wstring folder)
{
    while (!folder.empty() && (folder.back() == L'\\' || folder.back() == L'/'))
        folder.pop_back();
    return folder.size() > 2 ? folder : std::wstring();
}

bool isBelow(const std::wstring& path, const std::wstring& folder)
{
    const std::wstring proper = properFolder(folder);
    return !proper.empty() && path.size() >= proper.size() &&
           ::_wcsnicmp(path.c_str(), proper.c_str(), proper.size()) == 0 &&
           (path.size() == proper.size() || path[proper.size()] == L'\\');
}

std::vector<FileEntry> filesOf(const std::string& folder, const std::string& pattern, bool deep)
{
    std::vector<FileEntry> files;
    if (folder.empty())
        return files;
    collect(toWide(folder), L"", lowered(toWide(pattern)), deep, files);
    std::sort(files.begin(), files.end(),
              [](const FileEntry& left, const FileEntry& right)
              { return ::_stricmp(left.name.c_str(), right.name.c_str()) < 0; });
    return files;
}

bool isFile(const std::string& path)
{
    const DWORD attributes = attributesOf(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool isFolder(const std::string& path)
{
    const DWORD attributes = attributesOf(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::string systemError(unsigned long error)
{
    wchar_t text[512] = L"";
    const DWORD length = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0,
                                          text, static_cast<DWORD>(std::size(text)), nullptr);
    std::string message = fromWide(std::wstring(text, length));
    message.erase(message.find_last_not_of("\r\n .") + 1);
    return (message.empty() ? "error" : message) + " (" + std::to_string(error) + ")";
}

std::string ageText(__int64 seconds)
{
    const bool isAhead = seconds < 0;
    const __int64 length = isAhead ? -seconds : seconds;
    const auto text = [&]() -> std::string
    {
        constexpr __int64 kMinute = 60;
        constexpr __int64 kHour = 60 * kMinute;
        constexpr __int64 kDay = 24 * kHour;
        if (length < 2 * kMinute)
            return std::to_string(length) + " s";
        if (length < 2 * kHour)
            return std::to_string(length / kMinute) + " min";
        return length < 2 * kDay ? std::to_string(length / kHour) + " h" : std::to_string(length / kDay) + " days";
    };
    return (isAhead ? "in " : "") + text();
}

std::string sizeText(unsigned __int64 bytes)
{
    constexpr double kStep = 1024.0;
    const char* const units[] = {"KB", "MB", "GB", "TB"};
    if (bytes < 1024)
        return std::to_string(bytes) + " bytes";
    double size = static_cast<double>(bytes) / kStep;
    std::size_t unit = 0;
    while (size >= kStep && unit + 1 < std::size(units))
    {
        size /= kStep;
        ++unit;
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.1f %s", size, units[unit]);
    return text;
}
} // namespace autool
