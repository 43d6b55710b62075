#ifndef AUTOOLS_FOUNDATION_LOGTEXT_H
#define AUTOOLS_FOUNDATION_LOGTEXT_H

#include <cstddef>
#include <string>
#include <windows.h>

namespace aut
{
constexpr std::size_t kLogMessageSize = 1024; ///< a formatted message with its NUL; longer ones are cut
constexpr std::size_t kLogEscapedSize = 2048; ///< the same, escaped

/// The name of an event type; "" for a number that is none.
const char* logTypeName(unsigned int type) noexcept;

/// Copies `text` with the five characters that XML reserves as entities. What does not fit is left out; an entity is
/// written whole or not at all.
void escapeXml(char* out, std::size_t size, const char* text) noexcept;
template <std::size_t N> void escapeXml(char (&out)[N], const char* text) noexcept { escapeXml(out, N, text); }

/// One event as a line of the log. `escaped` must be below `kLogEscapedSize`.
std::string logEventLine(const SYSTEMTIME& local, unsigned int type, const char* escaped);

/// The text as it stands on disk: each line feed behind a carriage return.
std::string withStoredLineEnds(const std::string& text);
} // namespace aut

#endif
