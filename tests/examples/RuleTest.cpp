#include "examples/webconfigurator/Rule.h"

#include <gtest/gtest.h>

using webconf_sample::Answer;
using webconf_sample::Framing;
using webconf_sample::HttpRequest;
using webconf_sample::parseRequest;
using webconf_sample::parseRule;
using webconf_sample::parseRules;
using webconf_sample::Rule;

TEST(Rule, EverySettingHasItsText)
{
    const Rule rule =
        parseRule("page=p.asp, path=/a/p.asp, query.CertificateID=A=B, times=3, file=f.xml, body=b, status=404, "
                  "type=text/plain, location=/x, framing=until-close, close=1, delay=20, piece-delay=30, "
                  "piece=40, lie=-5, cut=6, stall=7, silent=1, hang-up=0, reset=1");
    EXPECT_EQ("p.asp", rule.page);
    EXPECT_EQ("/a/p.asp", rule.path);
    EXPECT_EQ("A=B", rule.query.at("CertificateID"));
    EXPECT_EQ(3, rule.times);
    EXPECT_EQ("f.xml", rule.answer.file.value());
    EXPECT_EQ("b", rule.answer.body.value());
    EXPECT_EQ(404, rule.answer.status.value());
    EXPECT_EQ("text/plain", rule.answer.type.value());
    EXPECT_EQ("/x", rule.answer.location.value());
    EXPECT_EQ(Framing::untilClose, rule.answer.framing.value());
    EXPECT_TRUE(rule.answer.close.value());
    EXPECT_EQ(20, rule.answer.delay.value().count());
    EXPECT_EQ(30, rule.answer.pieceDelay.value().count());
    EXPECT_EQ(40u, rule.answer.piece.value());
    EXPECT_EQ(-5, rule.answer.lie.value());
    EXPECT_EQ(6u, rule.answer.cut.value());
    EXPECT_EQ(7u, rule.answer.stall.value());
    EXPECT_TRUE(rule.answer.silent.value());
    EXPECT_FALSE(rule.answer.hangUp.value());
    EXPECT_TRUE(rule.answer.reset.value());
}

TEST(Rule, AnEmptyTextFitsEverythingAndStatesNothing)
{
    const Rule rule = parseRule("  ");
    EXPECT_TRUE(rule.page.empty());
    EXPECT_EQ(-1, rule.times);
    EXPECT_FALSE(rule.answer.status.has_value());
    EXPECT_TRUE(rule.fits(parseRequest("GET /x HTTP/1.1\r\n").value()));
}

TEST(Rule, AnEscapedCommaIsPartOfTheValue) { EXPECT_EQ("a,b,,c", parseRule("body=a%2Cb%2C%2Cc").answer.body.value()); }

TEST(Rule, WhatIsNoRuleIsRefused)
{
    for (const char* text :
         {"pages=x", "status=many", "status=", "delay=1s", "close=yes", "framing=odd", "cut=-1", "="})
        EXPECT_THROW(static_cast<void>(parseRule(text)), std::invalid_argument) << text;
}

TEST(Rule, AFileOfRulesHasOneALineAndComments)
{
    const auto rules = parseRules("# which page\r\n\r\npage=a, status=1\r\n  page=b\n#page=c\npage=d");
    ASSERT_EQ(3u, rules.size());
    EXPECT_EQ("a", rules[0].page);
    EXPECT_EQ("b", rules[1].page);
    EXPECT_EQ("d", rules[2].page);
}

TEST(Rule, FitsByPagePathAndQuery)
{
    const HttpRequest request = parseRequest("GET /V1/Page.asp?CertificateID=a%2Bb&x=1 HTTP/1.1\r\n").value();
    EXPECT_TRUE(parseRule("page=page.ASP").fits(request));
    EXPECT_TRUE(parseRule("path=/v1/page.asp").fits(request));
    EXPECT_TRUE(parseRule("query.certificateid=a+b").fits(request));
    EXPECT_TRUE(parseRule("page=page.asp, query.x=1").fits(request));
    EXPECT_FALSE(parseRule("page=other.asp").fits(request));
    EXPECT_FALSE(parseRule("path=/page.asp").fits(request));
    EXPECT_FALSE(parseRule("query.CertificateID=A+B").fits(request));
    EXPECT_FALSE(parseRule("page=page.asp, query.x=2").fits(request));
    EXPECT_FALSE(parseRule("query.missing=1").fits(request));
}

TEST(Rule, AnAnswerKeepsWhatItStatesAndTakesTheRest)
{
    Answer answer = parseRule("status=500, body=mine").answer;
    answer.completeFrom(parseRule("status=200, file=other.xml, delay=5").answer);
    EXPECT_EQ(500, answer.status.value());
    EXPECT_EQ("mine", answer.body.value());
    EXPECT_FALSE(answer.file.has_value());
    EXPECT_EQ(5, answer.delay.value().count());
}

TEST(HttpRequest, IsTakenApart)
{
    const HttpRequest request =
        parseRequest("GET /V1/p.asp?a=1&b=x+y%2B&c&d=%zz HTTP/1.0\r\nHost: h\r\nX-Note:  two words \r\n").value();
    EXPECT_EQ("GET /V1/p.asp?a=1&b=x+y%2B&c&d=%zz HTTP/1.0", request.line);
    EXPECT_EQ("GET", request.method);
    EXPECT_EQ("HTTP/1.0", request.version);
    EXPECT_EQ("/V1/p.asp", request.path);
    EXPECT_EQ("p.asp", request.page);
    EXPECT_EQ("1", request.parameter("A"));
    EXPECT_EQ("x y+", request.parameter("b"));
    EXPECT_EQ("", request.parameter("c"));
    EXPECT_EQ("%zz", request.parameter("d"));
    EXPECT_EQ("two words", request.header("x-note"));
    EXPECT_EQ("", request.header("absent"));
}

TEST(HttpRequest, AProxyIsAskedForAWholeUrl)
{
    const HttpRequest request = parseRequest("GET http://far.example:80/V1/p.asp?u=http://x/y HTTP/1.1\r\n").value();
    EXPECT_EQ("/V1/p.asp", request.path);
    EXPECT_EQ("http://x/y", request.parameter("u"));
    EXPECT_EQ("", parseRequest("GET http://far.example HTTP/1.1\r\n").value().path);
}

TEST(HttpRequest, NonsenseIsRefused)
{
    for (const char* head : {"", "GET", "GET /x", "GET /x FTP/1.1\r\n", " /x HTTP/1.1\r\n", "\x16\x03\x01\r\n"})
        EXPECT_FALSE(parseRequest(head).has_value()) << head;
}
