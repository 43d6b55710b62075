#include "platform/XmlDecoding.h"

#include "platform/BoundedText.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

namespace aut
{
namespace
{
constexpr UINT kNoCodePage = 0xFFFFFFFF;
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

bool startsWith(std::string_view text, std::string_view start) { return text.substr(0, start.size()) == start; }

std::string lowered(std::string_view text)
{
    std::string lower(text);
    for (char& c : lower)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return lower;
}

/// Where the declaration `<?xml ... encoding="name" ... ?>` keeps its encoding: the whole pseudo attribute and the
/// name.
struct DeclaredEncoding
{
    std::size_t begin = 0;
    std::size_t end = 0;
    std::string_view name;
};

DeclaredEncoding findDeclaredEncoding(std::string_view text)
{
    constexpr std::string_view kKeyword = "encoding";
    std::size_t start = 0;
    while (start < text.size() && isBlank(text[start]))
        ++start;
    if (!startsWith(text.substr(start), "<?xml") || start + 5 >= text.size() || !isBlank(text[start + 5]))
        return {};
    const std::string_view declaration = text.substr(0, text.find("?>", start));
    const std::size_t begin = declaration.find(kKeyword, start);
    if (begin == std::string_view::npos)
        return {};
    std::size_t at = begin + kKeyword.size();
    while (at < declaration.size() && (isBlank(declaration[at]) || declaration[at] == '='))
        ++at;
    if (at == declaration.size() || (declaration[at] != '"' && declaration[at] != '\''))
        return {};
    const std::size_t end = declaration.find(declaration[at], at + 1);
    if (end == std::string_view::npos)
        return {};
    return {begin, end + 1, declaration.substr(at + 1, end - at - 1)};
}

/// The number behind `prefix`, of at most four digits and nothing else; 0 when there is none.
UINT numberBehind(std::string_view name, std::string_view prefix)
{
    if (!startsWith(name, prefix) || name.size() > prefix.size() + 4)
        return 0;
    UINT number = 0;
    for (const char c : name.substr(prefix.size()))
    {
        if (c < '0' || c > '9')
            return 0;
        number = 10 * number + static_cast<UINT>(c - '0');
    }
    return number;
}

UINT codePageOf(std::string_view encoding)
{
    constexpr UINT kIso8859 = 28590; // the system numbers the parts of ISO 8859 from here
    const std::string name = lowered(encoding.substr(0, 32));
    if (name == "utf-8" || name == "utf8")
        return CP_UTF8;
    UINT page = kNoCodePage;
    if (name == "us-ascii" || name == "ascii")
        page = 20127;
    else if (const UINT part = numberBehind(name, "iso-8859-"); part >= 1 && part <= 15)
        page = kIso8859 + part;
    else if (const UINT windows = numberBehind(name, "windows-");
             windows == 874 || (windows >= 1250 && windows <= 1258))
        page = windows; // these only: the numbers between are not all eight-bit code pages
    return page != kNoCodePage && ::IsValidCodePage(page) ? page : kNoCodePage;
}

/// Null when the bytes are not valid in the code page.
UniqueBstr wideFromCodePage(UINT codePage, std::string_view bytes)
{
    if (bytes.empty() || bytes.size() > INT_MAX)
        return {};
    const int size = static_cast<int>(bytes.size());
    const DWORD flags = codePage == CP_UTF8 ? MB_ERR_INVALID_CHARS : 0;
    const int length = ::MultiByteToWideChar(codePage, flags, bytes.data(), size, nullptr, 0);
    if (length <= 0)
        return {};
    UniqueBstr text(::SysAllocStringLen(nullptr, static_cast<UINT>(length)));
    if (text && ::MultiByteToWideChar(codePage, flags, bytes.data(), size, text.get(), length) != length)
        text.reset();
    return text;
}

UniqueBstr wideFromUtf16(std::string_view bytes, bool bigEndian)
{
    const std::size_t length = bytes.size() / sizeof(wchar_t);
    if (length == 0 || length > INT_MAX / sizeof(wchar_t) || bytes.size() % sizeof(wchar_t) != 0)
        return {};
    UniqueBstr text(::SysAllocStringLen(nullptr, static_cast<UINT>(length)));
    if (!text)
        return {};
    std::memcpy(text.get(), bytes.data(), bytes.size());
    if (bigEndian)
        std::transform(text.get(), text.get() + length, text.get(),
                       [](wchar_t unit) { return static_cast<wchar_t>(((unit & 0xFF) << 8) | ((unit >> 8) & 0xFF)); });
    return text;
}

UniqueBstr wideFromEightBit(std::string_view bytes)
{
    const UINT declared = codePageOf(findDeclaredEncoding(bytes).name);
    if (declared != kNoCodePage)
        return wideFromCodePage(declared, bytes);
    UniqueBstr text = wideFromCodePage(CP_UTF8, bytes);
    return text ? std::move(text) : wideFromCodePage(CP_ACP, bytes);
}

UniqueBstr decodeBytes(std::string_view bytes)
{
    using namespace std::string_view_literals;
    if (startsWith(bytes, kUtf8Mark))
        return wideFromCodePage(CP_UTF8, bytes.substr(kUtf8Mark.size()));
    if (startsWith(bytes, "\xFF\xFE"sv))
        return wideFromUtf16(bytes.substr(2), false);
    if (startsWith(bytes, "\xFE\xFF"sv))
        return wideFromUtf16(bytes.substr(2), true);
    if (startsWith(bytes, "<\0"sv))
        return wideFromUtf16(bytes, false);
    if (startsWith(bytes, "\0<"sv))
        return wideFromUtf16(bytes, true);
    return wideFromEightBit(bytes);
}

/// The declaration consists of ASCII, so its first characters show where the encoding stands in the wide text.
void blankDeclaredEncoding(wchar_t* text, std::size_t length)
{
    constexpr std::size_t kLongestDeclaration = 1024;
    std::string start(std::min(length, kLongestDeclaration), '\0');
    std::transform(text, text + start.size(), start.begin(),
                   [](wchar_t c) { return c < 0x80 ? static_cast<char>(c) : '?'; });
    const DeclaredEncoding encoding = findDeclaredEncoding(start);
    std::fill(text + encoding.begin, text + encoding.end, L' ');
}
} // namespace

UniqueBstr decodeXml(const char* bytes, std::size_t size)
try
{
    if (bytes == nullptr)
        return {};
    UniqueBstr text = decodeBytes(std::string_view(bytes, size));
    if (!text)
        return {};
    const std::size_t length = ::SysStringLen(text.get());
    if (std::wmemchr(text.get(), L'\0', length) != nullptr)
        return {}; // the parser would take it for the end and call half a document well formed
    blankDeclaredEncoding(text.get(), length);
    return text;
}
catch (const std::bad_alloc&)
{
    return {};
}

UniqueBstr wideFromAnsi(const char* text) { return wideFromCodePage(CP_ACP, orEmpty(text)); }
} // namespace aut
