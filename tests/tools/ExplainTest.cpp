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
