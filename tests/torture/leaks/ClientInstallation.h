#ifndef AUTOOLS_TORTURE_LEAKS_CLIENTINSTALLATION_H
#define AUTOOLS_TORTURE_LEAKS_CLIENTINSTALLATION_H

#include "tests/support/ClientRegistry.h"
#include "tests/support/TestFolder.h"
#include "webconfigurator/WebConfigurator.h"

#include <string>

namespace torture
{
/// The folder of this program, where the library lies; without a backslash at the end.
std::string programFolder();

/// A client with its folders and registry, a product list and a certificate ID, and a Web Configurator on the loopback.
class ClientInstallation
{
public:
    ClientInstallation();
    ClientInstallation(const ClientInstallation&) = delete;
    ClientInstallation& operator=(const ClientInstallation&) = delete;

    const auttest::ClientRegistry& registry() const { return m_registry; }
    const auttest::TestFolder& folder() const { return m_folder; }
    webconf_sample::WebConfigurator& server() const { return m_server; }

    static constexpr const char* kCid = "SEVORVJJQy1DSUQx";

private:
    auttest::ClientRegistry m_registry;
    auttest::TestFolder m_folder;
    mutable webconf_sample::WebConfigurator m_server;
};
} // namespace torture

#endif
