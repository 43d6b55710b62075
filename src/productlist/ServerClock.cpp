#include "productlist/ServerClock.h"

#include "foundation/TimeText.h"
#include "productlist/phase1xml.h"
#include "registry/CRegConfig.h"

#include <sys/timeb.h>
#include <windows.h>

namespace aut
{
std::int32_t serverClockDifference(std::int64_t serverTime, std::int64_t localTime, bool daylightSaving,
                                   long biasMinutes)
{
    // Unsigned, because this wraps around where a server lies by more than 68 years.
    std::uint32_t seconds = static_cast<std::uint32_t>(serverTime) - static_cast<std::uint32_t>(localTime);
    if (daylightSaving)
        seconds += static_cast<std::uint32_t>(biasMinutes) * 60;
    return static_cast<std::int32_t>(seconds);
}
} // namespace aut

void phase1xml::GetWebConfDateTime()
{
    String text = GetXMLAttribute(m_root, "Data/NewData/CurrentDateTime");
    if (text.IsEmpty())
        text = GetXMLAttribute(m_root, "Data/NoChange/CurrentDateTime");
    if (text.IsEmpty())
        return;

    struct __timeb64 now = {};
    ::_ftime64(&now);
    TIME_ZONE_INFORMATION zone = {};
    ::GetTimeZoneInformation(&zone);
    const __int64 serverTime = ConvertDate(text);
    if (serverTime == 0)
        return;
    CRegConfig(false).SetWebConfDiffDate(aut::serverClockDifference(serverTime, now.time, now.dstflag != 0, zone.Bias));
}
