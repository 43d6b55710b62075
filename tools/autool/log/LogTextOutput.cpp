#include "common/Text.h"
#include "log/LogOutput.h"

namespace autool
{
namespace
{
constexpr std::size_t kDateWidth = 19;
constexpr std::size_t kTypeWidth = 12;
constexpr std::size_t kMaxShownText = 1200;

Style styleOf(const LogEvent& event)
{
    if (event.type == "Error" || event.isDamaged)
        return Style::Bad;
    if (event.type == "Warning")
        return Style::Warning;
    if (event.type == kEnvironmentType)
        return Style::Dim;
    return event.type == "Info" ? Style::Plain : Style::Heading;
}

std::string counted(std::uint64_t count, const std::string& what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

class TextOutput : public LogOutput
{
public:
    explicit TextOutput(Console& console)
        : m_console(console), m_table({{"Date", false, kDateWidth}, {"Type", false, kTypeWidth}, {"Event"}})
    {
    }

    void begin(const std::string& folder, const std::vector<LogPart>& parts) override
    {
        m_console.line(
            m_console.styled(Style::Dim, "Log in " + printable(folder) + " (" + counted(parts.size(), "file") + ")"));
        m_files = parts.size();
        m_table.printTitles(m_console);
    }

    void event(const LogEvent& event, const LogPart& part) override
    {
        if (part.name != m_file && m_files != 1)
            m_console.line(m_console.styled(Style::Dim, "-- " + printable(part.name)));
        m_file = part.name;
        ++m_shown;
        const Style style = styleOf(event);
        std::string text = event.text;
        if (text.size() > kMaxShownText)
            text = shortened(text, kMaxShownText) + " (" + counted(event.text.size(), "byte") + ", all with --json)";
        if (event.isDamaged)
            text += " [cut off here]";
        const std::string date = event.time ? shownTime(*event.time) : event.dateText;
        m_table.printRow(m_console, {{date, Style::Dim}, {event.type, style}, {text, style}});
    }

    void end(const LogStudy& study) override
    {
        m_console.line();
        std::string counts;
        for (const auto& [type, count] : study.counts())
            counts += (counts.empty() ? "" : ", ") + std::to_string(count) + " " + (type.empty() ? "(no type)" : type);
        std::string range;
        if (study.first() && study.last())
            range = " from " + shownTime(*study.first()) + " to " + shownTime(*study.last());
        printParagraph(m_console, "",
                       counted(study.events(), "event") + range + (counts.empty() ? "" : ": ") + counts + "." +
                           (m_shown == study.events() ? "" : " Shown: " + std::to_string(m_shown) + "."));
        if (study.findings().empty())
            return;
        m_console.line();
        m_console.line(m_console.styled(Style::Heading, "Findings"));
        for (const Finding& finding : study.findings())
            printParagraph(m_console, "  " + finding.kind + "  ", finding.text);
    }

private:
    Console& m_console;
    Table m_table;
    std::string m_file;
    std::size_t m_files = 0;
    std::uint64_t m_shown = 0;
};
} // namespace

std::unique_ptr<LogOutput> makeTextOutput(Console& console) { return std::make_unique<TextOutput>(console); }
} // namespace autool
