#ifndef AUTOOLS_TESTS_SUPPORT_GUARD_GUARD_H
#define AUTOOLS_TESTS_SUPPORT_GUARD_GUARD_H

#if defined(AUTOOLS_GUARD_BUILDING)
#define AUTOOLS_GUARD_API __declspec(dllexport)
#else
#define AUTOOLS_GUARD_API __declspec(dllimport)
#endif

/// What autools_guard.dll has done in this process. A program that imports the library allocates every block at the end
/// of a page, behind which a no-access page follows; so do the modules it loads, except those of Windows.
struct AutoolsGuardFigures
{
    unsigned long long guarded;   ///< Blocks that ended at a no-access page.
    unsigned long long unguarded; ///< Blocks too large, or beyond the number that can be guarded at a time.
    unsigned long long alive;     ///< Guarded blocks not yet freed.
};

extern "C" AUTOOLS_GUARD_API void autoolsGuardFigures(AutoolsGuardFigures* out);

#endif
