#include "foundation/CText.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
std::string trimmed(std::string text)
{
    char* const start = text.data();
    EXPECT_EQ(start, Trim(start));
    return start;
}
} // namespace

TEST(Trim, RemovesALeadingTabAndATrailingLineFeed) { EXPECT_EQ("a b", trimmed("\ta b\n")); }

TEST(Trim, CountsControlCharactersAndBlanksAsBlank) { EXPECT_EQ("x", trimmed("\x01\x1f  x \x1b\r\n")); }

TEST(Trim, CountsEveryByteFrom0x80AsBlank) { EXPECT_EQ("x", trimmed("\x80\xff\xe9x\xe9\x80\xff")); }

TEST(Trim, KeepsTheHighestOrdinaryCharacters) { EXPECT_EQ("!\x7f", trimmed("!\x7f")); }

TEST(Trim, KeepsWhatIsInside) { EXPECT_EQ("a \t\xe9 b", trimmed(" a \t\xe9 b ")); }

TEST(Trim, LeavesATextWithoutBlanksAlone) { EXPECT_EQ("abc", trimmed("abc")); }

TEST(Trim, TurnsATextOfBlanksIntoTheEmptyOne) { EXPECT_EQ("", trimmed(" \t \n")); }

TEST(Trim, ReturnsAnEmptyTextAndANullPointerAsTheyAre)
{
    EXPECT_EQ("", trimmed(""));
    EXPECT_EQ(nullptr, Trim(nullptr));
}

TEST(Trim, MovesTenThousandCharacters)
{
    const std::string text(10000, 'x');
    EXPECT_EQ(text, trimmed("   " + text + "   "));
}

TEST(atodw, ReadsTheLeadingDigits)
{
    EXPECT_EQ(123ul, atodw("123abc"));
    EXPECT_EQ(7ul, atodw("007"));
    EXPECT_EQ(4294967295ul, atodw("4294967295"));
}

TEST(atodw, TakesNoSignAndNoLeadingBlank)
{
    EXPECT_EQ(0ul, atodw("-5"));
    EXPECT_EQ(0ul, atodw("+5"));
    EXPECT_EQ(0ul, atodw(" 5"));
    EXPECT_EQ(0ul, atodw("abc"));
    EXPECT_EQ(0ul, atodw(""));
    EXPECT_EQ(0ul, atodw(nullptr));
}

TEST(atodw, WrapsAroundAt32Bits)
{
    EXPECT_EQ(0ul, atodw("4294967296"));
    EXPECT_EQ(1ul, atodw("4294967297"));
    EXPECT_EQ(1ul, atodw("18446744073709551617")); // 2 to the 64th and 1
}

TEST(atodw, StopsAtTheCharactersBesideTheDigits)
{
    EXPECT_EQ(1ul, atodw("1/2"));
    EXPECT_EQ(1ul, atodw("1:2"));
}
