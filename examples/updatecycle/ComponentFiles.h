#ifndef AUTOOLS_UPDATECYCLE_COMPONENTFILES_H
#define AUTOOLS_UPDATECYCLE_COMPONENTFILES_H

#include "ClientConfiguration.h"
#include "Settings.h"

#include <7xAutoUpdateTools.h>

#include <string>

namespace updatecycle
{
/// Where the files of one level (full version) of a component are kept.
std::string levelFolder(const Settings& settings, const std::string& component, const std::string& fullVersion);

/// Brings a component's files from where its source location says into its level folder, which appears there whole or
/// not at all. The location is the URL of the description file; the files it names lie beside it. A location without a
/// scheme names a level that is there already, and so does any location of a release that must not be downloaded.
/// False, having said why, when they cannot be brought.
bool bringFiles(const CComponent& component, bool mayDownload, const Settings& settings,
                const ClientConfiguration& configuration);
} // namespace updatecycle

#endif
