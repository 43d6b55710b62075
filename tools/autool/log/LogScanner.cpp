#include "log/LogScanner.h"

#include "common/Text.h"

#include <algorithm>
#include <utility>

namespace autool
{
namespace
{
enum class Mark
{
    Head,
    Foot,
    EventStart,
    EventEnd,
    EnvironmentStart,
    EnvironmentEnd
};

constexpr std::string_view kBlanks(" \t\r\n");

std::string_view between(std::string_view text, std::string_view begin, std::string_view end, bool& isWhole)
{
    const std::size_t from = text.find(begin);
    if (from == std::string_view::npos)
    {
        isWhole = false;
        return {};
    }
    const std::string_view rest = text.substr(from + begin.size());
    const std::size_t to = rest.find(end);
    if (to == std::string_view::npos)
        isWhole = false;
    return rest.substr(0, to);
}

std::string shown(std::string_view stored) { return fromSystem(unescaped(stored)); }

LogEvent eventOf(std::string_view body)
{
    LogEvent event;
    bool isWhole = true;
    const std::string_view date = between(body, "<Date>", "</Date>", isWhole);
    event.dateText = shown(date.substr(0, 64));
    event.time = parseLogDate(date);
    const bool hasDate = isWhole;
    const std::string_view type = hasDate ? between(body, "<Type>", "</Type>", isWhole) : std::string_view();
    const bool hasType = isWhole;
    event.type = shown(type.substr(0, 64));
    // The text may have anything in it that looks like a tag: its end is the last one.
    constexpr std::string_view kTextStart = "<Event>";
    constexpr std::string_view kTextEnd = "</Event>";
    const std::size_t start = body.find(kTextStart);
    if (start == std::string_view::npos)
    {
        event.isDamaged = true;
        event.text = hasType ? std::string() : shown(body);
        return event;
    }
    const std::string_view rest = body.substr(start + kTextStart.size());
    const std::size_t end = rest.rfind(kTextEnd);
    event.isDamaged = !isWhole || end == std::string_view::npos;
    event.text = shown(rest.substr(0, end));
    return event;
}

LogEvent environmentOf(std::string_view body)
{
    LogEvent event;
    event.type = kEnvironmentType;
    bool isWhole = true;
    const std::string_view client = between(body, "<AUVersion>", "</AUVersion>", isWhole);
    const std::string_view system = between(body, "<OS>", "</OS>", isWhole);
    const std::string_view browser = between(body, "<IE>", "</IE>", isWhole);
    event.isDamaged = !isWhole;
    event.text = "client " + shown(client) + ", " + shown(system) + ", browser " + shown(browser);
    return event;
}
} // namespace

struct LogScanner::Tag
{
    std::string_view text;
    Mark mark;
};

namespace
{
constexpr std::size_t kLongestTag = 16;
} // namespace

std::string unescaped(std::string_view text)
{
    constexpr std::pair<std::string_view, char> kEntities[] = {
        {"&quot;", '"'}, {"&amp;", '&'}, {"&apos;", '\''}, {"&lt;", '<'}, {"&gt;", '>'}};
    std::string plain;
    plain.reserve(text.size());
    while (!text.empty())
    {
        const std::size_t ampersand = std::min(text.find('&'), text.size());
        plain += text.substr(0, ampersand);
        text.remove_prefix(ampersand);
        const auto* const entity =
            std::find_if(std::begin(kEntities), std::end(kEntities),
                         [text](const auto& row) { return text.substr(0, row.first.size()) == row.first; });
        if (entity != std::end(kEntities))
        {
            plain += entity->second;
            text.remove_prefix(entity->first.size());
        }
        else if (!text.empty())
        {
            plain += text.front();
            text.remove_prefix(1);
        }
    }
    return plain;
}

void LogScanner::feed(std::string_view piece)
{
    m_buffer += piece;
    scan(false);
}

void LogScanner::finish() { scan(true); }

void LogScanner::scan(bool isLast)
{
    while (step(isLast))
        ;
    m_buffer.erase(0, m_at); // once for all that was taken: a move for each tag would cost more than all else
    m_at = 0;
}

bool LogScanner::step(bool isLast) { return m_inside == Inside::Nothing ? stepOutside(isLast) : stepInside(isLast); }

/// The first of the log's tags that is left; null, and the end of what can be no tag, when there is none.
const LogScanner::Tag* LogScanner::nextTag(std::size_t& at) const
{
    static constexpr Tag kTags[] = {{"<LogEvent>", Mark::EventStart},          {"</LogEvent>", Mark::EventEnd},
                                    {"<Environment>", Mark::EnvironmentStart}, {"</Environment>", Mark::EnvironmentEnd},
                                    {"<LogAutoUpdate>", Mark::Head},           {"</LogAutoUpdate>", Mark::Foot}};
    for (at = m_buffer.find('<', m_at); at != std::string::npos; at = m_buffer.find('<', at + 1))
        for (const Tag& tag : kTags)
            if (m_buffer.compare(at, tag.text.size(), tag.text) == 0)
                return &tag;
    // The start of a tag may stand at the very end.
    const std::size_t last = m_buffer.size() - std::min(m_buffer.size(), kLongestTag - 1);
    at = std::min(m_buffer.find('<', std::max(m_at, last)), m_buffer.size());
    return nullptr;
}

void LogScanner::countStray(std::string_view bytes)
{
    const auto blanks =
        std::count_if(bytes.begin(), bytes.end(), [](char c) { return kBlanks.find(c) != std::string_view::npos; });
    const auto stray = bytes.size() - static_cast<std::size_t>(blanks);
    if (stray == 0)
        return;
    m_strayBytes += stray;
    m_endsWhole = false;
}

void LogScanner::drop(std::size_t length)
{
    m_at += length;
    m_base += length;
}

bool LogScanner::stepOutside(bool isLast)
{
    std::size_t at = 0;
    const Tag* const tag = nextTag(at);
    const std::size_t end = tag == nullptr && isLast ? m_buffer.size() : at;
    countStray(std::string_view(m_buffer).substr(m_at, end - m_at));
    drop(end - m_at);
    if (tag == nullptr)
        return false;
    drop(tag->text.size());
    m_endsWhole = tag->mark == Mark::Foot;
    switch (tag->mark)
    {
    case Mark::Head:
        m_hasHead = true;
        m_consumed = m_base;
        break;
    case Mark::EventStart:
        m_inside = Inside::Event;
        break;
    case Mark::EnvironmentStart:
        m_inside = Inside::Environment;
        break;
    case Mark::EventEnd:
    case Mark::EnvironmentEnd:
        m_strayBytes += tag->text.size();
        break;
    case Mark::Foot:
        break;
    }
    return true;
}

void LogScanner::keepBody(std::size_t length)
{
    const std::size_t room = kMaxEventBytes - std::min(m_body.size(), kMaxEventBytes);
    m_body.append(m_buffer, m_at, std::min(length, room));
    m_isShortened = m_isShortened || length > room;
    drop(length);
}

bool LogScanner::stepInside(bool isLast)
{
    std::size_t at = 0;
    const Tag* const tag = nextTag(at);
    if (tag == nullptr)
    {
        keepBody((isLast ? m_buffer.size() : at) - m_at);
        if (isLast)
            handOut(true);
        return false;
    }
    keepBody(at - m_at);
    const Mark wanted = m_inside == Inside::Event ? Mark::EventEnd : Mark::EnvironmentEnd;
    if (tag->mark == wanted)
    {
        drop(tag->text.size());
        handOut(false);
    }
    else
        handOut(true); // the tag is looked at again, outside
    return true;
}

void LogScanner::handOut(bool isDamaged)
{
    LogEvent event = m_inside == Inside::Event ? eventOf(m_body) : environmentOf(m_body);
    // What was shortened has lost its end tag with the rest of its text.
    event.isDamaged = isDamaged || (event.isDamaged && !m_isShortened);
    event.isShortened = m_isShortened;
    m_inside = Inside::Nothing;
    m_body.clear();
    m_isShortened = false;
    m_consumed = m_base;
    m_endsWhole = false;
    m_sink(event);
}
} // namespace autool
