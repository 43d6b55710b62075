// A process that does one job and may die or meet a failure on the way:
//
//   victim_program JOB FOLDER EXTRA before|after|denied|full|shared|short|never NUMBER
//
// Its exit status is what the job gave, 500 more when it met the failure; or 1000 and the steps it had finished when it
// died.

#include "tests/torture/faults/Injector.h"
#include "tests/torture/faults/Jobs.h"

#include <cstdlib>
#include <string>
#include <utility>

namespace
{
faults::Effect effectOf(const std::string& name)
{
    const std::pair<const char*, faults::Effect> kNames[] = {
        {"before", faults::Effect::DieBefore}, {"after", faults::Effect::DieAfter}, {"denied", faults::Effect::Denied},
        {"full", faults::Effect::Full},        {"shared", faults::Effect::Shared},  {"short", faults::Effect::Short}};
    for (const auto& [known, effect] : kNames)
    {
        if (name == known)
            return effect;
    }
    return faults::Effect::None;
}
} // namespace

int main(int count, char** arguments)
{
    if (count != 6)
        return 99;
    const faults::Job job{arguments[1], arguments[2], arguments[3]};
    const std::string when = arguments[4];
    const int number = std::atoi(arguments[5]);
    faults::install();
    const int outcome = faults::run(job, [&] { faults::arm(effectOf(when), number, job.name == "log"); });
    faults::disarm();
    return outcome + (faults::wasHit() ? 500 : 0);
}
