#ifndef AUTOOLS_PLATFORM_WIDETEXT_H
#define AUTOOLS_PLATFORM_WIDETEXT_H

#include <optional>
#include <string>
#include <string_view>

namespace aut
{
// Between our 8-bit texts, in the ANSI code page, and the system's wide ones. May throw bad_alloc.

std::wstring widened(std::string_view text);
/// Nothing when the code page cannot express the text: a path with a question mark, or with the letter that looks most
/// like the right one, would be another path.
std::optional<std::string> narrowed(std::wstring_view text);
} // namespace aut

#endif
