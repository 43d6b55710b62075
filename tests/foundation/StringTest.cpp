#include "foundation/String.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <malloc.h>
#include <string>
#ifdef _WIN32
#include <windows.h>
#endif

namespace
{
std::string text(const String& s) { return std::string(static_cast<const char*>(s)); }

TEST(String, MadeFromNothingOwnsNoBuffer)
{
    for (const String& empty : {String(), String(""), String(static_cast<const char*>(nullptr)), String(String())})
    {
        EXPECT_TRUE(empty.IsEmpty());
        EXPECT_EQ(0, empty.GetLength());
        EXPECT_EQ(nullptr, empty.GetBuffer());
        ASSERT_NE(nullptr, static_cast<const char*>(empty));
        EXPECT_STREQ("", empty);
    }
}

TEST(String, CopiesAreDeep)
{
    const String original("abc");
    String copy(original);
    EXPECT_NE(original.GetBuffer(), copy.GetBuffer());
    copy.SetAt(0, 'x');
    EXPECT_STREQ("abc", original);
    EXPECT_STREQ("xbc", copy);
}

TEST(String, OneCharacterIsTakenUntested)
{
    const String letter('x');
    EXPECT_STREQ("x", letter);
    EXPECT_EQ(1, letter.GetLength());

    const String nul('\0');
    EXPECT_EQ(1, nul.GetLength());
    EXPECT_STREQ("", nul);

    String assigned("abc");
    assigned = '\0';
    EXPECT_EQ(1, assigned.GetLength());
}

TEST(String, EmptyFreesTheBuffer)
{
    String s("abc");
    s.Empty();
    EXPECT_EQ(nullptr, s.GetBuffer());
    EXPECT_EQ(0, s.GetLength());
    s.Empty();
    EXPECT_TRUE(s.IsEmpty());
}

TEST(String, AssignmentTakesTextsStringsAndNothing)
{
    String s("before");
    EXPECT_STREQ("abc", s = "abc");
    EXPECT_STREQ("other", s = String("other"));
    EXPECT_STREQ("c", s = 'c');
    EXPECT_STREQ("", s = static_cast<const char*>(nullptr));
    EXPECT_EQ(nullptr, s.GetBuffer());
    s = "abc";
    s = String();
    EXPECT_EQ(nullptr, s.GetBuffer());
}

/// The size of the block that the string owns.
std::size_t blockSize(const String& s) { return s.GetBuffer() != nullptr ? _msize(s.GetBuffer()) : 0; }

TEST(String, TheBufferIsExactlyAsLargeAsTheTextNeeds)
{
    const std::string longText(1000, 'x');
    EXPECT_EQ(4u, blockSize(String("abc")));
    EXPECT_EQ(1001u, blockSize(String(longText.c_str())));
    EXPECT_EQ(1001u, blockSize(String(String(longText.c_str()))));
    EXPECT_EQ(2u, blockSize(String('c')));

    String s(longText.c_str());
    s = "abc";
    EXPECT_EQ(4u, blockSize(s));
    s += 'd';
    EXPECT_EQ(5u, blockSize(s));
    s += "efg";
    EXPECT_EQ(8u, blockSize(s));
    s += String(longText.c_str());
    EXPECT_EQ(1008u, blockSize(s));
    s.TrimRight('x');
    EXPECT_EQ(8u, blockSize(s));
    s.TrimLeft('a');
    EXPECT_EQ(7u, blockSize(s));
    s = "  ab  ";
    s.Trim();
    EXPECT_EQ(3u, blockSize(s));
    s.Replace("b", "12345");
    EXPECT_EQ(7u, blockSize(s));
    s.Replace("12345", "");
    EXPECT_EQ(2u, blockSize(s));
    s.Format("%d%s", 12, longText.c_str());
    EXPECT_EQ(1003u, blockSize(s));
    s.Format("%s", "x");
    EXPECT_EQ(2u, blockSize(s));
    EXPECT_EQ(3u, blockSize(String("abc").Left(2)));
    EXPECT_EQ(3u, blockSize(String("abc").Mid(1)));
    EXPECT_EQ(7u, blockSize(String("abc") + String("def")));
}

TEST(String, AssigningItselfOrAPieceOfItselfKeepsTheText)
{
    String s("abcdef");
    const String& alias = s;
    s = alias;
    EXPECT_STREQ("abcdef", s);
    s = static_cast<const char*>(s);
    EXPECT_STREQ("abcdef", s);
    s = static_cast<const char*>(s) + 2;
    EXPECT_STREQ("cdef", s);
    EXPECT_EQ(4, s.GetLength());
}

TEST(String, AppendsTextsStringsAndCharacters)
{
    String s;
    s += "";
    s += static_cast<const char*>(nullptr);
    s += String();
    s += '\0';
    EXPECT_EQ(nullptr, s.GetBuffer());
    s += 'a';
    s += "bc";
    s += String("de");
    s += 'f';
    EXPECT_STREQ("abcdef", s);
    EXPECT_EQ(6, s.GetLength());
    s += '\0';
    EXPECT_EQ(6, s.GetLength());
}

TEST(String, AppendsItselfAndPiecesOfItself)
{
    String s("abc");
    s += s;
    EXPECT_STREQ("abcabc", s);
    s += static_cast<const char*>(s) + 4;
    EXPECT_STREQ("abcabcbc", s);
}

TEST(String, AppendingTenThousandCharactersOneByOneLosesNothing)
{
    String s;
    std::string expected;
    for (int i = 0; i < 10000; ++i)
    {
        s += static_cast<char>('a' + i % 26);
        expected += static_cast<char>('a' + i % 26);
    }
    EXPECT_EQ(10000, s.GetLength());
    EXPECT_EQ(expected, text(s));
}

TEST(String, PlusCopiesTheLeftAndAppendsTheRight)
{
    const String left("ab");
    EXPECT_STREQ("abcd", left + String("cd"));
    EXPECT_STREQ("abc", left + 'c');
    EXPECT_STREQ("cab", 'c' + left);
    EXPECT_STREQ("ab", left);
    EXPECT_EQ(3, ('\0' + left).GetLength()) << "the left character is taken untested";
}

TEST(String, EqualityIgnoresCaseAndNeedsTheSameLength)
{
    EXPECT_EQ(1, String("abc") == String("ABC"));
    EXPECT_EQ(1, String("abc") == "ABC");
    EXPECT_EQ(0, String("abc") == "ab");
    EXPECT_EQ(0, String("abc") == String("ab"));
    EXPECT_EQ(0, String("abc") == "abd");
    EXPECT_EQ(1, String() == String(""));
    EXPECT_EQ(1, String() == static_cast<const char*>(nullptr));
    EXPECT_EQ(0, String("a") == static_cast<const char*>(nullptr));
    EXPECT_EQ(1, String("abc") != String("abd"));
    EXPECT_EQ(0, String("abc") != String("ABC"));
}

TEST(String, GetAtGivesTheTerminatorAndZeroBehindIt)
{
    const String s("abc");
    EXPECT_EQ('a', s.GetAt(0));
    EXPECT_EQ('c', s.GetAt(2));
    EXPECT_EQ('\0', s.GetAt(3));
    EXPECT_EQ('\0', s.GetAt(4));
    EXPECT_EQ('\0', String().GetAt(0));
}

TEST(String, SetAtBehindTheEndDoesNothing)
{
    String s("abc");
    s.SetAt(1, 'X');
    s.SetAt(3, '\0');
    s.SetAt(4, 'Y');
    EXPECT_STREQ("aXc", s);
    String empty;
    empty.SetAt(0, 'x');
    EXPECT_EQ(nullptr, empty.GetBuffer());
}

TEST(String, SetAtTheLengthStoresTheCharacter)
{
    String s("abc");
    s.SetAt(3, '!');
    EXPECT_EQ('!', s.GetAt(3));
    EXPECT_EQ(3, s.GetLength());
    s.SetAt(3, '\0');
    EXPECT_STREQ("abc", s);
}

TEST(String, FindsTextWithoutAndCharactersWithRegardToCase)
{
    const String s("Hello World");
    EXPECT_EQ(6, s.Find("WORLD", 0));
    EXPECT_EQ(6, s.Find("WORLD"));
    EXPECT_EQ(7, s.Find("o", 5));
    EXPECT_EQ(-1, s.Find("o", 20));
    EXPECT_EQ(-1, s.Find("o", 11));
    EXPECT_EQ(4, s.Find("o", -3));
    EXPECT_EQ(-1, s.Find('O', 0));
    EXPECT_EQ(4, s.Find('o'));
    EXPECT_EQ(7, s.Find('o', 5));
    EXPECT_EQ(4, s.Find('o', -1));
    EXPECT_EQ(-1, s.Find('o', 11));
    EXPECT_EQ(-1, s.Find('\0'));
    EXPECT_EQ(-1, s.Find(""));
    EXPECT_EQ(-1, s.Find(static_cast<const char*>(nullptr)));
    EXPECT_EQ(-1, String().Find("a"));
    EXPECT_EQ(-1, String().Find('a'));
    EXPECT_EQ(-1, s.Find("World!"));
}

TEST(String, NothingIsFoundInAnEmptyStringFromAnyStart)
{
    for (const int start : {INT_MIN, -3, -1, 0, 1, INT_MAX})
    {
        EXPECT_EQ(-1, String().Find('a', start)) << start;
        EXPECT_EQ(-1, String().Find("a", start)) << start;
    }
}

TEST(String, ReverseFindGivesTheLastIndex)
{
    EXPECT_EQ(7, String("Hello World").ReverseFind('o'));
    EXPECT_EQ(-1, String("Hello World").ReverseFind('O'));
    EXPECT_EQ(-1, String().ReverseFind('o'));
    EXPECT_EQ(3, String("abc").ReverseFind('\0')) << "the NUL stands at the length";
}

TEST(Stristr, FoldsTheLettersAToZOnly)
{
    const char* const s = "abc\xE4 XyZ";
    EXPECT_EQ(s + 5, stristr(s, "xYz"));
    EXPECT_EQ(s, stristr(s, "ABC\xE4"));
    EXPECT_EQ(nullptr, stristr(s, "\xC4"));
    EXPECT_EQ(nullptr, stristr("[", "{"));
    EXPECT_EQ(nullptr, stristr(s, "abcd"));
    EXPECT_EQ(nullptr, stristr(nullptr, "a"));
    EXPECT_EQ(nullptr, stristr("a", nullptr));
    EXPECT_EQ(nullptr, stristr("", "a"));
    EXPECT_EQ(s, stristr(s, ""));
}

#ifdef _WIN32 // whose pages can be protected; the native sanitizers check every access anyway
namespace
{
/// Two pages of which the second cannot be touched; texts end right before it.
class PageEnd
{
public:
    PageEnd()
        : m_pages(static_cast<char*>(::VirtualAlloc(nullptr, 2 * kPage, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE)))
    {
        DWORD before = 0;
        EXPECT_TRUE(::VirtualProtect(m_pages + kPage, kPage, PAGE_NOACCESS, &before));
    }
    PageEnd(const PageEnd&) = delete;
    PageEnd& operator=(const PageEnd&) = delete;
    ~PageEnd() { ::VirtualFree(m_pages, 0, MEM_RELEASE); }

    const char* put(const std::string& text) const
    {
        char* const at = m_pages + kPage - text.size() - 1;
        std::memcpy(at, text.c_str(), text.size() + 1);
        return at;
    }

private:
    static constexpr std::size_t kPage = 4096;
    char* m_pages;
};

const char* searchedOneByOne(const char* text, const std::string& sub)
{
    for (; *text != '\0'; ++text)
        if (::_strnicmp(text, sub.c_str(), sub.size()) == 0)
            return text;
    return nullptr;
}
} // namespace

TEST(Stristr, FindsAtEveryPlaceAndReadsNothingBehindTheTextsPage)
{
    const PageEnd end;
    for (const std::string sub : {"n", "N", "nE", "-", "-n", "needle", "NEEDLE-in-a-haystack-of-letters", "nn"})
        for (std::size_t length = 0; length < 70; ++length)
            for (std::size_t place = 0; place <= length; ++place)
            {
                // Beginnings of what is sought all over the text.
                std::string text;
                while (text.size() < length)
                    text += length % 2 == 0 ? "nN" : "x-";
                text.resize(length);
                if (place + sub.size() <= length)
                    text.replace(place, sub.size(), sub);
                const char* const at = end.put(text);
                ASSERT_EQ(searchedOneByOne(at, sub), stristr(at, sub.c_str())) << sub << " in " << text;
            }
}
#endif

TEST(Stristr, SeesNothingBeforeTheTextAndNothingBehindItsEnd)
{
    for (std::size_t shift = 0; shift < 16; ++shift)
    {
        const std::string text = std::string(shift, 'x') + std::string("needle\0needle", 13);
        EXPECT_EQ(nullptr, stristr(text.c_str() + shift + 1, "needle")) << shift;
        EXPECT_EQ(nullptr, stristr(text.c_str() + shift + 1, "n")) << shift;
        EXPECT_EQ(text.c_str() + shift, stristr(text.c_str() + shift, "NEEDLE")) << shift;
    }
}

TEST(String, ReplacesCharactersAndCountsThem)
{
    String s("a-b-c");
    EXPECT_EQ(2, s.Replace('-', '+'));
    EXPECT_STREQ("a+b+c", s);
    EXPECT_EQ(0, s.Replace('A', 'x')) << "with regard to case";
    EXPECT_EQ(0, s.Replace('a', 'a'));
    EXPECT_STREQ("a+b+c", s);
    EXPECT_EQ(0, String().Replace('a', 'b'));
}

TEST(String, ReplacesTextsByLongerAndShorterOnes)
{
    String s("x1x2x");
    EXPECT_EQ(3, s.Replace("x", "yyy"));
    EXPECT_STREQ("yyy1yyy2yyy", s);
    EXPECT_EQ(11, s.GetLength());
    EXPECT_EQ(3, s.Replace("yyy", ""));
    EXPECT_STREQ("12", s);
    EXPECT_EQ(2, s.GetLength());
}

TEST(String, ReplacingEverythingByNothingLeavesAnEmptyString)
{
    String s("xxx");
    EXPECT_EQ(3, s.Replace("x", ""));
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_STREQ("", s);
}

TEST(String, ReplaceWithNothingToDoChangesNothing)
{
    String s("abc");
    EXPECT_EQ(0, s.Replace("", "x"));
    EXPECT_EQ(0, s.Replace("b", "b"));
    EXPECT_EQ(0, s.Replace("B", "x")) << "with regard to case";
    EXPECT_EQ(0, s.Replace(nullptr, "x"));
    EXPECT_EQ(0, s.Replace("a", nullptr));
    EXPECT_EQ(0, String().Replace("a", "b"));
    EXPECT_STREQ("abc", s);
}

TEST(String, ReplaceCountsOverlappingPlacesAndStaysSound)
{
    String s("aaaa");
    EXPECT_EQ(3, s.Replace("aa", "bbb")) << "places at 0, 1 and 2";
    EXPECT_STREQ("bbbbbb", s);
    EXPECT_EQ(6, s.GetLength());
    String shrinking("aaaaa");
    EXPECT_EQ(4, shrinking.Replace("aa", ""));
    EXPECT_STREQ("a", shrinking);
    EXPECT_EQ(1, shrinking.GetLength());
}

TEST(String, ReplaceTakesPiecesOfItself)
{
    String s("ab");
    EXPECT_EQ(1, s.Replace("b", s));
    EXPECT_STREQ("aab", s);
}

TEST(String, TrimsRunsOfOneCharacterAtEitherEnd)
{
    String s("--a-b--");
    s.TrimLeft('-');
    EXPECT_STREQ("a-b--", s);
    s.TrimRight('-');
    EXPECT_STREQ("a-b", s);
    EXPECT_EQ(3, s.GetLength());
    s.TrimRight('x');
    EXPECT_STREQ("a-b", s);
}

TEST(String, TrimTakesBlanksOnly)
{
    String s("  a b  ");
    s.Trim();
    EXPECT_STREQ("a b", s);
    String tab("\t a\n ");
    tab.Trim();
    EXPECT_STREQ("\t a\n", tab);
    String blanks("   ");
    blanks.Trim();
    EXPECT_EQ(0, blanks.GetLength());
    EXPECT_TRUE(blanks.IsEmpty());
    EXPECT_STREQ("", blanks);
    EXPECT_EQ(1, blanks == "");
    String left("   ");
    left.TrimLeft(' ');
    EXPECT_TRUE(left.IsEmpty());
    left += "x";
    EXPECT_STREQ("x", left);
}

TEST(String, TrimRightOfThatCharacterOnlyLeavesAnEmptyString)
{
    String s("---");
    s.TrimRight('-');
    EXPECT_EQ(0, s.GetLength());
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_STREQ("", s);
    EXPECT_EQ(1, s == "");
    s.TrimRight('-');
    s += "x-";
    EXPECT_STREQ("x-", s);
}

TEST(String, LeftAndRightKeepWithinTheText)
{
    const String s("abcd");
    EXPECT_STREQ("", s.Left(-1));
    EXPECT_STREQ("", s.Left(0));
    EXPECT_STREQ("ab", s.Left(2));
    EXPECT_STREQ("abcd", s.Left(99));
    EXPECT_STREQ("", s.Right(-1));
    EXPECT_STREQ("", s.Right(0));
    EXPECT_STREQ("cd", s.Right(2));
    EXPECT_STREQ("abcd", s.Right(4));
}

TEST(String, MidKeepsItsOddBounds)
{
    const String s("abcd");
    EXPECT_STREQ("abcd", s.Mid(0));
    EXPECT_STREQ("abcd", s.Mid(-5));
    EXPECT_STREQ("bcd", s.Mid(1));
    EXPECT_STREQ("", s.Mid(4));
    EXPECT_STREQ("", s.Mid(5));
    for (const int count : {0, 1, 2, 4, 99, INT_MAX})
        EXPECT_STREQ("abcd", s.Mid(-1, count)) << count;
    EXPECT_STREQ("abcd", s.Mid(INT_MIN, 2));
    EXPECT_STREQ("ab", s.Mid(0, 2));
    EXPECT_STREQ("bc", s.Mid(1, 2));
    EXPECT_STREQ("cd", s.Mid(2, 10));
    EXPECT_STREQ("cd", s.Mid(2, 0x7FFFFFFF));
    EXPECT_STREQ("", s.Mid(1, -1));
    EXPECT_STREQ("", s.Mid(-1, -1));
    EXPECT_STREQ("", s.Mid(1, 0));
    EXPECT_STREQ("", s.Mid(4, 1));
}

TEST(String, ExtractsFields)
{
    const String s("a,b,c");
    EXPECT_STREQ("a", s.ExtractSubString(',', 0));
    EXPECT_STREQ("a", s.ExtractSubString(',', -1));
    EXPECT_STREQ("b", s.ExtractSubString(',', 1));
    EXPECT_STREQ("c", s.ExtractSubString(',', 2));
    EXPECT_STREQ("", s.ExtractSubString(',', 3));
    EXPECT_STREQ("", String("a,b,").ExtractSubString(',', 2));
    EXPECT_STREQ("b", String("a,b,").ExtractSubString(',', 1));
    EXPECT_STREQ("abc", String("abc").ExtractSubString(',', 0));
    EXPECT_STREQ("", String("abc").ExtractSubString(',', 1));
    EXPECT_STREQ("", String(",a").ExtractSubString(',', 0));
    EXPECT_STREQ("", String().ExtractSubString(',', 0));
    EXPECT_STREQ("", String().ExtractSubString(',', 1));
}

TEST(String, FormatsLikePrintf)
{
    String s("old");
    s.Format("%s-%d-%04x-%c", "text", -5, 0xABU, 'z');
    EXPECT_STREQ("text--5-00ab-z", s);
    s.Format("%s", "");
    EXPECT_EQ(nullptr, s.GetBuffer());
}

TEST(String, FormatsItsOwnText)
{
    String s("abc");
    s.Format("<%s>", static_cast<const char*>(s));
    EXPECT_STREQ("<abc>", s);
}

TEST(String, FormatIsNotBoundedByAStagingBuffer)
{
    const std::string longText(10000, 'x');
    String s;
    s.Format("%s!", longText.c_str());
    EXPECT_EQ(10001, s.GetLength());
    EXPECT_EQ(longText + "!", text(s));
}

TEST(String, BufferIsWrittenByTheCallerAndReleased)
{
    String s("old");
    char* const buffer = s.GetBufferSetLength(10);
    ASSERT_NE(nullptr, buffer);
    EXPECT_EQ(10, s.GetLength());
    EXPECT_EQ('\0', s.GetAt(10));
    std::memcpy(buffer, "xy", 3);
    s.ReleaseBuffer(-1);
    EXPECT_EQ(2, s.GetLength());
    EXPECT_STREQ("xy", s);

    std::memcpy(s.GetBufferSetLength(5), "abcde", 5);
    s.ReleaseBuffer(3);
    EXPECT_STREQ("abc", s);
    EXPECT_EQ(3, s.GetLength());

    ASSERT_NE(nullptr, s.GetBufferSetLength(0));
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_STREQ("", s);
    s += "x";
    EXPECT_STREQ("x", s);

    String none;
    none.ReleaseBuffer(-1);
    EXPECT_TRUE(none.IsEmpty());
}

TEST(String, TextsOfTenThousandCharactersStayWhole)
{
    const std::string longText(10000, 'q');
    const String s(longText.c_str());
    EXPECT_EQ(10000, s.GetLength());
    EXPECT_EQ(longText, text(String(s)));
    EXPECT_EQ(9999, s.Left(9999).GetLength());
    EXPECT_EQ(-1, s.Find("r"));
    EXPECT_EQ(1, s == longText.c_str());
}
} // namespace
