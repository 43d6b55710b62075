// The few types and functions of Windows that the portable sources name.
#ifndef AUTOOLS_TESTS_NATIVE_WINDOWS_WINDOWS_H
#define AUTOOLS_TESTS_NATIVE_WINDOWS_WINDOWS_H

#include <cstdint>
#include <cstring>

using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;

struct SYSTEMTIME
{
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};

inline int lstrlenA(const char* text) { return text != nullptr ? static_cast<int>(std::strlen(text)) : 0; }

#endif
