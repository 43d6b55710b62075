#include "foundation/String.h"

#include <climits>
#include <cstdlib>
#include <cstring>

// Searching and replacing inside a text. Nothing here allocates but the new buffer of a replacement.

namespace
{
/// Folds the letters a to z and no others, whatever the locale.
constexpr char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c; }

constexpr char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

/// Does `text` begin with `sub`? Stops at the terminator of either.
bool beginsWith(const char* text, const char* sub)
{
    while (*sub != '\0' && upper(*text) == upper(*sub))
    {
        ++text;
        ++sub;
    }
    return *sub == '\0';
}

/// Overlapping occurrences count: the scan goes on one character behind the start of each match.
int countOccurrences(const char* text, const char* from)
{
    int count = 0;
    for (const char* match = std::strstr(text, from); match != nullptr; match = std::strstr(match + 1, from))
        ++count;
    return count;
}
} // namespace

const char* stristr(const char* s, const char* sub)
{
    if (s == nullptr || sub == nullptr)
        return nullptr;
    if (*sub == '\0')
        return s;
    const char first[2] = {lower(*sub), upper(*sub)};
    for (; *s != '\0'; ++s)
        if ((*s == first[0] || *s == first[1]) && beginsWith(s + 1, sub + 1))
            return s;
    return nullptr;
}

int String::Replace(char from, char to)
{
    if (from == to)
        return 0;
    int count = 0;
    for (int i = 0; i < m_length; ++i)
        if (m_buffer[i] == from)
        {
            m_buffer[i] = to;
            ++count;
        }
    return count;
}

int String::Replace(const char* from, const char* to)
{
    if (from == nullptr || to == nullptr || m_length == 0 || *from == '\0' || std::strcmp(from, to) == 0)
        return 0;
    const int count = countOccurrences(m_buffer, from);
    if (count == 0)
        return 0;

    // With a pattern that overlaps itself fewer matches are replaced than were counted, so the new length is taken
    // from the replacements really made; for every other pattern it is old length + count x difference.
    const std::size_t fromLength = std::strlen(from);
    const std::size_t toLength = std::strlen(to);
    std::size_t replaced = 0;
    for (const char* match = std::strstr(m_buffer, from); match != nullptr;
         match = std::strstr(match + fromLength, from))
        ++replaced;
    const std::size_t newLength = static_cast<std::size_t>(m_length) - replaced * fromLength + replaced * toLength;
    char* const built = newLength < INT_MAX ? static_cast<char*>(std::malloc(newLength + 1)) : nullptr;
    if (built == nullptr)
        return 0;

    char* out = built;
    const char* in = m_buffer;
    const char* const end = m_buffer + m_length;
    for (const char* match = std::strstr(in, from); match != nullptr; match = std::strstr(in, from))
    {
        std::memcpy(out, in, static_cast<std::size_t>(match - in));
        out += match - in;
        std::memcpy(out, to, toLength);
        out += toLength;
        in = match + fromLength;
    }
    std::memcpy(out, in, static_cast<std::size_t>(end - in));
    built[newLength] = '\0';

    std::free(m_buffer);
    m_buffer = built;
    m_length = static_cast<int>(newLength);
    return count;
}
