#ifndef AUTOOLS_FILETRANSFER_WININET_H
#define AUTOOLS_FILETRANSFER_WININET_H

#include "filetransfer/Source.h"
#include "platform/UniqueResource.h"

#include <windows.h>
#include <wininet.h>

namespace filetransfer
{
struct InternetHandleTraits
{
    using Type = HINTERNET;
    static Type none() noexcept { return nullptr; }
    static void close(Type handle) noexcept { ::InternetCloseHandle(handle); }
};
using UniqueInternet = aut::UniqueResource<InternetHandleTraits>;

/// The outcome behind a WinInet call that has just failed.
Outcome lastInternetError() noexcept;
Outcome internetError(DWORD code) noexcept;

/// WinInet as the request wants it: proxy or none, with the time-outs set.
Outcome openInternet(const Request& request, UniqueInternet& internet);
/// WinInet reads the receive time-out from the innermost handle.
void setTimeOuts(HINTERNET handle, const ConnectionParams& params) noexcept;
/// Connects to the URL's server; `service` is INTERNET_SERVICE_HTTP or INTERNET_SERVICE_FTP.
Outcome openSession(HINTERNET internet, const Url& url, DWORD service, UniqueInternet& session);

/// One packet of a body. `got` 0 with a good outcome is the end.
Outcome readInternet(HINTERNET handle, char* into, std::uint32_t bytes, std::uint32_t& got) noexcept;
} // namespace filetransfer

#endif
