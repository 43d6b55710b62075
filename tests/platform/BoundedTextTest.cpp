#include "platform/BoundedText.h"

#include <gtest/gtest.h>

#include <cstring>

namespace
{
// A buffer with a guard byte behind the part that may be written.
struct Guarded
{
    char text[8];
    char guard = 'G';
};

TEST(BoundedText, CopyTakesWhatFitsWithItsTerminator)
{
    Guarded out{};
    EXPECT_TRUE(aut::copyText(out.text, "1234567"));
    EXPECT_STREQ("1234567", out.text);
    EXPECT_EQ('G', out.guard);
}

TEST(BoundedText, CopyCutsAndSaysSo)
{
    Guarded out{};
    EXPECT_FALSE(aut::copyText(out.text, "12345678"));
    EXPECT_STREQ("1234567", out.text);
    EXPECT_EQ('G', out.guard);
}

TEST(BoundedText, CopyOfNullGivesTheEmptyText)
{
    char out[4] = "old";
    EXPECT_TRUE(aut::copyText(out, nullptr));
    EXPECT_STREQ("", out);
}

TEST(BoundedText, NothingIsWrittenWithoutABuffer)
{
    char out[1] = {'x'};
    EXPECT_FALSE(aut::copyText(nullptr, 8, "a"));
    EXPECT_FALSE(aut::copyText(out, 0, "a"));
    EXPECT_FALSE(aut::appendText(nullptr, 8, "a"));
    EXPECT_FALSE(aut::appendText(out, 0, "a"));
    EXPECT_FALSE(aut::formatText(nullptr, 8, "a"));
    EXPECT_FALSE(aut::formatText(out, 0, "a"));
    EXPECT_EQ('x', out[0]);
}

TEST(BoundedText, ABufferOfOneByteHoldsTheTerminatorOnly)
{
    char out[1] = {'x'};
    EXPECT_FALSE(aut::copyText(out, "a"));
    EXPECT_STREQ("", out);
}

TEST(BoundedText, CopyOntoItselfKeepsTheText)
{
    char out[8] = "abc";
    EXPECT_TRUE(aut::copyText(out, out));
    EXPECT_STREQ("abc", out);
}

TEST(BoundedText, AppendGoesBehindTheTerminator)
{
    Guarded out{};
    aut::copyText(out.text, "123");
    EXPECT_TRUE(aut::appendText(out.text, "4567"));
    EXPECT_STREQ("1234567", out.text);
    EXPECT_FALSE(aut::appendText(out.text, "8"));
    EXPECT_STREQ("1234567", out.text);
    EXPECT_EQ('G', out.guard);
}

TEST(BoundedText, AppendToABufferWithoutTerminatorEndsItInside)
{
    Guarded out{};
    std::memset(out.text, 'x', sizeof out.text);
    EXPECT_FALSE(aut::appendText(out.text, "y"));
    EXPECT_STREQ("xxxxxxx", out.text);
    EXPECT_EQ('G', out.guard);
}

TEST(BoundedText, FormatCutsAndSaysSo)
{
    Guarded out{};
    EXPECT_TRUE(aut::formatText(out.text, sizeof out.text, "%d-%s", 12, "abcd"));
    EXPECT_STREQ("12-abcd", out.text);
    EXPECT_FALSE(aut::formatText(out.text, sizeof out.text, "%d-%s", 12, "abcde"));
    EXPECT_STREQ("12-abcd", out.text);
    EXPECT_EQ('G', out.guard);
}

TEST(BoundedText, EmptinessCoversNull)
{
    EXPECT_TRUE(aut::isEmpty(nullptr));
    EXPECT_TRUE(aut::isEmpty(""));
    EXPECT_FALSE(aut::isEmpty(" "));
    EXPECT_STREQ("", aut::orEmpty(nullptr));
    EXPECT_STREQ("a", aut::orEmpty("a"));
}
} // namespace
