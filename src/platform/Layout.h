#ifndef AUTOOLS_PLATFORM_LAYOUT_H
#define AUTOOLS_PLATFORM_LAYOUT_H

#include "foundation/Export.h"

#include <cstddef>

// Assertions on fixed layouts, written in the class's own source file:
//
//     AUT_LAYOUT_BEGIN
//     template <> struct aut::LayoutOf<String>
//     {
//         static_assert(sizeof(String) == 16);
//         static_assert(offsetof(String, m_length) == 8);
//     };
//     AUT_LAYOUT_END
//
// The class makes `template <typename T> friend struct aut::LayoutOf` its friend. Every compiler for Windows defines
// offsetof for classes with virtual functions too, but some warn about it.
#if defined(__GNUC__)
#define AUT_LAYOUT_BEGIN _Pragma("GCC diagnostic push") _Pragma("GCC diagnostic ignored \"-Winvalid-offsetof\"")
#define AUT_LAYOUT_END _Pragma("GCC diagnostic pop")
#else
#define AUT_LAYOUT_BEGIN
#define AUT_LAYOUT_END
#endif

#endif
