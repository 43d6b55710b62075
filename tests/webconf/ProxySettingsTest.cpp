#include "webconf/ProxySettings.h"

#include <gtest/gtest.h>

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
} // namespace
