#ifndef AUTOOLS_TESTS_WEBCONF_CONFIGFIXTURE_H
#define AUTOOLS_TESTS_WEBCONF_CONFIGFIXTURE_H

#include "tests/support/ClientRegistry.h"
#include "tests/support/LogFile.h"
#include "tests/support/TestFolder.h"
#include "tests/webconf/ConfigDocument.h"
#include "webconf/CConfig.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace auttest
{
/// What classes derived from the configuration see.
class OpenConfig : public CConfig
{
public:
    using CConfig::LoadDataFile;
    using CConfig::LoadDownloadSettings;
    using CConfig::LoadErrorSettings;
    using CConfig::LoadGeneralSettings;
    using CConfig::LoadInstallSettings;
    using CConfig::UpdateRegistryKeys;

    std::vector<std::string> serverUrls()
    {
        std::vector<std::string> urls;
        for (POSITION pos = m_servers.GetHeadPosition(); pos != nullptr;)
        {
            CHTTPServer* const server = m_servers.GetNext(pos);
            urls.push_back(std::string(server->GetServiceTypeString()) + " " +
                           static_cast<const char*>(server->GetCompleteURL("")));
        }
        return urls;
    }
};

/// A configuration beside a file, a registry and a log of its own.
class ConfigFixture : public ::testing::Test
{
protected:
    ConfigFixture() { m_registry.write("", "Path", m_folder.path().c_str()); }

    /// Writes the document around these elements and loads it.
    bool load(const std::string& elements)
    {
        m_folder.writeFile("AUKernelData.xml", kernelData(elements));
        m_log.mark();
        return m_config.GetValues();
    }
    std::string file() const { return m_folder / "AUKernelData.xml"; }
    std::optional<DWORD> stored(const char* name) const { return m_registry.readNumber("Config", name); }
    std::size_t timesLogged(const std::string& type, const std::string& text) const
    {
        std::size_t count = 0;
        for (const LogEvent& event : m_log.events())
            count += event == LogEvent{type, text} ? 1 : 0;
        return count;
    }

    ComApartment m_apartment;
    TestFolder m_folder;
    ClientRegistry m_registry;
    LogFile m_log;
    OpenConfig m_config;
};

inline constexpr char kNoPacketSize[] = "Load Configuration: No XML value for PacketSize";
inline constexpr char kNoTypes[] = "Load configuration: No Authorized Download Server Types specified";

} // namespace auttest

#endif
