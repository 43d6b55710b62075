#ifndef AUTOOLS_UPDATECYCLE_DESCRIPTION_H
#define AUTOOLS_UPDATECYCLE_DESCRIPTION_H

#include <optional>
#include <string>
#include <vector>

namespace updatecycle
{
/// What a component's description file says: lines "name=expression", of which File may come several times; empty
/// lines and lines that begin with "#" are skipped.
///
///     Type=server
///     Path=%ProductPath%\Bin
///     File=LedgerServer.dll
struct Description
{
    enum Type
    {
        kFiles,    ///< files to be copied
        kServer,   ///< files to be copied and registered as COM servers
        kInstaller ///< the first file is an installer that understands the client's switches, and does the rest
    };
    Type type = kFiles;
    std::string path;               ///< a path expression
    std::vector<std::string> files; ///< plain names
};

/// Every component's description has this name.
extern const char kDescriptionName[];

/// The description in a component's folder; says what is wrong and gives nothing when it cannot be used.
std::optional<Description> readDescription(const std::string& folder);

/// A name that stays in its folder: no separator, drive, wildcard or "..".
bool isPlainName(const std::string& name);
} // namespace updatecycle

#endif
