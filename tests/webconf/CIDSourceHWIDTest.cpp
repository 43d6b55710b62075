#include "tests/webconf/CIDManager.h"

#include "platform/ComApartment.h"
#include "tests/support/LocalServer.h"
#include "tests/support/OpenHandles.h"
#include "webconfigurator/WebConfigurator.h"

#include <algorithm>
#include <thread>

namespace
{
constexpr char kPage[] = "wcfgGetCidListFromHWID1.asp";
constexpr char kCache[] = "Config\\Cache\\HWIDs";
constexpr char kTwo[] = "<r><Data><CIDList><CID>QUFBLUNJRC0x</CID><CID>QkJCLUNJRC0y</CID></CIDList></Data></r>";

/// A document with these texts as CID elements.
std::string cidList(const CIDs& texts)
{
    std::string xml = "<wcfgResponse><Data><CIDList>";
    for (const std::string& text : texts)
        xml += "<CID>" + text + "</CID>";
    return xml + "</CIDList></Data></wcfgResponse>";
}

CIDs sorted(CIDs cids)
{
    std::sort(cids.begin(), cids.end());
    return cids;
}

/// The local server knows hardware ID 4711, and a Web Configurator runs.
class CIDSourceHWID : public CIDTest
{
protected:
    CIDSourceHWID()
    {
        m_server.settings().write("", "HWID", 4711);
        m_registry.write("Config", "WebServer", m_web.host());
        Steps::startList(m_manager);
    }
    int get(long hwid = 0) { return Steps::fromHWID(m_manager, hwid); }
    CIDs list() const { return Steps::list(m_manager); }
    CIDs cache(const std::string& hwid = "4711") const
    {
        return sorted(m_registry.valueNames(std::string(kCache) + "\\" + hwid));
    }
    void answer(const std::string& body)
    {
        webconf_sample::Rule rule;
        rule.page = kPage;
        rule.answer.body = body;
        m_web.addRule(rule);
    }
    /// The first lines of the request for one hardware ID.
    static Events asked(const std::string& hwid)
    {
        return {{"Info", "Call to GetCIDListFromHWID(0)"},
                {"Info", "KxGetHWIDForDeployment returned HWID = " + hwid},
                {"Info", "Getting CID associated with HWID " + hwid}};
    }
    Events events() const { return m_log.events(); }

    aut::ComApartment m_com;
    auttest::LocalServer m_server;
    webconf_sample::WebConfigurator m_web;
};

Events operator+(Events events, const Events& more)
{
    events.insert(events.end(), more.begin(), more.end());
    return events;
}

// --- The local server --------------------------------------------------------------------------------------------

TEST_F(CIDSourceHWID, WithoutTheServerThereIsNoList)
{
    m_server.unregister();
    m_registry.write("Config", "TestHWID", "815");
    EXPECT_EQ(0, get());
    EXPECT_EQ((Events{{"Info", "Call to GetCIDListFromHWID(0)"},
                      {"Warning", "GetCIDListFromHWID: 'AutoUpdateSRV.dll' is not registered"}}),
              events());
    expectEmptyListRecorded("GetCIDListFromHWID");
    EXPECT_EQ(0U, m_web.requests().size());
}

TEST_F(CIDSourceHWID, WithoutTheServerAListThatIsThereCounts)
{
    m_server.unregister();
    Steps::startList(m_manager, {"BEFORE000001", "BEFORE000002"});
    EXPECT_NE(0, get());
    EXPECT_EQ((auttest::LogEvent{"Info", "CID List from HWID : BEFORE000001, BEFORE000002"}), events().back());
    EXPECT_EQ(0, result->GetStatusCode());
}

TEST_F(CIDSourceHWID, AServerWhoseProgramIsGoneIsNotRegistered)
{
    m_server.end();
    m_server.registerAs("C:\\nowhere\\nothing.exe");
    EXPECT_EQ(0, get());
    EXPECT_EQ((auttest::LogEvent{"Warning", "GetCIDListFromHWID: 'AutoUpdateSRV.dll' is not registered"}),
              events().back());
}

TEST_F(CIDSourceHWID, AServerThatEndsBeforeItServesIsNotRegistered)
{
    m_server.end();
    m_server.settings().write("", "DieIn", "start");
    EXPECT_EQ(0, get());
    EXPECT_EQ((auttest::LogEvent{"Warning", "GetCIDListFromHWID: 'AutoUpdateSRV.dll' is not registered"}),
              events().back());
}

TEST_F(CIDSourceHWID, AServerThatMakesNoObjectIsNotRegistered)
{
    m_server.settings().write("", "CreateStatus", static_cast<DWORD>(E_ACCESSDENIED));
    EXPECT_EQ(0, get());
    EXPECT_EQ((auttest::LogEvent{"Warning", "GetCIDListFromHWID: 'AutoUpdateSRV.dll' is not registered"}),
              events().back());
}

TEST_F(CIDSourceHWID, AZeroHWIDEndsWithAnEmptyList)
{
    m_server.settings().write("", "HWID", DWORD{0});
    EXPECT_EQ(0, get());
    EXPECT_EQ((Events{{"Info", "Call to GetCIDListFromHWID(0)"}, {"Info", "KxGetHWIDForDeployment returned HWID = 0"}}),
              events());
    expectEmptyListRecorded("GetCIDListFromHWID");
    EXPECT_EQ(0U, m_web.requests().size());
}

TEST_F(CIDSourceHWID, AFailingServerHasNoHWID)
{
    m_server.settings().write("", "HWIDStatus", static_cast<DWORD>(E_FAIL));
    EXPECT_EQ(0, get());
    EXPECT_EQ(1UL, m_server.calls("HWID"));
    EXPECT_EQ((Events{{"Info", "Call to GetCIDListFromHWID(0)"}, {"Info", "KxGetHWIDForDeployment returned HWID = 0"}}),
              events());
}

TEST_F(CIDSourceHWID, AServerThatDiesInTheCallHasNoHWIDAndIsStartedAgain)
{
    answer(kTwo);
    m_server.settings().write("", "DieIn", "HWID");
    EXPECT_EQ(0, get());
    EXPECT_EQ((auttest::LogEvent{"Info", "KxGetHWIDForDeployment returned HWID = 0"}), events().back());
    m_server.settings().removeValue("", "DieIn");
    EXPECT_NE(0, get());
}

TEST_F(CIDSourceHWID, ASlowServerIsWaitedFor)
{
    answer(kTwo);
    m_server.settings().write("", "DelayMs", 1500);
    EXPECT_NE(0, get());
    EXPECT_EQ((CIDs{"QUFBLUNJRC0x", "QkJCLUNJRC0y"}), list());
}

TEST_F(CIDSourceHWID, AServerThatNeverAnswersIsWaitedForUntilItEnds)
{
    m_server.settings().write("", "DelayMs", INFINITE);
    std::thread operatorsHand(
        [this]
        {
            while (m_server.calls("HWID") == 0)
                ::Sleep(10);
            m_server.end();
        });
    EXPECT_EQ(0, get());
    operatorsHand.join();
    EXPECT_EQ((auttest::LogEvent{"Info", "KxGetHWIDForDeployment returned HWID = 0"}), events().back());
}

TEST_F(CIDSourceHWID, TheConfiguredTestHWIDWins)
{
    answer(kTwo);
    m_registry.write("Config", "TestHWID", "815");
    EXPECT_NE(0, get());
    EXPECT_EQ(0UL, m_server.calls("HWID"));
    ASSERT_EQ(1U, m_web.requests().size());
    EXPECT_EQ("815", m_web.requests()[0].parameter("HWID1"));
    EXPECT_EQ((Events{{"Info", "Call to GetCIDListFromHWID(0)"},
                      {"Info", "Test HWID = 815"},
                      {"Info", "Getting CID associated with HWID 815"}}),
              (Events{events()[0], events()[1], events()[2]}));
}

TEST_F(CIDSourceHWID, ATestHWIDThatIsNoNumberIsZero)
{
    for (const char* text : {"0", "none"})
    {
        m_registry.write("Config", "TestHWID", text);
        m_log.mark();
        EXPECT_EQ(0, get());
        EXPECT_EQ((Events{{"Info", "Call to GetCIDListFromHWID(0)"}, {"Info", "Test HWID = 0"}}), events());
    }
    EXPECT_EQ(0UL, m_server.calls("HWID"));
}

TEST_F(CIDSourceHWID, AGivenHWIDIsTakenAsItIs)
{
    answer(kTwo);
    m_registry.write("Config", "TestHWID", "815");
    EXPECT_NE(0, get(99));
    EXPECT_EQ(0UL, m_server.calls("HWID"));
    EXPECT_EQ((Events{{"Info", "Call to GetCIDListFromHWID(99)"}, {"Info", "Getting CID associated with HWID 99"}}),
              (Events{events()[0], events()[1]}));
    ASSERT_EQ(1U, m_web.requests().size());
    EXPECT_EQ("GET /WebConfV1/wcfgGetCidListFromHWID1.asp?HWID1=99 HTTP/1.1", m_web.requests()[0].line);
}

// --- The request -------------------------------------------------------------------------------------------------

TEST_F(CIDSourceHWID, WithoutAWebServerNothingIsAskedAndTheCacheStaysUnread)
{
    m_registry.removeValue("Config", "WebServer");
    m_registry.write("Config\\Cache\\HWIDs\\4711", "Q0FDSEVELTAx", "");
    EXPECT_EQ(0, get());
    EXPECT_EQ(asked("4711") + Events({{"Warning", "(GetCIDListFromHWID) No Web Server set"}}), events());
    expectEmptyListRecorded("GetCIDListFromHWID");
    EXPECT_EQ((CIDs{"Q0FDSEVELTAx"}), cache());
}

TEST_F(CIDSourceHWID, TheRequestIsMadeOfServerDirectoryPageAndHWID)
{
    answer(kTwo);
    m_registry.write("Config", "WebVirtualDir", "Conf");
    get();
    ASSERT_EQ(1U, m_web.requests().size());
    EXPECT_EQ("GET /Conf/wcfgGetCidListFromHWID1.asp?HWID1=4711 HTTP/1.1", m_web.requests()[0].line);
}

TEST_F(CIDSourceHWID, AHWIDAboveTwoToThe31IsWrittenAsANegativeNumber)
{
    answer(kTwo);
    m_server.settings().write("", "HWID", 0xFFFFFFFE);
    EXPECT_NE(0, get());
    ASSERT_EQ(1U, m_web.requests().size());
    EXPECT_EQ("GET /WebConfV1/wcfgGetCidListFromHWID1.asp?HWID1=-2 HTTP/1.1", m_web.requests()[0].line);
    EXPECT_EQ((CIDs{"QUFBLUNJRC0x", "QkJCLUNJRC0y"}), cache("-2"));
}

TEST_F(CIDSourceHWID, TheURLIsATrace)
{
    answer(kTwo);
    const auttest::LogEvent url{"Info", "(GetCIDListFromHWID) URL = HTTP://" + m_web.host() +
                                            "/WebConfV1/wcfgGetCidListFromHWID1.asp?HWID1=4711"};
    logDetails(1);
    m_log.mark();
    get();
    EXPECT_FALSE(m_log.has(url.type, url.text));
    logDetails(2);
    m_log.mark();
    get();
    EXPECT_TRUE(m_log.has(url.type, url.text));
}

// --- The answer --------------------------------------------------------------------------------------------------

TEST_F(CIDSourceHWID, AnAnswerFillsTheListAndTheCache)
{
    answer(kTwo);
    EXPECT_NE(0, get());
    EXPECT_EQ((CIDs{"QUFBLUNJRC0x", "QkJCLUNJRC0y"}), list());
    EXPECT_EQ(asked("4711") + Events({{"Info", "associated CID = QUFBLUNJRC0x"},
                                      {"Info", "associated CID = QkJCLUNJRC0y"},
                                      {"Info", "CID List from HWID : QUFBLUNJRC0x, QkJCLUNJRC0y"}}),
              events());
    EXPECT_EQ((CIDs{"QUFBLUNJRC0x", "QkJCLUNJRC0y"}), cache());
    EXPECT_EQ("", m_registry.readText("Config\\Cache\\HWIDs\\4711", "QUFBLUNJRC0x"));
    EXPECT_EQ(0, result->GetStatusCode());
}

TEST_F(CIDSourceHWID, AnAnswerReplacesTheCacheOfItsHWIDOnly)
{
    answer(kTwo);
    m_registry.write("Config\\Cache\\HWIDs\\4711", "T0xELUNJRC0x", "");
    m_registry.write("Config\\Cache\\HWIDs\\4711\\below", "T0xELUNJRC0x", "");
    m_registry.write("Config\\Cache\\HWIDs\\4712", "T1RIRVItQ0lE", "");
    EXPECT_NE(0, get());
    EXPECT_EQ((CIDs{"QUFBLUNJRC0x", "QkJCLUNJRC0y"}), cache());
    EXPECT_EQ(CIDs{}, m_registry.subkeys("Config\\Cache\\HWIDs\\4711"));
    EXPECT_EQ((CIDs{"T1RIRVItQ0lE"}), cache("4712"));
}

TEST_F(CIDSourceHWID, AnAnswerOfNothingButRefusedCIDsEmptiesTheCache)
{
    answer(cidList({"ABC-123456789", "1234567890"}));
    m_registry.write("Config\\Cache\\HWIDs\\4711", "T0xELUNJRC0x", "");
    EXPECT_EQ(0, get());
    EXPECT_TRUE(m_registry.keyExists("Config\\Cache\\HWIDs\\4711"));
    EXPECT_EQ(CIDs{}, cache());
    expectEmptyListRecorded("GetCIDListFromHWID");
}

TEST_F(CIDSourceHWID, MalformedRepeatedAndRevokedCIDsAreLeftOut)
{
    revoke("UkVWT0tFRC0x");
    answer("<r><Data><CIDList><CID>QUFBLUNJRC0x</CID><CID>ABC-123456789</CID><CID>UkVWT0tFRC0x</CID>"
           "<CID>qufblunjrc0x</CID><CID/><CID>  QkJCLUNJRC0y </CID><CID>QUFBLUNJRC0x</CID></CIDList></Data></r>");
    EXPECT_NE(0, get());
    EXPECT_EQ((CIDs{"QUFBLUNJRC0x", "QkJCLUNJRC0y"}), list());
    EXPECT_EQ((CIDs{"QUFBLUNJRC0x", "QkJCLUNJRC0y"}), cache());
    EXPECT_TRUE(m_log.has("Info", "Certificate UkVWT0tFRC0x revoked or expired"));
}

TEST_F(CIDSourceHWID, TheMasterStaysInItsPlace)
{
    answer("<r><Data><CIDList><CID>QUFBLUNJRC0x</CID><CID master='True'>QkJCLUNJRC0y</CID>"
           "<CID>Q0NDLUNJRC0z</CID></CIDList></Data></r>");
    EXPECT_NE(0, get());
    EXPECT_EQ((CIDs{"QUFBLUNJRC0x", "QkJCLUNJRC0y", "Q0NDLUNJRC0z"}), list());
}

TEST_F(CIDSourceHWID, ACIDTooLongForTheCacheIsUsedAndDoesNotHideTheOthers)
{
    const std::string longest(259, 'A');
    const std::string tooLong(260, 'B');
    answer(cidList({tooLong, longest, "QUFBLUNJRC0x"}));
    EXPECT_NE(0, get());
    EXPECT_EQ((CIDs{tooLong, longest, "QUFBLUNJRC0x"}), list());
    m_web.addRule("status=503");
    EXPECT_NE(0, get());
    EXPECT_EQ((CIDs{longest, "QUFBLUNJRC0x"}), sorted(list()));
}

TEST_F(CIDSourceHWID, TenThousandCIDsComeAndComeBack)
{
    CIDs cids;
    for (int i = 0; i < 10000; ++i)
        cids.push_back("TUFOWS1DSURT" + std::to_string(10000 + i) + "=");
    answer(cidList(cids));
    EXPECT_NE(0, get());
    EXPECT_EQ(cids, list());
    m_web.addRule("hang-up=1");
    EXPECT_NE(0, get());
    EXPECT_EQ(cids, sorted(list()));
}

// --- The cache ---------------------------------------------------------------------------------------------------

class CIDSourceHWIDFault : public CIDSourceHWID, public ::testing::WithParamInterface<const char*>
{
};

TEST_P(CIDSourceHWIDFault, TheCIDsOfTheLastAnswerComeBackFromTheCache)
{
    answer(kTwo);
    ASSERT_NE(0, get());
    m_web.addRule(std::string("page=") + kPage + ", " + GetParam());
    Steps::startList(m_manager);
    m_log.mark();
    EXPECT_NE(0, get());
    EXPECT_EQ((CIDs{"QUFBLUNJRC0x", "QkJCLUNJRC0y"}), sorted(list()));
    EXPECT_EQ((CIDs{"QUFBLUNJRC0x", "QkJCLUNJRC0y"}), cache());
    const Events seen = events();
    ASSERT_LE(4U, seen.size());
    EXPECT_EQ((Events{{"Warning", "Getting CID associated with HWID in cache"},
                      {"Info", "associated CID = " + list()[0]},
                      {"Info", "associated CID = " + list()[1]},
                      {"Info", "CID List from HWID : " + list()[0] + ", " + list()[1]}}),
              Events(seen.end() - 4, seen.end()));

    Steps::startList(m_manager);
    m_web.clearRules();
    answer(cidList({"TkVXLUNJRC0w"}));
    EXPECT_NE(0, get()) << "the next cycle";
    EXPECT_EQ((CIDs{"TkVXLUNJRC0w"}), cache());
}

INSTANTIATE_TEST_SUITE_P(All, CIDSourceHWIDFault,
                         ::testing::Values("status=500", "status=404", "status=407", "status=503", "hang-up=1",
                                           "hang-up=1, reset=1", "body=", "body=no XML", "body=<r>", "cut=20",
                                           "body=<html><body>Proxy login</body></html>, type=text/html",
                                           "body=<r><Data/></r>", "body=<r><Data><CIDList/></Data></r>"),
                         [](const auto& row) { return "Case" + std::to_string(row.index); });

TEST_F(CIDSourceHWID, AnUnreachableServerWithoutACacheGivesNoList)
{
    m_registry.write("Config", "WebServer", "127.0.0.1:1");
    EXPECT_EQ(0, get());
    EXPECT_EQ((auttest::LogEvent{"Warning", "Getting CID associated with HWID in cache"}), events().back());
    expectEmptyListRecorded("GetCIDListFromHWID");
    EXPECT_FALSE(m_registry.keyExists("Config\\Cache\\HWIDs\\4711")) << "reading makes no key";
}

TEST_F(CIDSourceHWID, TheCacheReplacesWhatTheListHeld)
{
    m_web.addRule("status=500");
    m_registry.write("Config\\Cache\\HWIDs\\4711", "Q0FDSEVELTAx", "");
    m_registry.write("Config\\Cache\\HWIDs\\4711", nullptr, "the key's unnamed value");
    Steps::startList(m_manager, {"BEFORE000001"});
    EXPECT_NE(0, get());
    EXPECT_EQ((CIDs{"Q0FDSEVELTAx"}), list());
}

TEST_F(CIDSourceHWID, TheCacheIsTakenAsItWasWritten)
{
    revoke("UkVWT0tFRC0x"); // after the answer that brought it
    m_web.addRule("status=500");
    m_registry.write("Config\\Cache\\HWIDs\\4711", "UkVWT0tFRC0x", "");
    EXPECT_NE(0, get());
    EXPECT_EQ((CIDs{"UkVWT0tFRC0x"}), list());
}

TEST_F(CIDSourceHWID, TheCacheOfAnotherHWIDIsNotUsed)
{
    m_web.addRule("status=500");
    m_registry.write("Config\\Cache\\HWIDs\\4712", "Q0FDSEVELTAx", "");
    EXPECT_EQ(0, get());
}

TEST_F(CIDSourceHWID, NothingStaysOpen)
{
    answer(kTwo);
    get();
    get();
    const std::size_t handles = auttest::openHandles();
    for (int round = 0; round < 15; ++round)
        get();
    EXPECT_NEAR(static_cast<double>(handles), static_cast<double>(auttest::openHandles()), 6.0);
}
} // namespace
