#ifndef AUTOOLS_TORTURE_FIGURE_H
#define AUTOOLS_TORTURE_FIGURE_H

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace torture
{
/// Whether this is the long form (AUTOOLS_TORTURE=long), which takes minutes; the short one is part of the tests.
inline bool isLong()
{
    const char* form = std::getenv("AUTOOLS_TORTURE");
    return form != nullptr && std::strcmp(form, "long") == 0;
}

/// How often to do something in this form.
inline int rounds(int inShortForm, int inLongForm)
{
    return isLong() ? inLongForm : inShortForm;
}

/// Where random inputs start: AUTOOLS_SEED, or a fixed number, so that a run can be repeated.
inline std::uint64_t seed()
{
    const char* given = std::getenv("AUTOOLS_SEED");
    return given != nullptr ? std::strtoull(given, nullptr, 10) : 20260115U;
}

/// Says one figure: what was measured, what was reached, what is required. A figure that is missed fails the test. With
/// AUTOOLS_FIGURES naming a file, the figure is a line of it too, for the table that run.sh prints.
inline void figure(const std::string& what, const std::string& reached, const std::string& required, bool kept)
{
    EXPECT_TRUE(kept) << what << ": " << reached << ", required " << required;
    const char* path = std::getenv("AUTOOLS_FIGURES");
    if (path == nullptr)
        return;
    if (std::FILE* file = std::fopen(path, "a"))
    {
        std::fprintf(file, "%s|%s|%s|%s\n", what.c_str(), reached.c_str(), required.c_str(), kept ? "kept" : "MISSED");
        std::fclose(file);
    }
}

/// A count that must be exactly `required`.
inline void count(const std::string& what, long long reached, long long required)
{
    figure(what, std::to_string(reached), std::to_string(required), reached == required);
}
} // namespace torture

#endif
