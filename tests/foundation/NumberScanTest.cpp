#include "foundation/NumberScan.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <string>

TEST(NumberScan, ReadsWhatScanfReads)
{
    for (const char* text : {"0",
                             "12",
                             "-12",
                             "+12",
                             " 12",
                             "\t\n\v\f\r 12",
                             "12abc",
                             "007",
                             "-",
                             "+",
                             "",
                             " ",
                             "abc",
                             "- 5",
                             "--5",
                             "0x10",
                             "2147483647",
                             "-2147483648",
                             "1.5",
                             "\xa0"
                             "5"})
    {
        SCOPED_TRACE(text);
        int expected = -77;
        int length = 0;
        const bool read = std::sscanf(text, "%d%n", &expected, &length) == 1;
        const char* cursor = text;
        int value = -77;
        EXPECT_EQ(read, aut::scanNumber(cursor, value));
        EXPECT_EQ(expected, value);
        EXPECT_EQ(text + (read ? length : 0), cursor);
    }
}

TEST(NumberScan, GivesTheNearestNumberThatFits)
{
    const auto scanned = [](const std::string& text)
    {
        const char* cursor = text.c_str();
        int value = 0;
        EXPECT_TRUE(aut::scanNumber(cursor, value));
        EXPECT_EQ('\0', *cursor);
        return value;
    };
    EXPECT_EQ(INT_MAX, scanned("2147483648"));
    EXPECT_EQ(INT_MIN, scanned("-2147483649"));
    EXPECT_EQ(INT_MAX, scanned(std::string(10000, '9')));
    EXPECT_EQ(INT_MIN, scanned("-" + std::string(10000, '9')));
}

TEST(NumberScan, StepsOverExactlyTheCharacterExpected)
{
    const char* cursor = ".x";
    EXPECT_FALSE(aut::scanLiteral(cursor, 'x'));
    EXPECT_STREQ(".x", cursor);
    EXPECT_TRUE(aut::scanLiteral(cursor, '.'));
    EXPECT_STREQ("x", cursor);
    cursor = "";
    EXPECT_FALSE(aut::scanLiteral(cursor, '\0'));
}

TEST(NumberScan, TakesAnyCharacterButNotTheEnd)
{
    const char* cursor = "\xe9 ";
    int code = 0;
    EXPECT_TRUE(aut::scanCharacter(cursor, code));
    EXPECT_EQ(233, code);
    EXPECT_TRUE(aut::scanCharacter(cursor, code));
    EXPECT_EQ(32, code);
    EXPECT_FALSE(aut::scanCharacter(cursor, code));
    EXPECT_EQ(32, code);
}
