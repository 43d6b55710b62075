#ifndef AUTOOLS_WEBCONF_TRANSFERWORKER_H
#define AUTOOLS_WEBCONF_TRANSFERWORKER_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace aut
{
/// What the worker thread of one transfer works with: copies, so that it never touches its caller's objects.
struct TransferBlock
{
    struct Settings
    {
        std::int32_t packetSize;
        std::int32_t connectionRetries;
        std::int32_t timeOut;
        bool cacheDisabled;
    };

    std::string url;
    std::optional<Settings> settings; ///< none: the download library's own
    std::unique_ptr<char[]> body;     ///< the received bytes and a terminator; null when nothing was kept
    std::size_t length = 0;
};

/// Fetches the block's URL through the download library. Returns the status: 0, or why no data was kept.
int runTransfer(TransferBlock* block);
} // namespace aut

#endif
