#include "log/LogEvent.h"

#include <windows.h>

#include <cstdio>

namespace autool
{
namespace
{
constexpr LogTime kDaySeconds = 86400;

/// Days since 1970-01-01 in the calendar that counts back and on for ever.
long long daysOf(int year, int month, int day)
{
    const long long y = month <= 2 ? year - 1 : year;
    const long long era = (y >= 0 ? y : y - 399) / 400;
    const long long yearOfEra = y - era * 400;
    const long long dayOfYear = (153LL * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - 719468;
}

bool isDate(int month, int day) { return month >= 1 && month <= 12 && day >= 1 && day <= 31; }
bool isClock(int hour, int minute, int second)
{
    return hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second <= 60;
}

struct Numbers
{
    int part[6] = {};
    int count = 0;
};

/// Up to six numbers with these separators between them, and nothing behind them.
bool scan(const std::string& text, const char* separators, Numbers& numbers)
{
    std::size_t at = 0;
    for (numbers.count = 0; numbers.count < 6;)
    {
        int value = 0;
        int digits = 0;
        for (; at < text.size() && text[at] >= '0' && text[at] <= '9' && digits < 4; ++at, ++digits)
            value = value * 10 + (text[at] - '0');
        if (digits == 0)
            return false;
        numbers.part[numbers.count++] = value;
        if (at == text.size())
            return true;
        if (separators[numbers.count - 1] == '\0' || text[at++] != separators[numbers.count - 1])
            return false;
    }
    return false;
}

std::optional<LogTime> timeAgo(const std::string& text, LogTime now)
{
    if (text.size() < 2 || text.size() > 8 || text.find_first_not_of("0123456789") != text.size() - 1)
        return std::nullopt;
    const long long count = std::stoll(text);
    switch (text.back())
    {
    case 's':
        return now - count;
    case 'm':
        return now - count * 60;
    case 'h':
        return now - count * 3600;
    case 'd':
        return now - count * kDaySeconds;
    default:
        return std::nullopt;
    }
}
} // namespace

LogTime logTime(int year, int month, int day, int hour, int minute, int second)
{
    return daysOf(year, month, day) * kDaySeconds + hour * 3600 + minute * 60 + second;
}

std::string shownTime(LogTime time)
{
    const long long days = (time >= 0 ? time : time - kDaySeconds + 1) / kDaySeconds;
    const long long clock = time - days * kDaySeconds;
    const long long shifted = days + 719468;
    const long long era = (shifted >= 0 ? shifted : shifted - 146096) / 146097;
    const long long dayOfEra = shifted - era * 146097;
    const long long yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const long long dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const long long month = (5 * dayOfYear + 2) / 153;
    const long long day = dayOfYear - (153 * month + 2) / 5 + 1;
    const long long realMonth = month < 10 ? month + 3 : month - 9;
    char text[64];
    std::snprintf(text, sizeof text, "%04lld-%02lld-%02lld %02lld:%02lld:%02lld",
                  yearOfEra + era * 400 + (realMonth <= 2 ? 1 : 0), realMonth, day, clock / 3600, clock / 60 % 60,
                  clock % 60);
    return text;
}

std::optional<LogTime> parseLogDate(std::string_view date)
{
    Numbers n;
    if (!scan(std::string(date), "// :.", n) || n.count != 6 || !isDate(n.part[1], n.part[2]) ||
        !isClock(n.part[3], n.part[4], n.part[5]) || n.part[0] > 99)
        return std::nullopt;
    return logTime(2000 + n.part[0], n.part[1], n.part[2], n.part[3], n.part[4], n.part[5]);
}

LogTime localNow()
{
    SYSTEMTIME now{};
    ::GetLocalTime(&now);
    return logTime(now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond);
}

std::optional<LogTime> parseSince(std::string_view given, LogTime now)
{
    std::string text(given);
    if (const auto ago = timeAgo(text, now))
        return ago;
    if (const auto stored = parseLogDate(text))
        return stored;
    Numbers n;
    if (scan(text, ":", n) && n.count == 2 && isClock(n.part[0], n.part[1], 0))
        return now - (now % kDaySeconds + kDaySeconds) % kDaySeconds + n.part[0] * 3600 + n.part[1] * 60;
    if (text.size() > 10 && text[10] == 'T')
        text[10] = ' ';
    const bool isFull = scan(text, "-- ::", n) && n.part[0] >= 1970 && isDate(n.part[1], n.part[2]) &&
                        isClock(n.part[3], n.part[4], n.part[5]);
    if (!isFull || (n.count != 3 && n.count != 5 && n.count != 6))
        return std::nullopt;
    return logTime(n.part[0], n.part[1], n.part[2], n.part[3], n.part[4], n.part[5]);
}
} // namespace autool
