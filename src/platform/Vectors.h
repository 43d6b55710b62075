#ifndef AUTOOLS_PLATFORM_VECTORS_H
#define AUTOOLS_PLATFORM_VECTORS_H

// AUTOOLS_SSE2: whether sixteen bytes can be worked on at once, as every 64-bit x86 processor can. Where not, plain
// loops do the same.
#if defined(__SSE2__) || defined(_M_X64)
#define AUTOOLS_SSE2 1
#include <emmintrin.h>
#else
#define AUTOOLS_SSE2 0
#endif

// AUTOOLS_CHECKED_READS: whether this build checks every access, also one that the processor cannot refuse.
#if defined(__SANITIZE_ADDRESS__)
#define AUTOOLS_CHECKED_READS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define AUTOOLS_CHECKED_READS 1
#endif
#endif
#ifndef AUTOOLS_CHECKED_READS
#define AUTOOLS_CHECKED_READS 0
#endif

#endif
