#include "registry/CRegConfig.h"

#include "tests/registry/RegistryTests.h"

using auttest::ClientRegistry;

namespace
{
/// Shows what only derived classes may call.
struct Config : CRegConfig
{
    using CRegConfig::CRegConfig;
    using CRegConfig::GetTimeValue;
    using CRegConfig::SetTimeValue;
};

class CRegConfigTest : public ::testing::Test
{
protected:
    ClientRegistry m_registry;
    Config m_key{false};
};

std::string bytesOf(__int64 time) { return {reinterpret_cast<const char*>(&time), sizeof time}; }

constexpr __int64 kTime = 0x0123456789ABCDEF;
} // namespace

TEST(CRegConfig, OpensTheConfigurationKey)
{
    const ClientRegistry registry;
    auttest::expectKeyAt(registry, "Config", [](bool readOnly) { CRegConfig{readOnly}; });
}

TEST_F(CRegConfigTest, ReadsAndWritesItsFlags)
{
    using Key = CRegConfig;
    auttest::expectFlagAccessors<Key>(m_key, m_registry, "Config",
                                      {{"SilentMode", &Key::IsSilentMode, &Key::SilentMode},
                                       {"NoIcon", &Key::NoIcon, &Key::NoIcon},
                                       {"AdminMode", &Key::IsAdminMode, &Key::AdminMode}});
}

TEST_F(CRegConfigTest, ReadsAndWritesItsTexts)
{
    using Key = CRegConfig;
    auttest::expectTextAccessors<Key>(
        m_key, m_registry, "Config",
        {{"TestCID", &Key::GetTestCID, &Key::SetTestCID},
         {"TestHWID", &Key::GetTestHWID, &Key::SetTestHWID},
         {"IntermediateServersPath", &Key::GetIntermediateServersPath, &Key::SetIntermediateServersPath},
         {"DeploymentCID", &Key::GetDeploymentCID, &Key::SetDeploymentCID}});
}

TEST_F(CRegConfigTest, RunsAsAServiceUnlessToldOtherwise)
{
    EXPECT_TRUE(m_key.RunAsService());
    m_registry.write("Config", "NoService", DWORD{0});
    EXPECT_TRUE(m_key.RunAsService());
    m_registry.write("Config", "NoService", 1u);
    EXPECT_FALSE(m_key.RunAsService());
}

TEST_F(CRegConfigTest, ReadsAndWritesAnyFlag)
{
    EXPECT_FALSE(m_key.GetFlag("ShowDialog"));
    m_key.SetFlag("ShowDialog", true);
    EXPECT_EQ(1u, m_registry.readNumber("Config", "ShowDialog"));
    EXPECT_TRUE(m_key.GetFlag("ShowDialog"));
    m_key.SetFlag("ShowDialog", false);
    EXPECT_EQ(0u, m_registry.readNumber("Config", "ShowDialog"));
    EXPECT_FALSE(m_key.GetFlag("ShowDialog"));
    EXPECT_FALSE(m_key.GetFlag(nullptr));
    EXPECT_FALSE(m_key.GetFlag(std::string(10000, 'x').c_str()));
}

TEST_F(CRegConfigTest, TheLastDateIsNamedAfterTheFileWithoutItsLastExtension)
{
    const struct
    {
        const char* file;
        const char* name;
    } cases[] = {{"catalog.xml", "catalog.LastDate"},
                 {"a.b.c", "a.b.LastDate"},
                 {"plain", "plain.LastDate"},
                 {".hidden", ".LastDate"},
                 {"ends.", "ends.LastDate"},
                 {"", ".LastDate"},
                 {nullptr, ".LastDate"}};
    for (const auto& row : cases)
    {
        SCOPED_TRACE(row.name);
        EXPECT_STREQ("", m_key.GetLastDate(row.file));
        m_key.SetLastDate(row.file, "2010-04-01");
        EXPECT_EQ("2010-04-01", m_registry.readText("Config", row.name));
        EXPECT_STREQ("2010-04-01", m_key.GetLastDate(row.file));
        m_key.SetLastDate(row.file, "");
        EXPECT_FALSE(m_registry.valueExists("Config", row.name));
        m_registry.write("Config", row.name, "again");
        m_key.SetLastDate(row.file, nullptr);
        EXPECT_FALSE(m_registry.valueExists("Config", row.name));
    }
}

TEST_F(CRegConfigTest, TheLastDateTakesAFileNameOf10000Characters)
{
    const std::string file = std::string(10000, 'x') + ".xml";
    m_key.SetLastDate(file.c_str(), "2010-04-01");
    EXPECT_STREQ("2010-04-01", m_key.GetLastDate(file.c_str()));
}

TEST_F(CRegConfigTest, ReadsAndWritesItsTimes)
{
    const struct
    {
        const char* name;
        __int64 (CRegConfig::*get)();
        void (CRegConfig::*set)(__int64);
    } times[] = {{"NextGetProductList", &CRegConfig::GetNextProductListDate, &CRegConfig::SetNextProductListDate},
                 {"NextPendingUpdate", &CRegConfig::GetNextPendingUpdate, &CRegConfig::SetNextPendingUpdate},
                 {"DiffWebConfDate", &CRegConfig::GetWebConfDiffDate, &CRegConfig::SetWebConfDiffDate}};
    for (const auto& time : times)
    {
        SCOPED_TRACE(time.name);
        EXPECT_EQ(0, (m_key.*time.get)());
        (m_key.*time.set)(-kTime);
        ASSERT_TRUE(m_registry.readRaw("Config", time.name));
        EXPECT_EQ(static_cast<DWORD>(REG_QWORD), m_registry.readRaw("Config", time.name)->type);
        EXPECT_EQ(bytesOf(-kTime), m_registry.readRaw("Config", time.name)->bytes);
        EXPECT_EQ(-kTime, (m_key.*time.get)());
    }
}

TEST_F(CRegConfigTest, ATimeOfFourBytesIsSignExtended)
{
    m_registry.writeRaw("Config", "Time", REG_DWORD, "\xFF\xFF\xFF\xFF");
    EXPECT_EQ(-1, m_key.GetTimeValue("Time"));
    m_registry.writeRaw("Config", "Time", REG_DWORD, "\xFF\xFF\xFF\x7F");
    EXPECT_EQ(0x7FFFFFFF, m_key.GetTimeValue("Time"));
    m_registry.writeRaw("Config", "Time", REG_BINARY, std::string("\x01\0\0\0", 4));
    EXPECT_EQ(1, m_key.GetTimeValue("Time"));
}

TEST_F(CRegConfigTest, ATimeOfAnyOtherSizeIsZero)
{
    for (const std::size_t size : {0u, 1u, 3u, 5u, 7u, 9u, 16u, 1000u})
    {
        m_registry.writeRaw("Config", "Time", REG_BINARY, std::string(size, '\x01'));
        EXPECT_EQ(0, m_key.GetTimeValue("Time")) << size;
    }
    m_registry.writeRaw("Config", "Time", REG_BINARY, bytesOf(kTime));
    EXPECT_EQ(kTime, m_key.GetTimeValue("Time")); // the type does not matter
}

TEST_F(CRegConfigTest, ATimeWithoutANameOrAKeyIsZero)
{
    m_registry.writeRaw("Config", "", REG_QWORD, bytesOf(kTime));
    EXPECT_EQ(0, m_key.GetTimeValue(nullptr));
    EXPECT_EQ(0, m_key.GetTimeValue("Missing"));
    m_key.Close();
    EXPECT_EQ(0, m_key.GetTimeValue(""));
}

TEST_F(CRegConfigTest, WritingATimeSaysWhetherItSucceeded)
{
    EXPECT_NE(0, m_key.SetTimeValue("Time", kTime));
    EXPECT_EQ(0, m_key.SetTimeValue(nullptr, kTime));
    m_key.Close();
    EXPECT_EQ(0, m_key.SetTimeValue("Other", kTime));
    EXPECT_FALSE(m_registry.valueExists("Config", "Other"));

    Config readOnly(true);
    EXPECT_NE(0, readOnly.SetTimeValue("Other", kTime)); // by reopening
    EXPECT_TRUE(m_registry.valueExists("Config", "Other"));
}

TEST_F(CRegConfigTest, AConfigurationCounterIsNamedByItsPrefix)
{
    EXPECT_EQ(0u, m_key.GetConfigCounter("Product"));
    m_key.SetConfigCounter("Product", 12);
    EXPECT_EQ(12u, m_registry.readNumber("Config", "Product_ConfigCounter"));
    EXPECT_EQ(12u, m_key.GetConfigCounter("Product"));
    m_key.SetConfigCounter(nullptr, 3);
    EXPECT_EQ(3u, m_registry.readNumber("Config", "_ConfigCounter"));
    const std::string prefix(10000, 'x');
    m_key.SetConfigCounter(prefix.c_str(), 4);
    EXPECT_EQ(4u, m_key.GetConfigCounter(prefix.c_str()));
}

TEST_F(CRegConfigTest, ReadsAndWritesTheLanguage)
{
    EXPECT_EQ(0u, m_key.GetLanguageID());
    m_key.SetLanguageID(1053);
    EXPECT_EQ(1053u, m_registry.readNumber("Config", "LanguageID"));
    EXPECT_EQ(1053u, m_key.GetLanguageID());
}

TEST_F(CRegConfigTest, OnlyAnExplicitZeroTurnsMergingOff)
{
    EXPECT_TRUE(m_key.IsMergeOptionSet());
    m_registry.write("Config", "MergeProductLists", 2u);
    EXPECT_TRUE(m_key.IsMergeOptionSet());
    m_registry.write("Config", "MergeProductLists", DWORD{0});
    EXPECT_FALSE(m_key.IsMergeOptionSet());
    m_registry.writeRaw("Config", "MergeProductLists", REG_BINARY, std::string(8, '\0'));
    EXPECT_TRUE(m_key.IsMergeOptionSet()); // unreadable is as good as missing
}

TEST_F(CRegConfigTest, TheTestEnvironmentIsALevel)
{
    EXPECT_EQ(0u, m_key.GetTestEnvValue());
    EXPECT_FALSE(m_key.IsTestEnvFlagSet(0));
    m_registry.write("Config", "TestEnv", 3u);
    EXPECT_EQ(3u, m_key.GetTestEnvValue());
    for (const unsigned long level : {0ul, 1ul, 2ul, 3ul})
        EXPECT_TRUE(m_key.IsTestEnvFlagSet(level));
    EXPECT_FALSE(m_key.IsTestEnvFlagSet(4));
    m_registry.write("Config", "TestEnv", 4u);
    EXPECT_TRUE(m_key.IsTestEnvFlagSet(3)); // no bit of 3 is set in it
}
