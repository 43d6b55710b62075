#include "log/LogParts.h"

#include "common/Text.h"
#include "log/LogScanner.h"

#include <windows.h>

#include <algorithm>
#include <memory>

namespace autool
{
namespace
{
constexpr int kListings = 5; ///< tries to list the folder while nothing is renamed

struct CloseHandle_
{
    using pointer = HANDLE;
    void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};
using File = std::unique_ptr<HANDLE, CloseHandle_>;

File openForReading(const std::string& path)
{
    const HANDLE file =
        ::CreateFileW(toWide(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    return File(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

bool describe(HANDLE file, LogPart& part)
{
    BY_HANDLE_FILE_INFORMATION info{};
    if (::GetFileInformationByHandle(file, &info) == FALSE || (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return false;
    part.identity = {info.dwVolumeSerialNumber, (std::uint64_t{info.nFileIndexHigh} << 32) | info.nFileIndexLow};
    part.size = (std::uint64_t{info.nFileSizeHigh} << 32) | info.nFileSizeLow;
    return true;
}

/// What an archive's name has between the log's name and the extension: "_01" or "_26-11-20_14-05-09".
bool readSuffix(const std::string& suffix, LogPart& part)
{
    constexpr std::size_t kLongestNumber = 5; // the registry's counts have 16 bits
    if (suffix.empty())
        return true;
    if (suffix[0] != '_')
        return false;
    const std::string rest = suffix.substr(1);
    if (rest.size() >= 2 && rest.size() <= kLongestNumber && rest.find_first_not_of("0123456789") == std::string::npos)
    {
        part.number = static_cast<unsigned int>(std::stoul(rest));
        return part.number > 0;
    }
    std::string date = rest;
    if (date.size() != 17 || date[8] != '_')
        return false;
    date[2] = date[5] = '/';
    date[8] = ' ';
    date[11] = ':';
    date[14] = '.';
    part.stamp = parseLogDate(date);
    return part.stamp.has_value();
}

std::vector<LogPart> listOnce(const std::string& folder, const std::string& fileName)
{
    const std::size_t point = std::min(fileName.rfind('.'), fileName.size());
    const std::string stem = fileName.substr(0, point);
    const std::string extension = fileName.substr(point);
    std::vector<LogPart> parts;
    WIN32_FIND_DATAW entry{};
    const HANDLE search = ::FindFirstFileW(toWide(folder + "\\" + stem + "*" + extension).c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE)
        return parts;
    do
    {
        LogPart part;
        part.name = fromWide(entry.cFileName);
        part.path = folder + "\\" + part.name;
        // A short name may match the pattern where the long one does not.
        const std::string lower = lowerCase(part.name);
        const bool isOurs = lower.size() >= fileName.size() && lower.rfind(lowerCase(stem), 0) == 0 &&
                            lower.compare(lower.size() - extension.size(), extension.size(), lowerCase(extension)) == 0;
        if (!isOurs ||
            !readSuffix(part.name.substr(stem.size(), part.name.size() - stem.size() - extension.size()), part))
            continue;
        const File file = openForReading(part.path);
        if (file != nullptr && describe(file.get(), part))
            parts.push_back(part);
    } while (::FindNextFileW(search, &entry) != FALSE);
    ::FindClose(search);
    std::sort(parts.begin(), parts.end(), [](const LogPart& a, const LogPart& b) { return a.name < b.name; });
    return parts;
}

bool areSame(const std::vector<LogPart>& a, const std::vector<LogPart>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const LogPart& left, const LogPart& right)
                      { return left.name == right.name && left.identity == right.identity; });
}

std::optional<LogTime> firstTime(LogPart& part)
{
    constexpr std::size_t kHeadBytes = 8192;
    std::optional<LogTime> first;
    LogScanner scanner(
        [&first](const LogEvent& event)
        {
            if (!first)
                first = event.time;
        });
    std::string bytes;
    if (readPart(part, 0, kHeadBytes, bytes))
        scanner.feed(bytes);
    return first;
}
} // namespace

std::vector<LogPart> logParts(const std::string& folder, const std::string& fileName)
{
    // Between listing a name and opening it, a rotation may give the name to another file.
    std::vector<LogPart> listed = listOnce(folder, fileName);
    for (int i = 0; i < kListings; ++i)
    {
        std::vector<LogPart> again = listOnce(folder, fileName);
        const bool isStable = areSame(listed, again);
        listed = std::move(again);
        if (isStable)
            break;
    }
    const auto timedFrom =
        std::stable_partition(listed.begin(), listed.end(), [](const LogPart& part) { return !part.stamp; });
    std::vector<LogPart> timed(timedFrom, listed.end());
    listed.erase(timedFrom, listed.end());
    std::sort(listed.begin(), listed.end(), [](const LogPart& a, const LogPart& b) { return a.number > b.number; });
    std::sort(timed.begin(), timed.end(), [](const LogPart& a, const LogPart& b) { return *a.stamp < *b.stamp; });
    // A file was moved aside before the next one was begun.
    std::vector<LogPart> ordered;
    std::size_t next = 0;
    for (LogPart& part : listed)
    {
        const std::optional<LogTime> begin = firstTime(part);
        while (next < timed.size() && begin && *timed[next].stamp <= *begin)
            ordered.push_back(timed[next++]);
        if (part.isCurrent()) // always the last
            ordered.insert(ordered.end(), timed.begin() + static_cast<std::ptrdiff_t>(next), timed.end()),
                next = timed.size();
        ordered.push_back(part);
    }
    ordered.insert(ordered.end(), timed.begin() + static_cast<std::ptrdiff_t>(next), timed.end());
    return ordered;
}

std::optional<LogPart> logPart(const std::string& path)
{
    LogPart part;
    part.path = path;
    part.name = splitPath(path).second;
    const File file = openForReading(path);
    if (file == nullptr || !describe(file.get(), part))
        return std::nullopt;
    return part;
}

bool readPart(LogPart& part, std::uint64_t offset, std::size_t size, std::string& bytes)
{
    bytes.clear();
    File file = openForReading(part.path);
    LogPart now;
    if (file == nullptr || !describe(file.get(), now) || now.identity != part.identity)
    {
        file.reset();
        const auto [folder, name] = splitPath(part.path);
        for (const LogPart& other : listOnce(folder, kLogFileName))
            if (other.identity == part.identity)
            {
                file = openForReading(other.path);
                part.path = other.path;
                part.name = other.name;
                part.number = other.number;
                part.stamp = other.stamp;
            }
        if (file == nullptr || !describe(file.get(), now) || now.identity != part.identity)
            return false;
    }
    part.size = now.size;
    bytes.resize(size);
    OVERLAPPED at{};
    at.Offset = static_cast<DWORD>(offset);
    at.OffsetHigh = static_cast<DWORD>(offset >> 32);
    DWORD read = 0;
    const bool ok = ::ReadFile(file.get(), bytes.data(), static_cast<DWORD>(size), &read, &at) != FALSE ||
                    ::GetLastError() == ERROR_HANDLE_EOF;
    bytes.resize(ok ? read : 0);
    return ok;
}

std::pair<std::string, std::string> splitPath(const std::string& path)
{
    const std::size_t slash = path.find_last_of("\\/");
    if (slash == std::string::npos)
        return {".", path};
    return {path.substr(0, slash), path.substr(slash + 1)};
}

bool isExistingFolder(const std::string& path)
{
    const DWORD attributes = ::GetFileAttributesW(toWide(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}
} // namespace autool
