// Death and failure at every call: what the client does with the disk and the registry is cut short at each of its
// calls to the system, or meets a failure there, and is then done again.

#include "foundation/RT_RESULT.h"
#include "tests/support/LogFile.h"
#include "tests/support/OpenHandles.h"
#include "tests/torture/Figure.h"
#include "tests/torture/faults/Injector.h"
#include "tests/torture/faults/Scenario.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace
{
using faults::Effect;
using faults::Problems;
using faults::Scenario;

std::string outOf(int kept, int all) { return std::to_string(kept) + " of " + std::to_string(all); }

/// Which calls are tried: each one, or each so many-th from the first or the second on, as the seed says.
struct Sampling
{
    explicit Sampling(int shortStep)
    {
        if (shortStep == 1 || torture::isLong())
            return;
        first = 1 + static_cast<int>(torture::seed() % 2);
        step = shortStep;
    }
    int first = 1;
    int step = 1;
};

class Faults : public ::testing::TestWithParam<faults::NamedScenario>
{
};

using DeathAtEveryCall = Faults;
using FailureAtEveryCall = Faults;

bool survives(Scenario& scenario, const std::string& when, int number, DWORD status)
{
    Problems problems;
    scenario.died(static_cast<int>(status - faults::kDied));
    scenario.intact(problems);
    scenario.retry(problems);
    scenario.complete(problems);
    EXPECT_TRUE(problems.none()) << "dead " << when << " call " << number << ":" << problems.text();
    return problems.none();
}

TEST_P(DeathAtEveryCall, LosesNothingButTheOneThingInFlight)
{
    const std::unique_ptr<Scenario> scenario = GetParam().make();
    const Sampling sample(GetParam().shortStep);
    int deaths = 0;
    int survived = 0;
    for (const char* const when : {"before", "after"})
    {
        for (int number = sample.first;; number += sample.step)
        {
            scenario->prepare();
            const DWORD status = faults::runVictim(*scenario, when, number);
            if (status < faults::kDied || status >= faults::kDied + 1000)
            {
                EXPECT_EQ(static_cast<DWORD>(scenario->success()), status) << "undisturbed";
                break;
            }
            ++deaths;
            survived += survives(*scenario, when, number, status) ? 1 : 0;
        }
    }
    torture::figure(std::string(GetParam().name) + ": deaths survived", outOf(survived, deaths), outOf(deaths, deaths),
                    survived == deaths && deaths > 0);
}

/// Logging fails without a word, and in a process of its own: it is started under the name of the service.
TEST(FailureAtEveryCallOfTheLog, LosesOneEventAtMost)
{
    const std::unique_ptr<Scenario> scenario = faults::makeLog();
    const Sampling sample(23);
    int failures = 0;
    int answered = 0;
    for (const char* const effect : {"denied", "full", "shared", "short"})
    {
        int unmet = 0; // the short writes are few among the calls
        for (int number = sample.first; unmet < 30; number += sample.step)
        {
            scenario->prepare();
            const DWORD status = faults::runVictim(*scenario, effect, number);
            if (status == 1)
            {
                unmet += std::string("short") == effect ? sample.step : 30;
                continue;
            }
            unmet = 0;
            Problems problems;
            problems.expect(status == 501, "the process ends with " + std::to_string(status));
            scenario->failed();
            scenario->intact(problems);
            scenario->retry(problems);
            scenario->complete(problems);
            EXPECT_TRUE(problems.none()) << effect << " at call " << number << ":" << problems.text();
            ++failures;
            answered += problems.none() ? 1 : 0;
        }
    }
    torture::figure("logging through a rotation: failures answered", outOf(answered, failures),
                    outOf(failures, failures), answered == failures && failures > 0);
}

/// All but the log, whose failures nobody is told of.
std::vector<faults::NamedScenario> inOwnProcess()
{
    return {faults::scenarios().begin() + 1, faults::scenarios().end()};
}

const char* nameOf(Effect effect)
{
    switch (effect)
    {
    case Effect::Denied:
        return "denied";
    case Effect::Full:
        return "full";
    case Effect::Shared:
        return "shared";
    default:
        return "short";
    }
}

/// Whether the failure can be seen: in what the job gave, in the log or in the result record.
bool isTold(int outcome, int success, const auttest::LogFile& log)
{
    bool told = outcome != success || result->GetStatusCode() != 0;
    for (const auttest::LogEvent& event : log.events())
        told = told || event.type == "Error" || event.type == "Warning";
    return told;
}

/// The handles that are open once the server has closed what it had open for the last request; at most `expected` if it
/// comes to that.
std::size_t settledHandles(std::size_t expected)
{
    std::size_t handles = auttest::openHandles();
    for (int i = 0; i < 50 && handles > expected; ++i)
    {
        ::Sleep(10);
        handles = auttest::openHandles();
    }
    return handles;
}

/// What one undisturbed run leaves open: nothing, or what the system keeps. The most of a few, since a connection of
/// the run before may be closed meanwhile.
std::size_t keptByOneRun(Scenario& scenario)
{
    std::size_t kept = 0;
    for (int i = 0; i < 3; ++i)
    {
        scenario.prepare();
        ::Sleep(50);
        const std::size_t before = auttest::openHandles();
        faults::run(scenario.job(), [] {});
        const std::size_t after = auttest::openHandles();
        kept = std::max(kept, after > before ? after - before : 0);
    }
    return kept;
}

struct Tally
{
    int failures = 0;
    int answered = 0;
};

/// One failure; false when the job ended before it came to that call.
bool fail(Scenario& scenario, Effect effect, int number, std::size_t kept, Tally& tally)
{
    scenario.prepare();
    auttest::LogFile log;
    *result = RT_RESULT();
    const std::size_t handles = auttest::openHandles() + kept;
    const int outcome = faults::run(scenario.job(), [&] { faults::arm(effect, number, false); });
    const int calls = faults::disarm();
    if (calls < number)
        return false;
    if (!faults::wasHit() || scenario.isSwallowed(faults::hitCall()))
        return true; // no call that can take less, or one whose failure does not reach the library

    Problems problems;
    scenario.failed();
    const std::size_t handlesLeft = settledHandles(handles);
    problems.expect(handlesLeft <= handles, std::to_string(handlesLeft - handles) + " handles leaked");
    scenario.intact(problems);
    problems.expect(scenario.isDone() || isTold(outcome, scenario.success(), log), "the failure is not told");
    scenario.retry(problems);
    scenario.complete(problems);
    EXPECT_TRUE(problems.none()) << nameOf(effect) << " at call " << number << ", " << faults::hitCall() << ":"
                                 << problems.text();
    ++tally.failures;
    tally.answered += problems.none() ? 1 : 0;
    return true;
}

TEST_P(FailureAtEveryCall, IsToldAndLeaksNothing)
{
    const std::unique_ptr<Scenario> scenario = GetParam().make();
    const Sampling sample(GetParam().shortStep);
    faults::install();
    scenario->prepare(); // what is opened once and kept
    faults::run(scenario->job(), [] {});
    faults::install();   // modules that were loaded meanwhile
    scenario->prepare(); // what the first failure opens and keeps
    faults::run(scenario->job(), [&] { faults::arm(Effect::Denied, sample.first, false); });
    faults::disarm();
    const std::size_t kept = keptByOneRun(*scenario);
    Tally tally;
    for (const Effect effect : {Effect::Denied, Effect::Full, Effect::Shared, Effect::Short})
    {
        for (int number = sample.first; fail(*scenario, effect, number, kept, tally); number += sample.step)
        {
        }
    }
    torture::figure(std::string(GetParam().name) + ": failures answered", outOf(tally.answered, tally.failures),
                    outOf(tally.failures, tally.failures), tally.answered == tally.failures && tally.failures > 0);
}

std::string caseName(const ::testing::TestParamInfo<faults::NamedScenario>& info)
{
    std::string name;
    bool upper = true;
    for (const char* c = info.param.name; *c != '\0'; ++c)
    {
        const bool isLetter = (*c >= 'a' && *c <= 'z') || (*c >= 'A' && *c <= 'Z');
        if (isLetter)
            name += upper && *c >= 'a' ? static_cast<char>(*c - 'a' + 'A') : *c;
        upper = !isLetter;
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(While, DeathAtEveryCall, ::testing::ValuesIn(faults::scenarios()), caseName);
INSTANTIATE_TEST_SUITE_P(While, FailureAtEveryCall, ::testing::ValuesIn(inOwnProcess()), caseName);
} // namespace
