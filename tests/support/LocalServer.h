#ifndef AUTOOLS_TESTS_SUPPORT_LOCALSERVER_H
#define AUTOOLS_TESTS_SUPPORT_LOCALSERVER_H

#include "tests/support/ClientRegistry.h"

#include <string>

namespace auttest
{
/// The stand-in for the client's local server (autoupdatesrv.exe), registered while this lives and answering as its
/// settings say: `server.settings().write("", "HWID", 4711)`; see tests/support/autoupdatesrv/Settings.h.
class LocalServer
{
public:
    LocalServer();
    LocalServer(const LocalServer&) = delete;
    LocalServer& operator=(const LocalServer&) = delete;
    ~LocalServer();

    const Registry& settings() const { return m_settings; }
    /// How often "HWID" or "CIDs" was asked for.
    unsigned long calls(const char* what) const;
    /// Tells the server to end, if it runs, and waits for that.
    void end() const;
    void unregister() const;
    /// As if another program had registered itself for the class.
    void registerAs(const std::string& commandLine) const;

private:
    Registry m_settings;
};
} // namespace auttest

#endif
