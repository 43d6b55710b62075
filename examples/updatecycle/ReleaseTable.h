#ifndef AUTOOLS_UPDATECYCLE_RELEASETABLE_H
#define AUTOOLS_UPDATECYCLE_RELEASETABLE_H

#include "ReleaseList.h"

namespace updatecycle
{
/// Prints each release with its components, their actions and dates.
void printTable(const ReleaseList& releases);
} // namespace updatecycle

#endif
