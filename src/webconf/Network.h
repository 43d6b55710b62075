#ifndef AUTOOLS_WEBCONF_NETWORK_H
#define AUTOOLS_WEBCONF_NETWORK_H

#include "foundation/Export.h"
#include "foundation/String.h"

#include <windows.h>

class CConfig;

/// Fetches the body behind a URL through the download library, in a worker thread that is given ten minutes.
///
/// @param status  Receives 0 or the error status; 1003 on time-out, 251 without a transfer object, 102 when the status
///                cannot be read. May be null.
/// @param config  Transfer settings, or null for the download library's own.
/// @param data    Replaced by the body when one came, all bytes of it: behind an embedded NUL they count in its length
///                and are not part of its text. Otherwise untouched.
/// @return        1 when data came, else 0.
/// Blocks the caller; several threads may fetch at once. On time-out the worker is terminated, what it held is lost,
/// and the process should be restarted soon.
AUTOOLS_API int GetDataFromStream(const char* url, int* status, const CConfig* config, String& data);

/// Non-zero when the system reports a connection, or when `server` (null: the Web Configurator) answers.
AUTOOLS_API int IsInternetUp(const char* server);

/// The logged-on user's proxy for HTTP and bypass list (entries separated by ";"), each into a buffer of 260 bytes. One
/// that is longer keeps the whole entries that fit, and the log says so.
AUTOOLS_API bool DetectProxySettings(char* proxy, char* bypass);

/// Puts a host into the trusted zone of Internet Settings below `root` (borrowed). A host without a dot is ignored.
AUTOOLS_API void SetTrustedDomain(HKEY root, const char* host);

/// Turns HTTP 1.1 on for the current user, directly and through proxies.
AUTOOLS_API void SetAUExtraSettings();

#endif
