#ifndef AUTOOLS_PRODUCTLIST_SERVERCLOCK_H
#define AUTOOLS_PRODUCTLIST_SERVERCLOCK_H

#include <cstdint>

namespace aut
{
/// Seconds to add to the workstation's time for the Web Configurator's time. Both times are seconds since 1970 and
/// deliberately cut to 32 bits; while daylight saving is in effect the time zone's bias is added.
std::int32_t serverClockDifference(std::int64_t serverTime, std::int64_t localTime, bool daylightSaving,
                                   long biasMinutes);
} // namespace aut

#endif
