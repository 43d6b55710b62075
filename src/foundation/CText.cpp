#include "foundation/CText.h"

#include <cstdint>
#include <cstring>

namespace
{
/// As a signed char, so that the bytes from 0x80 on, which are negative, count as blank too.
bool isBlank(char c) { return static_cast<signed char>(c) <= 32; }
} // namespace

char* Trim(char* s)
{
    if (s == nullptr || *s == '\0')
        return s;
    const char* first = s;
    while (*first != '\0' && isBlank(*first))
        ++first;
    const char* end = first + std::strlen(first);
    while (end > first && isBlank(end[-1]))
        --end;
    const auto length = static_cast<std::size_t>(end - first);
    std::memmove(s, first, length);
    s[length] = '\0';
    return s;
}

unsigned long atodw(const char* s)
{
    std::uint32_t value = 0;
    for (; s != nullptr && *s >= '0' && *s <= '9'; ++s)
        value = value * 10 + static_cast<std::uint32_t>(*s - '0');
    return value;
}
