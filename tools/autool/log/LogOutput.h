#ifndef AUTOOL_LOG_LOGOUTPUT_H
#define AUTOOL_LOG_LOGOUTPUT_H

#include "common/Console.h"
#include "common/Table.h"
#include "log/LogStudy.h"

#include <deque>
#include <memory>
#include <string>
#include <vector>

namespace autool
{
/// One way of showing a log, event by event, so that its size does not matter.
class LogOutput
{
public:
    virtual ~LogOutput() = default;
    virtual void begin(const std::string& folder, const std::vector<LogPart>& parts) = 0;
    virtual void event(const LogEvent& event, const LogPart& part) = 0;
    virtual void end(const LogStudy& study) = 0;
};

std::unique_ptr<LogOutput> makeTextOutput(Console& console);
std::unique_ptr<LogOutput> makeJsonOutput(Console& console);
/// One JSON object per line and nothing else, for what is followed.
std::unique_ptr<LogOutput> makeJsonLinesOutput(Console& console);
/// Writes the file when the log has ended. Throws std::runtime_error when it cannot.
std::unique_ptr<LogOutput> makeHtmlOutput(Console& console, const std::string& file);

/// The report that makeHtmlOutput() writes. The table has the last events; counts and findings are about all.
struct HtmlEvent
{
    LogEvent event;
    std::string file;
};
std::string htmlReport(const std::string& folder, const std::vector<LogPart>& parts,
                       const std::deque<HtmlEvent>& events, const LogStudy& study);
/// The timeline alone: phases as bars, below them how many events there were.
std::string htmlTimeline(const LogStudy& study);
std::string escapedHtml(std::string_view text);
} // namespace autool

#endif
