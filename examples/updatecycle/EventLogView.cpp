#include "EventLogView.h"

#include <7xAutoUpdateTools.h>

#include <cstdio>
#include <fstream>
#include <utility>

namespace updatecycle
{
namespace
{
std::string ownLogFile()
{
    String folder;
    GetAUDataPath(folder, 1); // a program that is not the update service logs into the user's own folder
    return std::string(static_cast<const char*>(folder)) + "\\7xAutoupdateLog.xml";
}

/// The text of one element of an event line, without escapes.
std::string field(const std::string& line, const std::string& name)
{
    const std::string opening = "<" + name + ">";
    const std::size_t start = line.find(opening);
    const std::size_t end = line.find("</" + name + ">");
    if (start == std::string::npos || end == std::string::npos)
        return "";
    std::string text = line.substr(start + opening.size(), end - start - opening.size());
    // The ampersand last, so that what it brings to light is not read as an escape again.
    for (const auto& [escape, character] : {std::pair("&lt;", '<'), std::pair("&gt;", '>'), std::pair("&quot;", '"'),
                                            std::pair("&apos;", '\''), std::pair("&amp;", '&')})
        for (std::size_t at = 0; (at = text.find(escape, at)) != std::string::npos; ++at)
            text.replace(at, std::string(escape).size(), 1, character);
    return text;
}
} // namespace

EventLogView::EventLogView() : m_path(ownLogFile()), m_seen(eventLines().size()) {}

void EventLogView::print() const
{
    const std::vector<std::string> lines = eventLines();
    // A log that has been moved aside in between starts anew.
    for (std::size_t i = m_seen <= lines.size() ? m_seen : 0; i < lines.size(); ++i)
        std::printf("  %s  %-12s  %s\n", field(lines[i], "Date").c_str(), field(lines[i], "Type").c_str(),
                    field(lines[i], "Event").c_str());
}

std::vector<std::string> EventLogView::eventLines() const
{
    std::vector<std::string> lines;
    std::ifstream file(m_path);
    for (std::string line; std::getline(file, line);)
        if (line.rfind("<LogEvent>", 0) == 0)
            lines.push_back(line);
    return lines;
}
} // namespace updatecycle
