#ifndef AUTOOLS_FOUNDATION_TIMETEXT_H
#define AUTOOLS_FOUNDATION_TIMETEXT_H

#include "foundation/Export.h"
#include "foundation/String.h"

#include <ctime>

/// Times are seconds since 1970-01-01 00:00 UTC in 64 bits.

/// Local time of `*t` as 2010-07-22 14:05:09; empty for a null pointer or a time that has no local form.
AUTOOLS_API String TimetToStr(__int64* t);
/// `TimetToStr` of the current time.
AUTOOLS_API String HereAndNow(void);
/// Local time as 20100722140509, then "_" and the milliseconds without leading zeros.
AUTOOLS_API String HereAndNowAsFileNameStr(void);
/// `t`, or the current time when `t` is 0, plus the stored difference to the Web Configurator's clock.
AUTOOLS_API __int64 LocalTimeToWebConfTime(__int64 t);
/// The time for a local date text "year-month-day hour:minute"; missing fields are 0, seconds are not read. A year
/// above 2000 is taken as it is, one below 70 as 2000 + year, and deliberately one from 70 to 2000 as 1900 + year.
/// -1 for an impossible date.
AUTOOLS_API __int64 ConvertDate(const char* s);

#endif
