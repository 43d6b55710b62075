#include "foundation/TimeText.h"

#include "foundation/NumberScan.h"
#include "platform/BoundedText.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <sys/timeb.h>

namespace
{
String localTimeText(__int64 time, const char* format)
{
    std::tm local{};
    char text[64] = "";
    if (::_localtime64_s(&local, &time) == 0)
        std::strftime(text, sizeof text, format, &local);
    return String(text);
}

/// The years since 1900 of a date text's year. A year from 70 to 2000 is deliberately taken as 1900 + year, so that a
/// four-digit one between 1970 and 2000 is not understood.
int yearsSince1900(int year)
{
    if (year > 2000)
        return year - 1900;
    return year < 70 ? year + 100 : year;
}

/// "first<separator>second..." as far as it goes; what is missing stays as it is.
template <std::size_t N> void scanFields(const char* text, char separator, int (&fields)[N])
{
    for (std::size_t i = 0; i < N; ++i)
    {
        if (i > 0 && !aut::scanLiteral(text, separator))
            return;
        if (!aut::scanNumber(text, fields[i]))
            return;
    }
}
} // namespace

String TimetToStr(__int64* t) { return t != nullptr ? localTimeText(*t, "%Y-%m-%d %H:%M:%S") : String(); }

String HereAndNow(void)
{
    __int64 now = ::_time64(nullptr);
    return TimetToStr(&now);
}

String HereAndNowAsFileNameStr(void)
{
    __timeb64 now{}; // one reading of the clock, so that seconds and milliseconds belong together
    ::_ftime64(&now);
    const String seconds = localTimeText(now.time, "%Y%m%d%H%M%S");
    char text[64];
    aut::formatText(text, sizeof text, "%s_%u", static_cast<const char*>(seconds), static_cast<unsigned>(now.millitm));
    return String(text);
}

__int64 ConvertDate(const char* s)
{
    if (s == nullptr)
        return -1;
    int date[3] = {0, 0, 0};
    scanFields(s, '-', date);
    int time[2] = {0, 0};
    if (const char* const space = std::strchr(s, ' '))
        scanFields(space + 1, ':', time);

    std::tm local{};
    local.tm_year = yearsSince1900(date[0]);
    local.tm_mon = std::max(date[1], -INT32_MAX) - 1;
    local.tm_mday = date[2];
    local.tm_hour = time[0];
    local.tm_min = time[1];
    local.tm_isdst = 0; // always read as standard time
    return ::_mktime64(&local);
}
