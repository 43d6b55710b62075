#include "examples/webconfigurator/WebConfigurator.h"
#include "tests/companions/TransferLibrary.h"

#include <gtest/gtest.h>
#include <string>

using auttest::fetch;
using auttest::Fetched;
using filetransfer::ConnectionParams;
using webconf_sample::Rule;
using webconf_sample::WebConfigurator;

namespace
{
std::string pattern(std::size_t bytes)
{
    std::string text(bytes, '\0');
    unsigned value = 12345;
    for (char& c : text)
    {
        value = value * 1664525u + 1013904223u;
        c = static_cast<char>(value >> 24);
    }
    return text;
}

class HttpTransfer : public ::testing::Test
{
protected:
    /// Serves `body` and what the rule's text states.
    void serve(const std::string& body, const std::string& rule = std::string())
    {
        Rule served = webconf_sample::parseRule(rule);
        served.answer.body = body;
        m_server.addRule(std::move(served));
    }

    WebConfigurator m_server;
};
} // namespace

TEST_F(HttpTransfer, BringsTheBodyByteForByte)
{
    const std::string body = pattern(300000);
    serve(body);
    const Fetched fetched = fetch(m_server.url("x.asp"));
    EXPECT_EQ(1, fetched.status);
    EXPECT_EQ(200u, fetched.httpStatus);
    EXPECT_TRUE(body == fetched.body) << fetched.body.size();
}

TEST_F(HttpTransfer, AnEmptyBodyIsFinishedWithDataOfNoBytes)
{
    serve("");
    const Fetched fetched = fetch(m_server.url("x.asp"));
    EXPECT_EQ(1, fetched.status);
    EXPECT_TRUE(fetched.hasData);
    EXPECT_EQ("", fetched.body);
}

struct FaultRow
{
    const char* name;
    const char* rule;
    int status; ///< kAnyError where systems differ in how they tell
};
constexpr int kAnyError = 0;

class HttpFault : public HttpTransfer, public ::testing::WithParamInterface<FaultRow>
{
};

TEST_P(HttpFault, EndsWithItsStatusAndWithoutData)
{
    serve(pattern(50000), GetParam().rule);
    const Fetched fetched = fetch(m_server.url("x.asp"), [](ConnectionParams& params) { params.timeOut = 1; });
    if (GetParam().status != kAnyError)
    {
        EXPECT_EQ(GetParam().status, fetched.status);
    }
    EXPECT_GT(fetched.status, 2);
    EXPECT_FALSE(fetched.hasData);
}

INSTANTIATE_TEST_SUITE_P(
    All, HttpFault,
    ::testing::Values(FaultRow{"CutOffInTheMiddle", "cut=20000", 14005}, FaultRow{"CutOffAtOnce", "cut=0", 14005},
                      FaultRow{"CutOffOneByteBeforeTheEnd", "cut=49999", 14005},
                      FaultRow{"LengthTooLong", "lie=1", 14005}, FaultRow{"ResetInTheMiddle", "cut=20000, reset=1", kAnyError},
                      FaultRow{"Stalled", "stall=20000", 12002}, FaultRow{"Silent", "silent=1", kAnyError},
                      FaultRow{"SlowerThanTheTimeOut", "delay=3000", kAnyError}, FaultRow{"HungUp", "hang-up=1", kAnyError},
                      FaultRow{"HungUpWithReset", "hang-up=1, reset=1", kAnyError},
                      FaultRow{"ChunkedCutBetweenChunks", "framing=chunked, piece=1000, cut=20000", 14005},
                      FaultRow{"ChunkedCutAtOnce", "framing=chunked, cut=0", 14005},
                      FaultRow{"ChunkedCutWithoutTheLastChunk", "framing=chunked, cut=50000", 14005},
                      FaultRow{"AlwaysChunkedCutWithoutTheLastChunk", "framing=always-chunked, cut=50000", 14005},
                      FaultRow{"AlwaysChunkedCutAndClosing", "framing=always-chunked, close=1, cut=50000", 14005},
                      FaultRow{"NotFound", "status=404", 13404}, FaultRow{"ServerError", "status=500", 13500},
                      FaultRow{"NoContent", "status=204", 13204}, FaultRow{"Partial", "status=206", 13206},
                      FaultRow{"Unavailable", "status=503", 13503}, FaultRow{"Odd", "status=999", 13999}),
    [](const auto& row) { return row.param.name; });

class HttpWhole : public HttpTransfer, public ::testing::WithParamInterface<FaultRow>
{
};

TEST_P(HttpWhole, BringsTheBody)
{
    const std::string body = pattern(50000);
    serve(body, GetParam().rule);
    const Fetched fetched = fetch(m_server.url("x.asp"), [](ConnectionParams& params) { params.timeOut = 2; });
    EXPECT_EQ(1, fetched.status);
    EXPECT_TRUE(body == fetched.body) << fetched.body.size();
    for (const auto& request : m_server.requests())
        std::printf("%s (%u)\n", request.line.c_str(), request.connection);
}

INSTANTIATE_TEST_SUITE_P(
    All, HttpWhole,
    ::testing::Values(FaultRow{"Closing", "close=1", 1}, FaultRow{"Chunked", "framing=chunked", 1},
                      FaultRow{"ChunkedInSmallPieces", "framing=chunked, piece=77", 1},
                      FaultRow{"ChunkedAndClosing", "framing=chunked, close=1", 1},
                      FaultRow{"AlwaysChunked", "framing=always-chunked", 1},
                      FaultRow{"AlwaysChunkedAndClosing", "framing=always-chunked, close=1", 1},
                      FaultRow{"UntilClose", "framing=until-close", 1},
                      FaultRow{"Slow", "piece=10000, piece-delay=300", 1}),
    [](const auto& row) { return row.param.name; });
