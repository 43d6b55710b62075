#ifndef AUTOOL_STATE_COMPARE_H
#define AUTOOL_STATE_COMPARE_H

#include "common/Json.h"
#include "state/Secrets.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace autool
{
/// One place in which two states differ; "" is "was not there".
struct Difference
{
    std::string where; ///< "registry > Config > TestEnv > value"
    std::string then;
    std::string now;
};

/// An earlier state cannot be used.
class NoState : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Reads a state that `autool state --json` printed. Throws NoState.
Json readState(const std::string& path);

/// What differs, in the order of the states. The time at which they were taken does not count, and no credential is
/// told, whatever the earlier state holds.
std::vector<Difference> compareStates(const Json& then, const Json& now, const Secrets& secrets);
} // namespace autool

#endif
