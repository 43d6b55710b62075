#include "explain/SystemErrors.h"
#include "tests/tools/Autool.h"

#include <gtest/gtest.h>

namespace
{
using namespace autool;
using namespace auttest;

TEST(AutoolCode, IsReadAsPeopleWriteIt)
{
    EXPECT_EQ(5UL, parseCode("5"));
    EXPECT_EQ(5UL, parseCode("0x5"));
    EXPECT_EQ(0x80040154UL, parseCode("0X80040154"));
    EXPECT_EQ(0x80040154UL, parseCode("-2147221164"));
    for (const char* bad : {"", "-", "0x", "5x", "4294967296", "-2147483649", "99999999999"})
        EXPECT_EQ(std::nullopt, parseCode(bad)) << bad;
}

std::size_t count(const std::string& text, const std::string& part)
{
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++found;
    return found;
}

TEST(AutoolExplain, AStatusCodeGivesEveryFailureThatSetsIt)
{
    const AutoolRun run = runAutool({"explain", "462"});
    EXPECT_EQ(0, run.code);
    EXPECT_EQ(3U, count(run.out, "status code 462")) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("RT_File::CopyFileAtNextReboot"));
}

TEST(AutoolExplain, ANumberWithSeveralMeaningsGivesAllOfThem)
{
    const AutoolRun run = runAutool({"explain", "5"});
    EXPECT_EQ(0, run.code);
    EXPECT_NE(std::string::npos, run.out.find("COM registration 5")) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("system error 5  ERROR_ACCESS_DENIED")) << run.out;
    EXPECT_NE(std::string::npos, runAutool({"explain", "18"}).out.find("system error 18"));
}

TEST(AutoolExplain, ErrorsAreKnownByNumberHexadecimalAndName)
{
    const std::string asNumber = runAutool({"explain", "5"}).out;
    for (const char* other : {"0x5", "0x00000005", "ERROR_ACCESS_DENIED", "error_access_denied"})
        EXPECT_EQ(asNumber, runAutool({"explain", other}).out) << other;
}

TEST(AutoolExplain, AnHresultOfRegistrationSaysWhatToDo)
{
    for (const char* code : {"0x80040154", "-2147221164", "80040154", "REGDB_E_CLASSNOTREG"})
    {
        const std::string out = runAutool({"explain", code}).out;
        if (std::string(code) != "80040154") // digits alone are decimal
        {
            EXPECT_NE(std::string::npos, out.find("COM registration 0x80040154  REGDB_E_CLASSNOTREG")) << code << "\n"
                                                                                                       << out;
        }
    }
    // As status 470 shows what it got.
    EXPECT_NE(std::string::npos, runAutool({"explain", "FFFFFFEB"}).out.find("could not be loaded here either"));
    EXPECT_NE(std::string::npos, runAutool({"explain", "-21"}).out.find("could not be loaded here either"));
}

TEST(AutoolExplain, ATransferStatusIsTakenApart)
{
    EXPECT_NE(std::string::npos, runAutool({"explain", "13404"}).out.find("This is HTTP status 404."));
    EXPECT_NE(std::string::npos, runAutool({"explain", "100002"}).out.find("ERROR_FILE_NOT_FOUND"));
    EXPECT_NE(std::string::npos, runAutool({"explain", "12029"}).out.find("ERROR_INTERNET_CANNOT_CONNECT"));
    EXPECT_EQ(std::string::npos, runAutool({"explain", "12029"}).out.find(". (ERROR_"));
}

TEST(AutoolExplain, ALogTextIsFoundAsItWasWritten)
{
    const AutoolRun run = runAutool({"explain", R"(Unable to load the DLL C:\Program Files\x\MapFile.dll)"});
    EXPECT_EQ(0, run.code);
    EXPECT_EQ(1U, count(run.out, "log text ")) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("Unable to load the DLL ...")) << run.out;
    // What varies may stand anywhere, and be nothing like words.
    EXPECT_EQ(1U,
              count(runAutool({"explain", "GetLocalData(Host=a, CID=b, Product=c):  - [13404], Web Configurator not "
                                          "available. Use Local Data. Message=x"})
                        .out,
                    "log text "));
}

TEST(AutoolExplain, APartOfALogTextIsEnough)
{
    const AutoolRun run = runAutool({"explain", "revoked", "or"});
    EXPECT_EQ(0, run.code);
    EXPECT_EQ(2U, count(run.out, "log text ")) << run.out;
}

TEST(AutoolExplain, JsonHasAllAnswersInAFixedOrderOfKeys)
{
    const AutoolRun run = runAutool({"explain", "470", "--json"});
    EXPECT_EQ(0, run.code);
    const std::size_t kind = run.out.find("\"kind\": \"status code\"");
    const std::size_t advice = run.out.find("\"advice\"");
    EXPECT_NE(std::string::npos, kind) << run.out;
    EXPECT_LT(kind, advice);
    const AutoolRun none = runAutool({"explain", "no such thing at all", "--json"});
    EXPECT_EQ(1, none.code);
    EXPECT_NE(std::string::npos, none.out.find("\"answers\": []")) << none.out;
}

TEST(AutoolExplain, ASystemErrorGivesTheSystemsText)
{
    const AutoolRun run = runAutool({"explain", "0x5"});
    EXPECT_EQ(0, run.code);
    EXPECT_NE(std::string::npos, run.out.find("denied")) << run.out;
}

TEST(AutoolExplain, WhatNobodyKnowsIsAFinding)
{
    const AutoolRun run = runAutool({"explain", "no such thing at all"});
    EXPECT_EQ(1, run.code);
    EXPECT_EQ("", run.out);
    EXPECT_NE(std::string::npos, run.error.find("no such thing at all"));
}
} // namespace
