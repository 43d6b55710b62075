#ifndef AUTOOLS_TESTS_COMPANIONS_HTTPFIXTURE_H
#define AUTOOLS_TESTS_COMPANIONS_HTTPFIXTURE_H

#include "examples/webconfigurator/WebConfigurator.h"
#include "tests/companions/TransferLibrary.h"

#include <gtest/gtest.h>
#include <string>

namespace auttest
{
/// Bytes of every value in no simple order.
inline std::string pattern(std::size_t bytes)
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

class HttpFixture : public ::testing::Test
{
protected:
    /// Serves `body` and what the rule's text states.
    void serve(const std::string& body, const std::string& rule = std::string())
    {
        webconf_sample::Rule served = webconf_sample::parseRule(rule);
        served.answer.body = body;
        m_server.addRule(std::move(served));
    }
    /// Serves these bytes instead of an HTTP answer.
    void serveRaw(const std::string& bytes)
    {
        webconf_sample::Rule served;
        served.answer.raw = bytes;
        m_server.addRule(std::move(served));
    }
    std::string url() const { return m_server.url("page.asp"); }
    std::string root() const { return "http://" + m_server.host(); }

    webconf_sample::WebConfigurator m_server;
};
} // namespace auttest

#endif
