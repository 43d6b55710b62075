#ifndef AUTOOLS_TORTURE_BATCHES_H
#define AUTOOLS_TORTURE_BATCHES_H

#include "tests/torture/fuzz/Fuzz.h"

namespace torture
{
/// As `fuzz`, for a target where only something whole can be tried (a document, the history of a registry key) that
/// costs more than the records in it: the records are what is counted.
inline void fuzzBatches(const char* target, const char* records, Check check, int recordsEach,
                        const char* of = "a document")
{
    currentInput().target = target;
    if (const char* single = std::getenv("AUTOOLS_FUZZ_INPUT"))
    {
        EXPECT_TRUE(agrees(check, std::atoi(single), true));
        return;
    }
    const int required = rounds(20000, 1000000);
    int differences = 0;
    int documents = 0;
    for (; documents * recordsEach < required && differences < 5; ++documents)
        differences += agrees(check, documents, false) ? 0 : 1;
    const std::string name = std::string("fuzz ") + target;
    count(name + ": differences", differences, 0);
    figure(name + ": inputs (" + records + ", " + std::to_string(recordsEach) + " " + of + ")",
           std::to_string(documents * recordsEach), ">= " + std::to_string(required),
           documents * recordsEach >= required);
}
} // namespace torture

#endif
