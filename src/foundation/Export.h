#ifndef AUTOOLS_FOUNDATION_EXPORT_H
#define AUTOOLS_FOUNDATION_EXPORT_H

/// Marks what crosses the library's boundary. A program that uses the library sees imports.
#if defined(AUTOOLS_BUILDING_LIBRARY)
#define AUTOOLS_API __declspec(dllexport)
#else
#define AUTOOLS_API __declspec(dllimport)
#endif

/// Lets the compiler check printf-like arguments; positions count from 1, `this` included.
#if defined(__MINGW_PRINTF_FORMAT)
#define AUTOOLS_PRINTF(formatAt, firstArgumentAt)                                                                      \
    __attribute__((format(__MINGW_PRINTF_FORMAT, formatAt, firstArgumentAt)))
#elif defined(__GNUC__)
#define AUTOOLS_PRINTF(formatAt, firstArgumentAt) __attribute__((format(printf, formatAt, firstArgumentAt)))
#else
#define AUTOOLS_PRINTF(formatAt, firstArgumentAt)
#endif

namespace aut
{
/// Gives a class's own source file access to its private members, for the assertions on its fixed layout.
template <typename T> struct LayoutOf;
} // namespace aut

#endif
