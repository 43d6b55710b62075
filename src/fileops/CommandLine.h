#ifndef AUTOOLS_FILEOPS_COMMANDLINE_H
#define AUTOOLS_FILEOPS_COMMANDLINE_H

#include <string>
#include <vector>

namespace aut
{
/// The arguments as they stand, quotes included: the spawn joins them with blanks and adds no quotes of its own, so
/// that these are what keeps an argument with blanks whole. Blanks and tabs separate them outside double quotes;
/// leading characters up to code 32 do not belong to an argument, and one of nothing else is none. Null counts as "".
std::vector<std::string> splitArguments(const char* commandLine);

/// The text without its first and last character when both are double quotes.
std::string withoutEnclosingQuotes(const std::string& text);
} // namespace aut

#endif
