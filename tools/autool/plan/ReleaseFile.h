#ifndef AUTOOL_PLAN_RELEASEFILE_H
#define AUTOOL_PLAN_RELEASEFILE_H

#include "plan/Asked.h"

#include <optional>
#include <string>
#include <vector>

namespace autool
{
/// Reads the record of one release (".lst"), with the rules of `CRelease::Serialize` but without what that logs.
/// @param why  Receives the reason when nothing is returned.
std::optional<AskedRelease> readReleaseFile(const std::string& path, std::string& why);

/// The release files of a folder by name; empty also for a folder that is not there.
std::vector<std::string> releaseFilesOf(const std::string& folder);
} // namespace autool

#endif
