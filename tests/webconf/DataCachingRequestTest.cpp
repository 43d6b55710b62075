#include "tests/webconf/CachingFixture.h"

#include "tests/support/ImportPatch.h"
#include "tests/support/OpenHandles.h"
#include "tests/system/Processes.h"

#include <atomic>
#include <string>
#include <thread>
#include <utility>

// One request: mark, time stamp, answer, cache file.

using auttest::CachingTest;
using auttest::Events;
using auttest::OpenDataCaching;

class DataCachingRequest : public CachingTest
{
protected:
    DataCachingRequest() { fill(request); }
    int transmit()
    {
        log.mark();
        return request.TransmitRequestToWebConf();
    }
    OpenDataCaching request;
};

TEST_F(DataCachingRequest, ANewAnswerIsKeptWithItsTimeStamp)
{
    const std::string body = newData("2026-02-03 04:05:06");
    answerWith(body);
    EXPECT_EQ(0, transmit());
    EXPECT_EQ(body, data.readFile(file()));
    EXPECT_EQ("2026-02-03 04:05:06", timeStamp());
    EXPECT_EQ((Events{{"Info", prefix() + " New Data. TimeStamp = 2026-02-03 04:05:06"}}), log.events());
    EXPECT_FALSE(marked());
    EXPECT_EQ(0u, failures());
    EXPECT_EQ(0, result->GetStatusCode());
}

TEST_F(DataCachingRequest, TheNextRequestAsksForWhatChangedSince)
{
    answerWith(newData("2026-02-03 04:05:06"));
    ASSERT_EQ(0, transmit());
    ASSERT_EQ(0, transmit());
    const std::string base = "/WebConfV1/wcfgGetConfigForProduct.asp?CertificateID=" + std::string(kCid) +
                             "&ProductName=Ledger&Version=1.0&Build=2&Language=English&TimeStamp=";
    ASSERT_EQ(2u, server->requests().size());
    EXPECT_EQ(base + "1980-01-01%2000:00:00", target(0));
    EXPECT_EQ(base + "2026-02-03%2004:05:06", target(1));
}

TEST_F(DataCachingRequest, AnAnswerWithoutChangeKeepsFileAndTimeStamp)
{
    cache("2026-01-01 00:00:00", "kept");
    answerWith(answer("<Data><NoChange/></Data>"));
    EXPECT_EQ(0, transmit());
    EXPECT_EQ("kept", data.readFile(file()));
    EXPECT_EQ("2026-01-01 00:00:00", timeStamp());
    EXPECT_EQ((Events{{"Info", prefix() + " Data not changed"}}), log.events());
    EXPECT_FALSE(marked());
}

TEST_F(DataCachingRequest, ATimeStampWithoutItsFileIsNotBelieved)
{
    registry.write(stampKey(), kCid, "2026-01-01 00:00:00");
    answerWith(answer("<Data><NoChange/></Data>"));
    EXPECT_EQ(0, transmit());
    EXPECT_EQ("Nothing In Cache.", timeStamp());
    EXPECT_NE(std::string::npos, target().find("&TimeStamp=1980-01-01%2000:00:00")) << target();
}

TEST_F(DataCachingRequest, APlusSignIsTheOnlyCharacterEscaped)
{
    cache("2026+01", "kept");
    std::snprintf(request.m_certificateId, sizeof request.m_certificateId, "a+b/c=&d");
    registry.write(stampKey(), "a+b/c=&d", "2026+01");
    data.writeFile(file("a+b\\c=&d"), "kept");
    answerWith(answer("<Data><NoChange/></Data>"));
    EXPECT_EQ(0, transmit());
    EXPECT_NE(std::string::npos, target().find("?CertificateID=a%2Bb/c=&d&ProductName=Ledger")) << target();
    EXPECT_NE(std::string::npos, target().find("&TimeStamp=2026%2B01")) << target();
}

struct PageRow
{
    const char* technicalName;
    const char* component;
    const char* page;
    const char* query;
};
class DataCachingPage : public DataCachingRequest, public ::testing::WithParamInterface<PageRow>
{
};
TEST_P(DataCachingPage, IsChosenByPackageAndComponent)
{
    fill(request, GetParam().component);
    std::snprintf(request.m_packageTechnicalName, sizeof request.m_packageTechnicalName, "%s",
                  GetParam().technicalName);
    answerWith(answer("<Data><NoChange/></Data>"));
    EXPECT_EQ(0, transmit());
    EXPECT_EQ("/WebConfV1/" + std::string(GetParam().page) + "?CertificateID=" + kCid + GetParam().query +
                  "&TimeStamp=1980-01-01%2000:00:00",
              target());
}
INSTANTIATE_TEST_SUITE_P(
    All, DataCachingPage,
    ::testing::Values(
        PageRow{"", "", "wcfgGetConfigForProduct.asp", "&ProductName=Ledger&Version=1.0&Build=2&Language=English"},
        PageRow{"", "Core", "wcfgGetConfigForComponent.asp",
                "&ProductName=Ledger&Version=1.0&Build=2&Language=English&ComponentName=Core"},
        PageRow{"PKG", "", "wcfgPPGetConfigForProduct.asp", "&PackageTechnicalName=PKG"},
        PageRow{"PKG", "Core", "wcfgPPGetConfigForComponent.asp", "&PackageTechnicalName=PKG&ComponentName=Core"}));

TEST_F(DataCachingRequest, TheUrlsTimeStampReplacesTheOneOfAnEmptyCache)
{
    String stamp("Nothing In Cache.");
    const String url = request.ConstructURL(stamp);
    EXPECT_STREQ("1980-01-01 00:00:00", stamp);
    EXPECT_NE(-1, url.Find("&TimeStamp=1980-01-01 00:00:00"));
    stamp = "2026-01-01 00:00:00";
    request.ConstructURL(stamp);
    EXPECT_STREQ("2026-01-01 00:00:00", stamp);
}

TEST_F(DataCachingRequest, TheCacheFileOfAComponentHasBothNames)
{
    fill(request, "Core");
    EXPECT_EQ(data / file(std::string(kCid) + "__Core"), static_cast<const char*>(request.GetDataFilePath()));
    answerWith(newData("T"));
    EXPECT_EQ(0, transmit());
    EXPECT_EQ(newData("T"), data.readFile(file(std::string(kCid) + "__Core")));
    EXPECT_EQ("T", timeStamp(std::string(kCid) + "__Core"));
    EXPECT_TRUE(log.has("Info", prefix("Core") + " New Data. TimeStamp = T"));
}

// The mark

TEST_F(DataCachingRequest, ASecondRequestMeanwhileGivesEighteenWithoutAsking)
{
    registry.write(markKey(), (std::string(kCid) + "__config").c_str(), "updating");
    EXPECT_EQ(18, transmit());
    EXPECT_EQ((Events{{"Warning", "TransmitRequestToWebConf: Config already updating. Error Code = 18. Host=" + host +
                                      ", CID=" + kCid + ", Product=Ledger"}}),
              log.events());
    EXPECT_EQ(18, result->GetStatusCode());
    EXPECT_TRUE(server->requests().empty());
    EXPECT_TRUE(marked()) << "it is the other request's";
}

TEST_F(DataCachingRequest, TheMarkIsSetWhileTheServerIsAsked)
{
    std::atomic<bool> seen{false};
    server->onRequest([&](const webconf_sample::HttpRequest&) { seen = marked(); });
    answerWith(newData("T"));
    EXPECT_EQ(0, transmit());
    EXPECT_TRUE(seen);
    EXPECT_FALSE(marked());
}

TEST_F(DataCachingRequest, TwoAtOnceAskOnlyOnce)
{
    server->addRule("delay=1500");
    std::atomic<bool> first{true};
    std::atomic<int> other{-1};
    server->onRequest(
        [&](const webconf_sample::HttpRequest&)
        {
            if (!first.exchange(false))
                return;
            std::thread second(
                [&]
                {
                    ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
                    {
                        OpenDataCaching meanwhile;
                        fill(meanwhile);
                        other = meanwhile.TransmitRequestToWebConf();
                    }
                    ::CoUninitialize();
                });
            second.join();
        });
    EXPECT_EQ(0, transmit());
    EXPECT_EQ(18, other);
    EXPECT_EQ(1u, server->requests().size());
    EXPECT_FALSE(marked());
}

TEST_F(DataCachingRequest, AComponentNeitherHeedsNorSetsTheMarkButClearsIt)
{
    fill(request, "Core");
    registry.write(markKey(), (std::string(kCid) + "__config").c_str(), "updating");
    answerWith(newData("T"));
    EXPECT_EQ(0, transmit());
    EXPECT_FALSE(marked());

    bool seen = true;
    server->onRequest([&](const webconf_sample::HttpRequest&) { seen = marked(); });
    EXPECT_EQ(0, transmit());
    EXPECT_FALSE(seen);
}

TEST_F(DataCachingRequest, MarkingIsTraced)
{
    logDetail(0x20000);
    answerWith(answer("<Data><NoChange/></Data>"));
    EXPECT_EQ(0, transmit());
    EXPECT_TRUE(log.has("Info", "Set ConfigUpdating registry key for Product=Ledger, CID=" + std::string(kCid) +
                                    " to prohibit concurrent config update"));
    EXPECT_TRUE(log.has("Info", "Delete ConfigUpdating registry key for Product=Ledger, CID=" + std::string(kCid)));
}

// What an answer means

TEST_F(DataCachingRequest, ARefusedCertificateIdIsCachedAndAsksForEverythingNext)
{
    cache("2026-01-01 00:00:00", "old");
    const std::string body =
        answer("<Status><Error><Kind><Business><accessmissing/></Business></Kind></Error></Status>");
    answerWith(body);
    EXPECT_EQ(0, transmit());
    EXPECT_EQ(body, data.readFile(file())) << "found in any case";
    EXPECT_EQ("Nothing In Cache.", timeStamp());
    EXPECT_EQ((Events{{"Warning", prefix() + " Web Configurator returned an error"}}), log.events());
    EXPECT_EQ(0u, failures());

    EXPECT_EQ(0, transmit());
    ASSERT_EQ(2u, server->requests().size());
    EXPECT_NE(std::string::npos, target(0).find("&TimeStamp=2026-01-01%2000:00:00")) << target(0);
    EXPECT_NE(std::string::npos, target(1).find("&TimeStamp=1980-01-01%2000:00:00")) << target(1);
}

/// After each of these the cache is as it was.
class DataCachingFault : public DataCachingRequest
{
protected:
    DataCachingFault() { cache("2026-01-01 00:00:00", "old"); }
    void expectOldCache() const
    {
        EXPECT_EQ("old", data.readFile(file()));
        EXPECT_EQ("2026-01-01 00:00:00", timeStamp());
        EXPECT_FALSE(marked());
    }
    auttest::LogEvent notAvailable(int code) const
    {
        return {"Error", prefix() + " - [" + std::to_string(code) +
                             "], Web Configurator not available. No data in Local. Message=GetDataConfiguration - Web "
                             "Configurator not available"};
    }
};

TEST_F(DataCachingFault, ADocumentOfAnotherKind)
{
    answerWith("<html><body>Please log in</body></html>");
    EXPECT_EQ(104, transmit());
    EXPECT_EQ((Events{{"Warning", "Response from Web Configurator not valid (special provider or proxies "
                                  "authentication ?"},
                      notAvailable(104)}),
              log.events());
    EXPECT_EQ(104, result->GetStatusCode());
    EXPECT_STREQ("GetDataConfiguration - Web Configurator not available", result->GetAction());
    EXPECT_EQ(1u, failures());
    expectOldCache();
}

TEST_F(DataCachingFault, AnErrorOfTheServer)
{
    answerWith(answer("<Status><Error><Kind><Technical>The database sleeps</Technical></Kind></Error></Status>"));
    EXPECT_EQ(104, transmit());
    EXPECT_EQ((Events{{"Warning", "Configuration not valid: The database sleeps"}, notAvailable(104)}), log.events());
    EXPECT_EQ(1u, failures());
    expectOldCache();
}

class DataCachingNoXml : public DataCachingFault, public ::testing::WithParamInterface<const char*>
{
};
TEST_P(DataCachingNoXml, IsNotUnderstoodAndDeliberatelyNoError)
{
    answerWith(GetParam());
    EXPECT_EQ(0, transmit());
    EXPECT_EQ((Events{{"Warning", "TransmitRequestToWebConf: Unable to create XML document from data"}}), log.events());
    EXPECT_EQ(500, result->GetStatusCode());
    EXPECT_STREQ("pDOM->loadXML", result->GetAction());
    EXPECT_STREQ("DataCaching::TransmitRequestToWebConf", result->GetFunction());
    EXPECT_STREQ("Unable to create XML document from data", result->GetObjectA());
    EXPECT_EQ(0u, failures());
    expectOldCache();
}
INSTANTIATE_TEST_SUITE_P(All, DataCachingNoXml,
                         ::testing::Values("", "not XML at all", "<wcfgResponse><Data>", "<a/><b/>"));

struct TransferFault
{
    const char* rule;
    int status;
};
class DataCachingTransfer : public DataCachingFault, public ::testing::WithParamInterface<TransferFault>
{
};
TEST_P(DataCachingTransfer, ThatFailsGivesItsStatus)
{
    server->addRule(GetParam().rule);
    EXPECT_EQ(GetParam().status, transmit());
    EXPECT_EQ((Events{notAvailable(GetParam().status)}), log.events());
    EXPECT_EQ(GetParam().status, result->GetStatusCode());
    EXPECT_STREQ("GetDataConfiguration - Web Configurator not available", request.m_resultText);
    EXPECT_EQ(1u, failures());
    expectOldCache();

    // and the next request can go on from there
    server->clearRules();
    answerWith(newData("2026-09-09 09:09:09"));
    EXPECT_EQ(0, transmit());
    EXPECT_EQ("2026-09-09 09:09:09", timeStamp());
    EXPECT_STREQ("", request.m_resultText);
}
INSTANTIATE_TEST_SUITE_P(All, DataCachingTransfer,
                         ::testing::Values(TransferFault{"status=500", 13500}, TransferFault{"status=404", 13404},
                                           TransferFault{"status=407", 13407},
                                           TransferFault{"body=<wcfgResponse/>, cut=5", 14005}));

TEST_F(DataCachingFault, AServerThatIsAway)
{
    server.reset();
    EXPECT_EQ(12029, transmit());
    EXPECT_EQ((Events{notAvailable(12029)}), log.events());
    EXPECT_EQ(12029, transmit());
    EXPECT_EQ(2u, failures());
    expectOldCache();
}

TEST_F(DataCachingRequest, AServerThatWasNeverThere)
{
    server.reset();
    EXPECT_EQ(12029, transmit());
    const std::string message = "Message=GetDataConfiguration - Web Configurator not available";
    EXPECT_EQ(
        (Events{{"Warning", "GetDataConfiguration: Web Configurator not available. Use Local Configuration. "
                            "Error Code = 12029. " +
                                message},
                {"Warning", prefix() + " - [12029], Web Configurator not available. Use Local Data. " + message}}),
        log.events());
    EXPECT_EQ("Nothing In Cache.", timeStamp());
    EXPECT_FALSE(data.exists(file()));
    EXPECT_FALSE(marked());
}

// The time stamp in the answer

struct StampRow
{
    const char* body;
    const char* stored;
};
class DataCachingStamp : public DataCachingRequest, public ::testing::WithParamInterface<StampRow>
{
};
TEST_P(DataCachingStamp, IsTheTextBetweenTheTags)
{
    answerWith(answer(GetParam().body));
    EXPECT_EQ(0, transmit());
    EXPECT_EQ(GetParam().stored, timeStamp());
    EXPECT_EQ((Events{{"Info", prefix() + " New Data. TimeStamp = " + GetParam().stored}}), log.events());
}
INSTANTIATE_TEST_SUITE_P(All, DataCachingStamp,
                         ::testing::Values(StampRow{"<Data><TimeStamp>  A B  </TimeStamp></Data>", "A B"},
                                           StampRow{"<timestamp>any case</timestamp>", "any case"},
                                           StampRow{"<x><TimeStamp>1</TimeStamp></x><TimeStamp>2</TimeStamp>", "1"},
                                           StampRow{"<!-- </TimeStamp> --><TimeStamp>behind</TimeStamp>", "behind"},
                                           StampRow{"<Data/>", ""}, StampRow{"<TimeStamp/>", ""},
                                           StampRow{"<!-- <TimeStamp>in a comment</TimeStamp> -->", "in a comment"}));

TEST_F(DataCachingRequest, BypassingTheCacheKeepsTheFileAndNoTimeStamp)
{
    registry.write("Config", "BypassDataCaching", 1);
    answerWith(newData("2026-02-03 04:05:06"));
    EXPECT_EQ(0, transmit());
    EXPECT_EQ("Nothing In Cache.", timeStamp());
    EXPECT_TRUE(data.exists(file()));
    EXPECT_TRUE(log.has("Info", prefix() + " New Data. TimeStamp = Nothing In Cache."));
}

// The kernel configuration

class DataCachingKernel : public DataCachingRequest
{
protected:
    void ask(const char* product, const char* component, const std::string& body)
    {
        std::snprintf(request.m_productName, sizeof request.m_productName, "%s", product);
        std::snprintf(request.m_componentName, sizeof request.m_componentName, "%s", component);
        answerWith(body);
        EXPECT_EQ(0, transmit());
    }
    const std::string entry = std::string(kCid) + "__AUKernelData";
    const std::string whole = answer("<Data><ComponentList><Component><Configuration><AutomaticUpdateData/>"
                                     "</Configuration></Component></ComponentList><TimeStamp>T</TimeStamp></Data>");
};

TEST_F(DataCachingKernel, IsKeptWhenItHasItsNode)
{
    ask("Automatic Update", "AUKernelData", whole);
    EXPECT_EQ(whole, data.readFile(file(entry, "Automatic Update")));
    EXPECT_EQ("T", registry.readText(stampKey("Automatic Update"), entry.c_str()).value_or("(none)"));
}

TEST_F(DataCachingKernel, WithoutItsNodeTheOldOneStays)
{
    data.writeFile(file(entry, "Automatic Update"), "old");
    registry.write(stampKey("Automatic Update"), entry.c_str(), "before");
    ask("Automatic Update", "AUKernelData", newData("T"));
    EXPECT_EQ("old", data.readFile(file(entry, "Automatic Update")));
    EXPECT_EQ("before", registry.readText(stampKey("Automatic Update"), entry.c_str()).value_or("(none)"));
    EXPECT_EQ((Events{{"Warning", "Corrupted AU kernel configuration, keep old configuration"}}), log.events());
}

TEST_F(DataCachingKernel, IsRecognisedByItsExactNames)
{
    // Their files have the same name where the file system does not regard case: the log tells them apart.
    ask("automatic update", "AUKernelData", newData("T"));
    EXPECT_EQ(1u, log.events().size());
    EXPECT_FALSE(log.has("Warning", "Corrupted AU kernel configuration, keep old configuration"));
    ask("Automatic Update", "aukerneldata", newData("T"));
    EXPECT_FALSE(log.has("Warning", "Corrupted AU kernel configuration, keep old configuration"));
    ask("Automatic Update", "", newData("T"));
    EXPECT_FALSE(log.has("Warning", "Corrupted AU kernel configuration, keep old configuration"));
    EXPECT_TRUE(data.exists(file(kCid, "Automatic Update")));
    ask("Automatic Update", "AUKernelData", newData("T"));
    EXPECT_TRUE(log.has("Warning", "Corrupted AU kernel configuration, keep old configuration"));
}

// Transfer settings

TEST_F(DataCachingRequest, WithTheTransferFlagTheKernelFileIsReadAndNotUsed)
{
    const auttest::TestFolder client;
    registry.write("", "Path", client.path());
    client.writeFile("AUKernelData.xml", "<broken");
    request.m_transferFlag = 1;
    answerWith(newData("T"));
    EXPECT_EQ(0, transmit());
    bool read = false;
    for (const auttest::LogEvent& event : log.events())
        read = read || event.text.find("AUKernelData.xml") != std::string::npos;
    EXPECT_TRUE(read) << "its loading has been tried";
    request.m_transferFlag = 0;
    EXPECT_EQ(0, transmit());
    for (const auttest::LogEvent& event : log.events())
        EXPECT_EQ(std::string::npos, event.text.find("AUKernelData.xml")) << event.text;
}

TEST_F(DataCachingRequest, TheTransferGetsTheSettingsOfANewConfigurationOrNone)
{
    // A stand-in for the download library, which tells what it was given.
    const auto given = [this](char flag)
    {
        ::SetEnvironmentVariableA("AUTTEST_TRANSFER_PARAMS", nullptr);
        request.m_transferFlag = flag;
        transmit();
        char text[200] = "";
        ::GetEnvironmentVariableA("AUTTEST_TRANSFER_PARAMS", text, sizeof text);
        return std::string(text);
    };
    registry.write("", "Path", auttest::programFolder() + "\\webconf_internal\\whole");
    EXPECT_EQ("bc020000"
              "ffff0000"
              "00000000"
              "00000000" // packet size 700, 65535, 0, 0
              "05000000"
              "eeeeeeee"
              "00000000"
              "eeeeeeee" // retries, own, time-out, own
              "eeeeeeee"
              "eeeeeeee"
              "01eeeeee"
              "eeeeeeee", // cache disabled
              given(0));
    EXPECT_EQ("none", given(1));
}

// Whatever happens inside

namespace
{
HRESULT WINAPI noDocument(REFCLSID, LPUNKNOWN, DWORD, REFIID, LPVOID* object)
{
    *object = nullptr;
    return REGDB_E_CLASSNOTREG;
}
} // namespace

TEST_F(DataCachingFault, WithoutAnXmlParserNothingIsJudged)
{
    answerWith(newData("T"));
    const auttest::ImportPatch none("CoCreateInstance", &noDocument);
    EXPECT_EQ(0, transmit());
    EXPECT_EQ((Events{{"Warning", "Unable to initialize DOM Document and to check AU Validity"}}), log.events());
    expectOldCache();
}

TEST_F(DataCachingRequest, NamesThatFillTheirFieldsDoNoHarm)
{
    const std::string longText(300, 'x');
    std::snprintf(request.m_productName, sizeof request.m_productName, "%s", longText.c_str());
    std::snprintf(request.m_certificateId, sizeof request.m_certificateId, "%s", longText.c_str());
    std::snprintf(request.m_componentName, sizeof request.m_componentName, "%s", longText.c_str());
    answerWith(newData("T"));
    EXPECT_EQ(0, transmit());
    EXPECT_NE(std::string::npos, target().find(std::string(127, 'x')));
}

TEST_F(DataCachingRequest, LeaksNoHandles)
{
    answerWith(answer("<Data><NoChange/></Data>"));
    for (int warmUp = 0; warmUp < 5; ++warmUp)
        request.TransmitRequestToWebConf();
    const std::size_t before = auttest::openHandles();
    for (int round = 0; round < 50; ++round)
        request.TransmitRequestToWebConf();
    EXPECT_LE(auttest::openHandles(), before + 5);
}
