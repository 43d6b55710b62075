#include "registry/CRegNetwork.h"

#include "tests/registry/RegistryTests.h"

using auttest::ClientRegistry;

namespace
{
class CRegNetworkTest : public ::testing::Test
{
protected:
    void store(const char* name, const std::string& text) { m_registry.write("Config\\Network", name, text); }
    std::optional<std::string> stored(const char* name) { return m_registry.readText("Config\\Network", name); }

    ClientRegistry m_registry;
    CRegNetwork m_key{false};
    String m_text{"before"};
    char m_first[260] = "before";
    char m_second[260] = "before";
};

/// What is the same for the proxy's and the server's credentials, and for the address and the bypass list.
struct Credentials
{
    const char* name;
    bool (CRegNetwork::*get)(char*, char*);
    bool (CRegNetwork::*set)(const char*, const char*);
    bool (CRegNetwork::*setEncoded)(const char*);
};
const Credentials kCredentials[] = {{"ProxyAuthorization", &CRegNetwork::GetProxyAuthentication,
                                     &CRegNetwork::SetProxyAuthentication, &CRegNetwork::SetProxyAuthentication},
                                    {"ServerAuthorization", &CRegNetwork::GetServerAuthentication,
                                     &CRegNetwork::SetServerAuthentication, &CRegNetwork::SetServerAuthentication}};

class CRegNetworkCredentials : public CRegNetworkTest, public ::testing::WithParamInterface<Credentials>
{
protected:
    bool get() { return (m_key.*GetParam().get)(m_first, m_second); }
    bool set(const char* user, const char* password) { return (m_key.*GetParam().set)(user, password); }
    bool setEncoded(const char* encoded) { return (m_key.*GetParam().setEncoded)(encoded); }
    const char* name() { return GetParam().name; }
};

struct Text
{
    const char* name;
    bool (CRegNetwork::*getString)(String&);
    bool (CRegNetwork::*getBuffer)(char*);
    bool (CRegNetwork::*set)(const char*);
};
const Text kTexts[] = {
    {"ProxyFirewallAddress", &CRegNetwork::GetServerAddress, &CRegNetwork::GetServerAddress,
     &CRegNetwork::SetServerAddress},
    {"ProxyFirewallBypass", &CRegNetwork::GetBypassList, &CRegNetwork::GetBypassList, &CRegNetwork::SetBypassList}};

class CRegNetworkTexts : public CRegNetworkTest, public ::testing::WithParamInterface<Text>
{
protected:
    bool getString() { return (m_key.*GetParam().getString)(m_text); }
    bool getBuffer() { return (m_key.*GetParam().getBuffer)(m_first); }
    bool set(const char* text) { return (m_key.*GetParam().set)(text); }
    const char* name() { return GetParam().name; }
};

template <typename Row> std::string nameOf(const ::testing::TestParamInfo<Row>& row) { return row.param.name; }
} // namespace

INSTANTIATE_TEST_SUITE_P(Of, CRegNetworkCredentials, ::testing::ValuesIn(kCredentials), nameOf<Credentials>);
INSTANTIATE_TEST_SUITE_P(Of, CRegNetworkTexts, ::testing::ValuesIn(kTexts), nameOf<Text>);

TEST(CRegNetwork, OpensTheNetworkKey)
{
    const ClientRegistry registry;
    auttest::expectKeyAt(registry, "Config\\Network", [](bool readOnly) { CRegNetwork{readOnly}; });
}

TEST_P(CRegNetworkTexts, MissingIsEmptyAndFalse)
{
    EXPECT_FALSE(getString());
    EXPECT_STREQ("", m_text);
    EXPECT_FALSE(getBuffer());
    EXPECT_STREQ("", m_first);
}

TEST_P(CRegNetworkTexts, ComesAsItIsStored)
{
    store(name(), "proxy:8080;<local>");
    EXPECT_TRUE(getString());
    EXPECT_STREQ("proxy:8080;<local>", m_text);
    EXPECT_TRUE(getBuffer());
    EXPECT_STREQ("proxy:8080;<local>", m_first);
}

TEST_P(CRegNetworkTexts, IsCutToNeitherBuffer)
{
    store(name(), std::string(259, 'x'));
    EXPECT_TRUE(getBuffer());
    EXPECT_EQ(std::string(259, 'x'), m_first);
    store(name(), std::string(10000, 'x'));
    EXPECT_FALSE(getBuffer());
    EXPECT_STREQ("", m_first);
    EXPECT_TRUE(getString());
    EXPECT_EQ(10000, m_text.GetLength());
}

TEST_P(CRegNetworkTexts, OfNoSizeIsEmpty)
{
    m_registry.writeRaw("Config\\Network", name(), REG_SZ, "");
    EXPECT_TRUE(getString());
    EXPECT_STREQ("", m_text);
    EXPECT_TRUE(getBuffer());
    EXPECT_STREQ("", m_first);
}

TEST_P(CRegNetworkTexts, NullOutputIsSkipped)
{
    EXPECT_FALSE((m_key.*GetParam().getBuffer)(nullptr));
    store(name(), "proxy");
    EXPECT_TRUE((m_key.*GetParam().getBuffer)(nullptr));
}

TEST_P(CRegNetworkTexts, IsStoredUnchanged)
{
    EXPECT_TRUE(set(" proxy : 8080 "));
    EXPECT_EQ(" proxy : 8080 ", stored(name()));
}

TEST_P(CRegNetworkTexts, NothingToStoreDeletesTheValue)
{
    for (const char* const nothing : {static_cast<const char*>(nullptr), ""})
    {
        store(name(), "proxy");
        EXPECT_TRUE(set(nothing));
        EXPECT_FALSE(stored(name()));
        EXPECT_TRUE(set(nothing)); // nothing to delete either
    }
}

TEST_F(CRegNetworkTest, AnAddressSplitsAtItsFirstColon)
{
    const struct
    {
        const char* address;
        const char* host;
        const char* port;
    } cases[] = {{"proxy:8080", "proxy", "8080"}, {"proxy", "proxy", ""}, {"proxy:", "proxy", ""},
                 {":8080", "", "8080"},           {"a:b:c", "a", "b:c"},  {"", "", ""}};
    for (const auto& row : cases)
    {
        store("ProxyFirewallAddress", row.address);
        EXPECT_TRUE(m_key.GetServerAddress(m_first, m_second)) << row.address;
        EXPECT_STREQ(row.host, m_first);
        EXPECT_STREQ(row.port, m_second);
    }
}

TEST_F(CRegNetworkTest, AMissingAddressHasNeitherHostNorPort)
{
    EXPECT_FALSE(m_key.GetServerAddress(m_first, m_second));
    EXPECT_STREQ("", m_first);
    EXPECT_STREQ("", m_second);
}

TEST_F(CRegNetworkTest, ANullHostOrPortIsSkipped)
{
    store("ProxyFirewallAddress", "proxy:8080");
    EXPECT_TRUE(m_key.GetServerAddress(m_first, nullptr));
    EXPECT_STREQ("proxy", m_first);
    EXPECT_TRUE(m_key.GetServerAddress(nullptr, m_second));
    EXPECT_STREQ("8080", m_second);
    EXPECT_TRUE(m_key.GetServerAddress(nullptr, nullptr));
}

TEST_F(CRegNetworkTest, AHostIsStoredWithItsPort)
{
    EXPECT_TRUE(m_key.SetServerAddress("proxy", "8080"));
    EXPECT_EQ("proxy:8080", stored("ProxyFirewallAddress"));
    EXPECT_TRUE(m_key.SetServerAddress("proxy", ""));
    EXPECT_EQ("proxy", stored("ProxyFirewallAddress"));
    EXPECT_TRUE(m_key.SetServerAddress("other", nullptr));
    EXPECT_EQ("other", stored("ProxyFirewallAddress"));
    EXPECT_TRUE(m_key.SetServerAddress("", "8080"));
    EXPECT_FALSE(stored("ProxyFirewallAddress"));
    EXPECT_TRUE(m_key.SetServerAddress("proxy", "8080"));
    EXPECT_TRUE(m_key.SetServerAddress(nullptr, "8080"));
    EXPECT_FALSE(stored("ProxyFirewallAddress"));
}

TEST_P(CRegNetworkCredentials, AreStoredInBase64)
{
    EXPECT_TRUE(set("user", "secret"));
    EXPECT_EQ("dXNlcjpzZWNyZXQ=", stored(name()));
    EXPECT_TRUE(get());
    EXPECT_STREQ("user", m_first);
    EXPECT_STREQ("secret", m_second);
}

TEST_P(CRegNetworkCredentials, MayHaveAnEmptyPassword)
{
    EXPECT_TRUE(set("user", ""));
    EXPECT_EQ("dXNlcjo=", stored(name()));
    EXPECT_TRUE(get());
    EXPECT_STREQ("user", m_first);
    EXPECT_STREQ("", m_second);
}

TEST_P(CRegNetworkCredentials, AreDeletedWithoutAUserOrAPassword)
{
    const char* const incomplete[][2] = {{nullptr, "secret"}, {"", "secret"}, {"user", nullptr}, {nullptr, nullptr}};
    for (const auto& pair : incomplete)
    {
        store(name(), "dXNlcjpzZWNyZXQ=");
        EXPECT_TRUE(set(pair[0], pair[1]));
        EXPECT_FALSE(stored(name()));
    }
}

TEST_P(CRegNetworkCredentials, MayComeEncoded)
{
    EXPECT_TRUE(setEncoded("dXNlcjpzZWNyZXQ="));
    EXPECT_EQ("dXNlcjpzZWNyZXQ=", stored(name()));
    EXPECT_TRUE(setEncoded(""));
    EXPECT_FALSE(stored(name()));
    store(name(), "dXNlcjpzZWNyZXQ=");
    EXPECT_TRUE(setEncoded(nullptr));
    EXPECT_FALSE(stored(name()));
}

TEST_P(CRegNetworkCredentials, MissingOrEmptyAreEmptyAndFalse)
{
    EXPECT_FALSE(get());
    EXPECT_STREQ("", m_first);
    EXPECT_STREQ("", m_second);
    for (const std::string& bytes : {std::string(), std::string("\0", 1)})
    {
        m_first[0] = m_second[0] = 'x';
        m_registry.writeRaw("Config\\Network", name(), REG_SZ, bytes);
        EXPECT_FALSE(get());
        EXPECT_STREQ("", m_first);
        EXPECT_STREQ("", m_second);
    }
}

TEST_P(CRegNetworkCredentials, SplitAtTheFirstColon)
{
    set("user", "pass:word");
    EXPECT_TRUE(get());
    EXPECT_STREQ("user", m_first);
    EXPECT_STREQ("pass:word", m_second);
    set("us:er", "password"); // a user name cannot hold one
    EXPECT_TRUE(get());
    EXPECT_STREQ("us", m_first);
    EXPECT_STREQ("er:password", m_second);
    setEncoded("dXNlcg==");
    EXPECT_TRUE(get());
    EXPECT_STREQ("user", m_first);
    EXPECT_STREQ("", m_second);
}

TEST_P(CRegNetworkCredentials, AreStoredWholeAndCutToTheBuffers)
{
    EXPECT_TRUE(set(std::string(10000, 'u').c_str(), std::string(10000, 'p').c_str()));
    EXPECT_EQ(26668u, stored(name()).value_or("").size());
    EXPECT_TRUE(get());
    EXPECT_EQ(std::string(259, 'u'), m_first);
    EXPECT_EQ(std::string(259, 'p'), m_second);
}

TEST_P(CRegNetworkCredentials, NullOutputsAreSkipped)
{
    set("user", "secret");
    EXPECT_TRUE((m_key.*GetParam().get)(nullptr, m_second));
    EXPECT_STREQ("secret", m_second);
    EXPECT_TRUE((m_key.*GetParam().get)(m_first, nullptr));
    EXPECT_STREQ("user", m_first);
}

TEST_F(CRegNetworkTest, TheTwoCredentialsAreKeptApart)
{
    m_key.SetProxyAuthentication("proxy", "p");
    m_key.SetServerAuthentication("server", "s");
    EXPECT_TRUE(m_key.GetProxyAuthentication(m_first, nullptr));
    EXPECT_STREQ("proxy", m_first);
    EXPECT_TRUE(m_key.GetServerAuthentication(m_first, nullptr));
    EXPECT_STREQ("server", m_first);
}

TEST_F(CRegNetworkTest, SettersAreTrueEvenWhenNothingCanBeWritten)
{
    m_key.Close();
    EXPECT_TRUE(m_key.SetServerAddress("proxy"));
    EXPECT_TRUE(m_key.SetServerAddress("proxy", "8080"));
    EXPECT_TRUE(m_key.SetBypassList("<local>"));
    EXPECT_TRUE(m_key.SetProxyAuthentication("user", "secret"));
    EXPECT_TRUE(m_key.SetProxyAuthentication("dXNlcjpzZWNyZXQ="));
    EXPECT_TRUE(m_key.SetServerAuthentication("user", "secret"));
    EXPECT_TRUE(m_key.SetServerAuthentication("dXNlcjpzZWNyZXQ="));
    EXPECT_TRUE(m_registry.valueNames("Config\\Network").empty());
}

TEST_F(CRegNetworkTest, AConfigurationCanBeForced)
{
    auttest::expectFlagAccessors<CRegNetwork>(m_key, m_registry, "Config\\Network",
                                              {{"AdminMode", &CRegNetwork::IsConfigForced, &CRegNetwork::ForceConfig}});
}
