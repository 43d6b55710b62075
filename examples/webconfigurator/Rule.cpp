#include "webconfigurator/Rule.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <stdexcept>

namespace webconf_sample
{
namespace
{
using std::chrono::milliseconds;

[[noreturn]] void refuse(std::string_view setting, std::string_view why)
{
    throw std::invalid_argument("rule setting \"" + std::string(setting) + "\": " + std::string(why));
}

template <typename Number> Number number(std::string_view setting, std::string_view text)
{
    Number value{};
    const auto [last, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || last != text.data() + text.size())
        refuse(setting, "not a number");
    return value;
}

bool flag(std::string_view setting, std::string_view text)
{
    if (text != "0" && text != "1")
        refuse(setting, "neither 0 nor 1");
    return text == "1";
}

Framing framing(std::string_view setting, std::string_view text)
{
    constexpr std::pair<std::string_view, Framing> kNames[] = {{"length", Framing::length},
                                                               {"chunked", Framing::chunked},
                                                               {"always-chunked", Framing::alwaysChunked},
                                                               {"until-close", Framing::untilClose}};
    for (const auto& [name, value] : kNames)
        if (name == text)
            return value;
    refuse(setting, "unknown framing");
}

using Setter = void (*)(Rule&, std::string_view setting, const std::string& value);
using View = std::string_view;
using Text = const std::string&;
constexpr std::pair<std::string_view, Setter> kSettings[] = {
    {"page", [](Rule& r, View, Text v) { r.page = v; }},
    {"path", [](Rule& r, View, Text v) { r.path = v; }},
    {"times", [](Rule& r, View s, Text v) { r.times = number<int>(s, v); }},
    {"file", [](Rule& r, View, Text v) { r.answer.file = v; }},
    {"body", [](Rule& r, View, Text v) { r.answer.body = v; }},
    {"status", [](Rule& r, View s, Text v) { r.answer.status = number<int>(s, v); }},
    {"type", [](Rule& r, View, Text v) { r.answer.type = v; }},
    {"location", [](Rule& r, View, Text v) { r.answer.location = v; }},
    {"framing", [](Rule& r, View s, Text v) { r.answer.framing = framing(s, v); }},
    {"close", [](Rule& r, View s, Text v) { r.answer.close = flag(s, v); }},
    {"delay", [](Rule& r, View s, Text v) { r.answer.delay = milliseconds(number<int>(s, v)); }},
    {"piece-delay", [](Rule& r, View s, Text v) { r.answer.pieceDelay = milliseconds(number<int>(s, v)); }},
    {"piece", [](Rule& r, View s, Text v) { r.answer.piece = number<std::size_t>(s, v); }},
    {"lie", [](Rule& r, View s, Text v) { r.answer.lie = number<long long>(s, v); }},
    {"cut", [](Rule& r, View s, Text v) { r.answer.cut = number<std::size_t>(s, v); }},
    {"stall", [](Rule& r, View s, Text v) { r.answer.stall = number<std::size_t>(s, v); }},
    {"silent", [](Rule& r, View s, Text v) { r.answer.silent = flag(s, v); }},
    {"hang-up", [](Rule& r, View s, Text v) { r.answer.hangUp = flag(s, v); }},
    {"reset", [](Rule& r, View s, Text v) { r.answer.reset = flag(s, v); }},
};

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = std::min(text.find_first_not_of(" \t\r"), text.size());
    text.remove_prefix(first);
    return text.substr(0, text.find_last_not_of(" \t\r") + 1);
}

std::string_view take(std::string_view& text, char mark)
{
    const std::size_t at = text.find(mark);
    const std::string_view part = text.substr(0, at);
    text.remove_prefix(at == std::string_view::npos ? text.size() : at + 1);
    return part;
}

std::string withCommas(std::string_view text)
{
    constexpr std::string_view kEscaped = "%2C";
    std::string plain(text);
    for (std::size_t at = plain.find(kEscaped); at != std::string::npos; at = plain.find(kEscaped, at + 1))
        plain.replace(at, kEscaped.size(), ",");
    return plain;
}

void apply(Rule& rule, std::string_view setting, const std::string& value)
{
    constexpr std::string_view kQuery = "query.";
    if (setting.substr(0, kQuery.size()) == kQuery)
    {
        rule.query[std::string(setting.substr(kQuery.size()))] = value;
        return;
    }
    const auto* const known = std::find_if(std::begin(kSettings), std::end(kSettings),
                                           [setting](const auto& row) { return row.first == setting; });
    if (known == std::end(kSettings))
        refuse(setting, "unknown");
    known->second(rule, setting, value);
}

template <typename T> void fill(std::optional<T>& mine, const std::optional<T>& other)
{
    if (!mine)
        mine = other;
}
} // namespace

void Answer::completeFrom(const Answer& other)
{
    if (!file && !body && !raw)
    {
        file = other.file;
        body = other.body;
        raw = other.raw;
    }
    fill(status, other.status);
    fill(type, other.type);
    fill(location, other.location);
    fill(headers, other.headers);
    fill(framing, other.framing);
    fill(close, other.close);
    fill(delay, other.delay);
    fill(pieceDelay, other.pieceDelay);
    fill(piece, other.piece);
    fill(lie, other.lie);
    fill(cut, other.cut);
    fill(stall, other.stall);
    fill(silent, other.silent);
    fill(hangUp, other.hangUp);
    fill(reset, other.reset);
}

bool Rule::fits(const HttpRequest& request) const
{
    return (page.empty() || equalIgnoringCase(page, request.page)) &&
           (path.empty() || equalIgnoringCase(path, request.path)) &&
           (header.first.empty() || request.header(header.first) == header.second) &&
           std::all_of(query.begin(), query.end(),
                       [&request](const auto& wanted) { return request.parameter(wanted.first) == wanted.second; });
}

Rule parseRule(std::string_view text)
{
    Rule rule;
    while (!trimmed(text).empty())
    {
        std::string_view value = take(text, ',');
        const std::string_view setting = trimmed(take(value, '='));
        apply(rule, setting, withCommas(trimmed(value)));
    }
    return rule;
}

std::vector<Rule> parseRules(std::string_view text)
{
    std::vector<Rule> rules;
    while (!text.empty())
    {
        const std::string_view line = trimmed(take(text, '\n'));
        if (!line.empty() && line.front() != '#')
            rules.push_back(parseRule(line));
    }
    return rules;
}
} // namespace webconf_sample
