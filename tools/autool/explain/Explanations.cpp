#include "explain/Explanations.h"

#include "common/Text.h"
#include "explain/Tables.h"

#include <algorithm>
#include <cstdio>

namespace autool
{
namespace
{
void append(ExplanationRows& all, const ExplanationRows& part) { all.insert(all.end(), part.begin(), part.end()); }

/// What stands between the conversions of a printf format, in lower case.
std::vector<std::string> fixedParts(std::string_view format)
{
    std::vector<std::string> parts(1);
    for (std::size_t i = 0; i < format.size(); ++i)
    {
        if (format[i] != '%')
        {
            parts.back() += format[i];
            continue;
        }
        const std::size_t end = format.find_first_of("sdux%", i + 1);
        if (end == std::string_view::npos)
            break;
        i = end;
        parts.emplace_back();
    }
    for (std::string& part : parts)
        part = lowerCase(part);
    return parts;
}

/// How many fixed characters of the format are in `text` (in lower case), which must be a text made with it; 0 when it
/// is not.
std::size_t madeWith(const std::vector<std::string>& parts, const std::string& text)
{
    if (text.rfind(parts.front(), 0) != 0)
        return 0;
    std::size_t at = parts.front().size();
    std::size_t fixed = at;
    for (std::size_t i = 1; i < parts.size(); ++i)
    {
        const bool isLast = i + 1 == parts.size();
        const std::string& part = parts[i];
        const std::size_t found = isLast ? text.rfind(part) : text.find(part, at);
        const bool reachesEnd = !isLast || (found != std::string::npos && found + part.size() == text.size());
        if (found == std::string::npos || found < at || !reachesEnd)
            return 0;
        at = found + part.size();
        fixed += part.size();
    }
    return at == text.size() ? fixed : 0;
}

/// How well the words fit to a row: 0 is not at all. A text that was made with the row's format beats a part of it.
std::size_t fit(const Explanation& row, const std::string& words)
{
    constexpr std::size_t kWhole = 10000;
    constexpr std::size_t kLeastFixed = 5; // "%s - %s" would fit to everything
    const std::vector<std::string> parts = fixedParts(row.text);
    const std::size_t fixed = madeWith(parts, words);
    if (fixed >= kLeastFixed)
        return kWhole + fixed;
    const bool isPart = lowerCase(row.text).find(words) != std::string::npos ||
                        lowerCase(shownText(row.text)).find(words) != std::string::npos;
    if (isPart)
        return words.size();
    // The beginning of an event, cut somewhere in what varies.
    const std::string& lead = parts.front();
    return lead.size() >= 2 * kLeastFixed && words.rfind(lead, 0) == 0 ? lead.size() : 0;
}

struct Section
{
    Kind kind;
    const char* title;
    const char* about;
    std::vector<const char*> columns;
};

const std::vector<Section>& sections()
{
    static const std::vector<Section> all = {
        {Kind::StatusCode,
         "Status codes in `result`",
         "What a failing operation leaves in the result record. A transfer status (below) is a status code, too.",
         {"code", "action", "function", "meaning", "what to do"}},
        {Kind::Transfer,
         "Transfer status of `GetDataFromStream`",
         "How a transfer ended; also the status code of a request that failed because of it.",
         {"status", "name", "from", "meaning", "what to do"}},
        {Kind::Registration,
         "Registration of COM servers",
         "The text of status 470 ends with one of these, in hexadecimal; COM's own codes are what registration and "
         "creation "
         "of servers give.",
         {"code", "name", "from", "meaning", "what to do"}},
        {Kind::Installer,
         "Exit codes of installers",
         "Status 477 stands for each of them but 0.",
         {"code", "name", "from", "meaning", "what to do"}},
        {Kind::LogText,
         "Texts of the event log",
         "In this order: files, product lists, releases and components, configuration, certificates, processes and "
         "sessions. \"...\" stands for what varies; a detail is written only when the registry value `TestEnv` is at "
         "least its number.",
         {"type", "text", "from", "meaning", "what to do"}}};
    return all;
}

std::string asCell(std::string_view text)
{
    std::string cell;
    for (const char letter : text)
    {
        if (letter == '|' || letter == '<' || letter == '*')
            cell += '\\';
        cell += letter;
    }
    return cell;
}

std::string asRow(const std::vector<std::string>& cells)
{
    std::string row = "|";
    for (const std::string& cell : cells)
        row += " " + cell + " |";
    return row + "\n";
}
} // namespace

const std::vector<Explanation>& explanations()
{
    static const ExplanationRows all = []
    {
        ExplanationRows rows;
        for (const auto part : {statusCodeRows, transferRows, registrationRows, fileLogRows, productListLogRows,
                                catalogueLogRows, configurationLogRows, certificateLogRows, systemLogRows})
            append(rows, part());
        return rows;
    }();
    return all;
}

std::vector<const Explanation*> explanationsOf(long long number)
{
    std::vector<const Explanation*> found;
    for (const Explanation& row : explanations())
        if (row.kind != Kind::LogText && number >= row.first && number <= row.last)
            found.push_back(&row);
    return found;
}

std::vector<const Explanation*> explanationsOf(std::string_view text)
{
    constexpr std::size_t kLeastWords = 3;
    const std::string words = lowerCase(text);
    if (words.size() < kLeastWords)
        return {};
    std::vector<std::pair<std::size_t, const Explanation*>> rated;
    for (const Explanation& row : explanations())
        if (const std::size_t rating = fit(row, words))
            rated.emplace_back(rating, &row);
    std::stable_sort(rated.begin(), rated.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
    // Whole texts leave no doubt: what merely has the same words is not shown beside them.
    const bool hasWhole = !rated.empty() && rated.front().first > words.size();
    std::vector<const Explanation*> found;
    for (const auto& [rating, row] : rated)
        if (!hasWhole || rating == rated.front().first)
            found.push_back(row);
    return found;
}

std::string shownNumber(const Explanation& row)
{
    if (row.first != row.last)
        return std::to_string(row.first) + " to " + std::to_string(row.last);
    char text[40];
    if (row.first < 0)
        std::snprintf(text, sizeof text, "%lld (%08lX)", row.first, static_cast<unsigned long>(row.first));
    else if (row.first > 0x7fffffff)
        std::snprintf(text, sizeof text, "0x%08lX", static_cast<unsigned long>(row.first));
    else
        return std::to_string(row.first);
    return text;
}

std::string shownText(std::string_view format)
{
    std::string shown;
    for (std::size_t i = 0; i < format.size(); ++i)
    {
        const std::size_t end = format[i] == '%' ? format.find_first_of("sdux", i + 1) : std::string_view::npos;
        shown += end == std::string_view::npos ? std::string(1, format[i]) : "...";
        i = end == std::string_view::npos ? i : end;
    }
    return shown;
}

std::string codesDocument()
{
    std::string text = "# Codes and log texts\n\nWritten by `autool explain --markdown` from its own table, which "
                       "`autool explain CODE` "
                       "answers from too. Where each of\nthem is found in the log, and the log itself: "
                       "[events-and-codes.md](events-and-codes.md).\n";
    for (const Section& section : sections())
    {
        text += std::string("\n## ") + section.title + "\n\n" + section.about + "\n\n";
        text += asRow({section.columns.begin(), section.columns.end()});
        text += asRow(std::vector<std::string>(section.columns.size(), "---"));
        for (const Explanation& row : explanations())
            if (row.kind == section.kind)
                text +=
                    asRow({asCell(row.kind == Kind::LogText ? row.type : shownNumber(row)), asCell(shownText(row.text)),
                           asCell(row.reporter), asCell(row.meaning), asCell(row.advice)});
    }
    return text;
}
} // namespace autool
