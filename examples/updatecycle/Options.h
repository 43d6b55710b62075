#ifndef AUTOOLS_UPDATECYCLE_OPTIONS_H
#define AUTOOLS_UPDATECYCLE_OPTIONS_H

#include <optional>
#include <string>

namespace updatecycle
{
extern const char kUsage[];

/// The permitted installation hours as a release takes them: local hours, an end above 24 runs past midnight.
struct Hours
{
    int start = 0;
    int end = 0;
};

/// The command line. What is not given comes from the client's registry settings.
struct Options
{
    std::string server;        ///< host[:port]
    std::string url;           ///< of the product list, instead of the one built from server and certificate
    std::string certificateId; ///< may be empty: the releases are local ones then
    std::string dataFolder;
    std::string holdFile; ///< only keep this file open
    std::optional<Hours> hours;
    bool listOnly = false;
    bool help = false;
};

/// Nothing when it is not understood; `complaint` then says why.
std::optional<Options> parseOptions(int argc, char** argv, std::string& complaint);
} // namespace updatecycle

#endif
