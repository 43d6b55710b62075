#ifndef AUTOOL_EXPLAIN_EXPLANATIONS_H
#define AUTOOL_EXPLAIN_EXPLANATIONS_H

#include <string>
#include <string_view>
#include <vector>

namespace autool
{
/// What a number or a text can be. The order is that of the answers and of the document.
enum class Kind
{
    StatusCode,   ///< in the result record
    Transfer,     ///< how a transfer ended, also as a status code of the result record
    Registration, ///< what registering a COM server gave, within the text of status 470
    Installer,    ///< exit code of an installer
    LogText       ///< an event of the log
};

/// One row of the table that `autool explain` and docs/codes.md are made of.
struct Explanation
{
    Kind kind;
    long long first;      ///< the number, or the first of a range; 0 for a text
    long long last;       ///< `first`, or the last of a range
    const char* type;     ///< of a log event: "Error", ..., with "(detail n)" when it is written from TestEnv n on
    const char* text;     ///< the action of a status code, or the log text as the source has it (with %s, %d)
    const char* reporter; ///< the function or step that reports it
    const char* meaning;
    const char* advice; ///< "" when there is nothing to do
};

/// The whole table, in the order of the document.
const std::vector<Explanation>& explanations();

/// Every row about the number.
std::vector<const Explanation*> explanationsOf(long long number);
/// Every row whose text the words can be, or be a part of: best first. A log text matches as it was written, with
/// whatever stood for its %s and %d.
std::vector<const Explanation*> explanationsOf(std::string_view text);

/// The number or the range as the reader sees it: "470", "12001 to 12999", "-21 (FFFFFFEB)".
std::string shownNumber(const Explanation& row);
/// The log text with "..." for what varies.
std::string shownText(std::string_view format);

/// The table as docs/codes.md.
std::string codesDocument();
} // namespace autool

#endif
