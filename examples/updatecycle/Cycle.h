#ifndef AUTOOLS_UPDATECYCLE_CYCLE_H
#define AUTOOLS_UPDATECYCLE_CYCLE_H

#include "ExitCodes.h"
#include "Settings.h"

namespace updatecycle
{
/// One update cycle: who this workstation is, the product list of each of its certificate IDs, a record of each
/// release, and, unless only the lists are wanted, each release decided on and carried out. COM must be initialised on
/// this thread.
ExitCode runCycle(const Settings& settings, bool listOnly);
} // namespace updatecycle

#endif
