#include "tests/productlist/ProductListFixture.h"
#include "tests/productlist/StandInDocument.h"
#include "webconfigurator/WebConfigurator.h"

#include <windows.h>

#include <comdef.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

using auttest::Events;
using auttest::Inside;
using auttest::LogEvent;
using auttest::withoutCom;
using Texts = std::vector<std::string>;

namespace
{
const char kRevokedCID[] = "UmV2b2tlZENJRA==";

std::string element(const std::string& text, const std::string& attributes = "")
{
    return "<CID" + attributes + ">" + text + "</CID>";
}
} // namespace

class CIDListTest : public auttest::ProductListTest
{
protected:
    CIDListTest() { registry.write(std::string("Config\\Cache\\Certificates\\") + kRevokedCID, "Status", "Revoked"); }

    Texts texts() const
    {
        Texts found;
        for (POSITION at = cids.GetHeadPosition(); at != nullptr;)
            found.emplace_back(static_cast<const char*>(cids.GetNext(at)));
        return found;
    }
    static void expectResult(int status, const char* action, const char* function, const char* object)
    {
        EXPECT_EQ(status, result->GetStatusCode());
        EXPECT_STREQ(action, result->GetAction());
        EXPECT_STREQ(function, result->GetFunction());
        EXPECT_STREQ("", result->GetArgument1());
        EXPECT_STREQ("", result->GetArgument2());
        EXPECT_STREQ(object, result->GetObjectA());
    }
    static void expectRefused(const char* action)
    {
        EXPECT_EQ(554, result->GetStatusCode());
        EXPECT_STREQ(action, result->GetAction());
        EXPECT_STREQ("pDoc->GetvalidateOnParse", result->GetFunction());
        EXPECT_STREQ("pDoc", result->GetObjectA());
        String win32;
        result->GetWin32ErrorMessage(win32);
        EXPECT_GE(win32.Find("Error Code=2a"), 0) << static_cast<const char*>(win32);
    }
    static auttest::DocumentChanges refusingChanges()
    {
        auttest::DocumentChanges changes;
        changes.validatesOnParse = false;
        changes.ownParseError = true;
        changes.errorCode = 0x2A;
        return changes;
    }

    RT_List<String, String&> cids;
};

// A list at hand.

class ConcatenateCIDs : public CIDListTest
{
protected:
    int read(const std::string& elements) { return readText("<r><CIDList>" + elements + "</CIDList></r>"); }
    int readText(const std::string& xml)
    {
        String text = xml.c_str();
        return list.ConcatenateCIDs(&cids, text);
    }

    phase1xml list{"http://host/cids"};
};

TEST_F(ConcatenateCIDs, AppendsInDocumentOrder)
{
    String first = "first";
    cids.AddTail(first);
    EXPECT_EQ(1, read(element("QUNNRS1XUy0wMDAx") + "<Other>QUNNRS1XUy0wMDA5</Other>" + element("QUNNRS1XUy0wMDAy")));
    EXPECT_EQ(1, read(element("QUNNRS1XUy0wMDAz")));
    EXPECT_EQ((Texts{"first", "QUNNRS1XUy0wMDAx", "QUNNRS1XUy0wMDAy", "QUNNRS1XUy0wMDAz"}), texts());
    EXPECT_EQ(Events{}, log.events());
    EXPECT_EQ(0, result->GetStatusCode());
    EXPECT_TRUE(Inside::holdsDocument(list));
}

TEST_F(ConcatenateCIDs, TheTextGivenIsLeftAlone)
{
    const std::string xml = "<r><CIDList>" + element("QUNNRS1XUy0wMDAx") + "</CIDList></r>";
    String text = xml.c_str();
    EXPECT_EQ(1, list.ConcatenateCIDs(&cids, text));
    EXPECT_STREQ(xml.c_str(), text);
}

TEST_F(ConcatenateCIDs, RepeatedOnesStay)
{
    EXPECT_EQ(1, read(element("QUNNRS1XUy0wMDAx") + element("QUNNRS1XUy0wMDAx")));
    EXPECT_EQ(2, cids.GetCount());
}

TEST_F(ConcatenateCIDs, ARevokedOneIsSkippedAndLogged)
{
    EXPECT_EQ(1, read(element(kRevokedCID) + element("QUNNRS1XUy0wMDAx")));
    EXPECT_EQ(Texts{"QUNNRS1XUy0wMDAx"}, texts());
    EXPECT_EQ((Events{{"Info", "Certificate UmV2b2tlZENJRA== revoked or expired"}}), log.events());
}

TEST_F(ConcatenateCIDs, AMasterMarkMeansNothing)
{
    EXPECT_EQ(1, read(element("QUNNRS1XUy0wMDAx", " master='True'")));
    EXPECT_EQ(Texts{"QUNNRS1XUy0wMDAx"}, texts());
    EXPECT_EQ(Events{}, log.events());
}

TEST_F(ConcatenateCIDs, ADeeperListIsNone)
{
    EXPECT_EQ(0, readText("<r><Data><CIDList>" + element("QUNNRS1XUy0wMDAx") + "</CIDList></Data></r>"));
    EXPECT_EQ(0, readText("<CIDList>" + element("QUNNRS1XUy0wMDAx") + "</CIDList>"));
    EXPECT_EQ(0, cids.GetCount());
}

TEST_F(ConcatenateCIDs, WithoutElementsItGives0)
{
    EXPECT_EQ(0, read(""));
    EXPECT_EQ(0, readText("<r/>"));
    EXPECT_EQ(0, cids.GetCount());
    EXPECT_EQ(Events{}, log.events());
    EXPECT_EQ(0, result->GetStatusCode());
}

TEST_F(ConcatenateCIDs, WithSkippedOnesOnlyItGives1)
{
    EXPECT_EQ(1, read(element("short")));
    EXPECT_EQ(0, cids.GetCount());
}

TEST_F(ConcatenateCIDs, ThousandsAreRead)
{
    std::string elements;
    for (int i = 10000; i < 12000; ++i)
        elements += element("QUNNRS1XUy0w" + std::to_string(i));
    EXPECT_EQ(1, read(elements));
    EXPECT_EQ(2000, cids.GetCount());
    EXPECT_EQ("QUNNRS1XUy0w11999", texts().back());
}

TEST_F(ConcatenateCIDs, WithoutAListItGives0)
{
    String text = ("<r><CIDList>" + element("QUNNRS1XUy0wMDAx") + "</CIDList></r>").c_str();
    EXPECT_EQ(0, list.ConcatenateCIDs(nullptr, text));
}

TEST_F(ConcatenateCIDs, GarbageIsRefusedWith500)
{
    for (const char* const xml : {"", "no list", "<r><CIDList>", "<a><b></a></b>"})
    {
        *result = RT_RESULT();
        log.mark();
        EXPECT_EQ(0, readText(xml)) << xml;
        const std::vector<LogEvent> events = log.events();
        ASSERT_EQ(3u, events.size()) << xml;
        EXPECT_EQ((LogEvent{"Warning", "Phase1: Unable to create XML document from data"}), events[0]);
        EXPECT_EQ((LogEvent{"Warning", "Phase1: New log"}), events[1]);
        EXPECT_EQ("Warning", events[2].type);
        EXPECT_EQ(0u, events[2].text.find("Error code: -")) << events[2].text;
        expectResult(500, "Unable to create XML document from data", "phase1xml::ConcatenateCID", "pDoc->loadXML");
    }
    EXPECT_EQ(0, cids.GetCount());
}

TEST_F(ConcatenateCIDs, WhatTheParserSaysIsLogged)
{
    auttest::DocumentChanges changes;
    changes.ownParseError = true;
    changes.errorCode = -1072896659;
    changes.errorReason = L"End tag 'a' does not match the start tag 'b'.\r\n";
    changes.errorLine = 7;
    changes.errorColumn = 12;
    const auttest::StandInDocument standIn(changes);
    EXPECT_EQ(0, readText("<b></a>"));
    EXPECT_TRUE(log.has("Warning", "Error code: -1072896659, reason = End tag 'a' does not match the start tag 'b'., "
                                   "line = 7, linepos = 12"));
}

TEST_F(ConcatenateCIDs, WithoutComItLeaves551)
{
    load(list, "<r/>");
    withoutCom([&] { EXPECT_EQ(0, read(element("QUNNRS1XUy0wMDAx"))); });
    EXPECT_EQ((Events{{"Warning", "Phase1: Unable for Initialize DOM Document"}}), log.events());
    expectResult(551, "DOM initialization failed", "phase1xml::ConcatenateCID", "http://host/cids");
    EXPECT_FALSE(Inside::holdsDocument(list)) << "the document held before is gone";
}

TEST_F(ConcatenateCIDs, ADocumentThatDoesNotValidateIsDropped)
{
    const auttest::StandInDocument standIn(refusingChanges());
    EXPECT_EQ(0, read(element("QUNNRS1XUy0wMDAx")));
    EXPECT_FALSE(Inside::holdsDocument(list));
    EXPECT_EQ(0, cids.GetCount());
    expectRefused("GetXMLDoc");
}

// The rule for what is accepted.

struct AcceptedRow
{
    const char* name;
    std::string text;
    std::string accepted; ///< "" when it is skipped
};
class AcceptedCID : public ConcatenateCIDs, public ::testing::WithParamInterface<AcceptedRow>
{
};
TEST_P(AcceptedCID, FollowsTheAlphabetAndTheLength)
{
    EXPECT_EQ(1, read(element(GetParam().text)));
    EXPECT_EQ(GetParam().accepted.empty() ? Texts{} : Texts{GetParam().accepted}, texts());
    EXPECT_EQ(Events{}, log.events());
}
INSTANTIATE_TEST_SUITE_P(
    Texts, AcceptedCID,
    ::testing::Values(AcceptedRow{"BetweenBlanks", "   QUNNRS1XUy0wMDAx  ", "QUNNRS1XUy0wMDAx"},
                      AcceptedRow{"Hyphen", "ABC-123456789", ""}, AcceptedRow{"TenCharacters", "ABCDEFGHIJ", ""},
                      AcceptedRow{"TenBetweenBlanks", "  ABCDEFGHIJ  ", ""},
                      AcceptedRow{"ElevenCharacters", "ABCDEFGHIJK", "ABCDEFGHIJK"},
                      AcceptedRow{"WholeAlphabet", "azAZ09+/====", "azAZ09+/===="},
                      AcceptedRow{"SignsOnly", "++//==++//==", "++//==++//=="},
                      AcceptedRow{"BlankWithin", "ABCDEF GHIJKL", ""}, AcceptedRow{"Underscore", "ABCDEF_GHIJKL", ""},
                      AcceptedRow{"Point", "ABCDEF.GHIJKL", ""}, AcceptedRow{"Backslash", "ABCDEF\\GHIJKL", ""},
                      AcceptedRow{"BeforeUpper", "ABCDEFGHIJK@", ""}, AcceptedRow{"BehindUpper", "ABCDEFGHIJK[", ""},
                      AcceptedRow{"BeforeLower", "ABCDEFGHIJK`", ""}, AcceptedRow{"BehindLower", "ABCDEFGHIJK{", ""},
                      AcceptedRow{"Colon", "ABCDEFGHIJK:", ""}, AcceptedRow{"Umlaut", "ABCDEFGHIJK\xC3\x84", ""},
                      AcceptedRow{"Empty", "", ""}, AcceptedRow{"Blanks", "              ", ""},
                      AcceptedRow{"InPieces", "ABCDE<!-- x --><b>FGHIJK</b>", "ABCDEFGHIJK"},
                      AcceptedRow{"Long", std::string(10000, 'A'), std::string(10000, 'A')}),
    [](const auto& row) { return row.param.name; });

// A list from the server.

class CIDListFromHWID : public CIDListTest
{
protected:
    CIDListFromHWID() { server.emplace(AUTOOLS_WEBCONFIGURATOR_TEMPLATES); }
    void answerWith(std::string body)
    {
        webconf_sample::Rule rule;
        rule.answer.body = std::move(body);
        server->addRule(rule);
    }
    int read() { return list.emplace(url().c_str()).GetXMLCIDListFromHWID(&cids, master); }
    int read(const std::string& elements)
    {
        answerWith("<wcfgResponse><Data><CIDList>" + elements + "</CIDList></Data></wcfgResponse>");
        return read();
    }
    std::string url() const { return server->url("wcfgGetCidListFromHWID1.asp", "HWID=1A2B"); }

    std::optional<webconf_sample::WebConfigurator> server;
    std::optional<phase1xml> list;
    String master = "unchanged";
};

TEST_F(CIDListFromHWID, FetchesTheListAndItsMaster)
{
    EXPECT_EQ(1, read());
    ASSERT_EQ(1u, server->requests().size());
    EXPECT_EQ("/WebConfV1/wcfgGetCidListFromHWID1.asp?HWID=1A2B", server->requests()[0].target);
    EXPECT_EQ((Texts{"QUNNRS1XUy0wMDAx", "QUNNRS1XUy0wMDAy", "QUNNRS1XUy0wMDAz"}), texts());
    EXPECT_STREQ("QUNNRS1XUy0wMDAy", master);
    EXPECT_EQ((Events{{"Info", "GetXMLCIDListFromHWID: adding MASTER CID = QUNNRS1XUy0wMDAy"}}), log.events());
    EXPECT_EQ(0, result->GetStatusCode());
    EXPECT_TRUE(Inside::holdsDocument(*list));
}

TEST_F(CIDListFromHWID, AppendsToTheList)
{
    String first = "first";
    cids.AddTail(first);
    EXPECT_EQ(1, read(element("QUNNRS1XUy0wMDAx")));
    EXPECT_EQ((Texts{"first", "QUNNRS1XUy0wMDAx"}), texts());
    EXPECT_STREQ("unchanged", master) << "none is marked";
    EXPECT_EQ(Events{}, log.events()) << "an element has a collection of attributes, if an empty one";
}

TEST_F(CIDListFromHWID, TheMarkIsComparedWithoutRegardToCase)
{
    for (const char* const mark : {"True", "TRUE", "true", "tRuE"})
    {
        master = "";
        EXPECT_EQ(1, read(element("QUNNRS1XUy0wMDAx", std::string(" other='1' master='") + mark + "'"))) << mark;
        EXPECT_STREQ("QUNNRS1XUy0wMDAx", master) << mark;
    }
}

TEST_F(CIDListFromHWID, AnyOtherMarkIsNone)
{
    for (const char* const attributes :
         {" master='False'", " master='1'", " master=''", " master=' True'", " Master='True'", " MASTER='True'", ""})
    {
        EXPECT_EQ(1, read(element("QUNNRS1XUy0wMDAx", attributes))) << attributes;
        EXPECT_STREQ("unchanged", master) << attributes;
    }
    EXPECT_EQ(7, cids.GetCount()) << "they are accepted all the same";
    EXPECT_EQ(Events{}, log.events());
}

TEST_F(CIDListFromHWID, AnElementIsNoMark)
{
    EXPECT_EQ(1, read(element("QUNNRS1XUy0<master>True</master>")));
    EXPECT_EQ(Texts{"QUNNRS1XUy0True"}, texts());
    EXPECT_STREQ("unchanged", master);
}

TEST_F(CIDListFromHWID, TheLastMarkWins)
{
    EXPECT_EQ(1, read(element("QUNNRS1XUy0wMDAx", " master='True'") + element("QUNNRS1XUy0wMDAy", " master='True'") +
                      element("QUNNRS1XUy0wMDAz")));
    EXPECT_STREQ("QUNNRS1XUy0wMDAy", master);
    EXPECT_EQ((Events{{"Info", "GetXMLCIDListFromHWID: adding MASTER CID = QUNNRS1XUy0wMDAx"},
                      {"Info", "GetXMLCIDListFromHWID: adding MASTER CID = QUNNRS1XUy0wMDAy"}}),
              log.events());
}

TEST_F(CIDListFromHWID, TheMasterIsTheTrimmedText)
{
    EXPECT_EQ(1, read(element("  QUNNRS1XUy0wMDAx ", " master='True'")));
    EXPECT_STREQ("QUNNRS1XUy0wMDAx", master);
}

TEST_F(CIDListFromHWID, ARevokedOneIsNeitherAddedNorMaster)
{
    EXPECT_EQ(1, read(element("QUNNRS1XUy0wMDAx") + element(kRevokedCID, " master='True'")));
    EXPECT_EQ(Texts{"QUNNRS1XUy0wMDAx"}, texts());
    EXPECT_STREQ("unchanged", master);
    EXPECT_EQ((Events{{"Info", "Certificate UmV2b2tlZENJRA== revoked or expired"}}), log.events());
}

TEST_F(CIDListFromHWID, AMalformedOneIsNeitherAddedNorMaster)
{
    EXPECT_EQ(1, read(element("ABC-123456789", " master='True'") + element("ABCDEFGHIJ", " master='True'")));
    EXPECT_EQ(0, cids.GetCount());
    EXPECT_STREQ("unchanged", master);
    EXPECT_EQ(Events{}, log.events());
}

TEST_F(CIDListFromHWID, AnElementWithoutACollectionOfAttributesIsLogged)
{
    auttest::DocumentChanges changes;
    changes.attributesStatus = S_FALSE;
    const auttest::StandInDocument standIn(changes);
    EXPECT_EQ(1, read(element("QUNNRS1XUy0wMDAx") + element("short")));
    EXPECT_EQ(Texts{"QUNNRS1XUy0wMDAx"}, texts());
    EXPECT_STREQ("unchanged", master);
    EXPECT_EQ((Events{{"Info", "GetXMLCIDListFromHWID: adding CID QUNNRS1XUy0wMDAx"}}), log.events());
}

TEST_F(CIDListFromHWID, AComErrorOfTheAttributesReachesTheCaller)
{
    auttest::DocumentChanges changes;
    changes.attributesStatus = E_ACCESSDENIED;
    const auttest::StandInDocument standIn(changes);
    EXPECT_THROW(read(element("QUNNRS1XUy0wMDAx")), _com_error);
    EXPECT_EQ(Texts{"QUNNRS1XUy0wMDAx"}, texts()) << "it is appended before its mark is read";
}

TEST_F(CIDListFromHWID, TheRawAnswerIsLoggedAtLevel4)
{
    const std::string body = "<r><Data><CIDList>" + element("QUNNRS1XUy0wMDAx") + "</CIDList></Data></r>";
    answerWith(body);
    const LogEvent event{"Info", "GetXMLCIDListFromHWID: szData = " + body};
    logDetail(3);
    EXPECT_EQ(1, read());
    EXPECT_FALSE(log.has(event.type, event.text));
    logDetail(4);
    EXPECT_EQ(1, read());
    EXPECT_TRUE(log.has(event.type, event.text));
}

class WithoutCIDs : public CIDListFromHWID, public ::testing::WithParamInterface<const char*>
{
};
TEST_P(WithoutCIDs, TheNodeIsReportedAsNotFound)
{
    String first = "first";
    cids.AddTail(first);
    answerWith(GetParam());
    EXPECT_EQ(0, read());
    EXPECT_EQ(Texts{"first"}, texts());
    EXPECT_STREQ("unchanged", master);
    EXPECT_EQ((Events{{"Error", "GetXMLCIDListFromHWID: node \"Data/CIDList/CID\" not found"}}), log.events());
    EXPECT_EQ(0, result->GetStatusCode());
}
INSTANTIATE_TEST_SUITE_P(Answers, WithoutCIDs,
                         ::testing::Values("<wcfgResponse/>", "<wcfgResponse><Data><CIDList/></Data></wcfgResponse>",
                                           "<r><CIDList><CID>QUNNRS1XUy0wMDAx</CID></CIDList></r>",
                                           "<r><Data><CIDList><cid>QUNNRS1XUy0wMDAx</cid></CIDList></Data></r>",
                                           "<Data><CIDList><CID>QUNNRS1XUy0wMDAx</CID></CIDList></Data>",
                                           "<html><body>Proxy</body></html>"));

TEST_F(CIDListFromHWID, WithoutAListNothingIsMaster)
{
    answerWith("<r><Data><CIDList>" + element("QUNNRS1XUy0wMDAx", " master='True'") + "</CIDList></Data></r>");
    phase1xml document(url().c_str());
    EXPECT_EQ(0, document.GetXMLCIDListFromHWID(nullptr, master));
    EXPECT_STREQ("unchanged", master);
}

// What goes wrong on the way.

TEST_F(CIDListFromHWID, WithoutDataTheTransfersStatusStays)
{
    const LogEvent event{"Warning", "GetXMLCIDListFromHWID: No data returned by the server"};
    answerWith("");
    EXPECT_EQ(0, read());
    expectResult(0, "no data returned by the server", "phase1xml::GetXMLCIDListFromHWID", url().c_str());
    EXPECT_EQ(Events{event}, log.events());

    server->addRule("status=404, body=gone");
    EXPECT_EQ(0, read());
    expectResult(13404, "no data returned by the server", "phase1xml::GetXMLCIDListFromHWID", url().c_str());

    const std::string address = url();
    server.reset();
    phase1xml down(address.c_str());
    EXPECT_EQ(0, down.GetXMLCIDListFromHWID(&cids, master));
    expectResult(12029, "no data returned by the server", "phase1xml::GetXMLCIDListFromHWID", address.c_str());
    EXPECT_EQ((Events{event, event, event}), log.events());
    EXPECT_EQ(0, cids.GetCount());
}

TEST_F(CIDListFromHWID, GarbageIsRefusedWith500)
{
    for (const char* const body : {"Service unavailable", "<wcfgResponse><Data>", "<a><b></a></b>"})
    {
        *result = RT_RESULT();
        log.mark();
        answerWith(body);
        EXPECT_EQ(0, read()) << body;
        EXPECT_EQ((Events{{"Warning", "GetXMLCIDListFromHWID: Unable to create XML document from data"}}),
                  log.events());
        expectResult(500, "Unable to create XML document from data", "phase1xml::GetXMLCIDListFromHWID",
                     "pDoc->loadXML");
    }
    EXPECT_EQ(0, cids.GetCount());
}

TEST_F(CIDListFromHWID, WithoutComItLeaves551AndAsksNobody)
{
    withoutCom([&] { EXPECT_EQ(0, read()); });
    EXPECT_EQ((Events{{"Error", "GetXMLCIDListFromHWID: Unable for Initialize DOM Document"}}), log.events());
    expectResult(551, "DOM initialization failed", "phase1xml::GetXMLCIDListFromHWID", url().c_str());
    EXPECT_TRUE(server->requests().empty());
}

TEST_F(CIDListFromHWID, ADocumentThatDoesNotValidateIsDropped)
{
    const auttest::StandInDocument standIn(refusingChanges());
    EXPECT_EQ(0, read());
    EXPECT_FALSE(Inside::holdsDocument(*list));
    EXPECT_EQ(0, cids.GetCount());
    expectRefused("GetXMLCIDListFromHWID");
    EXPECT_EQ(Events{}, log.events());
}

TEST_F(CIDListFromHWID, AnAnswerCutOffGivesNoPartOfTheList)
{
    server->addRule("cut=250");
    EXPECT_EQ(0, read());
    EXPECT_EQ(0, cids.GetCount());
    EXPECT_STREQ("unchanged", master);
    EXPECT_TRUE(log.has("Warning", "GetXMLCIDListFromHWID: No data returned by the server"));
}
