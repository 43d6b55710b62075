#ifndef AUTOOLS_PLATFORM_BOUNDEDTEXT_H
#define AUTOOLS_PLATFORM_BOUNDEDTEXT_H

#include "foundation/Export.h"

#include <cstdarg>
#include <cstddef>

namespace aut
{
// The one way into fixed text buffers: always terminated, cut when too long, never overrun. `size` is the buffer's
// size in bytes. A null text counts as "". Each returns whether everything fitted.

bool copyText(char* out, std::size_t size, const char* text) noexcept;
bool appendText(char* out, std::size_t size, const char* text) noexcept;
bool formatText(char* out, std::size_t size, const char* format, ...) noexcept AUTOOLS_PRINTF(3, 4);
bool formatTextV(char* out, std::size_t size, const char* format, std::va_list arguments) noexcept;

template <std::size_t N> bool copyText(char (&out)[N], const char* text) noexcept
{
    return copyText(out, N, text);
}
template <std::size_t N> bool appendText(char (&out)[N], const char* text) noexcept
{
    return appendText(out, N, text);
}

/// The text itself, or "" for a null pointer.
inline const char* orEmpty(const char* text) noexcept
{
    return text != nullptr ? text : "";
}
inline bool isEmpty(const char* text) noexcept
{
    return text == nullptr || *text == '\0';
}
} // namespace aut

#endif
