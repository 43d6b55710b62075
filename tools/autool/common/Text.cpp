#include "common/Text.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>

namespace autool
{
namespace
{
std::wstring widened(std::string_view text, UINT codePage)
{
    if (text.empty())
        return {};
    const int bytes = static_cast<int>(text.size());
    const int length = ::MultiByteToWideChar(codePage, 0, text.data(), bytes, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(std::max(length, 0)), L'\0');
    ::MultiByteToWideChar(codePage, 0, text.data(), bytes, wide.data(), length);
    return wide;
}

std::string narrowed(std::wstring_view text, UINT codePage)
{
    if (text.empty())
        return {};
    const int characters = static_cast<int>(text.size());
    const int length = ::WideCharToMultiByte(codePage, 0, text.data(), characters, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(std::max(length, 0)), '\0');
    ::WideCharToMultiByte(codePage, 0, text.data(), characters, narrow.data(), length, nullptr, nullptr);
    return narrow;
}

/// Length and code of the character at the start of `text`; length 0 when it is no valid UTF-8.
struct Character
{
    std::size_t length = 0;
    std::uint32_t code = 0;
};

Character firstCharacter(std::string_view text)
{
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80)
        return {1, lead};
    const std::size_t length = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : 2;
    if (lead < 0xc2 || lead > 0xf4 || text.size() < length)
        return {};
    std::uint32_t code = lead & (0x7fU >> length);
    for (std::size_t i = 1; i < length; ++i)
    {
        if ((byte(i) & 0xc0) != 0x80)
            return {};
        code = (code << 6) | (byte(i) & 0x3fU);
    }
    constexpr std::array<std::uint32_t, 5> kLeast = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = code >= 0xd800 && code <= 0xdfff;
    if (code < kLeast[length] || code > 0x10ffff || isSurrogate)
        return {};
    return {length, code};
}

struct Range
{
    std::uint32_t first, last;
};
bool isIn(std::uint32_t code, const Range* begin, const Range* end)
{
    return std::any_of(begin, end, [code](const Range& range) { return code >= range.first && code <= range.last; });
}

// Marks that stand on the character before them or are not seen at all, and characters that take two columns. Whole
// blocks: a table only has to look straight for texts that occur.
constexpr Range kNoColumn[] = {{0x300, 0x36f}, {0x200b, 0x200f}, {0x202a, 0x202e}, {0x2060, 0x2069}, {0xfe00, 0xfe0f}};
constexpr Range kTwoColumns[] = {{0x1100, 0x115f},   {0x2e80, 0xa4cf},  {0xac00, 0xd7a3}, {0xf900, 0xfaff},
                                 {0xfe30, 0xfe6f},   {0xff00, 0xff60},  {0xffe0, 0xffe6}, {0x1f300, 0x1f64f},
                                 {0x1f900, 0x1f9ff}, {0x20000, 0x3fffd}};
// Change the direction of what follows: a log line could show itself as something else.
constexpr Range kDirection[] = {{0x200e, 0x200f}, {0x202a, 0x202e}, {0x2066, 0x2069}};

std::size_t columnsOf(std::uint32_t code)
{
    if (isIn(code, std::begin(kNoColumn), std::end(kNoColumn)))
        return 0;
    return isIn(code, std::begin(kTwoColumns), std::end(kTwoColumns)) ? 2 : 1;
}

bool isControl(std::uint32_t code)
{
    return code < 0x20 || (code >= 0x7f && code < 0xa0) || code == 0x2028 || code == 0x2029 ||
           isIn(code, std::begin(kDirection), std::end(kDirection));
}
} // namespace

std::string fromWide(std::wstring_view text) { return narrowed(text, CP_UTF8); }
std::wstring toWide(std::string_view utf8) { return widened(utf8, CP_UTF8); }

std::string fromSystem(std::string_view text)
{
    return isValidUtf8(text) ? std::string(text) : fromWide(widened(text, CP_ACP));
}

std::string toSystem(std::string_view utf8) { return narrowed(toWide(utf8), CP_ACP); }

bool isValidUtf8(std::string_view text)
{
    while (!text.empty())
    {
        const Character character = firstCharacter(text);
        if (character.length == 0)
            return false;
        text.remove_prefix(character.length);
    }
    return true;
}

std::size_t characterLength(std::string_view text) { return std::max<std::size_t>(firstCharacter(text).length, 1); }

std::string printable(std::string_view utf8, bool keepLines)
{
    std::string shown;
    shown.reserve(utf8.size());
    for (std::string_view rest = utf8; !rest.empty();)
    {
        const Character character = firstCharacter(rest);
        const std::size_t length = std::max<std::size_t>(character.length, 1);
        const char plain = rest.front();
        if (character.length == 0)
            shown += "\xef\xbf\xbd"; // the replacement character
        else if (plain == '\n' && keepLines)
            shown += plain;
        else if (plain == '\r' && rest.size() > 1 && rest[1] == '\n')
            ; // the line feed behind it says it all
        else if (plain == '\n' || plain == '\r' || plain == '\t')
            shown += ' ';
        else if (isControl(character.code))
            shown += "\xc2\xb7"; // a middle dot
        else
            shown += rest.substr(0, length);
        rest.remove_prefix(length);
    }
    return shown;
}

std::size_t displayWidth(std::string_view utf8)
{
    std::size_t width = 0;
    while (!utf8.empty())
    {
        const Character character = firstCharacter(utf8);
        width += character.length == 0 ? 1 : columnsOf(character.code);
        utf8.remove_prefix(std::max<std::size_t>(character.length, 1));
    }
    return width;
}

std::string shortened(std::string_view utf8, std::size_t columns)
{
    if (displayWidth(utf8) <= columns)
        return std::string(utf8);
    constexpr std::string_view kMark = "...";
    const std::size_t room = columns > kMark.size() ? columns - kMark.size() : 0;
    std::string kept;
    std::size_t width = 0;
    for (std::string_view rest = utf8; !rest.empty();)
    {
        const std::string_view one = rest.substr(0, characterLength(rest));
        width += displayWidth(one);
        if (width > room)
            break;
        kept += one;
        rest.remove_prefix(one.size());
    }
    return kept.append(kMark.substr(0, columns));
}

std::string lowerCase(std::string_view text)
{
    std::string lower(text);
    for (char& letter : lower)
        if (letter >= 'A' && letter <= 'Z')
            letter = static_cast<char>(letter - 'A' + 'a');
    return lower;
}

bool containsIgnoringCase(std::string_view text, std::string_view lowerCasePart)
{
    return lowerCase(text).find(lowerCasePart) != std::string::npos;
}
} // namespace autool
