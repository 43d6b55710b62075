// What the portable sources and their tests use of Windows' compilers and C runtime. Included before everything else.
#ifndef AUTOOLS_TESTS_NATIVE_WINDOWSRUNTIME_H
#define AUTOOLS_TESTS_NATIVE_WINDOWSRUNTIME_H

#include <ctime>
#include <malloc.h>
#include <strings.h>

#define __declspec(what)
#define __int64 long long

inline int _stricmp(const char* left, const char* right) { return strcasecmp(left, right); }
inline int _strnicmp(const char* left, const char* right, std::size_t most) { return strncasecmp(left, right, most); }
inline std::size_t _msize(void* block) { return malloc_usable_size(block); }
inline __int64 _time64(__int64* out)
{
    const __int64 now = std::time(nullptr);
    if (out != nullptr)
        *out = now;
    return now;
}

// Local time is UTC here. The C runtime knows the years from 1970 to 3000.
constexpr __int64 kLastRuntimeSecond = 32535215999;
inline __int64 _mktime64(std::tm* local)
{
    const __int64 seconds = timegm(local);
    return seconds >= 0 && seconds <= kLastRuntimeSecond ? seconds : -1;
}
inline int _localtime64_s(std::tm* local, const __int64* time)
{
    const std::time_t seconds = *time;
    return seconds >= 0 && seconds <= kLastRuntimeSecond && gmtime_r(&seconds, local) != nullptr ? 0 : 22;
}
struct __timeb64
{
    __int64 time;
    unsigned short millitm;
};
inline void _ftime64(__timeb64* now)
{
    now->time = _time64(nullptr);
    now->millitm = 0;
}

#endif
