#include "filetransfer/HttpHead.h"

#include <gtest/gtest.h>

using filetransfer::directRequest;
using filetransfer::endsHead;
using filetransfer::HttpHead;
using filetransfer::parseHead;

TEST(HttpHead, StatusLengthAndCodingAreRead)
{
    HttpHead head;
    EXPECT_TRUE(parseHead("HTTP/1.1 200 OK\r\nServer: x\r\ncontent-LENGTH:  42 \r\n\r\n", head));
    EXPECT_EQ(200u, head.status);
    EXPECT_EQ(42u, head.length.value_or(0));
    EXPECT_FALSE(head.chunked);
}

TEST(HttpHead, AChunkedBodyHasNoLength)
{
    HttpHead head;
    EXPECT_TRUE(parseHead("HTTP/1.1 200 OK\r\nContent-Length: 42\r\nTransfer-Encoding: Chunked\r\n\r\n", head));
    EXPECT_TRUE(head.chunked);
    EXPECT_FALSE(head.length.has_value());
}

TEST(HttpHead, WhatIsNoAnswerOrContradictsItselfIsRefused)
{
    for (const char* text :
         {"", "\r\n\r\n", "220 mail\r\n\r\n", "HTTP/2 200\r\n\r\n", "HTTP/1.1\r\n\r\n", "HTTP/1.1 2\r\n\r\n",
          "HTTP/1.1 099 x\r\n\r\n", "HTTP/1.1 abc x\r\n\r\n", "HTTP/1.1 200 OK\r\nContent-Length: x\r\n\r\n",
          "HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n", "HTTP/1.1 200 OK\r\nContent-Length:\r\n\r\n",
          "HTTP/1.1 200 OK\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\n"})
    {
        HttpHead head;
        EXPECT_FALSE(parseHead(text, head)) << text;
        EXPECT_EQ(0u, head.status) << text;
    }
}

TEST(HttpHead, TheSameLengthTwiceIsNoContradiction)
{
    HttpHead head;
    EXPECT_TRUE(parseHead("HTTP/1.1 200 OK\r\nContent-Length: 7\r\nContent-Length: 7\r\n\r\n", head));
    EXPECT_EQ(7u, head.length.value_or(0));
}

TEST(HttpHead, ABasicLogOnIsSeenAmongOthers)
{
    HttpHead head;
    EXPECT_TRUE(parseHead(
        "HTTP/1.1 401 x\r\nWWW-Authenticate: Negotiate\r\nwww-authenticate: basic realm=\"Basics\"\r\n\r\n", head));
    EXPECT_TRUE(head.asksBasic);
    HttpHead other;
    EXPECT_TRUE(parseHead("HTTP/1.1 401 x\r\nWWW-Authenticate: Negotiate Basic\r\n\r\n", other));
    EXPECT_FALSE(other.asksBasic);
}

TEST(HttpHead, TheEmptyLineEndsIt)
{
    EXPECT_TRUE(endsHead("HTTP/1.1 200 OK\r\n\r\n"));
    EXPECT_TRUE(endsHead("HTTP/1.1 200 OK\n\n"));
    EXPECT_FALSE(endsHead("HTTP/1.1 200 OK\r\n"));
    EXPECT_FALSE(endsHead(""));
}

TEST(HttpHead, ADirectRequestAsksForOneAnswer)
{
    filetransfer::Url url;
    url.host = "host";
    url.port = 8080;
    url.object = "/a?b";
    EXPECT_EQ("GET /a?b HTTP/1.1\r\nHost: host:8080\r\nUser-Agent: 7xFileTransfer/1.2.3\r\nAccept: */*\r\n"
              "Connection: close\r\n\r\n",
              directRequest(url, false, false));
}

TEST(HttpHead, ADirectRequestLogsOnAndAsksPastCaches)
{
    filetransfer::Url url;
    url.host = "host";
    url.port = 80;
    url.object = "/";
    for (const auto& [user, password, coded] : {std::tuple("user", "pass", "dXNlcjpwYXNz"), std::tuple("a", "", "YTo="),
                                                std::tuple("ab", "c", "YWI6Yw=="), std::tuple("abc", "de", "YWJjOmRl")})
    {
        url.user = user;
        url.password = password;
        EXPECT_EQ("GET / HTTP/1.1\r\nHost: host\r\nUser-Agent: 7xFileTransfer/1.2.3\r\nAccept: */*\r\n"
                  "Connection: close\r\nPragma: no-cache\r\nCache-Control: no-cache\r\nAuthorization: Basic " +
                      std::string(coded) + "\r\n\r\n",
                  directRequest(url, true, true));
    }
}
