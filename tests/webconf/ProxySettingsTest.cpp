#include "webconf/ProxySettings.h"

#include "system/UserProcesses.h"
#include "tests/support/LogFile.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <wininet.h>

#include <cstring>
#include <string>

namespace
{
struct Proxy
{
    const char* list;
    const char* http;
};

TEST(ProxySettings, TheHttpEntryIsTakenFromAProxyList)
{
    const Proxy proxies[] = {
        {"", ""},
        {"proxy:8080", "proxy:8080"},
        {"one:1 two:2", "one:1 two:2"},
        {"http=proxy:8080", "proxy:8080"},
        {"ftp=f:1 http=proxy:8080 https=s:2", "proxy:8080"},
        {"HTTP=proxy:8080 ftp=f:1", "proxy:8080"},
        {"https=s:2 ftp=f:1", "https=s:2 ftp=f:1"},
        {"https=s:2 http=proxy:8080", "proxy:8080"},
        {"http=a:1;https=b:2", "a:1;https=b:2"}, // only blanks end an entry
        {"http=", ""},
        {"http= x", ""},
    };
    for (const Proxy& proxy : proxies)
        EXPECT_EQ(proxy.http, aut::httpProxyOf(proxy.list)) << proxy.list;
}

struct Bypass
{
    const char* list;
    const char* proxies;
    const char* bypass;
};

TEST(ProxySettings, TheBypassListIsSeparatedBySemicolonsAndFreeOfTheProxyList)
{
    const Bypass cases[] = {
        {"", "p:1", ""},
        {"a b c", "p:1", "a;b;c"},
        {"a;b", "p:1", "a;b"},
        {"p:1 a p:1 b", "p:1", "a;b"},
        {"p:1 p:1 a", "p:1", "a"},
        {"a p:1", "p:1", "a;p:1"}, // without a blank behind it, it is an entry like others
        {"http=p:1 ftp=q:2 a", "http=p:1 ftp=q:2", "a"},
        {"http=p:1 a", "http=p:1 ftp=q:2", "http=p:1;a"}, // only the full list is removed
        {"a b", "", "a;b"},
        {"<local> *.example", "p:1", "<local>;*.example"},
    };
    for (const Bypass& c : cases)
        EXPECT_EQ(c.bypass, aut::bypassOf(c.list, c.proxies)) << c.list;
}

// Sources of the option that do what WinInet does not do here on request

BOOL nothingStored(void*, DWORD* size)
{
    *size = 0;
    return FALSE;
}

BOOL unreadable(void*, DWORD* size)
{
    *size = sizeof(INTERNET_PROXY_INFO);
    return FALSE;
}

BOOL nullTexts(void* buffer, DWORD* size)
{
    *size = sizeof(INTERNET_PROXY_INFO);
    if (buffer != nullptr)
        std::memset(buffer, 0, sizeof(INTERNET_PROXY_INFO));
    return buffer != nullptr;
}

bool g_impersonating = false;

BOOL whoAsks(void*, DWORD* size)
{
    HANDLE token = nullptr;
    g_impersonating = ::OpenThreadToken(::GetCurrentThread(), TOKEN_QUERY, TRUE, &token) != FALSE;
    ::CloseHandle(token);
    *size = 0;
    return FALSE;
}

class DetectProxySettingsFrom : public ::testing::Test
{
protected:
    auttest::LogFile m_log;
    char m_proxy[2048] = "before";
    char m_bypass[2048] = "before";
};

TEST_F(DetectProxySettingsFrom, NothingSaysSoAndSucceeds)
{
    EXPECT_TRUE(aut::detectProxySettings(nothingStored, m_proxy, m_bypass));
    EXPECT_STREQ("", m_proxy);
    EXPECT_STREQ("", m_bypass);
    EXPECT_TRUE(m_log.has("Warning", "No Proxy settings to query."));
}

TEST_F(DetectProxySettingsFrom, WhatCannotBeReadSaysSoAndFails)
{
    EXPECT_FALSE(aut::detectProxySettings(unreadable, m_proxy, m_bypass));
    EXPECT_STREQ("", m_proxy);
    EXPECT_STREQ("", m_bypass);
    EXPECT_TRUE(m_log.has("Warning", "Unable to detect Proxy settings."));
}

TEST_F(DetectProxySettingsFrom, NullTextsAreEmpty)
{
    EXPECT_TRUE(aut::detectProxySettings(nullTexts, m_proxy, m_bypass));
    EXPECT_STREQ("", m_proxy);
    EXPECT_STREQ("", m_bypass);
}

TEST_F(DetectProxySettingsFrom, TheOptionIsReadInTheNameOfTheLoggedOnUser)
{
    const bool userPresent = IsUserLogged(0);
    EXPECT_TRUE(aut::detectProxySettings(whoAsks, m_proxy, m_bypass));
    EXPECT_EQ(userPresent, g_impersonating);
    EXPECT_EQ(!userPresent, m_log.has("Warning", "No explorer processfound for impersonation"));
}
} // namespace
