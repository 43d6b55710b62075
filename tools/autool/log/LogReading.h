#ifndef AUTOOL_LOG_LOGREADING_H
#define AUTOOL_LOG_LOGREADING_H

#include "log/LogParts.h"
#include "log/LogScanner.h"

#include <functional>
#include <string>
#include <vector>

namespace autool
{
/// How reading one file went.
struct PartOutcome
{
    bool isReadable = false;
    bool endsWhole = false;
    std::uint64_t strayBytes = 0;
    std::uint64_t consumed = 0; ///< behind the last event that was handed out
};

/// Reads a file from `from` to its end while others may write to it. With `isFinal` a begun event at the end is handed
/// out as damaged; without, it is left for the next time, because its writer may be at it.
PartOutcome scanPart(LogPart& part, std::uint64_t from, bool isFinal, const LogScanner::Sink& sink,
                     const std::function<void(std::uint64_t)>& progress = {});

/// Hands out what is written to a log after the time it was made, across rotations.
class LogFollower
{
public:
    /// The log's folder and the name of its current file, and where reading stopped: `last` is the file that was read
    /// last, up to `consumed`. Without it, everything that comes is new.
    LogFollower(std::string folder, std::string fileName, std::optional<LogPart> last, std::uint64_t consumed);

    using Sink = std::function<void(const LogEvent&, const LogPart&)>;
    /// Hands out what has come since the last call. True when events may be missing between: so many rotations went by
    /// that the file read last is gone.
    bool poll(const Sink& sink);

private:
    bool isUnchanged(const LogPart& now);
    void remember(const std::vector<LogPart>& parts);
    bool isKnown(const LogPart& part) const;
    void readOn(LogPart part, std::uint64_t from, bool isFinal, const Sink& sink);

    std::string m_folder;
    std::string m_fileName;
    std::optional<LogPart> m_part;
    std::uint64_t m_consumed;
    std::vector<LogPart> m_archives; ///< that were there at the last look, and so were read or deliberately not
    std::string m_before; ///< the bytes before `m_consumed`: another file under the same identity has others there
};
} // namespace autool

#endif
