#include "system/CRange.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <set>
#include <string>

namespace
{
struct Range
{
    const char* name;
    std::string text;
    int lower;
    int upper;
};
class CRangeText : public ::testing::TestWithParam<Range>
{
};

std::set<int> drawn(CRange& range, int draws = 3000)
{
    std::set<int> values;
    for (int i = 0; i < draws; ++i)
        values.insert(range.Random());
    return values;
}
} // namespace

TEST_P(CRangeText, GivesTheBounds)
{
    CRange range;
    range.m_lower = 77;
    range.m_upper = 78;
    range.SetRange(GetParam().text.c_str());
    EXPECT_EQ(GetParam().lower, range.m_lower);
    EXPECT_EQ(GetParam().upper, range.m_upper);
}

INSTANTIATE_TEST_SUITE_P(SetRange, CRangeText,
                         ::testing::Values(Range{"LowAndHigh", "10-20", 10, 20}, Range{"UpperOnly", "7", 0, 7},
                                           Range{"Blanks", " \t10 - 20\r\n", 10, 20},
                                           Range{"LeadingMinusSeparates", "-5-10", 0, 5},
                                           Range{"SecondMinusIsASign", "4--6", 4, -6}, Range{"Equal", "5-5", 5, 5},
                                           Range{"Turned", "20-10", 20, 10}, Range{"NoUpper", "4-", 4, 0},
                                           Range{"OnlyMinus", "-", 0, 0}, Range{"Empty", "", 0, 0},
                                           Range{"TooLarge", "99999999999-4294967297", INT_MAX, INT_MAX},
                                           Range{"TooSmall", "0--99999999999", 0, INT_MIN},
                                           Range{"NoNumber", "a-b", 0, 0}, Range{"NumbersBeforeLetters", "1a-2b", 1, 2},
                                           Range{"TenThousandBlanks", std::string(10000, ' ') + "3-9", 3, 9}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(CRange, StartsWithBothBoundsZero)
{
    CRange range;
    EXPECT_EQ(0, range.m_lower);
    EXPECT_EQ(0, range.m_upper);
    EXPECT_EQ(0, range.Random());
}

TEST(CRange, SeedsTheRandomGeneratorWithTheTime)
{
    // Two ranges made in the same second draw the same numbers, whatever was drawn before.
    for (int attempt = 0; attempt < 3; ++attempt)
    {
        const auto second = static_cast<unsigned>(::_time64(nullptr));
        const CRange range;
        const int afterConstruction = std::rand();
        std::srand(second);
        const int expected = std::rand();
        if (second != static_cast<unsigned>(::_time64(nullptr)))
            continue; // the second ended in between
        EXPECT_EQ(expected, afterConstruction);
        return;
    }
    FAIL() << "no attempt stayed within one second";
}

TEST(CRange, DrawsFromTheLowerBoundUpToButNotTheUpperOne)
{
    CRange range;
    range.SetRange("10-20");
    EXPECT_EQ((std::set<int>{10, 11, 12, 13, 14, 15, 16, 17, 18, 19}), drawn(range));
    range.SetRange("7");
    EXPECT_EQ((std::set<int>{0, 1, 2, 3, 4, 5, 6}), drawn(range));
    range.SetRange("5-5");
    EXPECT_EQ((std::set<int>{5}), drawn(range));
}

TEST(CRange, TakesTheRemainderOfTheNextRandomNumber)
{
    CRange range;
    std::srand(1); // the runtime then gives 41, 18467, 6334 and 26500
    range.SetRange("10-20");
    EXPECT_EQ(11, range.Random());
    EXPECT_EQ(17, range.Random());
    range.SetRange("20-10");
    EXPECT_EQ(24, range.Random());
    range.SetRange("5-5");
    EXPECT_EQ(5, range.Random()); // draws nothing
    EXPECT_EQ(26500, std::rand());
}

TEST(CRange, AddsTheRemainderByTheDistanceOfTurnedBounds)
{
    CRange range;
    range.SetRange("20-10"); // the remainder by -10 is 0 to 9
    EXPECT_EQ((std::set<int>{20, 21, 22, 23, 24, 25, 26, 27, 28, 29}), drawn(range));
}

TEST(CRange, SurvivesExtremeBoundsAndNull)
{
    CRange range;
    range.SetRange(nullptr);
    EXPECT_EQ(0, range.Random());
    range.m_lower = INT_MIN;
    range.m_upper = INT_MAX;
    const int drawnValue = range.Random();
    EXPECT_LE(drawnValue, INT_MIN + RAND_MAX);
    range.m_lower = INT_MAX;
    range.m_upper = INT_MIN;
    range.Random();
    range.SetRange("99999999999999999999-99999999999999999999");
    range.Random();
}

TEST(CRange, CopiesItsBounds)
{
    CRange range;
    range.SetRange("3-9");
    CRange copy(range);
    EXPECT_EQ(3, copy.m_lower);
    EXPECT_EQ(9, copy.m_upper);
    CRange assigned;
    assigned = copy;
    EXPECT_EQ(3, assigned.m_lower);
    EXPECT_EQ(9, assigned.m_upper);
}
