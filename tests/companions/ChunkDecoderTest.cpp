#include "filetransfer/ChunkDecoder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>

using filetransfer::ChunkDecoder;

namespace
{
struct Decoded
{
    std::string body;
    bool complete = false;
    bool broken = false;
    std::size_t used = 0;
};

/// Feeds the input in pieces and takes the output in pieces of these sizes.
Decoded decode(const std::string& in, std::size_t inPiece, std::size_t outPiece)
{
    ChunkDecoder decoder;
    Decoded decoded;
    std::string out(outPiece, '\0');
    while (decoded.used < in.size() && !decoder.complete() && !decoder.broken())
    {
        const std::size_t bytes = std::min(inPiece, in.size() - decoded.used);
        const ChunkDecoder::Step step = decoder.decode(in.data() + decoded.used, bytes, out.data(), out.size());
        decoded.used += step.used;
        decoded.body.append(out, 0, step.decoded);
    }
    decoded.complete = decoder.complete();
    decoded.broken = decoder.broken();
    return decoded;
}
} // namespace

TEST(ChunkDecoder, EveryCuttingOfInputAndOutputGivesTheSameBody)
{
    const std::string coded = "5\r\nhello\r\nA;note=\"x\"\r\n0123456789\r\n1 \r\n!\r\n000\r\nTrailer: yes\r\n\r\n";
    for (std::size_t inPiece = 1; inPiece <= coded.size(); ++inPiece)
        for (const std::size_t outPiece : {1u, 2u, 3u, 7u, 100u})
        {
            const Decoded decoded = decode(coded, inPiece, outPiece);
            EXPECT_EQ("hello0123456789!", decoded.body) << inPiece << " " << outPiece;
            EXPECT_TRUE(decoded.complete) << inPiece << " " << outPiece;
        }
}

TEST(ChunkDecoder, NoBeginningOfABodyIsComplete)
{
    const std::string coded = "5\r\nhello\r\n3\r\nabc\r\n0\r\n\r\n";
    for (std::size_t length = 0; length < coded.size(); ++length)
    {
        const Decoded decoded = decode(coded.substr(0, length), 1000, 1000);
        EXPECT_FALSE(decoded.complete) << length;
        EXPECT_FALSE(decoded.broken) << length;
    }
}

TEST(ChunkDecoder, BytesBehindTheBodyAreLeftAlone)
{
    const std::string coded = "1\r\nx\r\n0\r\n\r\n";
    const Decoded decoded = decode(coded + "HTTP/1.1 200 OK", 1000, 1000);
    EXPECT_TRUE(decoded.complete);
    EXPECT_EQ(coded.size(), decoded.used);
}

TEST(ChunkDecoder, LineFeedsAloneAreUnderstood)
{
    const Decoded decoded = decode("3\nabc\n0\n\n", 1000, 1000);
    EXPECT_TRUE(decoded.complete);
    EXPECT_EQ("abc", decoded.body);
}

TEST(ChunkDecoder, WhatIsNoChunkIsBroken)
{
    for (const std::string& coded :
         {std::string("\r\n"), std::string("xyz\r\n"), std::string("-1\r\n"), std::string("5hello"),
          std::string("2\r\nabc\r\n"), std::string("1234567890123456\r\n"), std::string(";\r\n"),
          "1;" + std::string(70000, 'e'), "0\r\n" + std::string(70000, 't')})
        EXPECT_TRUE(decode(coded, 1000, 1000).broken) << coded.substr(0, 40);
}
