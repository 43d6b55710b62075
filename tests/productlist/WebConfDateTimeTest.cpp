#include "tests/productlist/ProductListFixture.h"

#include <windows.h>

#include <sys/timeb.h>

#include <cstdlib>
#include <ctime>
#include <string>

using auttest::Inside;

namespace
{
/// The present difference between a time and this workstation's clock, by the rule for daylight saving.
__int64 differenceTo(__int64 serverTime)
{
    struct __timeb64 now = {};
    ::_ftime64(&now);
    TIME_ZONE_INFORMATION zone = {};
    ::GetTimeZoneInformation(&zone);
    return serverTime - now.time + (now.dstflag != 0 ? zone.Bias * 60 : 0);
}
/// Seconds that may pass between storing and expecting.
const __int64 kTolerance = 5;
} // namespace

class WebConfDateTime : public auttest::ProductListTest
{
protected:
    /// What is stored after reading this answer's server time; nothing stored counts as 0.
    __int64 read(const std::string& xml)
    {
        phase1xml list("");
        load(list, xml);
        EXPECT_EQ(1, list.ParseXMLDocument(&releases, ""));
        Inside::readServerTime(list);
        return CRegConfig(true).GetWebConfDiffDate();
    }
    static std::string noChange(const std::string& fields)
    {
        return "<wcfgResponse><Data><NoChange>" + fields + "</NoChange></Data></wcfgResponse>";
    }
};

TEST_F(WebConfDateTime, StoresTheDifferenceToTheServersClock)
{
    const __int64 stored = read(answer("<CurrentDateTime>2026-11-20 14:05</CurrentDateTime>"));
    EXPECT_NEAR(static_cast<double>(differenceTo(ConvertDate("2026-11-20 14:05"))), static_cast<double>(stored),
                kTolerance);
    EXPECT_EQ(static_cast<DWORD>(REG_QWORD), registry.readRaw("Config", "DiffWebConfDate")->type);
}

TEST_F(WebConfDateTime, ReadsAnAnswerWithoutNewData)
{
    const __int64 stored = read(noChange("<CurrentDateTime>2026-11-20 14:05</CurrentDateTime>"));
    EXPECT_NEAR(static_cast<double>(differenceTo(ConvertDate("2026-11-20 14:05"))), static_cast<double>(stored),
                kTolerance);
}

TEST_F(WebConfDateTime, PrefersTheTimeBesideNewData)
{
    const __int64 stored = read("<r><Data><NoChange><CurrentDateTime>2027-01-01 00:00</CurrentDateTime></NoChange>"
                                "<NewData><CurrentDateTime>2026-11-20 14:05</CurrentDateTime></NewData></Data></r>");
    EXPECT_NEAR(static_cast<double>(differenceTo(ConvertDate("2026-11-20 14:05"))), static_cast<double>(stored),
                kTolerance);
}

TEST_F(WebConfDateTime, AnEmptyTimeBesideNewDataFallsBack)
{
    const __int64 stored = read("<r><Data><NewData><CurrentDateTime/></NewData><NoChange>"
                                "<CurrentDateTime>2026-11-20 14:05</CurrentDateTime></NoChange></Data></r>");
    EXPECT_NEAR(static_cast<double>(differenceTo(ConvertDate("2026-11-20 14:05"))), static_cast<double>(stored),
                kTolerance);
}

TEST_F(WebConfDateTime, WithoutAServerTimeTheStoredDifferenceStays)
{
    CRegConfig(false).SetWebConfDiffDate(77);
    EXPECT_EQ(77, read(answer("")));
    EXPECT_EQ(77, read(noChange("<CurrentDateTime></CurrentDateTime>")));
}

TEST_F(WebConfDateTime, AServerTimeOf0IsNoTime)
{
    const __int64 zero = 0;
    const std::tm* const local = ::_localtime64(&zero);
    if (local == nullptr || local->tm_year < 70)
        GTEST_SKIP() << "west of Greenwich the start of time has no date text: years below 70 are of this century";
    char text[32];
    std::strftime(text, sizeof text, "%y-%m-%d %H:%M", local);
    ASSERT_EQ(0, ConvertDate(text));
    CRegConfig(false).SetWebConfDiffDate(77);
    EXPECT_EQ(77, read(answer("<CurrentDateTime>" + std::string(text) + "</CurrentDateTime>")));
}

TEST_F(WebConfDateTime, WithoutADocumentNothingIsStored)
{
    phase1xml list("");
    Inside::readServerTime(list);
    EXPECT_FALSE(registry.valueExists("Config", "DiffWebConfDate"));
}
