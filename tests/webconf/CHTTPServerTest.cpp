#include "webconf/CHTTPServer.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace
{
/// One URL and everything that a user can see of it.
struct Url
{
    const char* name;
    const char* url;
    int type;
    const char* scheme;
    const char* server;
    int port;
    const char* path;
    const char* parameters;
    const char* complete; ///< around the page p.cab
    const char* relative;
};

class CHTTPServerParses : public ::testing::TestWithParam<Url>
{
};

TEST_P(CHTTPServerParses, IntoItsPartsAndTogetherAgain)
{
    const Url& expected = GetParam();
    CHTTPServer server;
    ASSERT_TRUE(server.ParseServerURL(expected.url));
    EXPECT_EQ(expected.type, server.GetServiceType());
    EXPECT_STREQ(expected.scheme, server.GetServiceTypeString());
    EXPECT_STREQ(expected.server, server.GetServerName());
    EXPECT_EQ(expected.port, server.GetPort());
    EXPECT_STREQ(expected.path, server.GetPath());
    EXPECT_STREQ(expected.parameters, server.GetParameters());
    EXPECT_STREQ(expected.complete, server.GetCompleteURL("p.cab"));
    EXPECT_STREQ(expected.relative, server.GetRelativeURL());
}

const Url kUrls[] = {
    {"LowerCaseFtp", "ftp://depot/dir/sub?x=1", 1, "ftp://", "depot", 80, "dir/sub", "x=1",
     "FTP://depot:80/dir/sub/p.cab?x=1", "dir/sub?x=1"},
    {"FtpWithPort", "FTP://depot:21", 1, "FTP://", "depot", 21, "", "", "FTP://depot:21/p.cab", ""},
    {"BareHostWithBackslashes", "server\\share\\dir", 3, "HTTP://", "server", 80, "share/dir", "",
     "HTTP://server:80/share/dir/p.cab", "share/dir"},
    {"HttpWithBackslashes", "http:\\\\server\\dir", 3, "http://", "server", 80, "dir", "", "HTTP://server:80/dir/p.cab",
     "dir"},
    {"MixedCaseHttp", "hTTp://Server", 3, "hTTp://", "Server", 80, "", "", "HTTP://Server:80/p.cab", ""},
    {"Port", "http://server:8080/dir", 3, "http://", "server", 8080, "dir", "", "HTTP://server:8080/dir/p.cab", "dir"},
    {"FileHost", "file://host/share", 0, "file://", "host", 0, "share", "", "FILE://host/share/p.cab", "share"},
    {"FileKeepsAColon", "FILE://C:\\dir", 0, "FILE://", "C:", 0, "dir", "", "FILE://C:/dir/p.cab", "dir"},
    {"FileWithoutHost", "FILE:///C:/dir", 0, "FILE://", "", 0, "C:/dir", "", "FILE:///C:/dir/p.cab", "C:/dir"},
    {"GopherIsNotRecognised", "gopher://hole/x", 3, "HTTP://", "gopher", 0, "/hole/x", "",
     "HTTP://gopher//hole/x/p.cab", "/hole/x"},
    {"NorIsTheTablesOwnTextForIt", "gopher_not_recognized", 3, "HTTP://", "gopher_not_recognized", 80, "", "",
     "HTTP://gopher_not_recognized:80/p.cab", ""},
    {"SecureHttpIsNotRecognised", "https://server/x", 3, "HTTP://", "https", 0, "/server/x", "",
     "HTTP://https//server/x/p.cab", "/server/x"},
    {"LastQuestionMarkSeparates", "http://server/dir?a?b", 3, "http://", "server", 80, "dir?a", "b",
     "HTTP://server:80/dir?a/p.cab?b", "dir?a?b"},
    {"SlashInTheParameters", "http://server?x=/y", 3, "http://", "server", 80, "", "x=/y",
     "HTTP://server:80/p.cab?x=/y", "?x=/y"},
    {"OnlyParameters", "?x", 3, "HTTP://", "", 80, "", "x", "HTTP://:80/p.cab?x", "?x"},
    {"OnlyAScheme", "http://", 3, "http://", "", 80, "", "", "HTTP://:80/p.cab", ""},
    {"OnlyASlash", "/", 3, "HTTP://", "", 80, "", "", "HTTP://:80/p.cab", ""},
    {"SlashAtTheEndOfThePath", "server/dir/", 3, "HTTP://", "server", 80, "dir/", "", "HTTP://server:80/dir//p.cab",
     "dir/"},
    {"PortOfNoNumber", "server:x/dir", 3, "HTTP://", "server", 0, "dir", "", "HTTP://server/dir/p.cab", "dir"},
    {"PortWithGarbageBehind", "server:81x", 3, "HTTP://", "server", 81, "", "", "HTTP://server:81/p.cab", ""},
    {"SecondColonIsGarbage", "server:81:82", 3, "HTTP://", "server", 81, "", "", "HTTP://server:81/p.cab", ""},
    {"PortBelowZero", "server:-5", 3, "HTTP://", "server", -5, "", "", "HTTP://server:-5/p.cab", ""},
    {"PortTooLarge", "server:99999999999", 3, "HTTP://", "server", INT_MAX, "", "", "HTTP://server:2147483647/p.cab",
     ""},
    {"ColonInThePath", "server/a:b", 3, "HTTP://", "server", 80, "a:b", "", "HTTP://server:80/a:b/p.cab", "a:b"},
};
INSTANTIATE_TEST_SUITE_P(Table, CHTTPServerParses, ::testing::ValuesIn(kUrls),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(CHTTPServer, StartsAsAnHttpServerWithoutName)
{
    CHTTPServer server;
    EXPECT_EQ(3, server.GetServiceType());
    EXPECT_EQ(80, server.GetPort());
    EXPECT_STREQ("", server.GetServerName());
    EXPECT_STREQ("", server.GetPath());
    EXPECT_STREQ("", server.GetParameters());
    EXPECT_STREQ("", server.GetServiceTypeString());
    EXPECT_STREQ("HTTP://:80", server.GetCompleteURL(""));
    EXPECT_STREQ("", server.GetRelativeURL());
}

TEST(CHTTPServer, AnEmptyUrlFailsAndForgetsTheOneBefore)
{
    CHTTPServer server;
    ASSERT_TRUE(server.ParseServerURL("ftp://depot:21/dir?x"));
    EXPECT_FALSE(server.ParseServerURL(""));
    EXPECT_EQ(3, server.GetServiceType());
    EXPECT_STREQ("", server.GetServiceTypeString());
    EXPECT_STREQ("HTTP://:80", server.GetCompleteURL(""));
}

TEST(CHTTPServer, ParsingForgetsTheUrlBefore)
{
    CHTTPServer server;
    ASSERT_TRUE(server.ParseServerURL("file://host/dir?x"));
    ASSERT_TRUE(server.ParseServerURL("other"));
    EXPECT_STREQ("HTTP://other:80", server.GetCompleteURL(""));
}

TEST(CHTTPServer, AnEmptyPageIsLeftOut)
{
    CHTTPServer server;
    ASSERT_TRUE(server.ParseServerURL("server/dir?x"));
    EXPECT_STREQ("HTTP://server:80/dir?x", server.GetCompleteURL(""));
}

TEST(CHTTPServer, BackslashesOfThePageBecomeSlashes)
{
    CHTTPServer server;
    ASSERT_TRUE(server.ParseServerURL("server"));
    EXPECT_STREQ("HTTP://server:80/a/b.cab", server.GetCompleteURL("a\\b.cab"));
}

TEST(CHTTPServer, TheSchemeTextCanBeReplacedWithoutChangingTheUrl)
{
    CHTTPServer server;
    ASSERT_TRUE(server.ParseServerURL("ftp://depot"));
    server.SetServiceTypeString("HTTP");
    EXPECT_STREQ("HTTP", server.GetServiceTypeString());
    EXPECT_STREQ("FTP://depot:80", server.GetCompleteURL(""));
}

TEST(CHTTPServer, ParametersCanBeReplaced)
{
    CHTTPServer server;
    ASSERT_TRUE(server.ParseServerURL("server/dir?x"));
    server.SetParameters("y=2");
    EXPECT_STREQ("HTTP://server:80/dir?y=2", server.GetCompleteURL(""));
    server.SetParameters("");
    EXPECT_STREQ("dir", server.GetRelativeURL());
}

TEST(CHTTPServer, LongUrlsAreKeptWhole)
{
    const std::string path(10'000, 'p');
    const std::string page(10'000, 'q');
    CHTTPServer server;
    ASSERT_TRUE(server.ParseServerURL(("http://server/" + path).c_str()));
    EXPECT_STREQ(("HTTP://server:80/" + path + "/" + page).c_str(), server.GetCompleteURL(page.c_str()));
}

TEST(CHTTPServer, CopiesAreDeep)
{
    CHTTPServer server;
    ASSERT_TRUE(server.ParseServerURL("ftp://depot:21/dir?x"));
    CHTTPServer copy(server);
    CHTTPServer assigned;
    assigned = server;
    ASSERT_TRUE(server.ParseServerURL("other"));
    EXPECT_STREQ("FTP://depot:21/dir?x", copy.GetCompleteURL(""));
    EXPECT_STREQ("FTP://depot:21/dir?x", assigned.GetCompleteURL(""));
    EXPECT_STREQ("ftp://", assigned.GetServiceTypeString());
}

/// What classes derived from the server see.
class OpenServer : public CHTTPServer
{
public:
    using CHTTPServer::ExtractParameters;
    using CHTTPServer::ExtractServerNameAndPort;
    using CHTTPServer::ExtractServiceType;
    using CHTTPServer::ResetData;

    void setServiceType(int type) { m_serviceType = type; }
};

TEST(CHTTPServer, EachStepCutsItsPartOffTheUrl)
{
    OpenServer server;
    String url("HTTP://server:81/dir?x");
    server.ExtractServiceType(url);
    EXPECT_STREQ("server:81/dir?x", url);
    server.ExtractParameters(url);
    EXPECT_STREQ("server:81/dir", url);
    server.ExtractServerNameAndPort(url);
    EXPECT_STREQ("server", url);
    EXPECT_STREQ("HTTP://server:81/dir?x", server.GetCompleteURL(""));
}

TEST(CHTTPServer, WithoutAServiceTypeThereIsNoCompleteUrl)
{
    OpenServer server;
    ASSERT_TRUE(server.ParseServerURL("server"));
    server.setServiceType(-1);
    EXPECT_STREQ("", server.GetCompleteURL("p"));
    server.setServiceType(4);
    EXPECT_STREQ("", server.GetCompleteURL("p"));
}

TEST(CHTTPServer, ResettingGivesTheDefaults)
{
    OpenServer server;
    ASSERT_TRUE(server.ParseServerURL("ftp://depot:21/dir?x"));
    server.ResetData();
    EXPECT_STREQ("HTTP://:80", server.GetCompleteURL(""));
    EXPECT_STREQ("", server.GetServiceTypeString());
}
} // namespace
