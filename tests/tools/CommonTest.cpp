// Console, tables, texts, progress and JSON, which all commands share.
#include "common/Json.h"
#include "common/Progress.h"
#include "common/Table.h"
#include "common/Text.h"
#include "tests/tools/Autool.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>

namespace
{
using namespace autool;
using namespace auttest;

std::size_t widestOf(const std::string& text)
{
    std::size_t widest = 0;
    for (const std::string& line : linesOf(text))
        widest = std::max(widest, displayWidth(line));
    return widest;
}

TEST(AutoolText, ValidUtf8StaysAndOtherBytesAreReadInTheSystemsCodePage)
{
    EXPECT_EQ("Z\xc3\xbcrich", fromSystem("Z\xc3\xbcrich"));
    ASSERT_EQ(1252U, ::GetACP()) << "the expectation below is for this code page";
    EXPECT_EQ("Z\xc3\xbcrich", fromSystem("Z\xfcrich"));
}

TEST(AutoolText, OverlongSurrogateAndCutSequencesAreNoUtf8)
{
    for (const char* bad : {"\xc0\x80", "\xe0\x80\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe2\x82", "\x80", "\xff"})
        EXPECT_FALSE(isValidUtf8(bad));
    EXPECT_TRUE(isValidUtf8("\xf0\x9f\x98\x80\xe2\x82\xac\xc3\xbc"));
}

TEST(AutoolText, NothingPrintableSteersATerminal)
{
    EXPECT_EQ("\xc2\xb7[31mred\xc2\xb7", printable("\x1b[31mred\a"));
    EXPECT_EQ("a b c", printable("a\r\nb\tc"));
    EXPECT_EQ("a\nb", printable("a\r\nb", true));
    EXPECT_EQ("\xc2\xb7", printable("\xc2\x9b")); // a one-byte escape sequence of some terminals
    EXPECT_EQ("\xc2\xb7"
              "exe",
              printable("\xe2\x80\xae"
                        "exe"));
    EXPECT_EQ("\xef\xbf\xbd", printable("\xff"));
}

TEST(AutoolText, WidthCountsColumnsNotBytes)
{
    EXPECT_EQ(6U, displayWidth("Z\xc3\xbcrich"));
    EXPECT_EQ(4U, displayWidth("\xe6\x9d\xb1\xe4\xba\xac"));
    EXPECT_EQ(1U, displayWidth("e\xcc\x81"));
    EXPECT_EQ("\xc3\xa4\xc3\xb6...", shortened("\xc3\xa4\xc3\xb6\xc3\xbc\xc3\xa4\xc3\xb6\xc3\xbc", 5));
}

TEST(AutoolTable, IsNeverWiderThanAHundredColumnsAndKeepsEveryWord)
{
    Table table({{"Code", true}, {"What"}, {"Where"}});
    std::string words;
    for (int i = 0; i < 60; ++i)
        words += "word" + std::to_string(i) + " ";
    table.add({"470", words, std::string(250, 'x')});
    Screen out;
    Screen error;
    Console console = consoleOn(out, error);
    table.print(console);
    EXPECT_LE(widestOf(out.text), 100U);
    for (int i = 0; i < 60; ++i)
        EXPECT_NE(std::string::npos, out.text.find("word" + std::to_string(i)));
    EXPECT_EQ(250, std::count(out.text.begin(), out.text.end(), 'x'));
}

TEST(AutoolTable, ColumnsStandBelowTheirTitlesAndNumbersAtTheRight)
{
    Table table({{"Count", true}, {"Name"}});
    table.add({"7", "Z\xc3\xbcrich"});
    table.add({"12", "Bern"});
    Screen out;
    Screen error;
    Console console = consoleOn(out, error);
    table.print(console);
    EXPECT_EQ("Count  Name\n    7  Z\xc3\xbcrich\n   12  Bern\n", out.text);
}

TEST(AutoolConsole, ColoursOnlyWhereThereAreColours)
{
    Screen file;
    Screen terminal;
    terminal.isTerminal = true;
    Screen error;
    EXPECT_EQ("bad", consoleOn(file, error).styled(Style::Bad, "bad"));
    EXPECT_EQ("\x1b[31mbad\x1b[0m", consoleOn(terminal, error).styled(Style::Bad, "bad"));
}

TEST(AutoolProgress, IsSilentForASecondAndOnAFile)
{
    Screen out;
    Screen file;
    Screen terminal;
    terminal.isTerminal = true;
    Console toFile = consoleOn(out, file);
    Console toTerminal = consoleOn(out, terminal);
    {
        Progress silent(toFile, "Reading");
        Progress shown(toTerminal, "Reading");
        shown.update(1, 2);
        EXPECT_EQ("", terminal.text);
        ::Sleep(1100); // the second that has to pass
        silent.update(1, 2);
        shown.update(1, 2);
        EXPECT_EQ("\rReading ... 50 %", terminal.text);
    }
    EXPECT_EQ("", file.text);
    EXPECT_EQ('\r', terminal.text.back()); // wiped
}

TEST(AutoolJson, KeysKeepTheirOrderAndInvalidBytesDoNoHarm)
{
    Json json;
    json["zebra"] = jsonText("Z\xfcrich");
    json["ant"] = "raw \xff byte";
    EXPECT_EQ("{\"zebra\":\"Z\xc3\xbcrich\",\"ant\":\"raw \xef\xbf\xbd byte\"}", jsonLine(json));
}
} // namespace
