#include "common/Table.h"

#include "common/Text.h"

#include <algorithm>
#include <numeric>

namespace autool
{
namespace
{
constexpr std::size_t kGap = 2;
constexpr std::size_t kLeastWidth = 8; ///< no column is narrowed below this

/// Takes from the front of `rest` what fits into `columns`, and the blank it was broken at.
std::string takeLine(std::string_view& rest, std::size_t columns)
{
    std::size_t width = 0;
    std::size_t end = 0;
    std::size_t lastBlank = std::string_view::npos;
    while (end < rest.size())
    {
        const std::string_view one = rest.substr(end, characterLength(rest.substr(end)));
        const std::size_t oneWidth = displayWidth(one);
        if (one == " ")
            lastBlank = end;
        else if (width + oneWidth > columns && end > 0)
            break;
        width += oneWidth;
        end += one.size();
    }
    const bool breaksInWord = end < rest.size() && (lastBlank == std::string_view::npos || lastBlank == 0);
    const std::size_t lineEnd = end == rest.size() || breaksInWord ? end : lastBlank;
    std::string line(rest.substr(0, lineEnd));
    rest.remove_prefix(lineEnd);
    if (!breaksInWord && !rest.empty())
        rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

std::size_t widestLine(const std::string& text)
{
    std::size_t widest = 0;
    std::string_view rest = text;
    while (!rest.empty())
    {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        widest = std::max(widest, displayWidth(rest.substr(0, end)));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return widest;
}
} // namespace

std::vector<std::string> wrapped(std::string_view text, std::size_t columns)
{
    const std::string shown = printable(text, true);
    std::vector<std::string> lines;
    std::string_view rest = shown;
    for (;;)
    {
        const std::size_t lineEnd = rest.find('\n');
        std::string_view one = rest.substr(0, lineEnd);
        do
            lines.push_back(takeLine(one, std::max<std::size_t>(columns, 1)));
        while (!one.empty());
        if (lineEnd == std::string_view::npos)
            return lines;
        rest.remove_prefix(lineEnd + 1);
    }
}

void printParagraph(Console& console, std::string_view lead, std::string_view text)
{
    const std::size_t indent = displayWidth(lead);
    std::string start(lead);
    for (const std::string& line : wrapped(text, console.columns() - std::min(indent, console.columns() - kLeastWidth)))
    {
        console.line(start + line);
        start.assign(indent, ' ');
    }
}

std::vector<std::size_t> Table::widths(std::size_t columns) const
{
    std::vector<std::size_t> widths;
    for (std::size_t i = 0; i < m_columns.size(); ++i)
    {
        std::size_t width = std::max(displayWidth(m_columns[i].title), m_columns[i].width);
        if (m_columns[i].width == 0)
            for (const std::vector<Cell>& row : m_rows)
                if (i < row.size())
                    width = std::max(width, widestLine(printable(row[i].text, true)));
        widths.push_back(width);
    }
    // The widest gives way first, so that short columns stay on one line.
    const std::size_t gaps = widths.empty() ? 0 : (widths.size() - 1) * kGap;
    std::size_t total = std::accumulate(widths.begin(), widths.end(), gaps);
    while (total > columns)
    {
        const auto widest = std::max_element(widths.begin(), widths.end());
        if (*widest <= kLeastWidth)
            break;
        --*widest;
        --total;
    }
    return widths;
}

void Table::printLine(Console& console, const std::vector<std::size_t>& widths, const std::vector<Cell>& cells) const
{
    std::vector<std::vector<std::string>> lines;
    std::size_t height = 1;
    for (std::size_t i = 0; i < widths.size(); ++i)
    {
        lines.push_back(wrapped(i < cells.size() ? cells[i].text : std::string(), widths[i]));
        height = std::max(height, lines.back().size());
    }
    for (std::size_t lineNumber = 0; lineNumber < height; ++lineNumber)
    {
        std::string shown;
        std::size_t pending = 0; // blanks, written only in front of text
        for (std::size_t i = 0; i < widths.size(); ++i)
        {
            const std::string text = lineNumber < lines[i].size() ? lines[i][lineNumber] : std::string();
            const std::size_t width = displayWidth(text);
            const std::size_t filling = widths[i] - std::min(width, widths[i]);
            if (m_columns[i].isNumber)
                pending += filling;
            if (!text.empty())
            {
                shown.append(pending, ' ');
                shown += console.styled(i < cells.size() ? cells[i].style : Style::Plain, text);
                pending = 0;
            }
            else
                pending += width;
            pending += (m_columns[i].isNumber ? 0 : filling) + kGap;
        }
        console.line(shown);
    }
}

void Table::printTitleLine(Console& console, const std::vector<std::size_t>& widths) const
{
    std::vector<Cell> titles;
    for (const Column& column : m_columns)
        titles.push_back({column.title, Style::Heading});
    printLine(console, widths, titles);
}

void Table::print(Console& console) const
{
    const std::vector<std::size_t> chosen = widths(console.columns());
    printTitleLine(console, chosen);
    for (const std::vector<Cell>& row : m_rows)
        printLine(console, chosen, row);
}

void Table::printTitles(Console& console) const
{
    std::vector<std::size_t> chosen = widths(console.columns());
    printTitleLine(console, chosen);
}

void Table::printRow(Console& console, const std::vector<Cell>& cells) const
{
    std::vector<std::size_t> chosen;
    std::size_t used = 0;
    for (std::size_t i = 0; i + 1 < m_columns.size(); ++i)
    {
        chosen.push_back(std::max(m_columns[i].width, displayWidth(m_columns[i].title)));
        used += chosen.back() + kGap;
    }
    chosen.push_back(std::max(console.columns() - std::min(used, console.columns()), kLeastWidth));
    printLine(console, chosen, cells);
}
} // namespace autool
