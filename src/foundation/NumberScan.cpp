#include "foundation/NumberScan.h"

#include <limits>

namespace aut
{
namespace
{
bool isWhiteSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
} // namespace

bool scanNumber(const char*& cursor, int& value) noexcept
{
    const char* at = cursor;
    while (isWhiteSpace(*at))
        ++at;
    const bool negative = *at == '-';
    if (negative || *at == '+')
        ++at;
    if (!isDigit(*at))
        return false;
    const long long limit = negative ? -static_cast<long long>(std::numeric_limits<int>::min())
                                     : static_cast<long long>(std::numeric_limits<int>::max());
    long long magnitude = 0;
    for (; isDigit(*at); ++at)
    {
        magnitude = magnitude * 10 + (*at - '0');
        if (magnitude > limit)
            magnitude = limit;
    }
    value = static_cast<int>(negative ? -magnitude : magnitude);
    cursor = at;
    return true;
}

bool scanLiteral(const char*& cursor, char expected) noexcept
{
    if (*cursor == '\0' || *cursor != expected)
        return false;
    ++cursor;
    return true;
}

bool scanCharacter(const char*& cursor, int& code) noexcept
{
    if (*cursor == '\0')
        return false;
    code = static_cast<unsigned char>(*cursor++); // a code from 1 to 255, as scanf leaves it in a cleared number
    return true;
}
} // namespace aut
