#include "tests/webconf/ConfigFixture.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

using auttest::kNoPacketSize;

namespace
{
using ConfigSettings = auttest::ConfigFixture;

TEST_F(ConfigSettings, TransferSettingsAreRead)
{
    EXPECT_TRUE(load("<ConnectionRetries>1</ConnectionRetries><TimeOut>2</TimeOut><MaxiBytes>3</MaxiBytes>"
                     "<PacketSize>4</PacketSize><Wait>0</Wait>"));
    EXPECT_EQ(1, m_config.ConnectionRetries);
    EXPECT_EQ(2, m_config.TimeOut);
    EXPECT_EQ(3, m_config.MaxiBytes);
    EXPECT_EQ(4, m_config.PacketSize);
    EXPECT_EQ(0, m_config.Wait);
    EXPECT_EQ(0u, timesLogged("Warning", kNoPacketSize));
}

TEST_F(ConfigSettings, MissingTransferSettingsBecomeZeroOrTheirFallBack)
{
    EXPECT_TRUE(load(""));
    EXPECT_EQ(0, m_config.ConnectionRetries);
    EXPECT_EQ(0, m_config.TimeOut);
    EXPECT_EQ(0, m_config.MaxiBytes);
    EXPECT_EQ(1200, m_config.PacketSize);
    EXPECT_EQ(400, m_config.Wait);
}

TEST_F(ConfigSettings, APacketSizeOfZeroBecomes1200AndIsLogged)
{
    EXPECT_TRUE(load("<PacketSize>0</PacketSize><Wait>1</Wait>"));
    EXPECT_EQ(1200, m_config.PacketSize);
    EXPECT_EQ(1u, timesLogged("Warning", kNoPacketSize));
}

TEST_F(ConfigSettings, AMissingWaitBecomes400AndIsLoggedUnderTheNamePacketSize)
{
    EXPECT_TRUE(load("<PacketSize>1</PacketSize>"));
    EXPECT_EQ(400, m_config.Wait);
    EXPECT_EQ(1u, timesLogged("Warning", kNoPacketSize));
}

TEST_F(ConfigSettings, GetTransferSettingsLoadsTheFileForANullNode)
{
    m_folder.writeFile("AUKernelData.xml", auttest::kernelData("<TimeOut>9</TimeOut><InstallStart>5</InstallStart>"));
    EXPECT_TRUE(m_config.GetTransferSettings(nullptr));
    EXPECT_EQ(9, m_config.TimeOut);
    EXPECT_EQ(0, m_config.m_installWindow.m_lower);
}

TEST_F(ConfigSettings, GetTransferSettingsFailsWithoutFileOrNode)
{
    EXPECT_FALSE(m_config.GetTransferSettings(nullptr));
    m_folder.writeFile("AUKernelData.xml", "<a/>");
    EXPECT_FALSE(m_config.GetTransferSettings(nullptr));
    EXPECT_EQ(5, m_config.ConnectionRetries);
    EXPECT_EQ(700, m_config.PacketSize);
}

// Windows of hours

struct Window
{
    const char* name;
    const char* start;
    const char* end;
    int lower;
    int upper;
    bool restricted;
};

class CConfigWindow : public ConfigSettings, public ::testing::WithParamInterface<Window>
{
protected:
    static std::string element(const std::string& name, const char* text)
    {
        return *text == '\0' ? "" : "<" + name + ">" + text + "</" + name + ">";
    }
};

TEST_P(CConfigWindow, OfDownloadAndInstallationFollowOneRule)
{
    const Window& window = GetParam();
    EXPECT_TRUE(load(element("DownloadStart", window.start) + element("DownloadEnd", window.end)));
    EXPECT_EQ(window.lower, m_config.m_downloadWindow.m_lower);
    EXPECT_EQ(window.upper, m_config.m_downloadWindow.m_upper);
    EXPECT_EQ(window.restricted, m_config.m_downloadRestricted);
    EXPECT_FALSE(m_config.m_installRestricted);

    EXPECT_TRUE(load(element("InstallStart", window.start) + element("InstallEnd", window.end)));
    EXPECT_EQ(window.lower, m_config.m_installWindow.m_lower);
    EXPECT_EQ(window.upper, m_config.m_installWindow.m_upper);
    EXPECT_EQ(window.restricted, m_config.m_installRestricted);
    EXPECT_FALSE(m_config.m_downloadRestricted);
}

const Window kWindows[] = {
    {"OverMidnight", "22", "6", 22, 30, true},
    {"AllDay", "0", "24", 0, 24, false},
    {"StartEqualToEnd", "8", "8", 8, 32, false},
    {"Missing", "", "", 0, 24, false},
    {"WithinTheDay", "8", "17", 8, 17, true},
    {"OnlyAStart", "8", "", 8, 24, true},
    {"OnlyAnEnd", "", "6", 0, 6, true},
    {"UntilMidnight", "1", "24", 1, 24, true},
    {"AStartOf24", "24", "0", 24, 24, true}, // deliberate: the start is compared as it is
    {"HoursThatDoNotFit", "9999999999", "9999999999", INT_MAX, INT_MAX, true},
};
INSTANTIATE_TEST_SUITE_P(Table, CConfigWindow, ::testing::ValuesIn(kWindows),
                         [](const auto& row) { return std::string(row.param.name); });

// Single elements

TEST_F(ConfigSettings, FlagsAreRead)
{
    EXPECT_TRUE(load("<ForegroundMode>0</ForegroundMode><CacheDisabled>0</CacheDisabled>"
                     "<KeepCompressedFiles>1</KeepCompressedFiles><SilentInstall>1</SilentInstall><CloseIE>2</CloseIE>"
                     "<GetClientInfo>1</GetClientInfo>"));
    EXPECT_FALSE(m_config.ForegroundMode);
    EXPECT_FALSE(m_config.CacheDisabled);
    EXPECT_TRUE(m_config.KeepCompressedFiles);
    EXPECT_TRUE(m_config.SilentInstall);
    EXPECT_TRUE(m_config.CloseIE);
    EXPECT_TRUE(m_config.GetClientInfo);
    EXPECT_TRUE(load("<ForegroundMode>1</ForegroundMode><CacheDisabled>1</CacheDisabled>"));
    EXPECT_TRUE(m_config.ForegroundMode);
    EXPECT_TRUE(m_config.CacheDisabled);
    EXPECT_FALSE(m_config.KeepCompressedFiles);
}

TEST_F(ConfigSettings, AMissingFlagIsFalseWhateverTheConstructorSays)
{
    EXPECT_TRUE(load(""));
    EXPECT_FALSE(m_config.ForegroundMode);
    EXPECT_FALSE(m_config.CacheDisabled);
}

TEST_F(ConfigSettings, TheCheckDelayIsReadInHours)
{
    EXPECT_TRUE(load("<MinHours>2</MinHours><MaxHours>3</MaxHours>"));
    EXPECT_EQ(2 * 3600, m_config.m_checkDelay.m_lower);
    EXPECT_EQ(3 * 3600, m_config.m_checkDelay.m_upper);
}

TEST_F(ConfigSettings, AMinimumAboveTheMaximumGives22To28HoursAndOneWarning)
{
    EXPECT_TRUE(load("<MinHours>4</MinHours><MaxHours>3</MaxHours>"));
    EXPECT_EQ(22 * 3600, m_config.m_checkDelay.m_lower);
    EXPECT_EQ(28 * 3600, m_config.m_checkDelay.m_upper);
    EXPECT_EQ(1u, timesLogged("Warning",
                              "Load Configuration: unexpected data values, MinHours > MaxHours. Use default values"));
}

TEST_F(ConfigSettings, WithoutHoursTheCheckDelayIsZero)
{
    EXPECT_TRUE(load(""));
    EXPECT_EQ(0, m_config.m_checkDelay.m_lower);
    EXPECT_EQ(0, m_config.m_checkDelay.m_upper);
}

TEST_F(ConfigSettings, HoursThatDoNotFitStayAtTheBounds)
{
    EXPECT_TRUE(load("<MinHours>-2000000</MinHours><MaxHours>2000000</MaxHours>"));
    EXPECT_EQ(INT_MIN, m_config.m_checkDelay.m_lower);
    EXPECT_EQ(INT_MAX, m_config.m_checkDelay.m_upper);
}

TEST_F(ConfigSettings, UploadInfoStaysOnlyWhileGetClientInfoStaysTrue)
{
    constexpr char kOn[] = "<GetClientInfo>1</GetClientInfo>";
    m_registry.write("Config", "UploadInfo", 1);
    EXPECT_TRUE(load(kOn)); // changed from false to true
    EXPECT_FALSE(m_registry.valueExists("Config", "UploadInfo"));
    m_registry.write("Config", "UploadInfo", 1);
    EXPECT_TRUE(load(kOn)); // still true
    EXPECT_TRUE(m_registry.valueExists("Config", "UploadInfo"));
    EXPECT_TRUE(load("")); // changed to false
    EXPECT_FALSE(m_registry.valueExists("Config", "UploadInfo"));
    m_registry.write("Config", "UploadInfo", 1);
    EXPECT_TRUE(load("")); // still false
    EXPECT_FALSE(m_registry.valueExists("Config", "UploadInfo"));
}

TEST_F(ConfigSettings, ElementsAreFoundBelowOtherElements)
{
    EXPECT_TRUE(load("<Any><TimeOut>7</TimeOut></Any>"));
    EXPECT_EQ(7, m_config.TimeOut);
}

} // namespace
