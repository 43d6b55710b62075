#include "webconf/Network.h"

#include "tests/support/ClientRegistry.h"
#include "tests/support/LogFile.h"
#include "tests/support/TestFolder.h"
#include "webconf/CConfig.h"
#include "webconf/Transfer.h"
#include "webconf/TransferWorker.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdlib>
#include <string>
#include <vector>

// Around a stand-in for the download library, which is found through the install path in the registry. The program
// itself lies in a folder without a download library, so that none is found by its bare name.

namespace
{
std::string programFolder()
{
    char path[MAX_PATH] = "";
    ::GetModuleFileNameA(nullptr, path, sizeof path);
    const std::string file(path);
    return file.substr(0, file.rfind('\\'));
}

std::string environment(const char* name)
{
    char text[32] = "";
    ::GetEnvironmentVariableA(name, text, sizeof text);
    return text;
}

class GetDataFromStreamTest : public ::testing::Test
{
protected:
    GetDataFromStreamTest()
    {
        ::SetEnvironmentVariableA("AUTTEST_TRANSFERS_LEFT", nullptr);
        use("whole");
    }
    void use(const char* standIn) { m_registry.write("", "Path", (programFolder() + "\\" + standIn).c_str()); }
    int fetch(const char* url, const CConfig* config = nullptr)
    {
        return GetDataFromStream(url, &m_status, config, m_data);
    }
    std::string data() const
    {
        return std::string(static_cast<const char*>(m_data), static_cast<std::size_t>(m_data.GetLength()));
    }

    auttest::ClientRegistry m_registry;
    auttest::LogFile m_log;
    int m_status = -7;
    String m_data{"before"};
};

TEST_F(GetDataFromStreamTest, TheBodyReplacesWhatTheTextHeld)
{
    EXPECT_EQ(1, fetch("http://host/page"));
    EXPECT_EQ(0, m_status);
    EXPECT_EQ("body of http://host/page", data());
    EXPECT_TRUE(m_log.events().empty());
}

TEST_F(GetDataFromStreamTest, EverythingIsReleasedAndTheLibraryUnloaded)
{
    const CConfig config;
    EXPECT_EQ(1, fetch("page", &config));
    EXPECT_EQ("0", environment("AUTTEST_TRANSFERS_LEFT"));
    EXPECT_EQ(nullptr, ::GetModuleHandleA("7xFileTransfer.dll"));
}

TEST_F(GetDataFromStreamTest, ReleasesEverythingAfterAFailureToo)
{
    const CConfig config;
    EXPECT_EQ(0, fetch("status=37", &config));
    EXPECT_EQ("0", environment("AUTTEST_TRANSFERS_LEFT"));
    ::SetEnvironmentVariableA("AUTTEST_TRANSFERS_LEFT", nullptr);
    EXPECT_EQ(0, fetch("null", &config));
    EXPECT_EQ("0", environment("AUTTEST_TRANSFERS_LEFT"));
}

TEST_F(GetDataFromStreamTest, DownloadIsCalledUntilItIsNoLongerRunning)
{
    EXPECT_EQ(1, fetch("steps=1000"));
    EXPECT_EQ("body of steps=1000", data());
}

TEST_F(GetDataFromStreamTest, WithoutAConfigurationTheLibraryUsesItsOwnParameters)
{
    EXPECT_EQ(1, fetch("echo"));
    EXPECT_EQ("user=[] password=[] flag=1 params=none", data());
}

TEST_F(GetDataFromStreamTest, AConfigurationFillsItsFieldsAndLeavesTheOthers)
{
    CConfig config;
    config.PacketSize = 0x01020304;
    config.ConnectionRetries = 0x05060708;
    config.TimeOut = 0x090A0B0C;
    config.CacheDisabled = true;
    EXPECT_EQ(1, fetch("echo", &config));
    EXPECT_EQ("user=[] password=[] flag=1 params="
              "04030201"
              "ffff0000"
              "00000000"
              "00000000" // packet size, 65535, 0, 0
              "08070605"
              "eeeeeeee"
              "0c0b0a09"
              "eeeeeeee" // retries, own, time-out, own
              "eeeeeeee"
              "eeeeeeee"
              "01eeeeee"
              "eeeeeeee", // cache disabled
              data());
    config.CacheDisabled = false;
    EXPECT_EQ(1, fetch("echo", &config));
    EXPECT_NE(std::string::npos, data().find("eeeeeeeeeeeeeeee00eeeeee"));
}

TEST_F(GetDataFromStreamTest, ABodyWithANulIsKeptWhole)
{
    EXPECT_EQ(1, fetch("nul-inside"));
    EXPECT_EQ(std::string("a\0b", 3), data());
}

TEST_F(GetDataFromStreamTest, ATransferWithoutABodyGivesZeroWithStatusZeroAndLeavesTheText)
{
    EXPECT_EQ(0, fetch("zero"));
    EXPECT_EQ(0, m_status);
    EXPECT_EQ("before", data());
}

TEST_F(GetDataFromStreamTest, ALengthWithoutDataIsNoBody)
{
    EXPECT_EQ(0, fetch("lie"));
    EXPECT_EQ(0, m_status);
    EXPECT_EQ("before", data());
}

TEST_F(GetDataFromStreamTest, AnyOtherValueOfDownloadIsTheStatus)
{
    EXPECT_EQ(0, fetch("status=12029"));
    EXPECT_EQ(12029, m_status);
    EXPECT_EQ("before", data());
    EXPECT_EQ(0, fetch("status=-3"));
    EXPECT_EQ(-3, m_status);
    EXPECT_EQ(0, fetch("status=0"));
    EXPECT_EQ(0, m_status);
}

TEST_F(GetDataFromStreamTest, WithoutATransferObjectTheStatusIs251)
{
    EXPECT_EQ(0, fetch("null"));
    EXPECT_EQ(251, m_status);
    EXPECT_EQ("before", data());
    EXPECT_EQ(
        (std::vector<auttest::LogEvent>{{"Error", "GetDataFromStreamFct: failed to create file download object"}}),
        m_log.events());
}

TEST_F(GetDataFromStreamTest, StatusAndUrlMayBeNull)
{
    EXPECT_EQ(1, GetDataFromStream("page", nullptr, nullptr, m_data));
    EXPECT_EQ(0, GetDataFromStream("status=5", nullptr, nullptr, m_data));
    EXPECT_EQ(1, GetDataFromStream(nullptr, nullptr, nullptr, m_data));
    EXPECT_EQ("body of ", data());
}

TEST_F(GetDataFromStreamTest, ALongUrlIsPassedWhole)
{
    const std::string url(10'000, 'u');
    EXPECT_EQ(1, fetch(url.c_str()));
    EXPECT_EQ("body of " + url, data());
}

TEST_F(GetDataFromStreamTest, AMissingLibraryGivesStatusZeroWithoutData)
{
    const auttest::TestFolder folder;
    m_registry.write("", "Path", folder.path().c_str());
    EXPECT_EQ(0, fetch("page"));
    EXPECT_EQ(0, m_status);
    EXPECT_EQ("before", data());
    EXPECT_TRUE(m_log.has("Error", "GetDataFromStreamFct: unable to load 7xFileTransfer.dll"));
}

TEST_F(GetDataFromStreamTest, AnIncompleteLibraryIsLoggedWithItsAddresses)
{
    use("incomplete");
    EXPECT_EQ(0, fetch("page"));
    EXPECT_EQ(0, m_status);
    EXPECT_EQ("before", data());

    const std::vector<auttest::LogEvent> events = m_log.events();
    ASSERT_EQ(7u, events.size());
    const char* const names[] = {"newFileDownload",        "deleteFileDownload", "newConnectionParams",
                                 "deleteConnectionParams", "fileDownload",       "mydata"};
    for (std::size_t i = 0; i < 6; ++i)
    {
        const std::string start = std::string(names[i]) + " = 0x";
        EXPECT_EQ("Info", events[i].type);
        ASSERT_EQ(0u, events[i].text.rfind(start, 0)) << events[i].text;
        const std::string digits = events[i].text.substr(start.size());
        EXPECT_EQ(std::string::npos, digits.find_first_not_of("0123456789abcdef")) << digits;
        EXPECT_EQ(i == 4, digits == "0") << events[i].text; // Download is the one that is missing
    }
    EXPECT_EQ((auttest::LogEvent{"Error", "GetDataFromStreamFct: Bad parameters, unable to download"}), events[6]);
    EXPECT_EQ("0", environment("AUTTEST_TRANSFERS_LEFT")); // unloaded
}

TEST_F(GetDataFromStreamTest, AWorkerWithoutItsParameterBlockIsLogged)
{
    EXPECT_EQ(0, aut::runTransfer(nullptr));
    EXPECT_TRUE(m_log.has("Info", "mydata = 0x0"));
    EXPECT_TRUE(m_log.has("Error", "GetDataFromStreamFct: Bad parameters, unable to download"));
}

TEST_F(GetDataFromStreamTest, AWorkerThatStallsIsTerminatedWithStatus1003)
{
    const CConfig config;
    EXPECT_EQ(0, aut::fetchWithin(200, "stall", &m_status, &config, m_data));
    EXPECT_EQ(1003, m_status);
    EXPECT_EQ("before", data());
    EXPECT_EQ(
        (std::vector<auttest::LogEvent>{{"Warning", "WinInet not responding. Automatic Update is going to restart."}}),
        m_log.events());
    EXPECT_EQ(0, aut::fetchWithin(200, "stall", nullptr, nullptr, m_data));

    EXPECT_EQ(1, fetch("page")); // the next transfer is not hindered
    EXPECT_EQ("body of page", data());
}

// What IsInternetUp asks when the system says that there is no connection

class ServerAnswers : public GetDataFromStreamTest
{
};

TEST_F(ServerAnswers, WhenItsCompleteUrlGivesData)
{
    EXPECT_EQ(1, aut::serverAnswers("host"));
    EXPECT_EQ(0, aut::serverAnswers("host/status=5"));
    EXPECT_EQ(0, aut::serverAnswers("host/zero"));
    EXPECT_EQ(0, aut::serverAnswers("host/null"));
}

TEST_F(ServerAnswers, AndTheWebConfiguratorIsAskedWhenNoServerIsNamed)
{
    EXPECT_EQ(0, aut::serverAnswers(nullptr));
    EXPECT_EQ(0, aut::serverAnswers(""));
    m_registry.write("Config", "WebServer", "host");
    EXPECT_EQ(1, aut::serverAnswers(nullptr));
    EXPECT_EQ(1, aut::serverAnswers(""));
    m_registry.write("Config", "WebServer", "host/status=5");
    EXPECT_EQ(0, aut::serverAnswers(nullptr));
    EXPECT_EQ(1, aut::serverAnswers("other")); // a named one comes first
}
} // namespace
