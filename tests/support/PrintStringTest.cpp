#include <gtest/gtest.h>

TEST(PrintString, AStringIsShownAsItsText)
{
    EXPECT_EQ("\"a text\"", ::testing::PrintToString(String("a text")));
    EXPECT_EQ("\"\"", ::testing::PrintToString(String()));
}
