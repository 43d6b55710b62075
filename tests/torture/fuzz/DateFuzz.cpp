#include "tests/torture/fuzz/Fuzz.h"
#include "tests/torture/fuzz/Model.h"

#include "foundation/TimeText.h"

#ifndef AUTOOLS_FUZZ_GUIDED
#include "tests/support/ClientRegistry.h"
#endif

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

namespace
{
using torture::Differences;
using torture::Generator;
namespace model = torture::model;

const torture::Words kWords = {"2010-07-22 14:05",
                               "10-07-22",
                               "99-1-1",
                               "1999-12-31",
                               "2000-01-01",
                               "2001-1-1",
                               "69-12-31",
                               "70-1-1",
                               "1970-01-01 00:00",
                               "2038-01-19 03:14",
                               "2012-02-29",
                               "2013-02-30",
                               "2010-13-01",
                               "2010-0-0",
                               "2010-07-22 25:61",
                               "2010-07-22T14:05",
                               "-",
                               ":",
                               " ",
                               "  ",
                               "3000-12-31 23:59",
                               "2010",
                               "2010-07",
                               "2010-07-22 ",
                               "-1",
                               "+5",
                               "2147483647",
                               "-2147483648",
                               "99999999999",
                               "2010- 7- 22 14: 5"};

constexpr long long kLastSecond = 32535215999; // of the year 3000, the last that the C runtime knows

/// How far local time is ahead, as the C runtime says it of a winter's day. The tests run in a zone without summer
/// time.
long long zoneSeconds()
{
    static const long long kAhead = []
    {
        std::tm winter{};
        winter.tm_year = 110;
        winter.tm_mday = 1;
        return model::daysTo(2010, 1, 1) * 86400 - static_cast<long long>(::_mktime64(&winter));
    }();
    return kAhead;
}

/// Up to `count` numbers with a separator between them; those that are missing are 0.
std::vector<long long> fields(const std::string& text, std::size_t at, char separator, std::size_t count)
{
    std::vector<long long> read;
    for (int value = 0; read.size() < count && model::number(text, at, value); ++at)
    {
        read.push_back(value);
        if (at >= text.size() || text[at] != separator)
            break;
    }
    read.resize(count);
    return read;
}

void checkConvertDate(Generator& input, Differences& differences)
{
    const std::string text = input.text(kWords, 300);
    const std::vector<long long> date = fields(text, 0, '-', 3);
    const std::size_t blank = text.find(' ');
    const std::vector<long long> time =
        blank != std::string::npos ? fields(text, blank + 1, ':', 2) : std::vector<long long>(2);

    long long year = date[0] > 2000 ? date[0] : date[0] < 70 ? date[0] + 2000 : date[0] + 1900;
    long long month = date[1] - 1; // a month too many or too few goes into the years
    year += month >= 0 ? month / 12 : -((11 - month) / 12);
    month = (month % 12 + 12) % 12;
    const __int64 got = ConvertDate(text.c_str());
    // The runtime's answers differ where its own arithmetic overflows or its calendar ends: there only no fault counts.
    constexpr long long kMany = 100000;
    const bool plain = year >= 1970 && year <= 3000 && std::abs(date[2]) < kMany && std::abs(time[0]) < kMany &&
                       std::abs(time[1]) < kMany;
    if (!plain)
        return;
    const long long expected = model::daysTo(year, static_cast<int>(month) + 1, 1) * 86400 + (date[2] - 1) * 86400 +
                               time[0] * 3600 + time[1] * 60 - zoneSeconds();
    if (expected <= kLastSecond)
        differences.expect("ConvertDate", expected >= 0 ? expected : -1LL, static_cast<long long>(got));
}

/// The day on which so many days have passed, found by counting months.
std::string dateText(long long seconds)
{
    const long long days = seconds / 86400;
    long long year = 1970 + days / 366;
    while (model::daysTo(year + 1, 1, 1) <= days)
        ++year;
    int month = 12;
    while (model::daysTo(year, month, 1) > days)
        --month;
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", static_cast<int>(year), month,
                  static_cast<int>(days - model::daysTo(year, month, 1)) + 1, static_cast<int>(seconds / 3600 % 24),
                  static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60));
    return text;
}

__int64 anyTime(Generator& input)
{
    static const long long kEdges[] = {0,          1,          59,         86399,     86400,     2147483647,
                                       2147483648, 4294967295, 4294967296, 951782400, 951868799, kLastSecond - 86400,
                                       4102444800, 1279807509};
    if (input.oneIn(3))
        return input.oneOf(kEdges) + input.number(0, 2);
    return static_cast<long long>(input.below(4294967295U)) * (1 + input.number(0, 6));
}

void checkTimeText(Generator& input, Differences& differences)
{
    __int64 time = anyTime(input);
    const String text = TimetToStr(&time);
    const bool known = time + zoneSeconds() >= 0 && time <= kLastSecond - 86400;
    if (!known)
        return;
    differences.expect("TimetToStr", dateText(time + zoneSeconds()), std::string(static_cast<const char*>(text)));
    // What was written is read again, but for the seconds.
    const bool readable = std::atoi(text) > 2000;
    if (readable)
        differences.expect("read again", static_cast<long long>(time - time % 60),
                           static_cast<long long>(ConvertDate(text)));
}

#ifndef AUTOOLS_FUZZ_GUIDED // the difference of the clocks stands in the registry

void checkServerTime(Generator& input, Differences& differences)
{
    static const auttest::ClientRegistry kRegistry;
    const int ahead = input.oneIn(8) ? input.index(86400) : input.number(-86400, 86400);
    kRegistry.writeRaw("Config", "DiffWebConfDate", REG_DWORD, // four bytes count with their sign
                       std::string(reinterpret_cast<const char*>(&ahead), sizeof ahead));
    const __int64 time = anyTime(input) + 1;
    differences.expect("LocalTimeToWebConfTime", static_cast<long long>(time) + ahead,
                       static_cast<long long>(LocalTimeToWebConfTime(time)));
}

#endif

void checkDate(Generator& input, Differences& differences)
{
    const int kind = input.number(0, 63);
#ifndef AUTOOLS_FUZZ_GUIDED
    if (kind == 0)
        return checkServerTime(input, differences);
#endif
    if (kind < 16)
        checkTimeText(input, differences);
    else
        checkConvertDate(input, differences);
}
} // namespace

AUTOOLS_FUZZ_TARGET(Dates, "dates", checkDate)
