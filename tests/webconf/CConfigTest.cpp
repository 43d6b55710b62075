#include "tests/webconf/ConfigFixture.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <comdef.h>

#include <string>
#include <thread>
#include <vector>

using auttest::kHotKeys;
using auttest::kNoPacketSize;
using auttest::kNoTypes;
using auttest::kTimers;
using auttest::server;
using auttest::servers;

namespace
{
using CConfigTest = auttest::ConfigFixture;

TEST_F(CConfigTest, StartsWithItsDefaults)
{
    EXPECT_FALSE(m_config.m_downloadRestricted);
    EXPECT_FALSE(m_config.m_installRestricted);
    EXPECT_FALSE(m_config.m_registryChanged);
    EXPECT_EQ(0, m_config.m_servers.GetCount());
    EXPECT_EQ(0, m_config.m_downloadWindow.m_lower);
    EXPECT_EQ(24, m_config.m_downloadWindow.m_upper);
    EXPECT_TRUE(m_config.ForegroundMode);
    EXPECT_TRUE(m_config.CacheDisabled);
    EXPECT_FALSE(m_config.KeepCompressedFiles);
    EXPECT_EQ(5, m_config.ConnectionRetries);
    EXPECT_EQ(0, m_config.TimeOut);
    EXPECT_EQ(0, m_config.MaxiBytes);
    EXPECT_EQ(700, m_config.PacketSize);
    EXPECT_EQ(100, m_config.Wait);
    EXPECT_FALSE(m_config.GetClientInfo);
    EXPECT_EQ(72000, m_config.m_checkDelay.m_lower);
    EXPECT_EQ(108000, m_config.m_checkDelay.m_upper);
    EXPECT_EQ(0, m_config.m_hotKeys.GetCount());
    EXPECT_EQ(0, m_config.m_timers.GetCount());
    EXPECT_EQ(0, m_config.m_installWindow.m_lower);
    EXPECT_EQ(24, m_config.m_installWindow.m_upper);
    EXPECT_FALSE(m_config.SilentInstall);
    EXPECT_FALSE(m_config.CloseIE);
    EXPECT_EQ(0, m_config.m_errorTable.GetCount());
}

TEST_F(CConfigTest, TheFileLiesInTheInstallPath)
{
    EXPECT_STREQ(file().c_str(), m_config.GetConfigDataFile());
    m_registry.removeValue("", "Path");
    EXPECT_STREQ("\\AUKernelData.xml", m_config.GetConfigDataFile());
}

TEST_F(CConfigTest, AFileThatIsThereIsLoadedAndLogged)
{
    EXPECT_TRUE(load(""));
    EXPECT_TRUE(m_log.has("Info", file() + " configuration file loaded"));
}

TEST_F(CConfigTest, AMissingFileIsLoggedTwice)
{
    EXPECT_FALSE(m_config.GetValues());
    EXPECT_EQ((std::vector<auttest::LogEvent>{{"Warning", "Failed to load file: " + file()},
                                              {"Error", "Unable to load configuration data from : " + file()}}),
              m_log.events());
}

TEST_F(CConfigTest, AFileThatIsNotXmlCountsAsMissing)
{
    for (const char* text : {"", "<a>", "plain", "\xFF\xFE"})
    {
        m_folder.writeFile("AUKernelData.xml", text);
        m_log.mark();
        EXPECT_FALSE(m_config.GetValues());
        EXPECT_TRUE(m_log.has("Warning", "Failed to load file: " + file()));
    }
}

TEST_F(CConfigTest, ADocumentThatCannotBeMadeIsLogged)
{
    bool loaded = true;
    std::thread([this, &loaded] { loaded = m_config.GetValues(); }).join(); // without a COM apartment
    EXPECT_FALSE(loaded);
    EXPECT_EQ(
        (std::vector<auttest::LogEvent>{{"Error", "CConfig::LoadDataFile() - Failed to instanciate MSXML::DOMDocument"},
                                        {"Error", "Unable to load configuration data from : " + file()}}),
        m_log.events());
}

TEST_F(CConfigTest, ADocumentWithoutTheConfigurationNodeIsLogged)
{
    m_folder.writeFile("AUKernelData.xml", "<wcfgResponse><AutomaticUpdateData/></wcfgResponse>");
    m_log.mark();
    EXPECT_FALSE(m_config.GetValues());
    EXPECT_TRUE(m_log.has("Error", "Load Configuration: no 'AutomaticUpdate' tag in the XML file : " + file()));
    EXPECT_EQ(700, m_config.PacketSize);
}

TEST_F(CConfigTest, LoadDataFileGivesASynchronousDocument)
{
    m_folder.writeFile("AUKernelData.xml", "<a/>");
    const XmlDocumentPtr document = m_config.LoadDataFile();
    ASSERT_NE(nullptr, document.Get());
    VARIANT_BOOL async = VARIANT_TRUE;
    ASSERT_EQ(S_OK, document->get_async(&async));
    EXPECT_EQ(VARIANT_FALSE, async);
}

TEST_F(CConfigTest, AFailingXmlCallRaises)
{
    EXPECT_THROW(load("<TimeOut xmlns:dt=\"urn:schemas-microsoft-com:datatypes\" dt:dt=\"i4\">x</TimeOut>"),
                 _com_error);
}

TEST_F(CConfigTest, TheOrderOfLoadingShowsInTheLog)
{
    EXPECT_TRUE(load("<MinHours>2</MinHours><MaxHours>1</MaxHours>"));
    EXPECT_EQ((std::vector<auttest::LogEvent>{
                  {"Info", file() + " configuration file loaded"},
                  {"Warning", kNoTypes},
                  {"Warning", kNoPacketSize},
                  {"Warning", kNoPacketSize},
                  {"Warning", "Load Configuration: unexpected data values, MinHours > MaxHours. Use default values"}}),
              m_log.events());
}

TEST_F(CConfigTest, CopiesAreDeep)
{
    ASSERT_TRUE(load(std::string(kTimers) + kHotKeys + servers("<HTTPServer>1</HTTPServer>", server("a", "HTTP")) +
                     "<ErrorSettings><E><wcfgIndex>4</wcfgIndex></E></ErrorSettings><TimeOut>7</TimeOut>"
                     "<InstallStart>5</InstallStart><InstallEnd>6</InstallEnd><Language>German</Language>"));
    CConfig copy(m_config);
    CConfig assigned;
    assigned = copy;
    assigned = *&assigned;
    ASSERT_TRUE(load(""));
    for (CConfig* config : {&copy, &assigned})
    {
        EXPECT_EQ(7, config->TimeOut);
        EXPECT_EQ(5, config->m_installWindow.m_lower);
        EXPECT_TRUE(config->m_installRestricted);
        EXPECT_TRUE(config->m_registryChanged);
        EXPECT_EQ(-1, config->GetTimerByID(2)->GetTimerValue());
        EXPECT_EQ('x', config->GetHotKeyByID(2)->m_key);
        ASSERT_EQ(1, config->m_servers.GetCount());
        POSITION pos = config->m_servers.GetHeadPosition();
        EXPECT_STREQ("a", config->m_servers.GetNext(pos)->GetServerName());
        ASSERT_EQ(1, config->m_errorTable.GetCount());
        pos = config->m_errorTable.GetHeadPosition();
        EXPECT_EQ(4, config->m_errorTable.GetNext(pos)->m_index);
    }
    EXPECT_NE(copy.GetTimerByID(1), assigned.GetTimerByID(1));
}

TEST_F(CConfigTest, AssigningReplacesTheListsHeldBefore)
{
    ASSERT_TRUE(load(std::string(kTimers) + kHotKeys));
    CConfig target(m_config);
    ASSERT_TRUE(load("<TimersList><T><wcfgIndex>9</wcfgIndex><SecondsNumber>5</SecondsNumber></T></TimersList>"));
    target = m_config;
    EXPECT_EQ(1, target.m_timers.GetCount());
    EXPECT_EQ(5, target.GetTimerByID(9)->GetTimerValue());
    EXPECT_FALSE(target.IsHotKeyAvailable());
}

} // namespace
