#include "examples/webconfigurator/WebConfigurator.h"
#include "tests/examples/RawClient.h"
#include "tests/support/TestFolder.h"

#include <chrono>
#include <gtest/gtest.h>

using auttest::ask;
using auttest::bodyOf;
using auttest::getPage;
using std::chrono::steady_clock;
using webconf_sample::Socket;
using webconf_sample::WebConfigurator;

namespace
{
constexpr char kBody[] = "0123456789abcdefghij";

class WebConfiguratorServer : public ::testing::Test
{
protected:
    WebConfiguratorServer() { m_server.addRule(std::string("body=") + kBody); }

    std::string answer() const { return getPage(m_server.port(), "/page.asp"); }

    WebConfigurator m_server;
};

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }
} // namespace

TEST_F(WebConfiguratorServer, AnswersWithItsTypeAndLength)
{
    EXPECT_EQ("HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nContent-Length: 20\r\nConnection: close\r\n\r\n"
              "0123456789abcdefghij",
              answer());
}

TEST_F(WebConfiguratorServer, NamesItsAddress)
{
    const std::string port = std::to_string(m_server.port());
    EXPECT_NE(0, m_server.port());
    EXPECT_EQ("127.0.0.1:" + port, m_server.host());
    EXPECT_EQ("http://127.0.0.1:" + port + "/WebConfV1/wcfg.asp", m_server.url("wcfg.asp"));
    EXPECT_EQ("http://127.0.0.1:" + port + "/WebConfV1/wcfg.asp?a=b c", m_server.url("wcfg.asp", "a=b c"));
}

TEST_F(WebConfiguratorServer, APortThatIsTakenIsRefused)
{
    EXPECT_THROW(WebConfigurator("", m_server.port()), std::runtime_error);
}

TEST_F(WebConfiguratorServer, WithoutAPageThereIsNone)
{
    m_server.clearRules();
    EXPECT_TRUE(contains(answer(), "HTTP/1.1 404 Not Found\r\n"));
}

TEST_F(WebConfiguratorServer, ALaterRuleGoesFirstAndLeavesTheRestToTheEarlierOnes)
{
    m_server.addRule("status=500");
    m_server.addRule("page=other.asp, status=503");
    const std::string text = answer();
    EXPECT_TRUE(contains(text, "HTTP/1.1 500 "));
    EXPECT_EQ(kBody, bodyOf(text));
}

TEST_F(WebConfiguratorServer, ARuleForSomeRequestsEndsWithThem)
{
    m_server.addRule("status=500, times=2");
    EXPECT_TRUE(contains(answer(), "HTTP/1.1 500 "));
    EXPECT_TRUE(contains(answer(), "HTTP/1.1 500 "));
    EXPECT_TRUE(contains(answer(), "HTTP/1.1 200 "));
}

TEST_F(WebConfiguratorServer, KeepsAConnectionForMoreRequests)
{
    const std::string text =
        ask(m_server.port(), "GET /a HTTP/1.1\r\n\r\nGET /b HTTP/1.1\r\nConnection: close\r\n\r\n");
    EXPECT_TRUE(contains(text, "Connection: keep-alive"));
    const auto requests = m_server.requests();
    ASSERT_EQ(2u, requests.size());
    EXPECT_EQ(requests[0].connection, requests[1].connection);
    EXPECT_EQ(1u, m_server.connectionCount());
}

TEST_F(WebConfiguratorServer, AnOldClientsConnectionEndsWithTheAnswer)
{
    EXPECT_EQ(kBody, bodyOf(ask(m_server.port(), "GET /a HTTP/1.0\r\n\r\n")));
}

TEST_F(WebConfiguratorServer, RecordsWhatWasAsked)
{
    ask(m_server.port(), "GET /V1/p.asp?CertificateID=A%2BB HTTP/1.1\r\nUser-Agent: test\r\nConnection: close\r\n\r\n");
    const auto requests = m_server.requests();
    ASSERT_EQ(1u, requests.size());
    EXPECT_EQ("GET /V1/p.asp?CertificateID=A%2BB HTTP/1.1", requests[0].line);
    EXPECT_EQ("p.asp", requests[0].page);
    EXPECT_EQ("A+B", requests[0].parameter("CertificateID"));
    EXPECT_EQ("test", requests[0].header("User-Agent"));
    m_server.clearRequests();
    EXPECT_TRUE(m_server.requests().empty());
}

TEST_F(WebConfiguratorServer, HeadHasNoBody)
{
    const std::string text = ask(m_server.port(), "HEAD /a HTTP/1.1\r\nConnection: close\r\n\r\n");
    EXPECT_TRUE(contains(text, "Content-Length: 20"));
    EXPECT_EQ("", bodyOf(text));
}

TEST_F(WebConfiguratorServer, NonsenseClosesTheConnection) { EXPECT_EQ("", ask(m_server.port(), "hello\r\n\r\n")); }

TEST_F(WebConfiguratorServer, ARedirectionNamesItsLocation)
{
    m_server.addRule("location=/elsewhere");
    const std::string text = answer();
    EXPECT_TRUE(contains(text, "HTTP/1.1 302 Found\r\n"));
    EXPECT_TRUE(contains(text, "Location: /elsewhere\r\n"));
}

// Framing

TEST_F(WebConfiguratorServer, ChunksAreForClientsThatKnowThem)
{
    m_server.addRule("framing=chunked, piece=8");
    const std::string text = answer();
    EXPECT_TRUE(contains(text, "Transfer-Encoding: chunked\r\n"));
    EXPECT_FALSE(contains(text, "Content-Length"));
    EXPECT_EQ("8\r\n01234567\r\n8\r\n89abcdef\r\n4\r\nghij\r\n0\r\n\r\n", bodyOf(text));
    const std::string old = getPage(m_server.port(), "/page.asp", "HTTP/1.0");
    EXPECT_FALSE(contains(old, "Transfer-Encoding"));
    EXPECT_EQ(kBody, bodyOf(old));
}

TEST_F(WebConfiguratorServer, AlwaysChunkedIsForAllClients)
{
    m_server.addRule("framing=always-chunked");
    EXPECT_EQ("14\r\n0123456789abcdefghij\r\n0\r\n\r\n", bodyOf(getPage(m_server.port(), "/page.asp", "HTTP/1.0")));
}

TEST_F(WebConfiguratorServer, UntilCloseSaysNoLength)
{
    m_server.addRule("framing=until-close");
    const std::string text = answer();
    EXPECT_FALSE(contains(text, "Content-Length"));
    EXPECT_FALSE(contains(text, "Transfer-Encoding"));
    EXPECT_EQ(kBody, bodyOf(text));
}

// Faults

TEST_F(WebConfiguratorServer, ALieChangesTheLengthAndNotTheBody)
{
    m_server.addRule("lie=100");
    EXPECT_TRUE(contains(answer(), "Content-Length: 120\r\n"));
    m_server.addRule("lie=-15");
    const std::string text = answer();
    EXPECT_TRUE(contains(text, "Content-Length: 5\r\n"));
    EXPECT_EQ(kBody, bodyOf(text));
}

TEST_F(WebConfiguratorServer, ACutEndsTheConnectionWithinTheBody)
{
    m_server.addRule("cut=7");
    const std::string text = answer();
    EXPECT_TRUE(contains(text, "Content-Length: 20\r\n"));
    EXPECT_EQ("0123456", bodyOf(text));
    m_server.addRule("framing=chunked");
    EXPECT_EQ("7\r\n0123456\r\n", bodyOf(answer()));
}

TEST_F(WebConfiguratorServer, HangingUpSaysNothing)
{
    m_server.addRule("hang-up=1");
    EXPECT_EQ("", answer());
    EXPECT_EQ(1u, m_server.requests().size());
}

TEST_F(WebConfiguratorServer, ADelayComesBeforeTheAnswer)
{
    m_server.addRule("delay=200");
    const auto begun = steady_clock::now();
    EXPECT_EQ(kBody, bodyOf(answer()));
    EXPECT_GE(steady_clock::now() - begun, std::chrono::milliseconds(190));
}

TEST_F(WebConfiguratorServer, ADelayComesBeforeEachPiece)
{
    m_server.addRule("piece=5, piece-delay=60");
    const auto begun = steady_clock::now();
    EXPECT_EQ(kBody, bodyOf(answer()));
    EXPECT_GE(steady_clock::now() - begun, std::chrono::milliseconds(230));
}

TEST_F(WebConfiguratorServer, APieceOfNoBytesIsOneOfOneByte)
{
    m_server.addRule("piece=0");
    EXPECT_EQ(kBody, bodyOf(answer()));
}

TEST_F(WebConfiguratorServer, RawBytesTakeThePlaceOfTheAnswer)
{
    webconf_sample::Rule rule;
    rule.answer.raw = "not http at all";
    m_server.addRule(rule);
    EXPECT_EQ("not http at all", answer());
}

TEST(WebConfiguratorEnd, DoesNotWaitForWhatStalls)
{
    const auto begun = steady_clock::now();
    {
        WebConfigurator server;
        server.addRule("page=silent, silent=1");
        server.addRule("page=stalled, body=0123456789, stall=4");
        server.addRule("page=slow, body=x, delay=60000");
        const Socket idle = Socket::connect(server.port());
        const Socket silent = Socket::connect(server.port());
        const Socket stalled = Socket::connect(server.port());
        const Socket slow = Socket::connect(server.port());
        silent.send("GET /silent HTTP/1.1\r\n\r\n");
        slow.send("GET /slow HTTP/1.1\r\n\r\n");
        stalled.send("GET /stalled HTTP/1.1\r\n\r\n");
        std::string text;
        while (!contains(text, "\r\n\r\n0123"))
        {
            const std::string more = stalled.receive(1000);
            ASSERT_FALSE(more.empty());
            text += more;
        }
    }
    EXPECT_LT(steady_clock::now() - begun, std::chrono::seconds(5));
}

// Templates

TEST(WebConfiguratorDepot, ServesFilesAsTheyAre)
{
    const auttest::TestFolder folder;
    folder.writeFile("Part\\1.0_EN\\part.bin", std::string_view("{{Host}}\0\r\n", 11));
    WebConfigurator server;
    server.serveDepot(folder.path());
    const std::string answer = getPage(server.port(), "/Depot/Part/1.0_EN/part.bin");
    EXPECT_EQ(std::string("{{Host}}\0\r\n", 11), bodyOf(answer));
    EXPECT_NE(std::string::npos, answer.find("Content-Type: application/octet-stream\r\n"));
    EXPECT_EQ("HTTP/1.1 404 ", getPage(server.port(), "/Depot/Part/none.bin").substr(0, 13));
    EXPECT_EQ("HTTP/1.1 404 ", getPage(server.port(), "/Part/1.0_EN/part.bin").substr(0, 13));
    server.addRule("page=part.bin, status=503");
    EXPECT_EQ("HTTP/1.1 503 ", getPage(server.port(), "/Depot/Part/1.0_EN/part.bin").substr(0, 13));
}

TEST(WebConfiguratorDepot, IsNotLeft)
{
    const auttest::TestFolder folder;
    folder.writeFile("secret.txt", "secret");
    folder.makeFolder("depot");
    WebConfigurator server;
    server.serveDepot(folder / "depot");
    for (const char* path : {"/Depot/../secret.txt", "/Depot/%2e%2e/secret.txt", "/Depot/..%5Csecret.txt",
                             "/Depot/C:/x", "/Depot/", "/Depot"})
        EXPECT_EQ("HTTP/1.1 404 ", getPage(server.port(), path).substr(0, 13)) << path;
}

TEST(WebConfiguratorTemplates, AreFilledAndReadAfresh)
{
    const auttest::TestFolder folder;
    folder.writeFile("pages.rules", "page=p.asp, file=p.xml\n");
    folder.writeFile("p.xml", "<p host='{{Host}}' id='{{CertificateID}}'>{{Missing}}|{{Open</p>");
    const WebConfigurator server(folder.path());
    EXPECT_EQ("<p host='" + server.host() + "' id='a&lt;b&gt;&amp;&quot;'>|{{Open</p>",
              bodyOf(getPage(server.port(), "/V1/p.asp?CertificateID=a%3Cb%3E%26%22")));
    folder.writeFile("p.xml", "<new/>");
    EXPECT_EQ("<new/>", bodyOf(getPage(server.port(), "/V1/p.asp")));
}

TEST(WebConfiguratorTemplates, NowIsADateAndATime)
{
    const auttest::TestFolder folder;
    folder.writeFile("pages.rules", "file=now.xml");
    folder.writeFile("now.xml", "{{Now}}");
    const WebConfigurator server(folder.path());
    const std::string now = bodyOf(getPage(server.port(), "/"));
    int fields[6] = {};
    EXPECT_EQ(6, std::sscanf(now.c_str(), "%4d-%2d-%2d %2d:%2d:%2d", &fields[0], &fields[1], &fields[2], &fields[3],
                             &fields[4], &fields[5]));
    EXPECT_EQ(19u, now.size());
    EXPECT_GE(fields[0], 2024);
}

TEST(WebConfiguratorTemplates, AMissingFileIsAMissingPage)
{
    const auttest::TestFolder folder;
    folder.writeFile("pages.rules", "file=missing.xml");
    const WebConfigurator server(folder.path());
    EXPECT_TRUE(contains(getPage(server.port(), "/"), "HTTP/1.1 404 "));
}

TEST(WebConfiguratorTemplates, ABadRuleIsRefused)
{
    const auttest::TestFolder folder;
    folder.writeFile("pages.rules", "page=p.asp\nodd=1\n");
    EXPECT_THROW(WebConfigurator{folder.path()}, std::invalid_argument);
}
