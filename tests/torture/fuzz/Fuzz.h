#ifndef AUTOOLS_TORTURE_FUZZ_H
#define AUTOOLS_TORTURE_FUZZ_H

// One target is one function: it draws an input, asks the library and a model that was written from the rules alone,
// and notes every difference. AUTOOLS_FUZZ_TARGET makes it a test with seeded inputs, or, in the native build with
// AUTOOLS_FUZZ_GUIDED, the entry of the coverage-guided fuzzer.

#include "tests/torture/fuzz/Generator.h"

#ifdef AUTOOLS_FUZZ_GUIDED

#include <cstdlib>

#define AUTOOLS_FUZZ_TARGET(Name, title, check)                                                                        \
    extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)                                  \
    {                                                                                                                  \
        torture::Generator input(data, size);                                                                          \
        torture::Differences differences;                                                                              \
        check(input, differences);                                                                                     \
        if (differences.text().empty())                                                                                \
            return 0;                                                                                                  \
        std::printf("%s: a difference\n%s", title, differences.text().c_str());                                        \
        torture::Generator again(data, size);                                                                          \
        again.tellDraws();                                                                                             \
        check(again, differences);                                                                                     \
        std::abort();                                                                                                  \
    }

#else

#include "tests/torture/Figure.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace torture
{
using Check = void (*)(Generator& input, Differences& differences);

/// The input that is being tried, for the message when the library faults.
struct CurrentInput
{
    const char* target = "";
    int number = 0;
};

inline CurrentInput& currentInput()
{
    static CurrentInput current;
    return current;
}

/// Each input has a seed of its own, so that it can be repeated without those before it.
inline std::uint64_t seedOf(int number)
{
    return (seed() + 1) * 1000003U * 1000003U + static_cast<std::uint64_t>(number);
}

#ifdef _WIN32
inline LONG WINAPI tellFault(EXCEPTION_POINTERS*)
{
    std::fprintf(stderr, "%s: FAULT at AUTOOLS_SEED=%llu AUTOOLS_FUZZ_INPUT=%d\n", currentInput().target,
                 static_cast<unsigned long long>(seed()), currentInput().number);
    std::fflush(stderr);
    return EXCEPTION_CONTINUE_SEARCH;
}
#endif

/// Tries one input and says what differed; `telling` prints the input, too.
inline bool agrees(Check check, int number, bool telling)
{
    Generator input(seedOf(number));
    if (telling)
        input.tellDraws();
    Differences differences;
    currentInput().number = number;
    check(input, differences);
    if (differences.text().empty())
        return true;
    if (!telling)
    {
        std::printf("%s: AUTOOLS_SEED=%llu AUTOOLS_FUZZ_INPUT=%d\n%s", currentInput().target,
                    static_cast<unsigned long long>(seed()), number, differences.text().c_str());
        agrees(check, number, true);
    }
    return false;
}

/// Tries the inputs of one target. AUTOOLS_FUZZ_INPUT=number repeats a single one and prints it.
inline void fuzz(const char* target, Check check, int inShortForm = 20000, int inLongForm = 1000000)
{
    currentInput().target = target;
#ifdef _WIN32
    ::SetUnhandledExceptionFilter(tellFault);
#endif
    if (const char* single = std::getenv("AUTOOLS_FUZZ_INPUT"))
    {
        EXPECT_TRUE(agrees(check, std::atoi(single), true));
        return;
    }
    const int required = rounds(inShortForm, inLongForm);
    int differences = 0;
    int inputs = 0;
    for (; inputs < required && differences < 5; ++inputs)
        differences += agrees(check, inputs, false) ? 0 : 1;
    const std::string name = std::string("fuzz ") + target;
    count(name + ": differences", differences, 0);
    figure(name + ": inputs", std::to_string(inputs), ">= " + std::to_string(required), inputs >= required);
}
} // namespace torture

#define AUTOOLS_FUZZ_TARGET(Name, title, check)                                                                        \
    TEST(Fuzz, Name##AnswersAsTheModelDoes) { torture::fuzz(title, check); }

#endif
#endif
