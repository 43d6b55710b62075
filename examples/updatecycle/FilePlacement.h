#ifndef AUTOOLS_UPDATECYCLE_FILEPLACEMENT_H
#define AUTOOLS_UPDATECYCLE_FILEPLACEMENT_H

#include "Description.h"

#include <7xAutoUpdateTools.h>

#include <string>

namespace updatecycle
{
// The files of a component on their way between its level folder and the folder where it works.

/// Copies, registers or runs, as the type asks. False, having said why, at the first failure.
bool placeFiles(const Description& description, const std::string& level, const std::string& folder, WHEN when);
/// The reverse.
bool takeFilesAway(const Description& description, const std::string& folder);
} // namespace updatecycle

#endif
