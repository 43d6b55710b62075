#include "tests/productlist/ProductListFixture.h"
#include "tests/productlist/StandInDocument.h"
#include "webconfigurator/WebConfigurator.h"

#include <windows.h>

#include <comdef.h>

#include <optional>
#include <string>
#include <utility>

using auttest::Events;
using auttest::Inside;

/// Product lists over real HTTP, from a server of this process.
class Retrieval : public auttest::ProductListTest
{
protected:
    Retrieval()
    {
        server.emplace(AUTOOLS_WEBCONFIGURATOR_TEMPLATES);
        config.ConnectionRetries = 0;
        config.TimeOut = 20;
    }
    /// What a request for the product list is answered with.
    void answerWith(std::string body)
    {
        webconf_sample::Rule rule;
        rule.answer.body = std::move(body);
        server->addRule(rule);
    }
    String url() const { return server->url("wcfgGetProductList.asp", "CertificateID=CID-1").c_str(); }
    void expectNoData(int status, phase1xml& list)
    {
        EXPECT_EQ((Events{{"Warning", "Phase1: No data returned by the server"}}), log.events());
        EXPECT_EQ(status, result->GetStatusCode());
        EXPECT_STREQ("no data returned by the server", result->GetAction());
        EXPECT_STREQ("phase1xml::GetXMLDoc", result->GetFunction());
        EXPECT_STREQ("", result->GetArgument1());
        EXPECT_STREQ("", result->GetArgument2());
        EXPECT_STREQ(list.GetURL(), result->GetObjectA());
        EXPECT_EQ(0, list.ParseXMLDocument(&releases, ""));
    }

    std::optional<webconf_sample::WebConfigurator> server;
    CConfig config;
};

TEST_F(Retrieval, FetchesTheProductList)
{
    phase1xml list(url());
    ASSERT_EQ(1, list.GetXMLDoc(&config));
    EXPECT_EQ(Events{}, log.events());
    EXPECT_EQ(0, result->GetStatusCode());
    ASSERT_EQ(1u, server->requests().size());
    EXPECT_EQ("/WebConfV1/wcfgGetProductList.asp?CertificateID=CID-1", server->requests()[0].target);

    ASSERT_EQ(1, list.ParseXMLDocument(&releases, "CID-1"));
    EXPECT_EQ(42u, list.GetModifCounter());
    EXPECT_EQ("CH", registry.readText("", "CountryCode"));
    ASSERT_EQ(4, releases.count());
    EXPECT_STREQ("Automatic Update", releases.at(0).GetName());
    EXPECT_EQ(2, releases.at(0).GetComponentList().GetCount());
    EXPECT_STREQ("Velmora Ledger & Reports", releases.at(1).GetMarketingName());
    EXPECT_EQ(1, releases.at(2).GetAction());
    EXPECT_EQ(0, releases.at(3).IsEnabled());
    EXPECT_EQ("7.0.12P3_DE", registry.readText("Data\\WebConf\\Ledger", ""));
}

TEST_F(Retrieval, ParsesAnAnswerThatBringsNothingNew)
{
    for (const char* file : {"no-change.xml", "error-no-data.xml", "error.xml"})
    {
        server->addRule(std::string("file=") + file);
        phase1xml list(url());
        EXPECT_EQ(1, list.GetXMLDoc(&config)) << file;
        EXPECT_EQ(1, list.ParseXMLDocument(&releases, "CID-1")) << file;
    }
    EXPECT_EQ(0, releases.count());
}

TEST_F(Retrieval, AnAnswerOfNoBytesLeavesTheTransfersStatus)
{
    answerWith("");
    phase1xml list(url());
    EXPECT_EQ(0, list.GetXMLDoc(&config));
    expectNoData(0, list);
}

TEST_F(Retrieval, AMissingPageLeavesTheTransfersStatus)
{
    server->addRule("status=404, body=gone");
    phase1xml list(url());
    EXPECT_EQ(0, list.GetXMLDoc(&config));
    expectNoData(13404, list);
}

TEST_F(Retrieval, AServerThatIsDownLeavesTheTransfersStatus)
{
    phase1xml list(url());
    server.reset();
    EXPECT_EQ(0, list.GetXMLDoc(&config));
    expectNoData(12029, list);
}

class RetrievalFault : public Retrieval, public ::testing::WithParamInterface<std::pair<const char*, const char*>>
{
};
TEST_P(RetrievalFault, LeavesNoDocument)
{
    server->addRule(GetParam().second);
    config.TimeOut = 1;
    phase1xml list(url());
    load(list, answer("<ProductList><Product/></ProductList>"));
    EXPECT_EQ(0, list.GetXMLDoc(&config));
    EXPECT_TRUE(log.has("Warning", "Phase1: No data returned by the server"));
    EXPECT_NE(0, result->GetStatusCode());
    EXPECT_EQ(0, list.ParseXMLDocument(&releases, "")) << "the document held before is gone";
}
INSTANTIATE_TEST_SUITE_P(Faults, RetrievalFault,
                         ::testing::Values(std::pair{"CutOff", "cut=1000"}, std::pair{"Stalled", "stall=1000"},
                                           std::pair{"LengthTooLong", "lie=100"}, std::pair{"Silent", "silent=1"},
                                           std::pair{"HungUp", "hang-up=1"}, std::pair{"Reset", "cut=1000, reset=1"},
                                           std::pair{"Failing", "status=503"}),
                         [](const auto& row) { return row.param.first; });

TEST_F(Retrieval, ASlowAnswerIsWaitedFor)
{
    server->addRule("delay=300, piece-delay=20, piece=1000");
    phase1xml list(url());
    EXPECT_EQ(1, list.GetXMLDoc(&config));
    EXPECT_EQ(1, list.ParseXMLDocument(&releases, ""));
    EXPECT_EQ(4, releases.count());
}

TEST_F(Retrieval, ReadsOtherEncodings)
{
    const std::wstring wide = L"\uFEFF<r><Data><NewData><ProductList><Product><Name>Caf\u00E9</Name></Product>"
                              L"</ProductList></NewData></Data></r>";
    const std::string list16(reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(wchar_t));
    const std::string before = "<r><Data><NewData><ProductList><Product><Name>Caf";
    const std::string behind = "</Name></Product></ProductList></NewData></Data></r>";
    char ansi[16] = {};
    ::WideCharToMultiByte(CP_ACP, 0, L"Caf\u00E9", -1, ansi, sizeof ansi, nullptr, nullptr);
    for (const std::string& body : {before + "\xC3\xA9" + behind, "\xEF\xBB\xBF" + before + "\xC3\xA9" + behind,
                                    "<?xml version='1.0' encoding='ISO-8859-1'?>" + before + "\xE9" + behind, list16})
    {
        answerWith(body);
        phase1xml list(url());
        ASSERT_EQ(1, list.GetXMLDoc(&config)) << body;
        auttest::OwnedReleases parsed;
        ASSERT_EQ(1, list.ParseXMLDocument(&parsed, ""));
        EXPECT_STREQ(ansi, parsed.at(0).GetName()) << body;
    }
}

// What is not well formed.

struct Garbage
{
    const char* name;
    std::string body;
};
class RetrievalGarbage : public Retrieval, public ::testing::WithParamInterface<Garbage>
{
};
TEST_P(RetrievalGarbage, IsRefusedWith500)
{
    answerWith(GetParam().body);
    phase1xml list(url());
    EXPECT_EQ(0, list.GetXMLDoc(&config));

    const std::vector<auttest::LogEvent> events = log.events();
    ASSERT_EQ(3u, events.size());
    EXPECT_EQ((auttest::LogEvent{"Warning", "Phase1: Unable to create XML document from data"}), events[0]);
    EXPECT_EQ((auttest::LogEvent{"Warning", "Phase1: New log"}), events[1]);
    EXPECT_EQ("Warning", events[2].type);
    EXPECT_EQ(0u, events[2].text.find("Error code: -")) << events[2].text; // the parser's codes are negative, 0 is none
    EXPECT_EQ(std::string::npos, events[2].text.find("reason = , line")) << events[2].text;
    EXPECT_EQ(500, result->GetStatusCode());
    EXPECT_STREQ("Unable to create XML document from data", result->GetAction());
    EXPECT_STREQ("phase1xml::GetXMLDoc", result->GetFunction());
    EXPECT_STREQ("", result->GetArgument1());
    EXPECT_STREQ("", result->GetArgument2());
    EXPECT_STREQ("pDoc->loadXML", result->GetObjectA());
    EXPECT_TRUE(Inside::holdsDocument(list)) << "the empty document stays";
    EXPECT_EQ(0, list.ParseXMLDocument(&releases, ""));
    EXPECT_TRUE(log.has("Warning", "phase1xml::ParseXMLDocument pDocRoot is NULL"));
}
INSTANTIATE_TEST_SUITE_P(
    Bodies, RetrievalGarbage,
    ::testing::Values(Garbage{"Text", "Service unavailable"}, Garbage{"Blank", " "},
                      Garbage{"CutXml", "<wcfgResponse><Data>"}, Garbage{"Crossed", "<a><b></a></b>"},
                      Garbage{"Zeros", std::string(1000, '\0')}, Garbage{"XmlThenZero", std::string("<a/>\0", 5)},
                      Garbage{"WrongEncoding", "<?xml version='1.0' encoding='UTF-8'?><a>\xE9</a>"},
                      Garbage{"Binary", std::string("\x7F"
                                                    "ELF\x02\x01\x01",
                                                    7)}),
    [](const auto& row) { return row.param.name; });

TEST_F(Retrieval, LogsWhatTheParserSays)
{
    auttest::DocumentChanges changes;
    changes.ownParseError = true;
    changes.errorCode = -1072896659;
    changes.errorReason = L"End tag 'a' does not match the start tag 'b'.\r\n";
    changes.errorLine = 7;
    changes.errorColumn = 12;
    const auttest::StandInDocument standIn(changes);
    answerWith("<b></a>");
    phase1xml list(url());
    EXPECT_EQ(0, list.GetXMLDoc(&config));
    EXPECT_EQ((Events{{"Warning", "Phase1: Unable to create XML document from data"},
                      {"Warning", "Phase1: New log"},
                      {"Warning", "Error code: -1072896659, reason = End tag 'a' does not match the start tag 'b'., "
                                  "line = 7, linepos = 12"}}),
              log.events());
}

TEST_F(Retrieval, AComErrorOfTheParseErrorReachesTheCaller)
{
    auttest::DocumentChanges changes;
    changes.parseErrorStatus = E_ACCESSDENIED;
    const auttest::StandInDocument standIn(changes);
    answerWith("<b></a>");
    phase1xml list(url());
    EXPECT_THROW(list.GetXMLDoc(&config), _com_error);
    EXPECT_TRUE(log.has("Warning", "Phase1: New log"));
    EXPECT_EQ(500, result->GetStatusCode());
}

TEST_F(Retrieval, AnAnswerNestedWithoutEndIsRefused)
{
    std::string body;
    for (int level = 0; level < 100000; ++level)
        body += "<a>";
    for (int level = 0; level < 100000; ++level)
        body += "</a>";
    answerWith(body);
    phase1xml list(url());
    EXPECT_EQ(0, list.GetXMLDoc(&config));
    EXPECT_EQ(500, result->GetStatusCode());
}

TEST_F(Retrieval, AnAnswerOf100MegabytesIsReadOrRefusedAsAWhole)
{
    std::string body = "<r><Data><NewData><ProductList>";
    const std::string product = "<Product><Name>Big</Name><Other>" + std::string(100000, 'x') + "</Other></Product>\n";
    const int products = 1000;
    for (int i = 0; i < products; ++i)
        body += product;
    body += "</ProductList></NewData></Data></r>";
    answerWith(std::move(body));
    config.TimeOut = 120;
    config.PacketSize = 65535;
    phase1xml list(url());
    // Some versions of the parser set themselves a limit below this size, others take it.
    if (list.GetXMLDoc(&config) == 1)
    {
        EXPECT_EQ(1, list.ParseXMLDocument(&releases, ""));
        EXPECT_EQ(products, releases.count());
    }
    else
    {
        EXPECT_EQ(500, result->GetStatusCode());
        EXPECT_EQ(0, list.ParseXMLDocument(&releases, ""));
        EXPECT_EQ(0, releases.count());
    }
}

// The check of a loaded document.

TEST_F(Retrieval, ADocumentThatDoesNotValidateIsDropped)
{
    auttest::DocumentChanges changes;
    changes.validatesOnParse = false;
    changes.ownParseError = true;
    changes.errorCode = 9;
    const auttest::StandInDocument standIn(changes);
    phase1xml list(url());
    EXPECT_EQ(0, list.GetXMLDoc(&config));
    EXPECT_FALSE(Inside::holdsDocument(list));
    EXPECT_EQ(554, result->GetStatusCode());
    EXPECT_STREQ("GetXMLDoc", result->GetAction());
    EXPECT_STREQ("pDoc->GetvalidateOnParse", result->GetFunction());
    EXPECT_STREQ("pDoc", result->GetObjectA());
}

// The settings of the transfer: a server that cuts off is asked once, and once more for each retry.

TEST_F(Retrieval, UsesTheGivenConfiguration)
{
    server->addRule("cut=1000");
    for (const int retries : {0, 1})
    {
        server->clearRequests();
        config.ConnectionRetries = retries;
        phase1xml list(url());
        EXPECT_EQ(0, list.GetXMLDoc(&config));
        EXPECT_EQ(static_cast<std::size_t>(1 + retries), server->requests().size());
    }
}

TEST_F(Retrieval, WithTheDialogFlagTheConfigurationIsNotUsed)
{
    server->addRule("cut=1000");
    phase1xml without(url());
    EXPECT_EQ(0, without.GetXMLDoc(nullptr));
    const std::size_t requestsByDefault = server->requests().size();
    ASSERT_NE(1u, requestsByDefault);

    server->clearRequests();
    registry.write("Config", "ShowDialog", 1);
    config.ConnectionRetries = 0;
    phase1xml list(url());
    EXPECT_EQ(0, list.GetXMLDoc(&config));
    EXPECT_EQ(requestsByDefault, server->requests().size());
}
