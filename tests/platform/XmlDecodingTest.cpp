#include "platform/XmlDecoding.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

using namespace std::string_literals;

namespace
{
std::wstring wideOf(const aut::UniqueBstr& text) { return std::wstring(text.get(), ::SysStringLen(text.get())); }

struct Encoding
{
    const char* name;
    std::string bytes;
    std::wstring text;
};

class XmlDecodingOf : public ::testing::TestWithParam<Encoding>
{
};

TEST_P(XmlDecodingOf, GivesTheCharactersThatWereMeant)
{
    const aut::UniqueBstr text = aut::decodeXml(GetParam().bytes.data(), GetParam().bytes.size());
    ASSERT_TRUE(text);
    EXPECT_EQ(GetParam().text, wideOf(text));
}

const std::wstring kBlanks21(21, L' '); // encoding="iso-8859-1"
const std::wstring kBlanks16(16, L' '); // encoding="utf-8"

const Encoding kEncodings[] = {
    {"Utf8Mark", "\xEF\xBB\xBF<a>\xC3\xA9</a>", L"<a>\u00e9</a>"},
    {"Utf16LittleEndianMark", "\xFF\xFE<\0a\0/\0>\0"s, L"<a/>"},
    {"Utf16BigEndianMark", "\xFE\xFF\0<\x20\xAC\0/\0>"s, L"<\u20ac/>"},
    {"Utf16LittleEndianWithoutMark", "<\0a\0/\0>\0"s, L"<a/>"},
    {"Utf16BigEndianWithoutMark", "\0<\0a\0/\0>"s, L"<a/>"},
    {"DeclaredUtf8", "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a>\xC3\xA9</a>",
     L"<?xml version=\"1.0\" " + kBlanks16 + L"?><a>\u00e9</a>"},
    {"DeclaredLatin1", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xE9</a>",
     L"<?xml version=\"1.0\" " + kBlanks21 + L"?><a>\u00e9</a>"},
    {"DeclaredInSingleQuotesWithBlanks", "<?xml version='1.0' encoding = 'iso-8859-1'?><a>\xE9</a>",
     L"<?xml version='1.0' " + kBlanks21 + L"  ?><a>\u00e9</a>"},
    {"DeclaredLatin9", "<?xml version=\"1.0\" encoding=\"iso-8859-15\"?>\xA4",
     L"<?xml version=\"1.0\" " + kBlanks21 + L" ?>\u20ac"},
    {"DeclaredWindows1251", "<?xml version=\"1.0\" encoding=\"windows-1251\"?>\xC6",
     L"<?xml version=\"1.0\" " + kBlanks21 + L"  ?>\u0416"},
    {"DeclaredWindows1252", "<?xml version=\"1.0\" encoding=\"Windows-1252\"?>\x80",
     L"<?xml version=\"1.0\" " + kBlanks21 + L"  ?>\u20ac"},
    {"DeclaredAscii", "<?xml version=\"1.0\" encoding=\"us-ascii\"?><a/>",
     L"<?xml version=\"1.0\" " + kBlanks16 + L"   ?><a/>"},
    {"TheMarkBeforeTheDeclaration", "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>\xC3\xA9",
     L"<?xml version=\"1.0\" " + kBlanks21 + L"?>\u00e9"},
    {"UndeclaredUtf8", "<a>\xC3\xA9</a>", L"<a>\u00e9</a>"},
    {"AnUnknownNameAsUndeclared", "<?xml version=\"1.0\" encoding=\"none-such1\"?>\xC3\xA9",
     L"<?xml version=\"1.0\" " + kBlanks21 + L"?>\u00e9"},
    {"APartOfTheStandardThatDoesNotExist", "<?xml version=\"1.0\" encoding=\"iso-8859-0\"?>\xC3\xA9",
     L"<?xml version=\"1.0\" " + kBlanks21 + L"?>\u00e9"},
    {"ASignInANumber", "<?xml version=\"1.0\" encoding=\"iso-8859-+1\"?>\xC3\xA9",
     L"<?xml version=\"1.0\" " + kBlanks21 + L" ?>\u00e9"},
    {"ABlankInANumber", "<?xml version=\"1.0\" encoding=\"windows- 1252\"?>\xC3\xA9",
     L"<?xml version=\"1.0\" " + kBlanks21 + L"   ?>\u00e9"},
    {"ANumberWithATail", "<?xml version=\"1.0\" encoding=\"windows-1252x\"?>\xC3\xA9",
     L"<?xml version=\"1.0\" " + kBlanks21 + L"   ?>\u00e9"},
    {"ANumberThatOverflows", "<?xml version=\"1.0\" encoding=\"windows-4294968548\"?>\xC3\xA9",
     L"<?xml version=\"1.0\" " + kBlanks21 + L"        ?>\u00e9"},
    // 936 and 1200 are code pages of the system, though none of eight bits; the same name with 874 is one.
    {"AWindowsNumberOfAMultiByteCodePage", "<?xml version=\"1.0\" encoding=\"windows-936\"?>\xC3\xA9",
     L"<?xml version=\"1.0\" " + kBlanks21 + L" ?>\u00e9"},
    {"AWindowsNumberOfUtf16", "<?xml version=\"1.0\" encoding=\"windows-1200\"?>\xC3\xA9",
     L"<?xml version=\"1.0\" " + kBlanks21 + L"  ?>\u00e9"},
    {"DeclaredWindows874", "<?xml version=\"1.0\" encoding=\"windows-874\"?>\xA1",
     L"<?xml version=\"1.0\" " + kBlanks21 + L" ?>\u0e01"},
    {"DeclaredWindows1258", "<?xml version=\"1.0\" encoding=\"windows-1258\"?>\xD0",
     L"<?xml version=\"1.0\" " + kBlanks21 + L"  ?>\u0110"},
    {"BytesThatCallThemselvesUtf16", "<?xml version=\"1.0\" encoding=\"utf-16\"?>\xC3\xA9",
     L"<?xml version=\"1.0\" " + kBlanks16 + L" ?>\u00e9"},
    {"AnEncodingOutsideTheDeclaration", "<a encoding=\"iso-8859-1\">\xC3\xA9</a>",
     L"<a encoding=\"iso-8859-1\">\u00e9</a>"},
    {"ADeclarationThatNeverEnds", "<?xml version=\"1.0\" encoding=\"", L"<?xml version=\"1.0\" encoding=\""},
    {"AStyleSheetInstruction", "<?xml-stylesheet encoding=\"iso-8859-1\"?>\xC3\xA9",
     L"<?xml-stylesheet encoding=\"iso-8859-1\"?>\u00e9"},
};
INSTANTIATE_TEST_SUITE_P(Table, XmlDecodingOf, ::testing::ValuesIn(kEncodings),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(XmlDecoding, TakesBytesThatAreNotUtf8AsTheAnsiCodePage)
{
    constexpr char kBytes[] = "<a>\xE9</a>";
    wchar_t expected[32] = L"";
    ASSERT_EQ(9, ::MultiByteToWideChar(CP_ACP, 0, kBytes, -1, expected, 32));
    EXPECT_EQ(expected, wideOf(aut::decodeXml(kBytes, 8)));
}

struct Refused
{
    const char* name;
    std::string bytes;
};

class XmlDecodingRefuses : public ::testing::TestWithParam<Refused>
{
};

TEST_P(XmlDecodingRefuses, WhatCannotBeWhatItSays)
{
    EXPECT_FALSE(aut::decodeXml(GetParam().bytes.data(), GetParam().bytes.size()));
}

const Refused kRefused[] = {
    {"NoText", ""},
    {"OnlyAMark", "\xEF\xBB\xBF"},
    {"DeclaredUtf8ThatIsNone", "<?xml version=\"1.0\" encoding=\"utf-8\"?>\xE9"},
    {"MarkedUtf8ThatIsNone", "\xEF\xBB\xBF\xE9"},
    {"HalfAUtf16Character", "\xFF\xFE<\0a\0/"s},
    {"ANulInside", "<a>\0</a>"s},
    {"ANulAtTheEnd", "<a/>\0"s},
    {"AUtf16NulInside", "\xFF\xFE<\0\0\0/\0>\0"s},
};
INSTANTIATE_TEST_SUITE_P(Table, XmlDecodingRefuses, ::testing::ValuesIn(kRefused),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(XmlDecoding, RefusesNull)
{
    EXPECT_FALSE(aut::decodeXml(nullptr, 0));
    EXPECT_FALSE(aut::wideFromAnsi(nullptr));
}

TEST(XmlDecoding, TakesAHundredMegabytes)
{
    std::string bytes(100'000'000, 'x');
    bytes[0] = '<';
    const aut::UniqueBstr text = aut::decodeXml(bytes.data(), bytes.size());
    ASSERT_TRUE(text);
    EXPECT_EQ(100'000'000u, ::SysStringLen(text.get()));
    EXPECT_EQ(L'x', text.get()[99'999'999]);
}
} // namespace
