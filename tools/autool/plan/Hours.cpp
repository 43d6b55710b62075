#include "plan/Decision.h"

#include <7xAutoUpdateTools.h>

#include <ctime>

namespace autool
{
namespace
{
constexpr int kHoursOfDay = 24;
constexpr __int64 kSecondsOfHour = 3600;
} // namespace

bool isPermittedHour(int hour, int start, int end)
{
    if (start % kHoursOfDay == end % kHoursOfDay)
        return true;
    // The end's own hour counts as the next day's too, and so falls behind the end.
    if (end > kHoursOfDay && hour <= end - kHoursOfDay)
        hour += kHoursOfDay;
    return start <= hour && hour < end;
}

__int64 nextPermitted(__int64 time, int start, int end)
{
    // Hour by hour, because clocks are changed: an hour of the day may come twice or not at all.
    constexpr int kTwoDays = 2 * kHoursOfDay;
    for (int i = 0; i <= kTwoDays; ++i)
    {
        std::tm local{};
        if (::_localtime64_s(&local, &time) != 0)
            return 0;
        if (isPermittedHour(local.tm_hour, start, end))
            return time;
        time += kSecondsOfHour - local.tm_min * 60 - local.tm_sec;
    }
    return 0;
}

std::string hoursText(int start, int end)
{
    return std::to_string(start % kHoursOfDay) + "-" + std::to_string(end % kHoursOfDay) + " o'clock";
}

std::string timeText(__int64 time) { return static_cast<const char*>(TimetToStr(&time)); }
} // namespace autool
