#ifndef AUTOOLS_TORTURE_MODEL_H
#define AUTOOLS_TORTURE_MODEL_H

#include <algorithm>
#include <climits>
#include <string>
#include <vector>

// What several models need, in the slow and plain way of a model: nothing here comes from the library.

namespace torture::model
{
inline std::string lower(std::string text)
{
    for (char& c : text)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return text;
}

/// All fields, empty ones too; a text without separator is one field.
inline std::vector<std::string> split(const std::string& text, char separator)
{
    std::vector<std::string> fields(1);
    for (const char c : text)
    {
        if (c == separator)
            fields.emplace_back();
        else
            fields.back() += c;
    }
    return fields;
}

inline std::string join(const std::vector<std::string>& fields, const std::string& separator)
{
    std::string text;
    for (std::size_t i = 0; i < fields.size(); ++i)
        text += (i > 0 ? separator : std::string()) + fields[i];
    return text;
}

inline std::string replaced(std::string text, char from, char to)
{
    std::replace(text.begin(), text.end(), from, to);
    return text;
}

/// A decimal number at `at` as the C runtime reads one: white space, one sign, digits. One that does not fit is the
/// nearest that does. False, and nothing moves, when no number stands there.
inline bool number(const std::string& text, std::size_t& at, int& value)
{
    const std::size_t begin = text.find_first_not_of(" \t\n\v\f\r", at);
    if (begin == std::string::npos)
        return false;
    const bool sign = text[begin] == '-' || text[begin] == '+';
    const std::size_t first = begin + (sign ? 1 : 0);
    const std::size_t end = std::min(text.find_first_not_of("0123456789", first), text.size());
    if (first >= end)
        return false;
    std::string digits = text.substr(first, end - first);
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size() - 1));
    const bool huge = digits.size() > 10;
    const long long magnitude = huge ? 99999999999 : std::stoll(digits);
    const long long exact = text[begin] == '-' ? -magnitude : magnitude;
    value = exact > INT_MAX ? INT_MAX : exact < INT_MIN ? INT_MIN : static_cast<int>(exact);
    at = end;
    return true;
}

/// What atoi says.
inline int decimal(const std::string& text)
{
    std::size_t at = 0;
    int value = 0;
    number(text, at, value);
    return value;
}

/// Days from 1970-01-01 to a day of the Gregorian calendar, counted year by year from the nearest 400-year round.
inline long long daysTo(long long year, int month, long long day)
{
    static const int kBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
    const auto leap = [](long long y) { return y % 4 == 0 && (y % 100 != 0 || y % 400 == 0); };
    const long long rounds = year >= 1970 ? (year - 1970) / 400 : -((1970 - year) / 400);
    long long at = 1970 + rounds * 400;
    long long days = rounds * 146097;
    for (; at < year; ++at)
        days += leap(at) ? 366 : 365;
    for (; at > year; --at)
        days -= leap(at - 1) ? 366 : 365;
    return days + kBefore[month - 1] + (month > 2 && leap(year) ? 1 : 0) + day - 1;
}
} // namespace torture::model

#endif
