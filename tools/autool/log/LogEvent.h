#ifndef AUTOOL_LOG_LOGEVENT_H
#define AUTOOL_LOG_LOGEVENT_H

#include <optional>
#include <string>
#include <string_view>

namespace autool
{
/// Local time of the machine that wrote the log, as seconds on a calendar without time zones and daylight saving.
using LogTime = long long;

LogTime logTime(int year, int month, int day, int hour, int minute, int second);
/// "2026-11-20 14:05:09".
std::string shownTime(LogTime time);
/// The stored form: "26/11/20 14:05.09", of this century.
std::optional<LogTime> parseLogDate(std::string_view date);
/// The clock of this machine.
LogTime localNow();
/// What a user types: "2026-11-20", "2026-11-20 14:05", "2026-11-20 14:05:09", "14:05" (today), "90s", "30m", "2h" or
/// "3d" (ago), or a date copied from the log.
std::optional<LogTime> parseSince(std::string_view text, LogTime now);

/// One event, as far as it could be read.
struct LogEvent
{
    std::optional<LogTime> time;
    std::string dateText;     ///< as stored
    std::string type;         ///< "Info", ...; "Environment" for the block that tells the versions
    std::string text;         ///< UTF-8
    bool isDamaged = false;   ///< it does not end as an event does: the writer was ended in the middle of it
    bool isShortened = false; ///< the text went on beyond what is kept
};

constexpr char kEnvironmentType[] = "Environment";
} // namespace autool

#endif
