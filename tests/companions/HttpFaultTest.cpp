#include "tests/companions/HttpFixture.h"

using auttest::fetch;
using auttest::Fetched;
using auttest::HttpFixture;
using auttest::pattern;
using filetransfer::ConnectionParams;

namespace
{
struct FaultRow
{
    const char* name;
    const char* rule;
    int status; ///< kAnyError where systems differ in how they tell
};
constexpr int kAnyError = 0;
} // namespace

/// A server that does not give the whole body with status 200.
class HttpFault : public HttpFixture, public ::testing::WithParamInterface<FaultRow>
{
};

TEST_P(HttpFault, EndsWithItsStatusAndWithoutData)
{
    serve(pattern(50000), GetParam().rule);
    const Fetched fetched = fetch(url(), [](ConnectionParams& params) { params.timeOut = 1; });
    if (GetParam().status != kAnyError)
    {
        EXPECT_EQ(GetParam().status, fetched.status);
    }
    EXPECT_GT(fetched.status, 2);
    EXPECT_FALSE(fetched.hasData);
}

INSTANTIATE_TEST_SUITE_P(
    All, HttpFault,
    ::testing::Values(
        FaultRow{"CutOffInTheMiddle", "cut=20000", 14005}, FaultRow{"CutOffAtOnce", "cut=0", 14005},
        FaultRow{"CutOffOneByteBeforeTheEnd", "cut=49999", 14005}, FaultRow{"LengthTooLong", "lie=1", 14005},
        FaultRow{"ResetInTheMiddle", "cut=20000, reset=1", kAnyError},
        FaultRow{"UntilCloseAndReset", "framing=until-close, cut=20000, reset=1", kAnyError},
        FaultRow{"ChunkedAndReset", "framing=chunked, cut=20000, reset=1", kAnyError},
        FaultRow{"ChunkedAndStalled", "framing=chunked, stall=20000", 12002}, FaultRow{"Stalled", "stall=20000", 12002},
        FaultRow{"Silent", "silent=1", kAnyError}, FaultRow{"SlowerThanTheTimeOut", "delay=3000", kAnyError},
        FaultRow{"HungUp", "hang-up=1", kAnyError}, FaultRow{"HungUpWithReset", "hang-up=1, reset=1", kAnyError},
        FaultRow{"ChunkedCutBetweenChunks", "framing=chunked, piece=1000, cut=20000", 14005},
        FaultRow{"ChunkedCutAtOnce", "framing=chunked, cut=0", 14005},
        FaultRow{"ChunkedCutWithoutTheLastChunk", "framing=chunked, cut=50000", 14005},
        FaultRow{"AlwaysChunkedCutWithoutTheLastChunk", "framing=always-chunked, cut=50000", 14005},
        FaultRow{"AlwaysChunkedCutAndClosing", "framing=always-chunked, close=1, cut=50000", 14005},
        FaultRow{"NotFound", "status=404", 13404}, FaultRow{"ServerError", "status=500", 13500},
        FaultRow{"NoContent", "status=204", 13204}, FaultRow{"Partial", "status=206", 13206},
        FaultRow{"Unavailable", "status=503", 13503}, FaultRow{"Odd", "status=999", 13999}),
    [](const auto& row) { return row.param.name; });

/// Every way in which a server may send a whole body.
class HttpWhole : public HttpFixture, public ::testing::WithParamInterface<FaultRow>
{
};

TEST_P(HttpWhole, BringsTheBody)
{
    const std::string body = pattern(50000);
    serve(body, GetParam().rule);
    const Fetched fetched = fetch(url(), [](ConnectionParams& params) { params.timeOut = 2; });
    EXPECT_EQ(1, fetched.status);
    EXPECT_TRUE(body == fetched.body) << fetched.body.size();
}

INSTANTIATE_TEST_SUITE_P(All, HttpWhole,
                         ::testing::Values(FaultRow{"Closing", "close=1", 1}, FaultRow{"Chunked", "framing=chunked", 1},
                                           FaultRow{"ChunkedInSmallPieces", "framing=chunked, piece=77", 1},
                                           FaultRow{"ChunkedAndClosing", "framing=chunked, close=1", 1},
                                           FaultRow{"AlwaysChunked", "framing=always-chunked", 1},
                                           FaultRow{"AlwaysChunkedAndClosing", "framing=always-chunked, close=1", 1},
                                           FaultRow{"UntilClose", "framing=until-close", 1},
                                           FaultRow{"Slow", "piece=10000, piece-delay=300", 1}),
                         [](const auto& row) { return row.param.name; });
