#include "foundation/RT_RESULT.h"

#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <ctime>
#include <fstream>
#include <string>

namespace
{
std::string stored(RT_RESULT& record)
{
    auttest::TestFolder folder;
    const std::string path = folder / "stream";
    {
        std::ofstream out(path, std::ios::binary);
        EXPECT_EQ(1, record.Serialize(out));
    }
    return auttest::readFile(path);
}

int readBack(RT_RESULT& record, const std::string& text)
{
    auttest::TestFolder folder;
    auttest::writeFile(folder / "stream", text);
    std::ifstream in(folder / "stream", std::ios::binary);
    return record.Serialize(in);
}

__int64 dateOf(RT_RESULT& record)
{
    __int64 date = 0;
    record.GetDatetime(&date);
    return date;
}

TEST(RT_RESULT, IsFreshAndDatedAtConstruction)
{
    const __int64 before = _time64(nullptr);
    RT_RESULT record;
    const __int64 after = _time64(nullptr);
    EXPECT_EQ(0, record.GetStatusCode());
    EXPECT_EQ(0U, record.GetPhase());
    EXPECT_LE(before, dateOf(record));
    EXPECT_GE(after, dateOf(record));
    for (const String& text :
         {record.GetAction(), record.GetObjectA(), record.GetFunction(), record.GetArgument1(), record.GetArgument2()})
        EXPECT_EQ(nullptr, text.GetBuffer());
    EXPECT_EQ(0, record.IsError());
    EXPECT_STREQ("", record.GetErrorString());
    EXPECT_EQ(3U, RT_RESULT(3).GetPhase());
}

TEST(RT_RESULT, TheSharedRecordIsThere)
{
    ASSERT_NE(nullptr, result);
    EXPECT_EQ(1, result->Set(459, "a", "f", "o"));
    EXPECT_EQ(459, result->GetStatusCode());
}

TEST(RT_RESULT, EachSetStoresWhatItNamesAndKeepsTheRest)
{
    RT_RESULT record(2);
    EXPECT_EQ(1, record.Set(460, "action1", "function1", "argument1", "argument2", 5, "object1"));
    EXPECT_EQ(460, record.GetStatusCode());
    EXPECT_STREQ("action1", record.GetAction());
    EXPECT_STREQ("function1", record.GetFunction());
    EXPECT_STREQ("argument1", record.GetArgument1());
    EXPECT_STREQ("argument2", record.GetArgument2());
    EXPECT_STREQ("object1", record.GetObjectA());
    EXPECT_NE(nullptr, stristr(record.GetErrorMessage(nullptr), "Error Code=5"));

    EXPECT_EQ(1, record.Set(461, "action2", "function2", "object2"));
    EXPECT_EQ(461, record.GetStatusCode());
    EXPECT_STREQ("argument1", record.GetArgument1()) << "the arguments of the earlier failure stay";
    EXPECT_STREQ("argument2", record.GetArgument2());
    EXPECT_EQ(nullptr, stristr(record.GetErrorMessage(nullptr), "Error Code")) << "the system error is reset";

    EXPECT_EQ(1, record.Set(462, "action3", "function3", 7L, "object3"));
    EXPECT_STREQ("argument1", record.GetArgument1());
    EXPECT_NE(nullptr, stristr(record.GetErrorMessage(nullptr), "Error Code=7"));

    EXPECT_EQ(1, record.Set(463, "action4", "function4", "", "x", "object4"));
    EXPECT_STREQ("", record.GetArgument1());
    EXPECT_STREQ("x", record.GetArgument2());
    EXPECT_EQ(nullptr, stristr(record.GetErrorMessage(nullptr), "Error Code"));
    EXPECT_EQ(2U, record.GetPhase());
}

TEST(RT_RESULT, TextsAreCutToTheirBuffers)
{
    const String longText(std::string(10000, 'x').c_str());
    RT_RESULT record;
    record.Set(459, longText, longText, longText, longText, longText);
    EXPECT_EQ(127, record.GetAction().GetLength());
    EXPECT_EQ(127, record.GetFunction().GetLength());
    EXPECT_EQ(259, record.GetObjectA().GetLength());
    EXPECT_EQ(259, record.GetArgument1().GetLength());
    EXPECT_EQ(259, record.GetArgument2().GetLength());
}

TEST(RT_RESULT, TheFirstCharactersOfATextAreKept)
{
    std::string text;
    for (int i = 0; i < 300; ++i)
        text += static_cast<char>('!' + i % 94);
    RT_RESULT record;
    record.Set(459, text.c_str(), text.c_str(), text.c_str(), text.c_str(), text.c_str());
    EXPECT_EQ(text.substr(0, 127), std::string(record.GetAction()));
    EXPECT_EQ(text.substr(0, 127), std::string(record.GetFunction()));
    EXPECT_EQ(text.substr(0, 259), std::string(record.GetArgument1()));
    EXPECT_EQ(text.substr(0, 259), std::string(record.GetArgument2()));
    EXPECT_EQ(text.substr(0, 259), std::string(record.GetObjectA()));
}

TEST(RT_RESULT, CopiesEverything)
{
    RT_RESULT record(4);
    readBack(record, "1234567890\n4\na\no\nf\n1\n2");
    record.Set(551, "a", "f", "1", "2", 9, "o");
    RT_RESULT copy(record);
    RT_RESULT assigned;
    assigned = record;
    RT_RESULT set;
    EXPECT_EQ(1, set.Set(&record));
    for (RT_RESULT* each : {&copy, &assigned, &set})
    {
        EXPECT_STREQ(record.GetErrorString(), each->GetErrorString());
        EXPECT_EQ(1234567890, dateOf(*each));
        EXPECT_EQ(4U, each->GetPhase());
    }
    EXPECT_EQ(1, set.Set(static_cast<RT_RESULT*>(nullptr)));
    EXPECT_EQ(551, set.GetStatusCode());
}

/// The code that nothing but copying uses has no accessor: it stands behind the three others.
int& spareCodeOf(RT_RESULT& record) { return *reinterpret_cast<int*>(reinterpret_cast<char*>(&record) + 20); }

TEST(RT_RESULT, TheLeadCodeIsTheCallersOwn)
{
    RT_RESULT record(3);
    EXPECT_EQ(0, record.m_leadCode);
    EXPECT_EQ(0, RT_RESULT().m_leadCode);
    record.m_leadCode = -17;
    record.Set(460, "act", "fun", "one", "two", 5, "obj");
    EXPECT_STREQ("-17,460,5,3,act,obj,fun,one,two", record.GetErrorString());
    record.Set(461, "act", "fun", "obj");
    record.Set(462, "act", "fun", 7L, "obj");
    record.Set(463, "act", "fun", "one", "two", "obj");
    EXPECT_EQ(-17, record.m_leadCode) << "no Set touches it";
}

TEST(RT_RESULT, NoSetTouchesTheSpareCodeDateOrPhase)
{
    RT_RESULT record;
    readBack(record, "1234567890 4 a o f 1 2");
    spareCodeOf(record) = 18;
    record.Set(460, "act", "fun", "one", "two", 5, "obj");
    record.Set(461, "act", "fun", "obj");
    record.Set(462, "act", "fun", 7L, "obj");
    record.Set(463, "act", "fun", "one", "two", "obj");
    EXPECT_EQ(18, spareCodeOf(record));
    EXPECT_EQ(1234567890, dateOf(record));
    EXPECT_EQ(4U, record.GetPhase());
}

TEST(RT_RESULT, CopiesTheLeadCodeAndTheSpareCode)
{
    RT_RESULT record;
    EXPECT_EQ(0, spareCodeOf(record));
    record.m_leadCode = 17;
    spareCodeOf(record) = 18;
    RT_RESULT copy(record);
    RT_RESULT assigned;
    assigned = record;
    RT_RESULT set;
    set.Set(&record);
    for (RT_RESULT* each : {&copy, &assigned, &set})
    {
        EXPECT_EQ(17, each->m_leadCode);
        EXPECT_EQ(18, spareCodeOf(*each));
    }
}

struct ErrorCase
{
    int code;
    int isError;
};

TEST(RT_RESULT, ErrorsAreTheUpperHalfOfEachHundredAndTheHundreds)
{
    for (const ErrorCase& c : {ErrorCase{0, 0},
                               {1, 0},
                               {49, 0},
                               {50, 1},
                               {99, 1},
                               {100, 1},
                               {101, 0},
                               {149, 0},
                               {150, 1},
                               {199, 1},
                               {200, 1},
                               {460, 1},
                               {-100, 1},
                               {-50, 0},
                               {-99, 0},
                               {-200, 1}})
    {
        RT_RESULT record;
        record.Set(c.code, "", "", "");
        EXPECT_EQ(c.isError, record.IsError()) << c.code;
    }
}

TEST(RT_RESULT, EqualityLooksAtPhaseActionObjectAndEitherCode)
{
    RT_RESULT a(1);
    a.Set(460, "act", "f", 5L, "obj");
    RT_RESULT b(1);
    b.Set(460, "act", "other", 6L, "obj");
    EXPECT_EQ(1, a == b) << "same status code";
    b.Set(461, "act", "f", 5L, "obj");
    EXPECT_EQ(1, a == b) << "same system error";
    b.Set(461, "act", "f", 6L, "obj");
    EXPECT_EQ(0, a == b);
    b.Set(460, "ACT", "f", 5L, "obj");
    EXPECT_EQ(0, a == b) << "with regard to case";
    b.Set(460, "act", "f", 5L, "Obj");
    EXPECT_EQ(0, a == b);
    b.Set(460, "act", "f", "one", "two", 5L, "obj");
    readBack(b, "1 1 act obj f three four"); // another date
    EXPECT_EQ(1, a == b) << "neither date nor arguments take part";
    RT_RESULT otherPhase(2);
    otherPhase.Set(460, "act", "f", 5L, "obj");
    EXPECT_EQ(0, a == otherPhase);
}

TEST(RT_RESULT, ErrorStringIsOneCommaSeparatedLine)
{
    RT_RESULT record(3);
    record.Set(460, "act", "fun", "one", "two", 5, "obj");
    EXPECT_STREQ("0,460,5,3,act,obj,fun,one,two", record.GetErrorString());
    record.Set(101, "act", "fun", "obj");
    EXPECT_STREQ("", record.GetErrorString());
}

TEST(RT_RESULT, MessageShowsTheCodeWhenThereIsNoObject)
{
    RT_RESULT record;
    record.Set(459, "Not enough disk space", "f", "5", "MBytes needed", "");
    EXPECT_STREQ("Not enough disk space Error code:459 5 MBytes needed", record.GetErrorMessage("ignored"));
    record.Set(459, "Not enough disk space", "f", "5", "MBytes needed", "C:\\");
    EXPECT_STREQ("Not enough disk space C:\\ 5 MBytes needed", record.GetErrorMessage(nullptr));
    record.Set(459, "", "f", "", "", "o");
    EXPECT_STREQ(" o  ", record.GetErrorMessage(nullptr)) << "an empty action leaves its blank";
}

TEST(RT_RESULT, MessageEndsWithTheSystemErrorInHexadecimal)
{
    RT_RESULT record;
    record.Set(459, "act", "f", "", "", 5, "o");
    EXPECT_STREQ("act o  \n(\n\nSystem/Win32 Error:\nError Code=5\n)", record.GetErrorMessage(nullptr));
    String block("before");
    record.Set(459, "act", "f", "", "", 0xABCDEF, "o");
    EXPECT_EQ(1, record.GetWin32ErrorMessage(block));
    EXPECT_STREQ("before\n\nSystem/Win32 Error:\nError Code=abcdef\n", block);
}

struct FormatCase
{
    const char* action;
    const char* message;
};

TEST(RT_RESULT, PercentSignsInTheActionAreInterpretedAndHarmless)
{
    for (const FormatCase& c : {FormatCase{"100%% of", "100% of o one two"},
                                {"%s first", "o first one two "},
                                {"%s%s%s%s%s", "oonetwo   "},
                                {"%n%n%n%n", "   "},
                                {"%d left", " left one two "},
                                {"%4s|%-4s|%.1s", "   o|one |t   "},
                                {"%999999999s", nullptr},
                                {"50%", "50%s o one"},
                                {"%", "%s o one"},
                                {"%y", "%y o one two"}})
    {
        RT_RESULT record;
        record.Set(459, c.action, "f", "one", "two", "o");
        const String message = record.GetErrorMessage(nullptr);
        if (c.message != nullptr)
            EXPECT_STREQ(c.message, message) << c.action;
        else
            EXPECT_GT(2000, message.GetLength());
    }
}

TEST(RT_RESULT, IsStoredAsSevenLinesWithoutTheCodes)
{
    RT_RESULT record(7);
    readBack(record, "1279800309 7 a o f 1 2");
    record.Set(460, "act", "fun", "one", "", 5, "obj");
    EXPECT_EQ("1279800309\n7\nact\nobj\nfun\none\n~", stored(record));
}

TEST(RT_RESULT, ReadingKeepsTheTilde)
{
    RT_RESULT record;
    record.Set(460, "act", "fun", "one", "", 5, "obj");
    RT_RESULT copy;
    EXPECT_EQ(1, readBack(copy, stored(record)));
    EXPECT_STREQ("act", copy.GetAction());
    EXPECT_STREQ("obj", copy.GetObjectA());
    EXPECT_STREQ("fun", copy.GetFunction());
    EXPECT_STREQ("one", copy.GetArgument1());
    EXPECT_STREQ("~", copy.GetArgument2());
    EXPECT_EQ(dateOf(record), dateOf(copy));
    EXPECT_EQ(0, copy.GetStatusCode()) << "codes are not stored";
}

TEST(RT_RESULT, ATextWithABlankIsReadAsTwoWords)
{
    RT_RESULT record;
    record.Set(460, "two words", "fun", "one", "two", "obj");
    RT_RESULT copy;
    EXPECT_EQ(1, readBack(copy, stored(record)));
    EXPECT_STREQ("two", copy.GetAction());
    EXPECT_STREQ("words", copy.GetObjectA());
    EXPECT_STREQ("obj", copy.GetFunction());
}

TEST(RT_RESULT, ACutOrHostileStreamIsHarmless)
{
    RT_RESULT record;
    record.Set(460, "act", "fun", "one", "two", "obj");
    const std::string whole = stored(record);
    for (std::size_t length = 0; length <= whole.size(); ++length)
    {
        RT_RESULT copy;
        EXPECT_EQ(1, readBack(copy, whole.substr(0, length)));
    }
    RT_RESULT copy;
    EXPECT_EQ(1, readBack(copy, "1 2 " + std::string(100000, 'x') + " b c d e"));
    EXPECT_EQ(127, copy.GetAction().GetLength());
    EXPECT_STREQ("b", copy.GetObjectA());
    EXPECT_EQ(1, readBack(copy, "not a number at all x y z"));
}
} // namespace
