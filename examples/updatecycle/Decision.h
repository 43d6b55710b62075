#ifndef AUTOOLS_UPDATECYCLE_DECISION_H
#define AUTOOLS_UPDATECYCLE_DECISION_H

#include <7xAutoUpdateTools.h>

#include <string>

namespace updatecycle
{
/// The library's answer for a release, and the rule that led to it.
struct Decision
{
    enum Answer
    {
        kNow,     ///< act on it in this cycle
        kLater,   ///< not yet: before its date, or outside the installation hours
        kNothing, ///< the workstation is as the release wants it
    };
    Answer answer = kNothing;
    std::string rule;
};

/// Asks the library; afterwards the release's components have their update status and may be others than before.
/// To be called in the client's installation phase.
Decision decide(CRelease& release);

/// The rule behind a component's update status.
std::string ruleOf(const CComponent& component, const char* product);
} // namespace updatecycle

#endif
