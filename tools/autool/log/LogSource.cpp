#include "log/LogSource.h"

#include <7xAutoUpdateTools.h>

#include "common/Text.h"

#include <tuple>

namespace autool
{
namespace
{
LogSource logIn(const std::string& folder)
{
    LogSource source;
    source.folder = folder;
    if (!folder.empty())
        source.parts = logParts(folder, source.fileName);
    return source;
}

std::string clientFolder(bool ofUser)
{
    String folder;
    GetAUDataPath(folder, ofUser ? 1 : 0);
    return fromSystem(static_cast<const char*>(folder));
}

LogSource namedLog(const LogOptions& options)
{
    std::string path = options.file;
    path.erase(path.find_last_not_of("\\/") + 1);
    if (isExistingFolder(path))
        return logIn(path);
    LogSource source;
    std::tie(source.folder, source.fileName) = splitPath(path);
    if (const auto part = logPart(path))
        source.parts = {*part};
    return source;
}
} // namespace

LogSource findLog(const LogOptions& options)
{
    if (!options.file.empty())
        return namedLog(options);
    LogSource ofUser = logIn(clientFolder(true));
    LogSource ofService = logIn(clientFolder(false));
    const bool takesUser = options.ofUser || (ofService.parts.empty() && !ofUser.parts.empty());
    LogSource& chosen = takesUser ? ofUser : ofService;
    const LogSource& other = takesUser ? ofService : ofUser;
    if (!other.parts.empty() && other.folder != chosen.folder)
        chosen.other = other.folder;
    return chosen;
}
} // namespace autool
