#include "webconf/Network.h"

#include "tests/support/ClientRegistry.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <string>
#include <vector>

namespace
{
constexpr char kSettings[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
constexpr char kDomains[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\ZoneMap\\Domains";

/// Trusts hosts below a root key of its own.
class SetTrustedDomainTest : public ::testing::Test
{
protected:
    SetTrustedDomainTest()
    {
        m_user.removeKey(kRoot);
        EXPECT_EQ(ERROR_SUCCESS, ::RegCreateKeyExA(HKEY_CURRENT_USER, kRoot, 0, nullptr, 0,
                                                   KEY_ALL_ACCESS | KEY_WOW64_64KEY, nullptr, &m_root, nullptr));
    }
    ~SetTrustedDomainTest() override
    {
        ::RegCloseKey(m_root);
        m_user.removeKey(kRoot);
    }
    std::vector<std::string> domains() const { return auttest::Registry(m_root).subkeys(kDomains); }
    std::optional<DWORD> zone(const std::string& below) const
    {
        return auttest::Registry(m_root).readNumber(std::string(kDomains) + "\\" + below, "http");
    }

    static constexpr char kRoot[] = "Software\\AutoolsTrustedDomainTest";
    auttest::Registry m_user{HKEY_CURRENT_USER};
    HKEY m_root = nullptr;
};

TEST_F(SetTrustedDomainTest, TwoLabelsAreADomain)
{
    SetTrustedDomain(m_root, "server.example");
    EXPECT_EQ(2u, zone("server.example"));
    EXPECT_EQ((std::vector<std::string>{"server.example"}), domains());
    EXPECT_TRUE(auttest::Registry(m_root).subkeys(std::string(kDomains) + "\\server.example").empty());
}

TEST_F(SetTrustedDomainTest, AThirdLabelIsAHostBelowTheDomain)
{
    SetTrustedDomain(m_root, "www.server.example");
    EXPECT_EQ(2u, zone("server.example\\www"));
    EXPECT_EQ(std::nullopt, zone("server.example"));
}

TEST_F(SetTrustedDomainTest, MoreLabelsStayTogetherAsTheHost)
{
    SetTrustedDomain(m_root, "a.b.server.example");
    EXPECT_EQ(2u, zone("server.example\\a.b"));
}

TEST_F(SetTrustedDomainTest, AHostWithoutADotWritesNothing)
{
    SetTrustedDomain(m_root, "localhost");
    SetTrustedDomain(m_root, "");
    SetTrustedDomain(m_root, nullptr);
    EXPECT_FALSE(auttest::Registry(m_root).keyExists("SOFTWARE"));
}

TEST_F(SetTrustedDomainTest, ATooLongHostWritesNothing)
{
    SetTrustedDomain(m_root, (std::string(10'000, 'h') + ".example").c_str());
    EXPECT_TRUE(!auttest::Registry(m_root).keyExists(kDomains) || domains().empty());
}

TEST_F(SetTrustedDomainTest, TheFirstOfTheMakersDomainsBringsTheSecondWithIt)
{
    SetTrustedDomain(m_root, "WWW." AUTTEST_TRUSTED_DOMAIN_1);
    EXPECT_EQ(2u, zone(AUTTEST_TRUSTED_DOMAIN_1 "\\WWW"));
    EXPECT_EQ(2u, zone(AUTTEST_TRUSTED_DOMAIN_2));
}

TEST_F(SetTrustedDomainTest, TheFirstIsKnownWithoutRegardToCase)
{
    std::string upper(AUTTEST_TRUSTED_DOMAIN_1);
    ::CharUpperA(upper.data());
    SetTrustedDomain(m_root, upper.c_str());
    EXPECT_EQ(2u, zone(AUTTEST_TRUSTED_DOMAIN_2));
}

TEST_F(SetTrustedDomainTest, TheSecondComesAlone)
{
    SetTrustedDomain(m_root, AUTTEST_TRUSTED_DOMAIN_2);
    EXPECT_EQ((std::vector<std::string>{AUTTEST_TRUSTED_DOMAIN_2}), domains());
}

TEST(SetAUExtraSettingsTest, TurnsHttp11OnForTheUser)
{
    const auttest::Registry user(HKEY_CURRENT_USER);
    user.removeValue(kSettings, "EnableHttp1_1");
    user.write(kSettings, "ProxyHttp1.1", DWORD{0});
    SetAUExtraSettings();
    EXPECT_EQ(1u, user.readNumber(kSettings, "EnableHttp1_1"));
    EXPECT_EQ(1u, user.readNumber(kSettings, "ProxyHttp1.1"));
    user.removeValue(kSettings, "EnableHttp1_1");
    user.removeValue(kSettings, "ProxyHttp1.1");
}
} // namespace
