#ifndef AUTOOL_PLAN_DECISION_H
#define AUTOOL_PLAN_DECISION_H

#include "plan/Asked.h"
#include "plan/Installed.h"

#include <string>
#include <utility>
#include <vector>

namespace autool
{
/// When and under which settings the client decides.
struct Conditions
{
    __int64 time = 0;       ///< seconds since 1970, this machine's clock
    __int64 serverTime = 0; ///< the same by the Web Configurator's clock
    int hour = 0;           ///< of the day, local time
    bool anyHour = false;   ///< the setting that lets installations go on at any hour
    int phase = 3;          ///< of the client; lists are rearranged in phase 3, the installation, only
};

enum class Verb
{
    install,
    reinstall,
    remove,
    disable,
    hold,
    nothing
};
const char* verbName(Verb verb);

/// Values that were compared, in the order in which they matter: name and text in the system's code page.
using Values = std::vector<std::pair<std::string, std::string>>;

struct ComponentDecision
{
    AskedComponent asked;
    InstalledComponent installed;
    Verb verb = Verb::nothing;
    bool necessary = false; ///< the status that the library gives the component
    std::string rule;       ///< one sentence: what decided, with the values
    Values values;
};

struct ReleaseDecision
{
    AskedRelease asked; ///< as it was read; the components are those of `components`
    InstalledProduct installed;
    Verb verb = Verb::nothing;
    bool necessary = false; ///< what `CRelease::IsUpdateNecessary` gives
    bool pending = false;   ///< held back by the installation hours
    std::string rule;
    Values values;
    std::vector<std::string> notes; ///< what else the client's programs take into account
    std::vector<ComponentDecision> components;
};

/// The decision that `CRelease::IsUpdateNecessary` makes, and why.
ReleaseDecision decide(AskedRelease release, Installed& installed, const Conditions& conditions);

/// Whether installing is permitted at `hour` (0 to 23) when it is from `start` until before `end`.
bool isPermittedHour(int hour, int start, int end);
/// The first full hour from `time` on, in local time, in which it is permitted; `time` itself when it is so now, 0 when
/// it never is.
__int64 nextPermitted(__int64 time, int start, int end);
/// "22-6 o'clock".
std::string hoursText(int start, int end);
/// "2026-11-22 01:10:00", local time; "" when there is none.
std::string timeText(__int64 time);
} // namespace autool

#endif
