#include "foundation/TimeText.h"

#include "tests/support/ClientRegistry.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <regex>
#include <string>

namespace
{
/// Puts the C runtime, which the library shares, into a fixed time zone for one test.
class TimeText : public ::testing::Test
{
protected:
    ~TimeText() override { zone(""); }
    static void zone(const char* name)
    {
        ::_putenv((std::string("TZ=") + name).c_str());
        ::_tzset();
    }
};

__int64 localTime(int year, int month, int day, int hour = 0, int minute = 0)
{
    std::tm local{};
    local.tm_year = year - 1900;
    local.tm_mon = month - 1;
    local.tm_mday = day;
    local.tm_hour = hour;
    local.tm_min = minute;
    return ::_mktime64(&local);
}
} // namespace

TEST_F(TimeText, ShowsATimeInTheLocalZone)
{
    __int64 time = 1279807509;
    zone("AAA0");
    EXPECT_STREQ("2010-07-22 14:05:09", TimetToStr(&time));
    zone("BBB-2");
    EXPECT_STREQ("2010-07-22 16:05:09", TimetToStr(&time));
}

TEST_F(TimeText, HasNoTextForNullOrATimeWithoutLocalForm)
{
    EXPECT_STREQ("", TimetToStr(nullptr));
    zone("AAA0");
    __int64 time = -1;
    EXPECT_STREQ("", TimetToStr(&time));
    time = INT64_MAX;
    EXPECT_STREQ("", TimetToStr(&time));
    time = 0;
    EXPECT_STREQ("1970-01-01 00:00:00", TimetToStr(&time));
}

TEST_F(TimeText, HereAndNowIsTheCurrentTime)
{
    __int64 before = ::_time64(nullptr);
    const String now = HereAndNow();
    __int64 after = ::_time64(nullptr);
    // Texts of this form sort like the times they show.
    EXPECT_LE(std::string(TimetToStr(&before)), std::string(now));
    EXPECT_GE(std::string(TimetToStr(&after)), std::string(now));
}

TEST_F(TimeText, HereAndNowAsFileNameEndsInMillisecondsWithoutLeadingZeros)
{
    const std::string before(HereAndNow());
    const std::string now(HereAndNowAsFileNameStr());
    std::smatch parts;
    ASSERT_TRUE(std::regex_match(now, parts, std::regex(R"((\d{4})(\d\d)(\d\d)(\d\d)(\d\d)(\d\d)_(0|[1-9]\d{0,2}))")))
        << now;
    const std::string shown = parts[1].str() + "-" + parts[2].str() + "-" + parts[3].str() + " " + parts[4].str() +
                              ":" + parts[5].str() + ":" + parts[6].str();
    EXPECT_LE(before, shown);
    EXPECT_GE(std::string(HereAndNow()), shown);
}

TEST_F(TimeText, WebConfTimeAddsTheStoredDifference)
{
    const auttest::ClientRegistry registry;
    EXPECT_EQ(1000, LocalTimeToWebConfTime(1000)); // no difference stored
    const __int64 ahead = 3600;
    registry.writeRaw("Config", "DiffWebConfDate", REG_QWORD, {reinterpret_cast<const char*>(&ahead), sizeof ahead});
    EXPECT_EQ(4600, LocalTimeToWebConfTime(1000));
    EXPECT_EQ(3599, LocalTimeToWebConfTime(-1));
    const __int64 behind = -5000000000;
    registry.writeRaw("Config", "DiffWebConfDate", REG_QWORD, {reinterpret_cast<const char*>(&behind), sizeof behind});
    EXPECT_EQ(-4999999000, LocalTimeToWebConfTime(1000));
}

TEST_F(TimeText, WebConfTimeOfZeroIsThatOfTheCurrentTime)
{
    const auttest::ClientRegistry registry;
    registry.write("Config", "DiffWebConfDate", DWORD{100});
    const __int64 before = ::_time64(nullptr);
    const __int64 time = LocalTimeToWebConfTime(0);
    EXPECT_LE(before + 100, time);
    EXPECT_GE(::_time64(nullptr) + 100, time);
}

TEST_F(TimeText, WebConfTimeSurvivesADamagedDifference)
{
    const auttest::ClientRegistry registry;
    const __int64 huge = INT64_MAX;
    registry.writeRaw("Config", "DiffWebConfDate", REG_QWORD, {reinterpret_cast<const char*>(&huge), sizeof huge});
    EXPECT_EQ(INT64_MIN, LocalTimeToWebConfTime(1));
}

TEST_F(TimeText, ConvertDateReadsDateAndTimeAsLocal)
{
    zone("BBB-2");
    EXPECT_EQ(1279800300, ConvertDate("2010-07-22 14:05"));
    EXPECT_EQ(localTime(2010, 7, 22, 14, 5), ConvertDate("2010-07-22 14:05"));
}

TEST_F(TimeText, ConvertDateDoesNotReadSeconds)
{
    EXPECT_EQ(ConvertDate("2010-07-22 14:05"), ConvertDate("2010-07-22 14:05:59"));
}

TEST_F(TimeText, ConvertDateTakesMissingFieldsAsZero)
{
    EXPECT_EQ(localTime(2010, 7, 22, 0, 0), ConvertDate("2010-07-22"));
    EXPECT_EQ(localTime(2010, 7, 22, 14, 0), ConvertDate("2010-07-22 14"));
    EXPECT_EQ(localTime(2010, 7, 22, 0, 0), ConvertDate("2010-07-22 "));
    EXPECT_EQ(localTime(2010, 7, 0), ConvertDate("2010-07"));
    EXPECT_EQ(localTime(2010, 0, 0), ConvertDate("2010"));
    EXPECT_EQ(localTime(2000, 0, 0), ConvertDate(""));
    EXPECT_EQ(localTime(2000, 0, 0), ConvertDate("no date"));
}

TEST_F(TimeText, ConvertDateReadsTheTimeBehindTheFirstBlankOnly)
{
    EXPECT_EQ(localTime(2010, 7, 22), ConvertDate("2010-07-22 at 14:05"));
    EXPECT_EQ(localTime(2010, 7, 22, 14, 5), ConvertDate("2010-07-22   14:05")); // blanks before a number are skipped
}

TEST_F(TimeText, ConvertDateTakesDaylightSavingAsNotInEffect)
{
    zone("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(1279803900, ConvertDate("2010-07-22 14:05")); // 14:05 at one hour ahead, not two
}

TEST_F(TimeText, ConvertDateUnderstandsYearsByTheirSize)
{
    EXPECT_EQ(localTime(2010, 7, 22), ConvertDate("10-07-22"));
    EXPECT_EQ(localTime(2069, 1, 1), ConvertDate("69-1-1"));
    EXPECT_EQ(localTime(1999, 1, 1), ConvertDate("99-1-1"));
    EXPECT_EQ(localTime(2001, 1, 1), ConvertDate("2001-1-1"));
    zone("AAA0");
    EXPECT_EQ(0, ConvertDate("70-1-1"));
}

TEST_F(TimeText, ConvertDateDeliberatelyAdds1900ToAYearFrom70To2000)
{
    // 1995 becomes 3895, beyond what the C runtime can convert; 100 becomes 2000.
    EXPECT_EQ(localTime(3895, 1, 1), ConvertDate("1995-1-1"));
    EXPECT_EQ(localTime(3900, 1, 1), ConvertDate("2000-1-1"));
    EXPECT_EQ(localTime(2000, 1, 1), ConvertDate("100-1-1"));
}

TEST_F(TimeText, ConvertDateOfAnImpossibleDateIsWhatTheRuntimeMakesOfIt)
{
    EXPECT_EQ(localTime(2010, 3, 2), ConvertDate("2010-02-30"));
    EXPECT_EQ(localTime(2010, 13, 45), ConvertDate("2010-13-45"));
    EXPECT_EQ(-1, ConvertDate("-50-1-1")); // 1950
    EXPECT_EQ(-1, ConvertDate(nullptr));
}

TEST_F(TimeText, ConvertDateSurvivesNumbersOutsideOf32Bits)
{
    EXPECT_EQ(-1, ConvertDate("99999999999-1-1"));
    EXPECT_EQ(-1, ConvertDate("-99999999999-1-1"));
    EXPECT_EQ(-1, ConvertDate(std::string(10000, '9').c_str()));
    ConvertDate("2010--99999999999--99999999999 -99999999999:-99999999999"); // whatever comes: no crash
    ConvertDate("2010-99999999999-99999999999 99999999999:99999999999");
}
