#ifndef AUTOOLS_FOUNDATION_LOGARCHIVES_H
#define AUTOOLS_FOUNDATION_LOGARCHIVES_H

#include <windows.h>

namespace aut
{
class LogFile;

/// How many numbered archives there are believed to be, and how many are kept.
struct ArchiveCounts
{
    unsigned int last = 0;
    unsigned int max = 4;
};

/// The counts in the registry value `LastAndMaxIndex`: last in the low half, max in the high one. 0 is "not set".
ArchiveCounts archiveCountsFromRegistry(DWORD lastAndMax) noexcept;

/// Sets `path` to the current log file of a directory. False, and "", when it does not fit.
bool logFilePath(char (&path)[MAX_PATH], const char* directory) noexcept;
/// The same for a numbered archive, and for the archive named after a local time.
bool numberedArchivePath(char (&path)[MAX_PATH], const char* directory, unsigned int index) noexcept;
bool timedArchivePath(char (&path)[MAX_PATH], const char* directory, const SYSTEMTIME& local) noexcept;

/// Moves the current log file, which is open as `current`, to archive 01 and each archive one number up; the oldest is
/// deleted. `current` is closed when it was moved and stays open, on the same file, when it could not be.
/// Raises `counts.last`; reports nothing.
///
/// A process that dies on the way leaves every event in one file or another, and a gap among the archives. The next
/// rotation of a process that counts as many archives as are kept begins with the oldest again: a rotation cut short
/// costs one archive more, the one that was already moved into the oldest one's place.
void rotateLog(LogFile& current, const char* directory, ArchiveCounts& counts);
} // namespace aut

#endif
