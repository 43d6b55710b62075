#include "webconf/WebServer.h"

#include "tests/support/ClientRegistry.h"
#include "tests/support/ImportPatch.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstring>
#include <string>

namespace
{
class WebServer : public ::testing::Test
{
protected:
    WebServer()
    {
        std::memset(m_host, '#', sizeof m_host);
        std::memset(m_directory, '#', sizeof m_directory);
    }

    auttest::ClientRegistry m_registry;
    char m_host[300];
    char m_directory[300];
};

TEST_F(WebServer, BothAreStoredAndReadBack)
{
    EXPECT_TRUE(SetWebServer("webconf.example:8080", "Conf"));
    EXPECT_EQ("webconf.example:8080", m_registry.readText("Config", "WebServer"));
    EXPECT_EQ("Conf", m_registry.readText("Config", "WebVirtualDir"));
    EXPECT_TRUE(GetWebServer(m_host, m_directory));
    EXPECT_STREQ("webconf.example:8080", m_host);
    EXPECT_STREQ("Conf", m_directory);
}

TEST_F(WebServer, AnEmptyOrNullArgumentLeavesItsValueUntouchedAndCountsAsSuccess)
{
    ASSERT_TRUE(SetWebServer("host", "Conf"));
    EXPECT_TRUE(SetWebServer("", ""));
    EXPECT_TRUE(SetWebServer(nullptr, nullptr));
    EXPECT_TRUE(SetWebServer("other", nullptr));
    EXPECT_EQ("other", m_registry.readText("Config", "WebServer"));
    EXPECT_EQ("Conf", m_registry.readText("Config", "WebVirtualDir"));
}

/// Refuses to write the value of this name.
const char* refusedValue = "";
LSTATUS WINAPI refusingWrite(HKEY key, LPCSTR name, DWORD reserved, DWORD type, const BYTE* data, DWORD size)
{
    if (std::strcmp(refusedValue, name) == 0)
        return ERROR_ACCESS_DENIED;
    return ::RegSetValueExA(key, name, reserved, type, data, size);
}

TEST_F(WebServer, OneWriteThatFailsIsAFailure)
{
    const auttest::ImportPatch patch("RegSetValueExA", &refusingWrite);
    refusedValue = "WebServer";
    EXPECT_FALSE(SetWebServer("host", "Conf"));
    EXPECT_FALSE(m_registry.valueExists("Config", "WebServer"));
    refusedValue = "WebVirtualDir";
    EXPECT_FALSE(SetWebServer("host", "Other"));
    EXPECT_EQ("host", m_registry.readText("Config", "WebServer"));
    EXPECT_TRUE(SetWebServer("host", "")) << "nothing is written that could fail";
}

TEST_F(WebServer, ReadingMakesNoKey)
{
    EXPECT_FALSE(GetWebServer(m_host, m_directory));
    EXPECT_FALSE(m_registry.keyExists("Config"));
}

TEST_F(WebServer, WithoutAHostReadingFails)
{
    m_registry.write("Config", "WebVirtualDir", "Conf");
    EXPECT_FALSE(GetWebServer(m_host, m_directory));
    EXPECT_STREQ("", m_host);
    EXPECT_STREQ("Conf", m_directory);
}

TEST_F(WebServer, WithoutADirectoryItIsWebConfV1)
{
    m_registry.write("Config", "WebServer", "host");
    EXPECT_TRUE(GetWebServer(m_host, m_directory));
    EXPECT_STREQ("WebConfV1", m_directory);
}

TEST_F(WebServer, TheDirectoryBufferMayBeNull)
{
    m_registry.write("Config", "WebServer", "host");
    EXPECT_TRUE(GetWebServer(m_host, nullptr));
    EXPECT_STREQ("host", m_host);
}

TEST_F(WebServer, ANullHostBufferFails)
{
    m_registry.write("Config", "WebServer", "host");
    EXPECT_FALSE(GetWebServer(nullptr, m_directory));
    EXPECT_STREQ("WebConfV1", m_directory);
}

TEST_F(WebServer, LongValuesStayWithin256Bytes)
{
    m_registry.write("Config", "WebServer", std::string(259, 'h').c_str());
    m_registry.write("Config", "WebVirtualDir", std::string(259, 'd').c_str());
    EXPECT_TRUE(GetWebServer(m_host, m_directory));
    EXPECT_EQ(std::string(255, 'h'), m_host);
    EXPECT_EQ(std::string(255, 'd'), m_directory);
    EXPECT_EQ('#', m_host[256]);
    EXPECT_EQ('#', m_directory[256]);
}

TEST_F(WebServer, AValueThatNoBufferHoldsCountsAsMissing)
{
    m_registry.write("Config", "WebServer", std::string(10'000, 'h').c_str());
    EXPECT_FALSE(GetWebServer(m_host, m_directory));
    EXPECT_STREQ("", m_host);
}
} // namespace
