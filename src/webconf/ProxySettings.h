#ifndef AUTOOLS_WEBCONF_PROXYSETTINGS_H
#define AUTOOLS_WEBCONF_PROXYSETTINGS_H

#include <windows.h>

#include <string>

namespace aut
{
/// The proxy for HTTP in a list as WinInet gives it: what follows "http=" up to the next blank, or the whole list when
/// it has no such entry.
std::string httpProxyOf(const std::string& proxyList);

/// The bypass list with ";" between its entries instead of blanks, and without the full proxy list, which some systems
/// put in front of it.
std::string bypassOf(const std::string& bypassList, const std::string& proxyList);
/// Reads the proxy option into a buffer of `*size` bytes, or for a null buffer its size, as WinInet does.
using QueryProxyOption = BOOL (*)(void* buffer, DWORD* size);

/// `DetectProxySettings` with a given source of the option.
bool detectProxySettings(QueryProxyOption query, char* proxy, char* bypass);
} // namespace aut

#endif
