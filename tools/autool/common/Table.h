#ifndef AUTOOL_COMMON_TABLE_H
#define AUTOOL_COMMON_TABLE_H

#include "common/Console.h"

#include <string>
#include <vector>

namespace autool
{
struct Cell
{
    Cell(std::string cellText = {}, Style cellStyle = Style::Plain) : text(std::move(cellText)), style(cellStyle) {}
    Cell(const char* cellText, Style cellStyle = Style::Plain) : text(cellText), style(cellStyle) {}

    std::string text; ///< UTF-8; may hold line ends. Control characters are shown as dots.
    Style style;
};

struct Column
{
    std::string title;
    bool isNumber = false; ///< stands at the right
    std::size_t width = 0; ///< fixed; 0 is "as its cells need it"
};

/// Rows of cells below titles. It is never wider than the console's columns: the widest columns are narrowed, and what
/// is too long for its column goes on in the next line, between words where possible.
///
///     Table table({{"Code"}, {"Meaning"}});
///     table.add({"470", {"Registration failed", Style::Bad}});
///     table.print(console);
class Table
{
public:
    explicit Table(std::vector<Column> columns) : m_columns(std::move(columns)) {}
    void add(std::vector<Cell> cells) { m_rows.push_back(std::move(cells)); }
    bool isEmpty() const { return m_rows.empty(); }
    void print(Console& console) const;

    /// For rows that are too many to be kept: prints them one by one. Every column but the last has a fixed width then.
    void printTitles(Console& console) const;
    void printRow(Console& console, const std::vector<Cell>& cells) const;

private:
    std::vector<std::size_t> widths(std::size_t columns) const;
    void printLine(Console& console, const std::vector<std::size_t>& widths, const std::vector<Cell>& cells) const;
    void printTitleLine(Console& console, const std::vector<std::size_t>& widths) const;

    std::vector<Column> m_columns;
    std::vector<std::vector<Cell>> m_rows;
};

/// `text` in lines of at most `columns`, broken between words, within a word only when it is longer than a line. Line
/// ends in the text stay. At least one line, perhaps empty.
std::vector<std::string> wrapped(std::string_view text, std::size_t columns);
/// A paragraph: its first line behind `lead`, the others indented alike.
void printParagraph(Console& console, std::string_view lead, std::string_view text);
} // namespace autool

#endif
