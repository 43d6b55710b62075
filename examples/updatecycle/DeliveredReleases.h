#ifndef AUTOOLS_UPDATECYCLE_DELIVEREDRELEASES_H
#define AUTOOLS_UPDATECYCLE_DELIVEREDRELEASES_H

#include "ReleaseList.h"

#include <string>
#include <vector>

namespace updatecycle
{
// The releases that were delivered and are not processed yet: each has a record file in the data folder, and the
// registry notes for which certificate IDs it came. They are what a cycle goes on with when the server has nothing new
// or is away. The saved product lists would not do: they also hold what has been processed since, and what the server
// has withdrawn since.

/// Adds what earlier cycles left, for whichever certificate ID it came.
void loadDelivered(ReleaseList& releases, const std::string& dataFolder);

/// Makes the records of these certificate IDs what the list is now, and prints it. False when not all releases could be
/// saved.
bool saveDelivered(const ReleaseList& releases, const std::vector<std::string>& certificateIds,
                   const std::string& dataFolder);
} // namespace updatecycle

#endif
