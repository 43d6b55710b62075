#include "platform/BoundedText.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace aut
{
bool copyText(char* out, std::size_t size, const char* text) noexcept
{
    if (out == nullptr || size == 0)
        return false;
    const std::size_t length = std::strlen(orEmpty(text));
    const std::size_t kept = std::min(length, size - 1);
    std::memmove(out, orEmpty(text), kept);
    out[kept] = '\0';
    return kept == length;
}

bool appendText(char* out, std::size_t size, const char* text) noexcept
{
    if (out == nullptr || size == 0)
        return false;
    const void* const end = std::memchr(out, '\0', size);
    const std::size_t used = end != nullptr ? static_cast<std::size_t>(static_cast<const char*>(end) - out) : size - 1;
    return copyText(out + used, size - used, text);
}

bool formatText(char* out, std::size_t size, const char* format, ...) noexcept
{
    std::va_list arguments;
    va_start(arguments, format);
    const bool fitted = formatTextV(out, size, format, arguments);
    va_end(arguments);
    return fitted;
}

bool formatTextV(char* out, std::size_t size, const char* format, std::va_list arguments) noexcept
{
    if (out == nullptr || size == 0)
        return false;
    const int length = std::vsnprintf(out, size, orEmpty(format), arguments);
    if (length < 0)
    {
        out[0] = '\0';
        return false;
    }
    return static_cast<std::size_t>(length) < size;
}
} // namespace aut
