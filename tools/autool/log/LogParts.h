#ifndef AUTOOL_LOG_LOGPARTS_H
#define AUTOOL_LOG_LOGPARTS_H

#include "log/LogEvent.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace autool
{
/// Tells a file whatever its name is: a rotation renames the log.
struct FileIdentity
{
    std::uint64_t volume = 0;
    std::uint64_t index = 0;
    bool operator==(const FileIdentity& other) const { return volume == other.volume && index == other.index; }
    bool operator!=(const FileIdentity& other) const { return !(*this == other); }
};

/// One file of the log.
struct LogPart
{
    std::string path;             ///< UTF-8
    std::string name;             ///< without folder
    unsigned int number = 0;      ///< of a numbered archive; 0 for another file
    std::optional<LogTime> stamp; ///< of an archive that was moved aside under a time
    FileIdentity identity;
    std::uint64_t size = 0;

    bool isCurrent() const { return number == 0 && !stamp; }
};

/// The log and its archives in a folder, oldest first: the numbered archives from the highest down, then the current
/// file. An archive with a time in its name stands where its time belongs. `fileName` is the current file's name.
std::vector<LogPart> logParts(const std::string& folder, const std::string& fileName);
/// One file alone; nothing when it cannot be opened.
std::optional<LogPart> logPart(const std::string& path);

/// Reads at most `size` bytes from there. The file is open only for the time of the call, in a way that keeps nobody
/// from writing, renaming or deleting it: held open, an archive that is deleted would keep its name, and the rotation
/// would fail. Where it has been renamed, it is looked for under its folder's other names. False when it is gone or
/// cannot be read; true with fewer bytes at its end.
bool readPart(LogPart& part, std::uint64_t offset, std::size_t size, std::string& bytes);

/// Folder and name of a path.
std::pair<std::string, std::string> splitPath(const std::string& path);
bool isExistingFolder(const std::string& path);

constexpr char kLogFileName[] = "7xAutoupdateLog.xml";
} // namespace autool

#endif
