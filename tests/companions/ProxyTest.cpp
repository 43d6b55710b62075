#include "tests/companions/HttpFixture.h"

#include <windows.h>

#include <optional>

using auttest::fetch;
using auttest::Fetched;
using auttest::pattern;
using filetransfer::ConnectionParams;

namespace
{
constexpr char kInternetSettings[] = "Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";

/// The current user's proxy settings, put back at the end.
class ProxySettings
{
public:
    explicit ProxySettings(const std::string& proxy, const std::string& bypass = std::string())
    {
        set("ProxyServer", proxy);
        set("ProxyOverride", bypass);
        setEnabled(1);
    }
    ~ProxySettings()
    {
        setEnabled(0);
        ::RegDeleteKeyValueA(HKEY_CURRENT_USER, kInternetSettings, "ProxyServer");
        ::RegDeleteKeyValueA(HKEY_CURRENT_USER, kInternetSettings, "ProxyOverride");
    }
    ProxySettings(const ProxySettings&) = delete;
    ProxySettings& operator=(const ProxySettings&) = delete;

private:
    static void set(const char* name, const std::string& text)
    {
        EXPECT_EQ(ERROR_SUCCESS, ::RegSetKeyValueA(HKEY_CURRENT_USER, kInternetSettings, name, REG_SZ, text.c_str(),
                                                   static_cast<DWORD>(text.size() + 1)));
    }
    static void setEnabled(DWORD enabled)
    {
        EXPECT_EQ(ERROR_SUCCESS, ::RegSetKeyValueA(HKEY_CURRENT_USER, kInternetSettings, "ProxyEnable", REG_DWORD,
                                                   &enabled, sizeof(enabled)));
    }
};
} // namespace

class Proxy : public auttest::HttpFixture
{
protected:
    Proxy() { m_proxy.addRule("body=from the proxy"); }

    webconf_sample::WebConfigurator m_proxy; // a server that is asked for whole URLs
};

TEST_F(Proxy, OfTheUsersSettingsIsAskedForTheWholeUrl)
{
    const ProxySettings settings(m_proxy.host());
    const Fetched fetched = fetch("http://far.example/page.asp?a=1", nullptr, true);
    EXPECT_EQ(1, fetched.status);
    EXPECT_EQ("from the proxy", fetched.body);
    ASSERT_EQ(1u, m_proxy.requests().size());
    EXPECT_EQ("far.example", m_proxy.requests()[0].header("Host").substr(0, 11));
    EXPECT_EQ("http://far.example", m_proxy.requests()[0].target.substr(0, 18));
    EXPECT_EQ("1", m_proxy.requests()[0].parameter("a"));
}

TEST_F(Proxy, IsNotAskedWhenTheFlagSaysSo)
{
    const ProxySettings settings(m_proxy.host());
    serve("from the server");
    EXPECT_EQ("from the server", fetch(url(), nullptr, false).body);
    EXPECT_TRUE(m_proxy.requests().empty());
}

TEST_F(Proxy, IsNotAskedForServersOfTheBypassList)
{
    const ProxySettings settings(m_proxy.host(), "127.0.0.1");
    serve("from the server");
    EXPECT_EQ("from the server", fetch(url(), nullptr, true).body);
    EXPECT_TRUE(m_proxy.requests().empty());
}

TEST_F(Proxy, IsNotUsedWithoutSettings)
{
    serve("from the server");
    EXPECT_EQ("from the server", fetch(url(), nullptr, true).body);
    serve("in chunks", "framing=always-chunked");
    EXPECT_EQ("in chunks", fetch(url(), nullptr, true).body);
}

TEST_F(Proxy, ThatDoesNotAnswerIsAnError)
{
    std::optional<webconf_sample::WebConfigurator> gone(std::in_place);
    const ProxySettings settings(gone->host());
    gone.reset();
    EXPECT_EQ(12029, fetch("http://far.example/page.asp", nullptr, true).status);
}

TEST_F(Proxy, ThatAsksForALogOnIsAnError)
{
    const ProxySettings settings(m_proxy.host());
    m_proxy.addRule("status=407, body=<html>log on</html>");
    EXPECT_EQ(13407, fetch("http://far.example/page.asp", nullptr, true).status);
}

TEST_F(Proxy, IsAskedAgainForABodyOfKnownLengthWhenItAnswersInChunks)
{
    const ProxySettings settings(m_proxy.host());
    m_proxy.addRule("framing=chunked, times=1");
    EXPECT_EQ("from the proxy", fetch("http://far.example/page.asp", nullptr, true).body);
    ASSERT_EQ(2u, m_proxy.requests().size());
    EXPECT_EQ("HTTP/1.1", m_proxy.requests()[0].version);
    EXPECT_EQ("HTTP/1.0", m_proxy.requests()[1].version);
}

TEST_F(Proxy, ThatCutsABodyInChunksOffIsAnError)
{
    const ProxySettings settings(m_proxy.host());
    for (const char* rule : {"framing=chunked, cut=5", "framing=always-chunked, cut=5"})
    {
        m_proxy.addRule(rule);
        const Fetched fetched = fetch("http://far.example/page.asp", nullptr, true);
        EXPECT_EQ(14005, fetched.status) << rule;
        EXPECT_FALSE(fetched.hasData) << rule;
    }
}
