#ifndef AUTOOL_LOG_LOGOPTIONS_H
#define AUTOOL_LOG_LOGOPTIONS_H

#include "log/LogEvent.h"

#include <optional>
#include <string>
#include <vector>

namespace autool
{
struct LogOptions
{
    std::string file; ///< "" is the client's own log
    bool ofUser = false;
    std::string sinceText;
    std::optional<LogTime> since;
    std::vector<std::string> types;
    std::string text;
    bool follow = false;
    double followSeconds = 0; ///< 0 is until the user ends it
    bool json = false;
    std::string html;
};

/// Which events are wanted.
class LogFilter
{
public:
    explicit LogFilter(const LogOptions& options);
    /// An event without a readable date is as old as the one before it.
    bool isLater(const LogEvent& event);
    bool wants(const LogEvent& event) const;

private:
    std::optional<LogTime> m_since;
    std::vector<std::string> m_types;
    std::string m_text;
    bool m_isLater = false;
};
} // namespace autool

#endif
