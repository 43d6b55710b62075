#ifndef AUTOOLS_UPDATECYCLE_RELEASERECORDS_H
#define AUTOOLS_UPDATECYCLE_RELEASERECORDS_H

#include "ReleaseList.h"

#include <string>

namespace updatecycle
{
/// Saves each release as a record file of its own in the data folder, which stays until the release has been processed,
/// and prints what became of it. True when all were saved.
bool saveRecords(const ReleaseList& releases, const std::string& dataFolder);
} // namespace updatecycle

#endif
