#include "foundation/LogArchives.h"

#include "fileops/RT_File.h"
#include "foundation/LogFile.h"
#include "platform/BoundedText.h"

#include <algorithm>
#include <vector>

namespace aut
{
namespace
{
constexpr unsigned int kMinArchives = 4;
constexpr char kBaseName[] = "7xAutoupdateLog";

/// What was cut names another file: better none.
bool keepWhole(char (&path)[MAX_PATH], bool fits)
{
    if (!fits)
        path[0] = '\0';
    return fits;
}

/// False while some reader holds the file in a way that forbids renaming it.
bool isMovable(const char* path)
{
    const UniqueFile probe(::CreateFileA(path, DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                         OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return static_cast<bool>(probe);
}

/// True when there is no such archive any more.
bool deleteArchive(const char* directory, unsigned int index)
{
    char path[MAX_PATH];
    if (!numberedArchivePath(path, directory, index))
        return false;
    return ::GetFileAttributesA(path) == INVALID_FILE_ATTRIBUTES || ::DeleteFileA(path) != FALSE;
}
} // namespace

ArchiveCounts archiveCountsFromRegistry(DWORD lastAndMax) noexcept
{
    if (lastAndMax == 0)
        return {};
    return {LOWORD(lastAndMax), std::max<unsigned int>(HIWORD(lastAndMax), kMinArchives)};
}

bool logFilePath(char (&path)[MAX_PATH], const char* directory) noexcept
{
    return keepWhole(path, formatText(path, sizeof path, "%s\\%s.xml", directory, kBaseName));
}

bool numberedArchivePath(char (&path)[MAX_PATH], const char* directory, unsigned int index) noexcept
{
    return keepWhole(path, formatText(path, sizeof path, "%s\\%s_%2.2u.xml", directory, kBaseName, index));
}

bool timedArchivePath(char (&path)[MAX_PATH], const char* directory, const SYSTEMTIME& local) noexcept
{
    return keepWhole(path, formatText(path, sizeof path, "%s\\%s_%02d-%02d-%02d_%02d-%02d-%02d.xml", directory,
                                      kBaseName, local.wYear % 100, local.wMonth, local.wDay, local.wHour,
                                      local.wMinute, local.wSecond));
}

void rotateLog(LogFile& current, const char* directory, ArchiveCounts& counts)
{
    char currentPath[MAX_PATH];
    char from[MAX_PATH];
    char to[MAX_PATH];
    // A current file that someone holds would stay behind while every further event moved the archives up and, one
    // after the other, out. The rotation waits for the next event then.
    if (!logFilePath(currentPath, directory) || !isMovable(currentPath))
        return;

    std::vector<unsigned int> moved;
    moved.reserve(counts.last + 2); // may fail, and then nothing has been done yet
    ++counts.last;
    if (counts.last > counts.max)
    {
        counts.last = counts.max;
        if (!deleteArchive(directory, counts.max))
            return;
    }
    for (unsigned int i = counts.last; i >= 2; --i)
    {
        if (numberedArchivePath(from, directory, i - 1) && numberedArchivePath(to, directory, i) &&
            ::MoveFileA(from, to) != FALSE)
        {
            moved.push_back(i);
        }
    }
    // Moved while it is still open: until it has its new name, no other process can write to it and begin a rotation
    // of its own. The others wait for that, and lose events when it takes too long; so what takes long, which is
    // flushing, comes afterwards.
    if (numberedArchivePath(to, directory, 1) && ::MoveFileA(currentPath, to) != FALSE)
    {
        current.close();
        moved.push_back(1);
    }
    for (const unsigned int i : moved)
    {
        if (numberedArchivePath(to, directory, i))
            FlushFile(to);
    }
}
} // namespace aut
