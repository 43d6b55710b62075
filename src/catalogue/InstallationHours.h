#ifndef AUTOOLS_CATALOGUE_INSTALLATIONHOURS_H
#define AUTOOLS_CATALOGUE_INSTALLATIONHOURS_H

namespace aut
{
inline constexpr int kHoursOfDay = 24;

/// Whether installing is permitted at `hour` (0 to 23) when it is from `start` until before `end`. An end above 24 runs
/// past midnight: 22 to 30 permits 22:00 to 05:59. Start and end at the same hour of the day are no restriction.
constexpr bool isPermittedHour(int hour, int start, int end)
{
    if (start % kHoursOfDay == end % kHoursOfDay)
        return true;
    // The end's own hour counts as the next day's too, and so falls behind the end.
    if (end > kHoursOfDay && hour <= end - kHoursOfDay)
        hour += kHoursOfDay;
    return start <= hour && hour < end;
}
} // namespace aut

#endif
