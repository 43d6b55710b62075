#include "webconf/Network.h"

#include "tests/support/ClientRegistry.h"
#include "tests/support/ImportPatch.h"
#include "webconf/CConfig.h"
#include "webconf/DataExchange.h"
#include "webconfigurator/WebConfigurator.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

// Over real HTTP: the real download library against a Web Configurator on the loopback.

namespace
{
class Download : public ::testing::Test
{
protected:
    /// Answers "page" as the rule says and fetches it.
    int fetch(const std::string& rule, const CConfig* config = nullptr)
    {
        m_server.addRule("page=page, " + rule);
        return GetDataFromStream(m_server.url("page").c_str(), &m_status, config, m_data);
    }
    void expectNothing()
    {
        EXPECT_NE(0, m_status);
        EXPECT_STREQ("before", m_data);
    }

    auttest::ClientRegistry m_registry;
    webconf_sample::WebConfigurator m_server;
    int m_status = -7;
    String m_data{"before"};
};

TEST_F(Download, GivesTheBody)
{
    EXPECT_EQ(1, fetch("body=<a>text</a>"));
    EXPECT_EQ(0, m_status);
    EXPECT_STREQ("<a>text</a>", m_data);
}

TEST_F(Download, GivesALargeBodyWhole)
{
    const std::string body(5'000'000, 'x');
    webconf_sample::Rule rule;
    rule.answer.body = body;
    m_server.addRule(rule);
    EXPECT_EQ(1, GetDataFromStream(m_server.url("any").c_str(), &m_status, nullptr, m_data));
    EXPECT_EQ(5'000'000, m_data.GetLength());
    EXPECT_EQ(body, static_cast<const char*>(m_data));
}

TEST_F(Download, ABodyInChunksArrivesWhole)
{
    EXPECT_EQ(1, fetch("body=0123456789, framing=always-chunked, piece=3"));
    EXPECT_STREQ("0123456789", m_data);
}

TEST_F(Download, TheConfigurationsSettingsServeTheTransfer)
{
    CConfig config;
    config.PacketSize = 1;
    config.CacheDisabled = false;
    EXPECT_EQ(1, fetch("body=0123456789", &config));
    EXPECT_STREQ("0123456789", m_data);
}

TEST_F(Download, AnEmptyBodyGivesZeroWithStatusZero)
{
    EXPECT_EQ(0, fetch("body="));
    EXPECT_EQ(0, m_status);
    EXPECT_STREQ("before", m_data);
}

TEST_F(Download, AnotherStatusCodeGivesNothing)
{
    EXPECT_EQ(0, fetch("status=500, body=sorry"));
    expectNothing();
}

TEST_F(Download, ABodyThatIsCutOffGivesNothing)
{
    CConfig config;
    config.ConnectionRetries = 0;
    EXPECT_EQ(0, fetch("body=0123456789, cut=4", &config));
    expectNothing();
}

TEST_F(Download, ALengthThatIsTooLargeGivesNothing)
{
    CConfig config;
    config.ConnectionRetries = 0;
    EXPECT_EQ(0, fetch("body=0123456789, lie=5, close=1", &config));
    expectNothing();
}

TEST_F(Download, AServerThatHangsUpGivesNothing)
{
    CConfig config;
    config.ConnectionRetries = 0;
    EXPECT_EQ(0, fetch("hang-up=1", &config));
    expectNothing();
}

TEST_F(Download, AServerThatStallsGivesNothingAfterTheTimeOut)
{
    CConfig config;
    config.ConnectionRetries = 0;
    config.TimeOut = 1;
    EXPECT_EQ(0, fetch("body=0123456789, stall=4", &config));
    expectNothing();
}

TEST_F(Download, ConnectionRetriesAreMade)
{
    CConfig config;
    config.ConnectionRetries = 1;
    m_server.addRule("page=page, body=second");
    EXPECT_EQ(1, fetch("hang-up=1, times=1", &config));
    EXPECT_STREQ("second", m_data);
}

TEST_F(Download, WhereNobodyListensThereIsNothing)
{
    std::string url;
    {
        const webconf_sample::WebConfigurator gone;
        url = gone.url("page");
    }
    CConfig config;
    config.ConnectionRetries = 0;
    EXPECT_EQ(0, GetDataFromStream(url.c_str(), &m_status, &config, m_data));
    expectNothing();
}

TEST_F(Download, WhatIsNoUrlGivesNothing)
{
    for (const char* url : {"", "page", "gopher://x/y", "http://"})
    {
        m_status = 0;
        EXPECT_EQ(0, GetDataFromStream(url, &m_status, nullptr, m_data)) << url;
        expectNothing();
    }
}

TEST_F(Download, TheServerReceivesTheRequestThatWasBuilt)
{
    DataExchange request;
    m_server.host().copy(request.m_host, sizeof request.m_host - 1);
    std::string("CID1").copy(request.m_certificateId, 64);
    std::string("Phone").copy(request.m_productName, 64);
    std::string("3.3.302").copy(request.m_version, 64);
    m_server.addRule("page=wcfgGetConfigForProduct.asp, path=/WebConfV1/wcfgGetConfigForProduct.asp, "
                     "query.CertificateID=CID1, query.ProductName=Phone, query.Version=3.3.302, body=answer");
    EXPECT_EQ(1, GetDataFromStream(request.ConstructURL("wcfgGetConfigForProduct.asp"), &m_status, nullptr, m_data));
    EXPECT_STREQ("answer", m_data);
}

TEST_F(Download, SeveralMayRunAtOnce)
{
    m_server.addRule("page=page, body=0123456789, delay=50");
    std::atomic<int> good{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(
            [this, &good]
            {
                String data;
                int status = -7;
                if (GetDataFromStream(m_server.url("page").c_str(), &status, nullptr, data) == 1 &&
                    data == "0123456789")
                    ++good;
            });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(4, good);
}

// What the system does not do here on request

std::atomic<bool> g_tenMinutesWaited{false};

DWORD WINAPI notesTenMinutes(HANDLE handle, DWORD patienceMs)
{
    if (patienceMs == 600000)
        g_tenMinutesWaited = true;
    return ::WaitForSingleObject(handle, patienceMs);
}

BOOL WINAPI unreadableExitCode(HANDLE, DWORD*) { return FALSE; }

BOOL WINAPI connectedBySeven(DWORD*, DWORD) { return 7; }

BOOL WINAPI notConnected(DWORD*, DWORD) { return FALSE; }

TEST_F(Download, IsGivenTenMinutes)
{
    const auttest::ImportPatch patch("WaitForSingleObject", notesTenMinutes);
    g_tenMinutesWaited = false;
    EXPECT_EQ(1, fetch("body=text"));
    EXPECT_TRUE(g_tenMinutesWaited);
}

TEST_F(Download, AStatusThatCannotBeReadIs102)
{
    const auttest::ImportPatch patch("GetExitCodeThread", unreadableExitCode);
    EXPECT_EQ(0, fetch("body=text"));
    EXPECT_EQ(102, m_status);
    EXPECT_STREQ("before", m_data);
}

TEST_F(Download, TheInternetIsUpWhenTheSystemSaysSo)
{
    EXPECT_NE(0, IsInternetUp(nullptr)); // Wine always says so
    EXPECT_NE(0, IsInternetUp(""));
    EXPECT_NE(0, IsInternetUp("127.0.0.1:1"));
    const auttest::ImportPatch patch("InternetGetConnectedState", connectedBySeven);
    EXPECT_EQ(7, IsInternetUp(m_server.host().c_str()));
    EXPECT_TRUE(m_server.requests().empty());
}

TEST_F(Download, TheInternetIsUpWithoutAConnectionWhenTheServerAnswers)
{
    const auttest::ImportPatch patch("InternetGetConnectedState", notConnected);
    m_server.addRule("body=text");
    EXPECT_EQ(1, IsInternetUp(m_server.host().c_str()));
    EXPECT_EQ(1U, m_server.requests().size());
    EXPECT_EQ(0, IsInternetUp(nullptr)) << "no Web Configurator is configured";
    m_registry.write("Config", "WebServer", m_server.host());
    EXPECT_EQ(1, IsInternetUp(nullptr));
    EXPECT_EQ(1, IsInternetUp(""));
    EXPECT_EQ(3U, m_server.requests().size());
}
} // namespace
