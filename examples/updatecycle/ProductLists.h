#ifndef AUTOOLS_UPDATECYCLE_PRODUCTLISTS_H
#define AUTOOLS_UPDATECYCLE_PRODUCTLISTS_H

#include "ClientConfiguration.h"
#include "ExitCodes.h"
#include "ReleaseList.h"
#include "Settings.h"

#include <string>

namespace updatecycle
{
/// Asks for one certificate ID's product list and brings `releases` up to date with the answer: a new list takes the
/// place of the certificate ID's releases, a refused certificate ID loses them, and otherwise they stay as they are.
/// Says what the answer was. kDone, kNoAnswer, kBadAnswer or kUnexpected.
ExitCode updateReleases(ReleaseList& releases, const std::string& certificateId, const Settings& settings,
                        const ClientConfiguration& configuration);
} // namespace updatecycle

#endif
