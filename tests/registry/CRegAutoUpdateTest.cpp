#include "registry/CRegAutoUpdate.h"

#include "tests/registry/RegistryTests.h"

using auttest::ClientRegistry;
using Status = CRegAutoUpdate::AUStatus;

namespace
{
class CRegAutoUpdateTest : public ::testing::Test
{
protected:
    ClientRegistry m_registry;
    CRegAutoUpdate m_key{false};
};
} // namespace

TEST(CRegAutoUpdate, OpensTheClientsOwnKey)
{
    const ClientRegistry registry;
    auttest::expectKeyAt(registry, "", [](bool readOnly) { CRegAutoUpdate{readOnly}; });
}

TEST_F(CRegAutoUpdateTest, ReadsAndWritesItsTexts)
{
    using Key = CRegAutoUpdate;
    auttest::expectTextAccessors<Key>(
        m_key, m_registry, "",
        {{"Path", &Key::GetPath, &Key::SetPath},
         {"DataPath", &Key::GetDataPath, &Key::SetDataPath},
         {"DownloadPath", &Key::GetDownloadPath, &Key::SetDownloadPath},
         {"CompPath", &Key::GetComponentPath, &Key::SetComponentPath},
         {"VelmoraPath", &Key::GetVelmoraPath, &Key::SetVelmoraPath},
         {"Current_Kernel_Version", &Key::GetKernelVersion, &Key::SetKernelVersion},
         {"Current_AutoUpdate_Version", &Key::GetAUProductVersion, &Key::SetAUProductVersion},
         {"CAB_Kernel_Version", &Key::GetCABKernelVersion, nullptr},
         {"CAB_AutoUpdate_Version", &Key::GetCABProductVersion, nullptr},
         {"Zone", &Key::GetZone, &Key::SetZone},
         {"CountryCode", &Key::GetCountryCode, &Key::SetCountryCode},
         {"MarketingName", &Key::GetMarketingName, &Key::SetMarketingName},
         {"TechnicalName", &Key::GetTechnicalName, &Key::SetTechnicalName}});
}

TEST_F(CRegAutoUpdateTest, ReadsAndWritesItsFlags)
{
    using Key = CRegAutoUpdate;
    auttest::expectFlagAccessors<Key>(m_key, m_registry, "",
                                      {{"LocalInstall", &Key::IsLocalInstall, &Key::LocalInstall},
                                       {"AUWinLogonStatus", &Key::GetAUWinLogonStatus, &Key::SetAUWinLogonStatus}});
}

TEST_F(CRegAutoUpdateTest, ATextStaysValidUntilTheNextRead)
{
    m_registry.write("", "Path", "first");
    m_registry.write("", "Zone", "second");
    const char* const path = m_key.GetPath();
    EXPECT_STREQ("first", path);
    m_key.SetCountryCode("SE"); // a write is no read
    EXPECT_STREQ("first", path);
    EXPECT_EQ(path, m_key.GetZone());
    EXPECT_STREQ("second", path);
}

TEST_F(CRegAutoUpdateTest, GettersOfAMissingKeyGiveTheDefaults)
{
    m_registry.removeKey("");
    CRegAutoUpdate missing(true);
    EXPECT_STREQ("", missing.GetPath());
    EXPECT_FALSE(missing.IsLocalInstall());
    EXPECT_EQ(0u, missing.GetStatus());
    EXPECT_EQ(0u, missing.GetException());
    EXPECT_STREQ("", missing.GetCompressedPath());
}

TEST_F(CRegAutoUpdateTest, SetStatusAddsBits)
{
    EXPECT_EQ(0u, m_key.GetStatus());
    m_key.SetStatus(Status{4});
    EXPECT_EQ(4u, m_registry.readNumber("", "Status"));
    m_key.SetStatus(Status{1});
    EXPECT_EQ(5u, m_registry.readNumber("", "Status"));
    EXPECT_EQ(5u, m_key.GetStatus());
}

TEST_F(CRegAutoUpdateTest, ResetStatusClearsBitsOrAllOfThem)
{
    m_registry.write("", "Status", 5u);
    m_key.ResetStatus(Status{4});
    EXPECT_EQ(1u, m_registry.readNumber("", "Status"));
    m_registry.write("", "Status", 0x80000001u);
    m_key.ResetStatus(Status{0});
    EXPECT_EQ(0u, m_registry.readNumber("", "Status"));
}

TEST_F(CRegAutoUpdateTest, ResetStatusWritesNothingWhenThereIsNone)
{
    m_key.ResetStatus(Status{4});
    m_key.ResetStatus(Status{0});
    EXPECT_FALSE(m_registry.valueExists("", "Status"));
}

TEST_F(CRegAutoUpdateTest, AnExceptionIsFromOneToSeven)
{
    EXPECT_EQ(0u, m_key.GetException());
    for (const DWORD stored : {0u, 1u, 7u, 8u, 9u, 0xFFFFFFFFu})
    {
        m_registry.write("", "Exception", stored);
        EXPECT_EQ(stored <= 7 ? stored : 0, m_key.GetException());
    }
    m_key.SetException(4);
    EXPECT_EQ(4u, m_registry.readNumber("", "Exception"));
    m_key.SetException(9);
    EXPECT_EQ(9u, m_registry.readNumber("", "Exception")); // written as it is, read as 0
    EXPECT_EQ(0u, m_key.GetException());
}

TEST_F(CRegAutoUpdateTest, TheCompressedPathFollowsThePath)
{
    EXPECT_STREQ("", m_key.GetCompressedPath());
    m_registry.write("", "Path", "C:\\AU\\");
    EXPECT_STREQ("C:\\AU\\Compressed", m_key.GetCompressedPath());
    m_registry.write("", "Path", "C:\\AU");
    EXPECT_STREQ("C:\\AU\\Compressed", m_key.GetCompressedPath());
    m_registry.write("", "Path", std::string(259, 'x'));
    EXPECT_EQ(std::string(259, 'x') + "\\Compressed", static_cast<const char*>(m_key.GetCompressedPath()));
}

TEST_F(CRegAutoUpdateTest, TheKernelPathIsMadeOfComponentPathAndVersion)
{
    m_registry.write("", "CompPath", "C:\\AU\\Components");
    m_registry.write("", "Current_Kernel_Version", "3.3.302B1");
    EXPECT_STREQ("C:\\AU\\Components\\Kernel\\3.3.302B1", m_key.GetKernelPath());
    m_registry.removeValue("", "CompPath");
    m_registry.removeValue("", "Current_Kernel_Version");
    EXPECT_STREQ("\\Kernel\\", m_key.GetKernelPath());
}
