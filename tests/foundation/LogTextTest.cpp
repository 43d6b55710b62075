#include "foundation/LogText.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
std::string escaped(const std::string& text)
{
    char out[aut::kLogEscapedSize];
    aut::escapeXml(out, text.c_str());
    return out;
}
} // namespace

TEST(LogText, NamesTheEventTypes)
{
    const char* const names[] = {"Info",         "Warning",      "Error",        "Phase1_Start",
                                 "Phase2_Start", "Phase3_Start", "Phase1_End",   "Phase2_End",
                                 "Phase3_End",   "Send_Reports", "Reports_Sent", "Main_Window_Creation"};
    for (unsigned int i = 0; i < 12; ++i)
        EXPECT_STREQ(names[i], aut::logTypeName(i)) << i;
    EXPECT_STREQ("", aut::logTypeName(12));
    EXPECT_STREQ("", aut::logTypeName(0xFFFF));
}

TEST(LogText, EscapesTheFiveCharactersThatXmlReserves)
{
    EXPECT_EQ("a&lt;b &amp; &quot;c&quot;", escaped("a<b & \"c\""));
    EXPECT_EQ("&apos;&gt;", escaped("'>"));
    EXPECT_EQ("&amp;amp;", escaped("&amp;"));
}

TEST(LogText, CopiesEveryOtherByte)
{
    std::string bytes;
    for (int c = 1; c < 256; ++c)
    {
        if (std::string("\"&'<>").find(static_cast<char>(c)) == std::string::npos)
            bytes += static_cast<char>(c);
    }
    EXPECT_EQ(bytes, escaped(bytes));
    EXPECT_EQ("", escaped(""));
}

TEST(LogText, StopsAt2047Characters)
{
    EXPECT_EQ(std::string(2047, 'x'), escaped(std::string(2047, 'x')));
    EXPECT_EQ(std::string(2047, 'x'), escaped(std::string(3000, 'x')));
}

TEST(LogText, WritesAnEntityWholeOrNotAtAll)
{
    // 2,047 - 6 is the last place where a quotation mark fits.
    const std::string fits = std::string(2041, 'x') + "\"";
    EXPECT_EQ(std::string(2041, 'x') + "&quot;", escaped(fits));
    EXPECT_EQ(std::string(2042, 'x'), escaped(std::string(2042, 'x') + "\""));
    // Nothing is taken from behind an entity that did not fit.
    EXPECT_EQ(std::string(2042, 'x'), escaped(std::string(2042, 'x') + "\"yy"));
    EXPECT_EQ(std::string(2043, 'x') + "&gt;", escaped(std::string(2043, 'x') + ">"));
}

TEST(LogText, FormatsAnEventLineWithAFullStopBeforeTheSeconds)
{
    SYSTEMTIME time{};
    time.wYear = 2009;
    time.wMonth = 7;
    time.wDay = 2;
    time.wHour = 4;
    time.wMinute = 5;
    time.wSecond = 6;
    EXPECT_EQ("<LogEvent><Date>09/07/02 04:05.06</Date><Type>Error</Type><Event>text</Event></LogEvent>\n",
              aut::logEventLine(time, 2, "text"));
}

TEST(LogText, HoldsTheLongestEventWhole)
{
    const std::string message(2047, 'x');
    const std::string line = aut::logEventLine(SYSTEMTIME{}, 11, message.c_str());
    EXPECT_NE(std::string::npos,
              line.find("<Type>Main_Window_Creation</Type><Event>" + message + "</Event></LogEvent>\n"));
}

TEST(LogText, StoresEveryLineFeedBehindACarriageReturn)
{
    EXPECT_EQ("a\r\nb\r\r\n\r", aut::withStoredLineEnds("a\nb\r\n\r")); // as text mode stores a "\r\n" too
    EXPECT_EQ("", aut::withStoredLineEnds(""));
}
