#ifndef AUTOOL_PLAN_PLAN_H
#define AUTOOL_PLAN_PLAN_H

#include "plan/Decision.h"

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace autool
{
/// There is nothing to plan for: no client, no data folder, a product list that is none.
class NoPlan : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

struct PlanOptions
{
    std::optional<__int64> at; ///< seconds since 1970; nothing is now
    std::string products;      ///< a product list; "" is none. In UTF-8, as is the folder.
    std::string data;          ///< a folder with release files; "" is the client's
};

/// A release that should be there and cannot be planned for.
struct PlanProblem
{
    std::string what; ///< file or release, in UTF-8
    std::string why;
};

struct Plan
{
    Conditions conditions;
    int clientPhase = 0;            ///< in which the client is now; the plan is always for its installation phase
    std::string source;             ///< where the releases come from, in UTF-8
    std::string hours;              ///< which installation hours hold, and who says so; "" when there are none
    std::vector<std::string> notes; ///< in UTF-8
    std::vector<ReleaseDecision> releases;
    std::vector<PlanProblem> problems;
};

/// What the client would do. Reads the registry, release files or a product list, and the client's configuration;
/// changes and logs nothing. Throws NoPlan. The thread must be in a COM apartment.
Plan makePlan(const PlanOptions& options, const std::function<void(const std::string&)>& progress);

/// "2026-11-22 01:10[:30]", local time; nothing when it is no such date.
std::optional<__int64> parseTime(const std::string& text);
} // namespace autool

#endif
