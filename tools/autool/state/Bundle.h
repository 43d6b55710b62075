#ifndef AUTOOL_STATE_BUNDLE_H
#define AUTOOL_STATE_BUNDLE_H

#include "state/State.h"

#include <stdexcept>
#include <string>
#include <vector>

namespace autool
{
/// The folder cannot be used: it is there and not empty, or cannot be made.
class NoBundle : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

struct BundleReport
{
    std::vector<std::string> files;  ///< what was written, relative to the folder
    std::vector<std::string> errors; ///< what could not be, and why
};

/// Writes what support needs into a new or empty folder: state.json, registry.reg, the logs with their archives,
/// release files and product lists, and contents.txt, which lists it all. Credentials are hidden in every file. One
/// file that cannot be read stops nothing. Throws NoBundle.
BundleReport writeBundle(const std::string& folder, const MachineState& state, const Step& step);
} // namespace autool

#endif
