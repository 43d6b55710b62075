#ifndef AUTOOLS_BENCH_FIGURES_H
#define AUTOOLS_BENCH_FIGURES_H

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace bench
{
/// Seconds that one run takes.
template <typename Work> double secondsOf(Work&& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    return elapsed.count();
}

/// The best of five, unless AUTOOLS_BENCH_ROUNDS asks for more: for a machine that has other things to do.
inline int rounds()
{
    const char* const wanted = std::getenv("AUTOOLS_BENCH_ROUNDS");
    return std::max(5, wanted != nullptr ? std::atoi(wanted) : 5);
}

/// Seconds of the fastest run of two things.
struct Times
{
    double ours = 1e9;
    double theirs = 1e9;
    double ratio() const { return ours / theirs; }
};

/// Adds one round; the work returns the seconds that count, so that it can prepare and clear up outside of them.
template <typename Ours, typename Theirs> void addRound(Times& best, Ours&& ours, Theirs&& theirs)
{
    best.ours = std::min(best.ours, ours());
    best.theirs = std::min(best.theirs, theirs());
}

/// The best of several rounds, both in turns, so that whatever else the machine does meets both. `repeat` is for work
/// of microseconds: so many runs are timed as one.
template <typename Ours, typename Theirs> Times inTurns(Ours&& ours, Theirs&& theirs, int repeat = 1)
{
    const auto repeated = [repeat](auto& work)
    {
        return secondsOf(
                   [&]
                   {
                       for (int i = 0; i < repeat; ++i)
                           work();
                   }) /
               repeat;
    };
    Times best;
    for (int round = 0; round < rounds(); ++round)
        addRound(
            best, [&] { return repeated(ours); }, [&] { return repeated(theirs); });
    return best;
}

template <typename... Values> std::string text(const char* format, Values... values)
{
    char buffer[256];
    std::snprintf(buffer, sizeof buffer, format, values...);
    return buffer;
}

inline bool& allKept()
{
    static bool kept = true;
    return kept;
}

/// Says one figure: what was measured, what was reached, what is required. With AUTOOLS_FIGURES naming a file, it is a
/// line of that too, for the table that run.sh prints.
inline void figure(const std::string& what, const std::string& reached, const std::string& required, bool kept)
{
    allKept() = allKept() && kept;
    const char* const verdict = kept ? "kept" : "MISSED";
    std::printf("%s|%s|%s|%s\n", what.c_str(), reached.c_str(), required.c_str(), verdict);
    std::fflush(stdout);
    const char* const path = std::getenv("AUTOOLS_FIGURES");
    if (std::FILE* const file = path != nullptr ? std::fopen(path, "a") : nullptr)
    {
        std::fprintf(file, "%s|%s|%s|%s\n", what.c_str(), reached.c_str(), required.c_str(), verdict);
        std::fclose(file);
    }
}

/// Ours takes at most `limit` times as long as what it is compared with.
inline void atMost(const std::string& what, const Times& times, double limit)
{
    figure(what, text("%.2f x (%.3f ms, %.3f ms)", times.ratio(), times.ours * 1e3, times.theirs * 1e3),
           text("at most %.2f x", limit), times.ratio() <= limit);
}

/// Ours is at least `factor` times as fast.
inline void timesFaster(const std::string& what, const Times& times, double factor)
{
    const double reached = times.theirs / times.ours;
    figure(what, text("%.1f x as fast (%.3f ms, %.3f ms)", reached, times.ours * 1e3, times.theirs * 1e3),
           text("at least %.0f x", factor), reached >= factor);
}

/// A measurement that cannot be made is no figure that is kept.
inline void require(bool done, const char* what)
{
    if (done)
        return;
    std::printf("%s failed\n", what);
    std::exit(1);
}

/// What main returns.
inline int status() { return allKept() ? 0 : 1; }

/// Keeps the optimiser from dropping a computation.
template <typename Value> void keep(const Value& value)
{
    static volatile unsigned char sink;
    sink = static_cast<unsigned char>(sink ^ *reinterpret_cast<const unsigned char*>(&value));
}
} // namespace bench

#endif
