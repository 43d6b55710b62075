#include "webconf/WebServer.h"

#include "platform/BoundedText.h"
#include "registry/CRegConfig.h"

namespace
{
constexpr char kHostValue[] = "WebServer";
constexpr char kDirectoryValue[] = "WebVirtualDir";
constexpr char kDefaultDirectory[] = "WebConfV1";
constexpr std::size_t kCallerBufferSize = 256;
} // namespace

bool SetWebServer(const char* host, const char* virtualDirectory)
{
    CRegConfig config(false);
    const bool hostDone = aut::isEmpty(host) || config.SetValue(kHostValue, host);
    const bool directoryDone = aut::isEmpty(virtualDirectory) || config.SetValue(kDirectoryValue, virtualDirectory);
    return hostDone && directoryDone;
}

bool GetWebServer(char* host, char* virtualDirectory)
{
    char value[260]; // the registry classes write up to 260 bytes, more than the caller's buffers may hold
    CRegConfig config(true);
    const bool hostFound = host != nullptr && config.QueryValue(kHostValue, value);
    aut::copyText(host, kCallerBufferSize, hostFound ? value : "");
    const bool directoryFound = config.QueryValue(kDirectoryValue, value);
    aut::copyText(virtualDirectory, kCallerBufferSize, directoryFound ? value : kDefaultDirectory);
    return hostFound;
}
