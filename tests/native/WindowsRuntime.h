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

#endif
