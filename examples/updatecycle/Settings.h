#ifndef AUTOOLS_UPDATECYCLE_SETTINGS_H
#define AUTOOLS_UPDATECYCLE_SETTINGS_H

#include "Options.h"

#include <optional>
#include <string>

namespace updatecycle
{
/// What the cycle works with, once command line and registry are put together.
struct Settings
{
    std::string server;
    std::string url;           ///< of the one product list to fetch; empty: the Web Configurator's page
    std::string certificateId; ///< the only one to ask for; empty: all of this workstation, unless there is a `url`
    std::string dataFolder;
    std::string downloadFolder;  ///< where files arrive
    std::string componentFolder; ///< what has arrived whole: <component>\<full version>\...
    std::optional<Hours> hours;  ///< instead of the client configuration's
};

/// Stores what the command line gives, and takes the rest from where an earlier run or the installer stored it. Says
/// what is missing and gives nothing when that is not enough.
std::optional<Settings> makeSettings(const Options& options);
} // namespace updatecycle

#endif
