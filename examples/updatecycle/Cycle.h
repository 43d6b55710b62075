#ifndef AUTOOLS_UPDATECYCLE_CYCLE_H
#define AUTOOLS_UPDATECYCLE_CYCLE_H

#include "ExitCodes.h"
#include "Settings.h"

namespace updatecycle
{
/// One update cycle: the product list, a record of each release, and, unless only the list is wanted, each release
/// decided on and carried out. COM must be initialised on this thread.
ExitCode runCycle(const Settings& settings, bool listOnly);
} // namespace updatecycle

#endif
