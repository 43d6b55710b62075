#include "productlist/ServerClock.h"

#include <gtest/gtest.h>

using aut::serverClockDifference;

TEST(ServerClock, IsTheServersTimeMinusTheWorkstations)
{
    EXPECT_EQ(90, serverClockDifference(1'000'090, 1'000'000, false, -60));
    EXPECT_EQ(-90, serverClockDifference(1'000'000, 1'000'090, false, -60));
    EXPECT_EQ(0, serverClockDifference(1'000'000, 1'000'000, false, 480));
}

TEST(ServerClock, AddsTheBiasWhileDaylightSavingIsInEffect)
{
    EXPECT_EQ(90 - 3600, serverClockDifference(1'000'090, 1'000'000, true, -60));
    EXPECT_EQ(90 + 480 * 60, serverClockDifference(1'000'090, 1'000'000, true, 480));
    EXPECT_EQ(90, serverClockDifference(1'000'090, 1'000'000, true, 0));
}

TEST(ServerClock, CutsBothTimesTo32Bits)
{
    EXPECT_EQ(5, serverClockDifference(0x1'0000'0005, 0, false, 0));
    EXPECT_EQ(-5, serverClockDifference(0, 0x7'0000'0005, false, 0));
    EXPECT_EQ(INT32_MIN, serverClockDifference(0x8000'0000, 0, false, 0));
}

TEST(ServerClock, ReadsAnImpossibleServerTimeAsTheSecondBefore1970)
{
    EXPECT_EQ(-1'000'001, serverClockDifference(-1, 1'000'000, false, 0));
}
