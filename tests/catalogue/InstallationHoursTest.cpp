#include "catalogue/InstallationHours.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
/// A window and what it says to each hour of the day from 0 to 23.
struct Window
{
    int start;
    int end;
    const char* hours; ///< '+' permitted, '-' not
};

constexpr char kAnyHour[] = "++++++++++++++++++++++++";

class InstallationHours : public ::testing::TestWithParam<Window>
{
};

TEST_P(InstallationHours, PermitTheHoursOfTheirWindow)
{
    std::string hours;
    for (int hour = 0; hour < 24; ++hour)
        hours += aut::isPermittedHour(hour, GetParam().start, GetParam().end) ? '+' : '-';
    EXPECT_EQ(GetParam().hours, hours) << GetParam().start << " to " << GetParam().end;
}

constexpr Window kWithinADay[] = {
    {8, 17, "--------+++++++++-------"}, {0, 1, "+-----------------------"},   {23, 24, "-----------------------+"},
    {0, 23, "+++++++++++++++++++++++-"}, {1, 24, "-+++++++++++++++++++++++"},  {22, 24, "----------------------++"},
    {17, 8, "------------------------"}, {-1, 24, "++++++++++++++++++++++++"}, {-1, 1, "+-----------------------"},
};
INSTANTIATE_TEST_SUITE_P(WithinADay, InstallationHours, ::testing::ValuesIn(kWithinADay));

constexpr Window kPastMidnight[] = {
    {22, 30, "++++++----------------++"},
    {22, 25, "+---------------------++"},
    {23, 26, "++---------------------+"},
    {12, 35, "+++++++++++-++++++++++++"},
    {24, 30, "++++++------------------"},
    {5, 60, "++++++++++++++++++++++++"},
    // Longer than a day: the end's own hour counts as the next day's only.
    {1, 26, "++-+++++++++++++++++++++"},
};
INSTANTIATE_TEST_SUITE_P(PastMidnight, InstallationHours, ::testing::ValuesIn(kPastMidnight));

constexpr Window kNoRestriction[] = {
    {0, 24, kAnyHour}, {0, 0, kAnyHour},  {22, 22, kAnyHour}, {22, 46, kAnyHour},
    {1, 25, kAnyHour}, {0, 48, kAnyHour}, {24, 24, kAnyHour}, {24, 0, kAnyHour},
};
INSTANTIATE_TEST_SUITE_P(NoRestriction, InstallationHours, ::testing::ValuesIn(kNoRestriction));
} // namespace
