#include "foundation/String.h"

#include "platform/Vectors.h"

#include <climits>
#include <cstdint>
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

#if AUTOOLS_SSE2 && !AUTOOLS_CHECKED_READS
constexpr bool isLetter(char c) { return upper(c) >= 'A' && upper(c) <= 'Z'; }

/// A character in both cases, to compare sixteen with.
class FoldedChar
{
public:
    explicit FoldedChar(char c) : m_caseBit(_mm_set1_epi8(isLetter(c) ? 0x20 : 0)), m_lower(_mm_set1_epi8(lower(c))) {}

    /// One bit for each of the sixteen that is this character.
    unsigned int in(__m128i block) const
    {
        return static_cast<unsigned int>(_mm_movemask_epi8(_mm_cmpeq_epi8(_mm_or_si128(block, m_caseBit), m_lower)));
    }

private:
    __m128i m_caseBit;
    __m128i m_lower;
};

/// Looks at sixteen characters at a time for the first two of `sub` (or its only one), and closer only where they
/// stand. The blocks are aligned: one that holds the terminator may reach behind the text, but never into another page,
/// where what can be read might end. Not in builds that check every access.
const char* find(const char* text, const char* sub)
{
    constexpr std::size_t kBlock = sizeof(__m128i);
    const FoldedChar first(sub[0]);
    const FoldedChar second(sub[1]);
    const bool isOne = sub[1] == '\0';
    const std::size_t before = reinterpret_cast<std::uintptr_t>(text) % kBlock;
    unsigned int inText = 0xFFFFU << before & 0xFFFFU; // without what the first block holds before the text
    unsigned int carried = 0;                          // whether the block before ended in the first character
    for (const char* block = text - before;; block += kBlock, inText = 0xFFFF)
    {
        const __m128i characters = _mm_load_si128(reinterpret_cast<const __m128i*>(block));
        const __m128i terminators = _mm_cmpeq_epi8(characters, _mm_setzero_si128());
        const unsigned int ends = static_cast<unsigned int>(_mm_movemask_epi8(terminators)) & inText;
        if (ends != 0)
            inText &= (ends & (0U - ends)) - 1; // what stands before the first terminator
        const unsigned int firsts = first.in(characters)&inText;
        // The bit of the second character, wherever the first one stands before it.
        unsigned int found = isOne ? firsts : (firsts << 1 | carried) & second.in(characters)&inText;
        for (const char* at = isOne ? block : block - 1; found != 0; ++at, found >>= 1)
            if ((found & 1U) != 0 && (isOne || beginsWith(at + 2, sub + 2)))
                return at;
        if (ends != 0)
            return nullptr;
        carried = firsts >> (kBlock - 1);
    }
}
#else
const char* find(const char* text, const char* sub)
{
    const char first[2] = {lower(*sub), upper(*sub)};
    for (; *text != '\0'; ++text)
        if ((*text == first[0] || *text == first[1]) && beginsWith(text + 1, sub + 1))
            return text;
    return nullptr;
}
#endif

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
    return find(s, sub);
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
