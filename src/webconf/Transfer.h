#ifndef AUTOOLS_WEBCONF_TRANSFER_H
#define AUTOOLS_WEBCONF_TRANSFER_H

#include "foundation/String.h"

#include <windows.h>

class CConfig;

namespace aut
{
/// `GetDataFromStream` with a given patience.
int fetchWithin(DWORD patienceMs, const char* url, int* status, const CConfig* config, String& data);

/// The part of `IsInternetUp` that asks a server, after the system has said that there is no connection: 1 when data
/// came from the server, or from the configured Web Configurator when `server` is null or empty; else 0.
int serverAnswers(const char* server);
} // namespace aut

#endif
