#ifndef AUTOOL_LOG_LOGSOURCE_H
#define AUTOOL_LOG_LOGSOURCE_H

#include "log/LogOptions.h"
#include "log/LogParts.h"

#include <string>
#include <vector>

namespace autool
{
/// The log that was asked for.
struct LogSource
{
    std::string folder;
    std::string fileName = kLogFileName;
    std::vector<LogPart> parts; ///< oldest first; perhaps none yet
    std::string other;          ///< the folder of the other log that there is; "" is none
};

/// A file stands for itself, a folder for the log and the archives in it. Without either it is the service's log or,
/// when there is none, that of the user's programs.
LogSource findLog(const LogOptions& options);
} // namespace autool

#endif
