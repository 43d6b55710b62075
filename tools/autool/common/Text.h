#ifndef AUTOOL_COMMON_TEXT_H
#define AUTOOL_COMMON_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace autool
{
// All texts inside this program are UTF-8. What comes from the library, the registry and the log is 8-bit text of the
// system's code page and goes through fromSystem() first.

std::string fromWide(std::wstring_view text);
std::wstring toWide(std::string_view utf8);
/// Text of the library as valid UTF-8: what is valid already stays as it is, all else is read in the system's code
/// page.
std::string fromSystem(std::string_view text);
/// The other way, for the library's functions. What the code page does not have becomes "?".
std::string toSystem(std::string_view utf8);

bool isValidUtf8(std::string_view text);
/// One character from the start of `text`, which is not empty: its length in bytes, 1 for a byte that is invalid.
std::size_t characterLength(std::string_view text);

/// Without control characters, so that no text can steer a terminal: each becomes a middle dot; line ends and tabs
/// become a blank unless `keepLines`.
std::string printable(std::string_view utf8, bool keepLines = false);
/// How many columns of a terminal the text takes.
std::size_t displayWidth(std::string_view utf8);
/// At most `columns` wide; the cut is marked by "...".
std::string shortened(std::string_view utf8, std::size_t columns);

/// ASCII letters only, which is how the library compares.
std::string lowerCase(std::string_view text);
bool containsIgnoringCase(std::string_view text, std::string_view lowerCasePart);
} // namespace autool

#endif
