#ifndef AUTOOLS_UPDATECYCLE_RELEASESETUP_H
#define AUTOOLS_UPDATECYCLE_RELEASESETUP_H

#include "ClientConfiguration.h"
#include "Settings.h"

#include <7xAutoUpdateTools.h>

namespace updatecycle
{
/// What became of a release in this cycle.
enum class Outcome
{
    done,
    nothingToDo,
    later, ///< it waits for its date or its hours
    failed ///< the next cycle tries again
};

/// Decides on a release and carries the decision out, and says each step. The record file of a release that waits or
/// failed is kept, that of a processed one goes.
Outcome processRelease(CRelease& release, const Settings& settings, const ClientConfiguration& configuration);
} // namespace updatecycle

#endif
