#include "productlist/SourceLocation.h"

#include "registry/CRegAutoUpdate.h"
#include "registry/CRegInProgress.h"
#include "webconf/CHTTPServer.h"

#include <algorithm>
#include <cstring>

namespace aut
{
namespace
{
const int kFileService = 0;

/// A text without a separator has no element above it and stays as it is.
String withoutLastElement(const String& location)
{
    const int separator = std::max(location.ReverseFind('\\'), location.ReverseFind('/'));
    return separator < 0 ? location : location.Left(separator);
}
} // namespace

String componentLocation(const char* url)
{
    if (::_strnicmp(url, "FILE:", 5) != 0) // most URLs need not be taken apart to see that they are absolute
        return url;
    CHTTPServer server;
    if (!server.ParseServerURL(url) || server.GetServiceType() != kFileService)
        return url;
    const bool besideSource = std::strcmp(server.GetServerName(), ".") == 0;
    const bool aboveSource = std::strcmp(server.GetServerName(), "..") == 0;
    // The registry is asked last: product lists have thousands of components, few of them with such a URL.
    if ((!besideSource && !aboveSource) || !CRegAutoUpdate(true).IsLocalInstall())
        return url;

    String location = withoutLastElement(CRegInProgressLocal(true).GetLocation());
    if (aboveSource)
        location = withoutLastElement(location);
    location += '/';
    location += server.GetPath();

    // Deliberately taken apart and put together like any server URL: a plain path such as C:\Source comes out as
    // HTTP://C/Source, which is what the readers of the record expect.
    CHTTPServer source;
    source.ParseServerURL(location);
    return source.GetCompleteURL("");
}
} // namespace aut
