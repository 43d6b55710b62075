#include "webconf/Network.h"

#include "tests/support/ClientRegistry.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogFile.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstring>
#include <string>

namespace
{
constexpr char kSettings[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";

bool isImpersonating()
{
    HANDLE token = nullptr;
    if (!::OpenThreadToken(::GetCurrentThread(), TOKEN_QUERY, TRUE, &token))
        return false;
    ::CloseHandle(token);
    return true;
}

void* noMemory(std::size_t, std::size_t) { return nullptr; }

class DetectProxySettingsTest : public ::testing::Test
{
protected:
    DetectProxySettingsTest()
    {
        std::memset(m_proxy, '#', sizeof m_proxy);
        std::memset(m_bypass, '#', sizeof m_bypass);
    }
    ~DetectProxySettingsTest() override
    {
        for (const char* value : {"ProxyEnable", "ProxyServer", "ProxyOverride"})
            m_user.removeValue(kSettings, value);
    }
    void store(const std::string& proxy, const std::string& bypass)
    {
        m_user.write(kSettings, "ProxyEnable", 1);
        m_user.write(kSettings, "ProxyServer", proxy.c_str());
        m_user.write(kSettings, "ProxyOverride", bypass.c_str());
    }

    auttest::ClientRegistry m_registry;
    auttest::Registry m_user{HKEY_CURRENT_USER};
    char m_proxy[2064];
    char m_bypass[2064];
};

TEST_F(DetectProxySettingsTest, GivesTheUsersProxyAndBypassList)
{
    store("proxy.example:8080", "*.intern.example 10.*");
    EXPECT_TRUE(DetectProxySettings(m_proxy, m_bypass));
    EXPECT_STREQ("proxy.example:8080", m_proxy);
    EXPECT_STREQ("*.intern.example;10.*", m_bypass);
}

TEST_F(DetectProxySettingsTest, WithoutAProxyBothAreEmpty)
{
    EXPECT_TRUE(DetectProxySettings(m_proxy, m_bypass));
    EXPECT_STREQ("", m_proxy);
    EXPECT_STREQ("", m_bypass);
}

TEST_F(DetectProxySettingsTest, BothBuffersAreRequired)
{
    EXPECT_FALSE(DetectProxySettings(nullptr, m_bypass));
    EXPECT_FALSE(DetectProxySettings(m_proxy, nullptr));
    EXPECT_EQ('#', m_proxy[0]);
    EXPECT_EQ('#', m_bypass[0]);
}

TEST_F(DetectProxySettingsTest, LongTextsStayWithin260Bytes)
{
    store(std::string(5'000, 'p'), std::string(5'000, 'b'));
    auttest::LogFile log;
    EXPECT_TRUE(DetectProxySettings(m_proxy, m_bypass));
    EXPECT_TRUE(log.has("Warning", "The proxy list is too long: 5000 characters."));
    EXPECT_TRUE(log.has("Warning", "The proxy bypass list is too long: 5000 characters."));
    EXPECT_STREQ("", m_proxy) << "half an entry would name another host";
    EXPECT_STREQ("", m_bypass);
    EXPECT_EQ('#', m_proxy[260]);
    EXPECT_EQ('#', m_bypass[260]);
}

TEST_F(DetectProxySettingsTest, ALongBypassListKeepsWholeEntries)
{
    std::string list;
    for (int i = 0; i < 100; ++i)
        list += (i == 0 ? "" : " ") + ("host" + std::to_string(100 + i));
    store("proxy.example:8080", list);
    auttest::LogFile log;
    EXPECT_TRUE(DetectProxySettings(m_proxy, m_bypass));
    const std::string kept = m_bypass;
    EXPECT_EQ(32U * 8U - 1U, kept.size()) << "32 entries of 7 characters and what separates them";
    EXPECT_EQ("host131", kept.substr(kept.size() - 7));
    EXPECT_EQ('#', m_bypass[260]);
    EXPECT_TRUE(log.has("Warning", "The proxy bypass list is too long: 799 characters."));
}

TEST_F(DetectProxySettingsTest, ALongProxyListKeepsWholeEntries)
{
    store("https=" + std::string(100, 's') + ":1 ftp=" + std::string(200, 'f') + ":2", "");
    EXPECT_TRUE(DetectProxySettings(m_proxy, m_bypass));
    EXPECT_EQ("https=" + std::string(100, 's') + ":1", m_proxy);
}

TEST_F(DetectProxySettingsTest, AnEntryThatJustFitsIsKept)
{
    std::string list;
    for (int i = 0; i < 100; ++i)
        list += (i == 0 ? "" : " ") + std::to_string(100 + i);
    store("proxy.example:8080", list);
    EXPECT_TRUE(DetectProxySettings(m_proxy, m_bypass));
    const std::string kept = m_bypass;
    EXPECT_EQ(259U, kept.size()) << "65 entries of 3 characters and what separates them";
    EXPECT_EQ("164", kept.substr(kept.size() - 3));
}

TEST_F(DetectProxySettingsTest, WithoutMemoryItSaysSoAndFails)
{
    store("proxy.example:8080", "");
    auttest::LogFile log;
    {
        const auttest::ImportPatch patch("calloc", noMemory);
        EXPECT_FALSE(DetectProxySettings(m_proxy, m_bypass));
    }
    EXPECT_STREQ("", m_proxy);
    EXPECT_STREQ("", m_bypass);
    EXPECT_TRUE(log.has("Error", "DetectProxySettings Memory Failure"));
}

TEST_F(DetectProxySettingsTest, NobodyIsImpersonatedAfterwards)
{
    EXPECT_TRUE(DetectProxySettings(m_proxy, m_bypass));
    EXPECT_FALSE(isImpersonating());
}

TEST_F(DetectProxySettingsTest, WhomTheCallerImpersonatedIsKept)
{
    ASSERT_TRUE(::ImpersonateSelf(SecurityImpersonation));
    EXPECT_TRUE(DetectProxySettings(m_proxy, m_bypass));
    EXPECT_TRUE(isImpersonating());
    ::RevertToSelf();
}
} // namespace
