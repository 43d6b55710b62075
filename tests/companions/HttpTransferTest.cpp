#include "examples/webconfigurator/Socket.h"
#include "tests/companions/HttpFixture.h"

#include <windows.h>

#include <chrono>
#include <climits>
#include <vector>

using auttest::fetch;
using auttest::Fetched;
using auttest::pattern;
using filetransfer::ConnectionParams;

class HttpTransfer : public auttest::HttpFixture
{
};

TEST_F(HttpTransfer, BringsTheBodyByteForByte)
{
    const std::string body = pattern(300000);
    serve(body);
    const Fetched fetched = fetch(url());
    EXPECT_EQ(1, fetched.status);
    EXPECT_EQ(200u, fetched.httpStatus);
    EXPECT_EQ(0u, fetched.systemError);
    EXPECT_TRUE(body == fetched.body) << fetched.body.size();
}

TEST_F(HttpTransfer, AnEmptyBodyIsFinishedWithDataOfNoBytes)
{
    serve("");
    const Fetched fetched = fetch(url());
    EXPECT_EQ(1, fetched.status);
    EXPECT_TRUE(fetched.hasData);
    EXPECT_EQ("", fetched.body);
}

TEST_F(HttpTransfer, NobodyAnswersIsNoConnection)
{
    std::string deadUrl;
    {
        const webconf_sample::WebConfigurator gone;
        deadUrl = gone.url("page.asp");
    }
    const Fetched fetched = fetch(deadUrl);
    EXPECT_EQ(12029, fetched.status);
    EXPECT_EQ(12029u, fetched.systemError);
    EXPECT_FALSE(fetched.hasData);
    EXPECT_EQ(0u, fetched.httpStatus);
}

TEST_F(HttpTransfer, AnUnknownHostIsANameThatIsNotResolved)
{
    EXPECT_EQ(12007, fetch("http://no-such-host.invalid/page.asp").status);
}

TEST_F(HttpTransfer, AServerThatTakesNoConnectionEndsWithTheConnectTimeOut)
{
    if (auttest::runsUnderWine())
        GTEST_SKIP() << "this WinInet waits for a connection as long as the system does";
    // A full backlog leaves further connections unanswered.
    const auto listener = webconf_sample::Socket::listen(0, nullptr, 1);
    std::vector<webconf_sample::Socket> waiting;
    for (int i = 0; i < 2; ++i)
        waiting.push_back(webconf_sample::Socket::connect(listener.port()));
    const auto begun = std::chrono::steady_clock::now();
    const Fetched fetched = fetch("http://127.0.0.1:" + std::to_string(listener.port()) + "/",
                                  [](ConnectionParams& params) { params.connectTimeOut = 1; });
    const auto took = std::chrono::steady_clock::now() - begun;
    EXPECT_GT(fetched.status, 2);
    EXPECT_GE(took, std::chrono::milliseconds(900));
    EXPECT_LT(took, std::chrono::seconds(4));
}

// Retries

TEST_F(HttpTransfer, AFailingAttemptIsRepeatedAsOftenAsTheParametersSay)
{
    serve("body", "hang-up=1");
    const Fetched fetched = fetch(url(), [](ConnectionParams& params) { params.connectionRetries = 3; });
    EXPECT_GT(fetched.status, 2);
    EXPECT_EQ(4u, m_server.requests().size());
}

TEST_F(HttpTransfer, ABodyThatWasCutOffIsFetchedAgainFromItsBeginning)
{
    serve("the whole body");
    m_server.addRule("cut=5, times=2");
    const Fetched fetched = fetch(url(), [](ConnectionParams& params) { params.connectionRetries = 5; });
    EXPECT_EQ(1, fetched.status);
    EXPECT_EQ("the whole body", fetched.body);
    EXPECT_EQ(3u, m_server.requests().size());
}

TEST_F(HttpTransfer, AnErrorStatusIsNotRepeated)
{
    serve("", "status=503");
    EXPECT_EQ(13503, fetch(url(), [](ConnectionParams& params) { params.connectionRetries = 5; }).status);
    EXPECT_EQ(1u, m_server.requests().size());
}

TEST_F(HttpTransfer, RetriesBelowZeroAreNone)
{
    serve("", "hang-up=1");
    EXPECT_GT(fetch(url(), [](ConnectionParams& params) { params.connectionRetries = -7; }).status, 2);
    EXPECT_EQ(1u, m_server.requests().size());
}

TEST_F(HttpTransfer, ThePauseBeforeARetryIsKept)
{
    serve("", "hang-up=1");
    const auto begun = std::chrono::steady_clock::now();
    fetch(url(),
          [](ConnectionParams& params)
          {
              params.connectionRetries = 2;
              params.retryPauseMs = 300;
          });
    EXPECT_GE(std::chrono::steady_clock::now() - begun, std::chrono::milliseconds(590));
}

// Packets

TEST_F(HttpTransfer, OneStepReadsAtMostOnePacket)
{
    serve(pattern(10000));
    const Fetched fetched = fetch(url(), [](ConnectionParams& params) { params.packetSize = 1000; });
    EXPECT_EQ(1, fetched.status);
    EXPECT_EQ(10000u, fetched.body.size());
    EXPECT_GE(fetched.steps, 12); // opening, ten packets, the end
}

TEST_F(HttpTransfer, APacketIsNeverLongerThanTheMaximumPacketSize)
{
    serve(pattern(10000));
    const Fetched fetched = fetch(url(),
                                  [](ConnectionParams& params)
                                  {
                                      params.packetSize = 100000;
                                      params.maximumPacketSize = 500;
                                  });
    EXPECT_EQ(10000u, fetched.body.size());
    EXPECT_GE(fetched.steps, 22);
}

TEST_F(HttpTransfer, APacketOfOneByteIsEnough)
{
    const std::string body = pattern(300);
    serve(body);
    const Fetched fetched = fetch(url(), [](ConnectionParams& params) { params.packetSize = 1; });
    EXPECT_TRUE(body == fetched.body);
}

TEST_F(HttpTransfer, PacketSizesOfZeroAndBelowAreTheDefault)
{
    serve(pattern(100000));
    for (const int size : {0, -1, INT_MIN})
    {
        const Fetched fetched = fetch(url(),
                                      [size](ConnectionParams& params)
                                      {
                                          params.packetSize = size;
                                          params.maximumPacketSize = size;
                                      });
        EXPECT_EQ(100000u, fetched.body.size()) << size;
    }
}

TEST_F(HttpTransfer, ThePauseAfterEachPacketIsKept)
{
    serve(pattern(1000));
    const auto begun = std::chrono::steady_clock::now();
    fetch(url(),
          [](ConnectionParams& params)
          {
              params.packetSize = 100;
              params.packetPauseMs = 30;
          });
    EXPECT_GE(std::chrono::steady_clock::now() - begun, std::chrono::milliseconds(290));
}

// The longest body

struct LengthRow
{
    const char* name;
    const char* rule;
};

class HttpMaximumLength : public auttest::HttpFixture, public ::testing::WithParamInterface<LengthRow>
{
};

TEST_P(HttpMaximumLength, OneByteMoreIsTooLong)
{
    const auto limited = [](ConnectionParams& params)
    {
        params.maximumLength = 1000;
        params.packetSize = 300;
    };
    serve(pattern(1001), GetParam().rule);
    const Fetched tooLong = fetch(url(), limited);
    EXPECT_EQ(14004, tooLong.status);
    EXPECT_FALSE(tooLong.hasData);
    serve(pattern(1000), GetParam().rule);
    const Fetched fitting = fetch(url(), limited);
    EXPECT_EQ(1, fitting.status);
    EXPECT_EQ(1000u, fitting.body.size());
}

INSTANTIATE_TEST_SUITE_P(All, HttpMaximumLength,
                         ::testing::Values(LengthRow{"Announced", "framing=length"},
                                           LengthRow{"Chunked", "framing=chunked"},
                                           LengthRow{"UntilClose", "framing=until-close"}),
                         [](const auto& row) { return row.param.name; });

TEST_F(HttpTransfer, AnAnnouncedLengthBeyondTheMaximumEndsAtOnce)
{
    serve("short", "lie=10000000000");
    EXPECT_EQ(14004, fetch(url()).status);
}

// Answers that lie or are none

TEST_F(HttpTransfer, ALengthThatIsTooShortEndsTheBodyThereAndSpoilsNoOther)
{
    serve("0123456789<answer>of somebody else</answer>", "lie=-33");
    const Fetched shortened = fetch(url());
    EXPECT_EQ(1, shortened.status);
    EXPECT_EQ("0123456789", shortened.body);
    serve("the next", "lie=0");
    EXPECT_EQ("the next", fetch(url()).body);
}

TEST_F(HttpTransfer, AnErrorPageThatIsNotReadSpoilsNoOther)
{
    serve(pattern(200000), "status=404");
    EXPECT_EQ(13404, fetch(url()).status);
    serve("the next", "status=200");
    EXPECT_EQ("the next", fetch(url()).body);
}

struct RawRow
{
    const char* name;
    const char* bytes;
};

class HttpNonsense : public auttest::HttpFixture, public ::testing::WithParamInterface<RawRow>
{
};

TEST_P(HttpNonsense, IsAnErrorWithoutData)
{
    serveRaw(GetParam().bytes);
    const Fetched fetched = fetch(url(), [](ConnectionParams& params) { params.timeOut = 2; });
    EXPECT_GT(fetched.status, 2);
    EXPECT_FALSE(fetched.hasData) << fetched.body;
}

INSTANTIATE_TEST_SUITE_P(
    All, HttpNonsense,
    ::testing::Values(
        RawRow{"NoHttp", "220 mail.example ESMTP ready\r\n\r\n"}, RawRow{"OnlyALineEnd", "\r\n"},
        RawRow{"NoHttpAndNoLineEnd", "<html>"}, RawRow{"HalfAStatusLine", "HTTP/1.1 2"},
        RawRow{"HalfAHead", "HTTP/1.1 200 OK\r\nContent-Length: 5\r\nContent-Ty"},
        RawRow{"LengthNoNumber", "HTTP/1.1 200 OK\r\nContent-Length: many\r\n\r\nabc"},
        RawRow{"LengthNegative", "HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\nabc"},
        RawRow{"LengthBeyond64Bits", "HTTP/1.1 200 OK\r\nContent-Length: 99999999999999999999\r\n\r\nabc"},
        RawRow{"StatusNoNumber", "HTTP/1.1 abc OK\r\nContent-Length: 3\r\n\r\nabc"},
        RawRow{"ChunkSizeNoNumber", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\nabc\r\n0\r\n\r\n"},
        RawRow{"ChunkLongerThanItsData", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n10\r\nabc\r\n0\r\n\r\n"},
        RawRow{"ChunkShorterThanItsData",
               "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nabcdef\r\n0\r\n\r\n"}),
    [](const auto& row) { return row.param.name; });

TEST_F(HttpTransfer, InterimAnswersAreSkippedButNotForEver)
{
    const std::string interim = "HTTP/1.1 100 Continue\r\n\r\n";
    serveRaw(interim + interim + "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nok\r\n0\r\n\r\n");
    m_server.addRule("body=x, framing=chunked, times=1"); // sends the library to ask for itself
    EXPECT_EQ("ok", fetch(url()).body);

    std::string endless;
    while (endless.size() < 1000000)
        endless += interim;
    serveRaw(endless);
    m_server.addRule("body=x, framing=chunked, times=1");
    EXPECT_EQ(12152, fetch(url()).status);
}

TEST_F(HttpTransfer, AnAnswerWithoutHeadersIsUnderstood)
{
    serveRaw("HTTP/1.0 200 OK\r\n\r\n<answer/>");
    const Fetched fetched = fetch(url());
    EXPECT_EQ(1, fetched.status);
    EXPECT_EQ("<answer/>", fetched.body);
}

// Redirections

TEST_F(HttpTransfer, ARedirectionIsFollowed)
{
    m_server.addRule("page=new.asp, body=found");
    m_server.addRule("page=old.asp, location=/WebConfV1/new.asp");
    const Fetched fetched = fetch(m_server.url("old.asp"));
    EXPECT_EQ(1, fetched.status);
    EXPECT_EQ(200u, fetched.httpStatus);
    EXPECT_EQ("found", fetched.body);
}

TEST_F(HttpTransfer, ARedirectionToABodyInChunksIsFollowed)
{
    m_server.addRule("page=new.asp, body=found, framing=always-chunked, close=1");
    m_server.addRule("page=old.asp, location=/WebConfV1/new.asp");
    EXPECT_EQ("found", fetch(m_server.url("old.asp")).body);
}

TEST_F(HttpTransfer, AnEndlessRedirectionEndsInAnError)
{
    m_server.addRule("location=/WebConfV1/again.asp");
    EXPECT_GT(fetch(url()).status, 2);
}

TEST_F(HttpTransfer, ARedirectionToAFileIsNotFollowed)
{
    m_server.addRule("location=file:///C:/windows/win.ini");
    const Fetched fetched = fetch(url());
    EXPECT_GT(fetched.status, 2);
    EXPECT_FALSE(fetched.hasData);
}

// What is asked

TEST_F(HttpTransfer, AsksWithGetAndItsOwnName)
{
    serve("x");
    fetch(url());
    ASSERT_EQ(1u, m_server.requests().size());
    const auto request = m_server.requests()[0];
    EXPECT_EQ("GET /WebConfV1/page.asp HTTP/1.1", request.line);
    EXPECT_EQ(0u, request.header("User-Agent").find("7xFileTransfer/")) << request.header("User-Agent");
    EXPECT_EQ("*/*", request.header("Accept"));
}

TEST_F(HttpTransfer, BlanksAndOtherUnsafeCharactersAreEscapedAndTheRestIsSentAsItStands)
{
    serve("x");
    fetch(m_server.url("wcfg.asp", "ProductName=Automatic Update&CID=a%2Bb+c=/&Q=\"<>\"&U=\xe9"));
    ASSERT_EQ(1u, m_server.requests().size());
    EXPECT_EQ("/WebConfV1/wcfg.asp?ProductName=Automatic%20Update&CID=a%2Bb+c=/&Q=%22%3C%3E%22&U=%E9",
              m_server.requests()[0].target);
}

TEST_F(HttpTransfer, LineEndsInAUrlAddNoHeader)
{
    serve("x");
    EXPECT_EQ(1, fetch(url() + "?a=1 HTTP/1.1\r\nX-Evil: yes\r\n\r\n").status);
    ASSERT_EQ(1u, m_server.requests().size());
    EXPECT_EQ("", m_server.requests()[0].header("X-Evil"));
    EXPECT_EQ("/WebConfV1/page.asp?a=1%20HTTP/1.1%0D%0AX-Evil:%20yes%0D%0A%0D%0A", m_server.requests()[0].target);
}

TEST_F(HttpTransfer, AUrlOfTenThousandCharactersArrivesWhole)
{
    serve("x");
    const std::string value(10000, 'v');
    EXPECT_EQ(1, fetch(m_server.url("page.asp", "v=" + value)).status);
    ASSERT_EQ(1u, m_server.requests().size());
    EXPECT_EQ(value, m_server.requests()[0].parameter("v"));
}

TEST_F(HttpTransfer, AUrlWithoutAPathAsksForTheRoot)
{
    serve("x");
    fetch(root());
    fetch(root() + "?q=1");
    ASSERT_EQ(2u, m_server.requests().size());
    EXPECT_EQ("/", m_server.requests()[0].target);
    EXPECT_EQ("/?q=1", m_server.requests()[1].target);
}

TEST_F(HttpTransfer, UpperCaseSchemeAndBackslashesAreUnderstood)
{
    serve("x");
    EXPECT_EQ(1, fetch("HTTP:\\\\" + m_server.host() + "\\WebConfV1\\page.asp?keep=a\\b").status);
    ASSERT_EQ(1u, m_server.requests().size());
    EXPECT_EQ("/WebConfV1/page.asp?keep=a%5Cb", m_server.requests()[0].target);
}

TEST_F(HttpTransfer, AFragmentIsNotSent)
{
    serve("x");
    fetch(url() + "?a=1#chapter");
    ASSERT_EQ(1u, m_server.requests().size());
    EXPECT_EQ("/WebConfV1/page.asp?a=1", m_server.requests()[0].target);
}

TEST_F(HttpTransfer, WithTheCacheDisabledEveryFetchAsksPastCaches)
{
    webconf_sample::Rule cachable;
    cachable.answer.body = "first";
    cachable.answer.headers = "Cache-Control: max-age=3600\r\nETag: \"1\"\r\n";
    m_server.addRule(cachable);
    EXPECT_EQ("first", fetch(url()).body);
    cachable.answer.body = "second";
    m_server.addRule(cachable);
    EXPECT_EQ("second", fetch(url()).body);
    ASSERT_EQ(2u, m_server.requests().size());
    for (const auto& request : m_server.requests())
    {
        EXPECT_EQ("no-cache", request.header("Pragma"));
        EXPECT_EQ("", request.header("If-None-Match"));
        EXPECT_EQ("", request.header("If-Modified-Since"));
    }
}

TEST_F(HttpTransfer, WithTheCacheEnabledAnOutdatedCopyIsNotTaken)
{
    const auto cached = [](ConnectionParams& params) { params.cacheDisabled = 0; };
    webconf_sample::Rule cachable;
    cachable.answer.body = "first";
    cachable.answer.headers = "Last-Modified: Mon, 01 Jun 2026 00:00:00 GMT\r\n";
    m_server.addRule(cachable);
    EXPECT_EQ("first", fetch(url(), cached).body);
    cachable.answer.body = "second";
    cachable.answer.headers = "Last-Modified: Tue, 02 Jun 2026 00:00:00 GMT\r\n";
    m_server.addRule(cachable);
    EXPECT_EQ("second", fetch(url(), cached).body);
    ASSERT_FALSE(m_server.requests().empty());
    EXPECT_EQ("", m_server.requests()[0].header("Pragma"));
}

// Logging on

class HttpLogOn : public auttest::HttpFixture, public ::testing::WithParamInterface<LengthRow>
{
protected:
    /// Asks for a log-on whoever does not bring one.
    void serveGuarded(const std::string& framing)
    {
        serve("secret", framing);
        webconf_sample::Rule guard;
        guard.header = {"Authorization", ""};
        guard.answer.status = 401;
        guard.answer.body = "";
        guard.answer.framing = webconf_sample::Framing::length;
        guard.answer.headers = "WWW-Authenticate: Basic realm=\"depot\"\r\n";
        m_server.addRule(guard);
    }
};

TEST_P(HttpLogOn, TheGivenUserIsSentWhenTheServerAsks)
{
    serveGuarded(GetParam().rule);
    EXPECT_EQ("secret", fetch(url(), nullptr, false, "user", "pass").body);
    EXPECT_EQ("", m_server.requests().front().header("Authorization"));
    EXPECT_EQ("Basic dXNlcjpwYXNz", m_server.requests().back().header("Authorization"));
}

TEST_P(HttpLogOn, TheUserOfTheUrlIsSentWhenNoOtherIsGiven)
{
    serveGuarded(GetParam().rule);
    EXPECT_EQ("secret", fetch("http://us%65r:p%61ss@" + m_server.host() + "/page.asp").body);
    EXPECT_EQ("Basic dXNlcjpwYXNz", m_server.requests().back().header("Authorization"));
}

INSTANTIATE_TEST_SUITE_P(All, HttpLogOn,
                         ::testing::Values(LengthRow{"WithALength", "framing=length"},
                                           LengthRow{"InChunks", "framing=always-chunked"}),
                         [](const auto& row) { return row.param.name; });

TEST_P(HttpLogOn, AServerThatDoesNotAskIsToldNoPassword)
{
    serve("open to all", GetParam().rule);
    EXPECT_EQ("open to all", fetch(url(), nullptr, false, "user", "pass").body);
    for (const auto& request : m_server.requests())
        EXPECT_EQ("", request.header("Authorization"));
}

TEST_F(HttpTransfer, WithoutAUserARequestedLogOnIsAnError)
{
    webconf_sample::Rule guard;
    guard.answer.status = 401;
    guard.answer.body = "who are you?";
    guard.answer.headers = "WWW-Authenticate: Basic realm=\"depot\"\r\n";
    m_server.addRule(guard);
    EXPECT_EQ(13401, fetch(url()).status);
}
