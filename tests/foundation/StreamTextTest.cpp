#include "foundation/StreamText.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
std::string stored(const std::string& text)
{
    std::vector<char> out(text.size() * 3 + 1, '?');
    ConvertOutputStreamString(text.c_str(), out.data());
    return out.data();
}

std::string readBack(const std::string& text)
{
    std::vector<char> out(text.size() + 1, '?');
    ConvertInputStreamString(text.c_str(), out.data());
    return out.data();
}
} // namespace

TEST(StreamText, StoresABlankAsPercent20AndReadsItBack)
{
    EXPECT_EQ("C:\\Program%20Files\\x", stored("C:\\Program Files\\x"));
    EXPECT_EQ("C:\\Program Files\\x", readBack("C:\\Program%20Files\\x"));
}

TEST(StreamText, EscapesNothingButTheBlank)
{
    EXPECT_EQ("a\tb\n%<&>%41\xe9", stored("a\tb\n%<&>%41\xe9"));
    EXPECT_EQ("a\tb\n%<&>%41\xe9", readBack("a\tb\n%<&>%41\xe9"));
}

TEST(StreamText, ReadsAPercent20OfTheTextBackAsABlank)
{
    EXPECT_EQ("100%20", stored("100%20"));
    EXPECT_EQ("100 ", readBack("100%20"));
}

TEST(StreamText, HandlesBlanksAtBothEndsAndInARow)
{
    EXPECT_EQ("%20%20a%20", stored("  a "));
    EXPECT_EQ("  a ", readBack("%20%20a%20"));
}

TEST(StreamText, LeavesACutEscapeAlone)
{
    EXPECT_EQ("a%2", readBack("a%2"));
    EXPECT_EQ("a%", readBack("a%"));
    EXPECT_EQ("%% ", readBack("%%%20"));
}

TEST(StreamText, GivesTheEmptyTextForAnEmptyOneAndForNull)
{
    EXPECT_EQ("", stored(""));
    EXPECT_EQ("", readBack(""));
    char out[] = "old";
    ConvertOutputStreamString(nullptr, out);
    EXPECT_STREQ("", out);
    out[0] = 'o';
    ConvertInputStreamString(nullptr, out);
    EXPECT_STREQ("", out);
    ConvertOutputStreamString("text", nullptr); // nothing to write to
    ConvertInputStreamString("text", nullptr);
}

TEST(StreamText, ConvertsTenThousandBlanksWithinTripleTheRoom)
{
    const std::string blanks(10000, ' ');
    const std::string escaped = stored(blanks);
    EXPECT_EQ(30000u, escaped.size());
    EXPECT_EQ(blanks, readBack(escaped));
}
