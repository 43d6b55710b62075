#ifndef AUTOOLS_BENCH_RATIO_H
#define AUTOOLS_BENCH_RATIO_H

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace bench
{
/// Seconds of the fastest of several runs: the least disturbed one.
template <typename Work> double seconds(Work&& work, int runs = 7)
{
    double best = 1e9;
    for (int i = 0; i < runs; ++i)
    {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        best = std::min(best, elapsed.count());
    }
    return best;
}

/// Prints one measured ratio: ours divided by what it is compared with, both in this run on this machine. `limit` is
/// what we promise, 0 for none. Returns whether the promise is kept.
inline bool ratio(const char* what, double ours, const char* against, double theirs, double limit = 0)
{
    const double quotient = ours / theirs;
    const bool kept = limit <= 0 || quotient <= limit;
    std::printf("%-44s %10.3f ms   %-40s %10.3f ms   ratio %6.2f", what, ours * 1e3, against, theirs * 1e3, quotient);
    if (limit > 0)
        std::printf("   at most %.2f: %s", limit, kept ? "kept" : "MISSED");
    std::printf("\n");
    return kept;
}

/// Keeps the optimiser from dropping a computation.
template <typename Value> void keep(const Value& value)
{
    static volatile unsigned char sink;
    sink = static_cast<unsigned char>(sink ^ *reinterpret_cast<const unsigned char*>(&value));
}
} // namespace bench

#endif
