#include "tests/support/LogFile.h"

#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace auttest
{
namespace
{
constexpr std::string_view kClosing = "</LogAutoUpdate>\r\n";

std::string unescaped(std::string_view text)
{
    static constexpr std::pair<std::string_view, char> kEscapes[] = {
        {"&quot;", '"'}, {"&amp;", '&'}, {"&apos;", '\''}, {"&lt;", '<'}, {"&gt;", '>'}};
    std::string plain;
    while (!text.empty())
    {
        std::size_t length = 1;
        char c = text.front();
        for (const auto& [escape, character] : kEscapes)
        {
            if (text.substr(0, escape.size()) == escape)
            {
                length = escape.size();
                c = character;
            }
        }
        plain += c;
        text.remove_prefix(length);
    }
    return plain;
}

/// What stands between the first `open` and the last `close`: a message may hold anything but these tags unescaped.
std::string_view between(std::string_view line, std::string_view open, std::string_view close)
{
    const std::size_t begin = line.find(open);
    const std::size_t end = line.rfind(close);
    if (begin == std::string_view::npos || end == std::string_view::npos || end < begin + open.size())
        return {};
    return line.substr(begin + open.size(), end - begin - open.size());
}
} // namespace

void PrintTo(const LogEvent& event, std::ostream* out) { *out << event.type << ": \"" << event.text << '"'; }

LogFile::LogFile() : LogFile(ownPath()) {}

LogFile::LogFile(std::string path) : m_path(std::move(path)) { mark(); }

std::string LogFile::content() const { return fileExists(m_path) ? readFile(m_path) : std::string(); }

std::string LogFile::contentBeforeEnd() const
{
    std::string bytes = content();
    if (bytes.empty())
        return bytes;
    const bool whole =
        bytes.size() > kClosing.size() && bytes.compare(bytes.size() - kClosing.size(), kClosing.size(), kClosing) == 0;
    EXPECT_TRUE(whole) << m_path << " does not end with its closing tag";
    if (whole)
        bytes.resize(bytes.size() - kClosing.size());
    return bytes;
}

std::vector<LogEvent> LogFile::events() const
{
    constexpr std::string_view kOpen = "<LogEvent>";
    constexpr std::string_view kClose = "</LogEvent>";
    const std::string bytes = contentBeforeEnd();
    std::vector<LogEvent> events;
    std::string_view rest = bytes;
    rest.remove_prefix(std::min(m_seen, rest.size()));
    for (std::size_t begin = rest.find(kOpen); begin != std::string_view::npos; begin = rest.find(kOpen))
    {
        const std::size_t end = rest.find(kClose, begin);
        if (end == std::string_view::npos)
        {
            ADD_FAILURE() << m_path << " holds an event without an end";
            break;
        }
        const std::string_view line = rest.substr(begin, end - begin);
        events.push_back(
            {std::string(between(line, "<Type>", "</Type>")), unescaped(between(line, "<Event>", "</Event>"))});
        rest.remove_prefix(end + kClose.size());
    }
    return events;
}

bool LogFile::has(const std::string& type, const std::string& text) const
{
    for (const LogEvent& event : events())
    {
        if (event == LogEvent{type, text})
            return true;
    }
    return false;
}

void LogFile::mark() { m_seen = contentBeforeEnd().size(); }

std::string LogFile::ownPath()
{
    const char* const folder = std::getenv("APPDATA");
    EXPECT_NE(nullptr, folder);
    return std::string(folder != nullptr ? folder : "") + "\\Velmora\\Automatic Update Data\\7xAutoupdateLog.xml";
}
} // namespace auttest
