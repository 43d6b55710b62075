#include "tests/productlist/ProductListFixture.h"
#include "tests/productlist/StandInDocument.h"
#include "tests/support/OpenHandles.h"
#include "webconfigurator/WebConfigurator.h"

#include <windows.h>

#include <comdef.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using auttest::Events;
using auttest::Inside;
using auttest::LogEvent;
using Names = std::vector<std::string>;

namespace
{
const char kNoData[] = "<r><Status><Error><Kind><Business><NoDataFound>none</NoDataFound></Business></Kind></Error>"
                       "</Status></r>";
const char kError[] = "<r><Status><Error><Kind><Technical>down</Technical></Kind></Error></Status></r>";
const char kNoChange[] = "<r><Status><OK/></Status><Data><NoChange/></Data></r>";
const char kNew[] = "<r><Status><OK/></Status><Data><NewData><ModifCounter>9</ModifCounter></NewData></Data></r>";

std::string refused(const std::string& reasons)
{
    return "<r><Status><Error><Kind><Business><AccessMissing>" + reasons +
           "</AccessMissing></Business></Kind></Error></Status></r>";
}
std::string refusedFor(const std::string& reason) { return refused("<DBReason>" + reason + "</DBReason>"); }
} // namespace

class NewConfiguration : public auttest::ProductListTest
{
protected:
    /// A release in the caller's list. It is destroyed with the test: what is taken out of the list is its owner's.
    CRelease* add(const char* name, const char* certificateId)
    {
        owned.push_back(std::make_unique<CRelease>(7, "", "", name, "2.1", "B05", "EN", 0, 0, 1));
        owned.back()->SetCertificateID(certificateId);
        kept.AddTail(owned.back().get());
        return owned.back().get();
    }
    /// A release that the registry notes for these certificates.
    void deliver(const std::string& name, const Names& certificateIds) const
    {
        registry.write("Data\\WebConf\\" + name, "", "2.1B05_EN");
        for (const std::string& certificateId : certificateIds)
            registry.write("Data\\WebConf\\" + name, certificateId.c_str(), certificateId);
    }
    Names deliveries(const std::string& name) const
    {
        Names names = registry.valueNames("Data\\WebConf\\" + name);
        std::sort(names.begin(), names.end());
        return names;
    }
    /// The names of the releases in the list; "-" for a null pointer.
    Names names() const
    {
        Names found;
        for (POSITION at = kept.GetHeadPosition(); at != nullptr;)
        {
            CRelease* const release = kept.GetNext(at);
            found.emplace_back(release != nullptr ? release->GetName() : "-");
        }
        return found;
    }
    /// What the answer means for the certificate.
    int check(const std::string& answerXml, const char* certificateId = "A")
    {
        phase1xml list("http://host/", "P");
        loadAnswer(list, answerXml);
        return list.IsNewConfiguration(&kept, certificateId);
    }
    /// Loads an answer from no file: as a list of certificate IDs, of which it has none.
    void loadAnswer(phase1xml& list, const std::string& answerXml)
    {
        RT_List<String, String&> none;
        String text = answerXml.c_str();
        ASSERT_EQ(0, list.ConcatenateCIDs(&none, text));
        ASSERT_TRUE(Inside::holdsDocument(list)) << answerXml;
        log.mark();
    }
    /// Two releases of A, one of B, which the registry notes for A too, and a local one.
    void fill()
    {
        add("First", "A");
        add("Local", "");
        add("Second", "B");
        add("Third", "A");
        deliver("First", {"A"});
        deliver("Second", {"A", "B"});
    }
    /// What fill() made is there as it was, and nothing was saved.
    void expectUntouched()
    {
        EXPECT_EQ((Names{"First", "Local", "Second", "Third"}), names());
        EXPECT_EQ((Names{"", "A"}), deliveries("First"));
        EXPECT_EQ((Names{"", "A", "B"}), deliveries("Second"));
        EXPECT_FALSE(data.exists("P_productList.xml"));
    }
    /// The certificate A is withdrawn from what fill() made, and nothing was saved.
    void expectWithdrawn()
    {
        EXPECT_EQ((Names{"Local", "Second"}), names());
        EXPECT_FALSE(registry.keyExists("Data\\WebConf\\First"));
        EXPECT_EQ((Names{"", "B"}), deliveries("Second"));
        EXPECT_EQ("2.1B05_EN", registry.readText("Data\\WebConf\\Second", ""));
        EXPECT_FALSE(data.exists("P_productList.xml"));
        EXPECT_STREQ("First", owned[0]->GetName()) << "what is taken out is not destroyed";
        EXPECT_STREQ("Third", owned[3]->GetName());
    }

    std::vector<std::unique_ptr<CRelease>> owned;
    RT_List<CRelease*, CRelease*> kept;
};

// A new configuration.

TEST_F(NewConfiguration, IsSavedAndTakesTheCertificatesReleasesOut)
{
    fill();
    EXPECT_EQ(1, check(kNew));
    EXPECT_EQ((Names{"Local", "Second"}), names());
    EXPECT_EQ((Events{{"Info", (data / "P_productList.xml") + " file saved"}}), log.events());
    EXPECT_EQ((Names{"", "A"}), deliveries("First")) << "the registry is the parser's business";
    EXPECT_EQ((Names{"", "A", "B"}), deliveries("Second"));
    EXPECT_STREQ("First", owned[0]->GetName()) << "what is taken out is not destroyed";
    EXPECT_EQ(0, result->GetStatusCode());
}

TEST_F(NewConfiguration, IsThePreviousListOfTheNextCycle)
{
    EXPECT_EQ(1, check(answer("<ModifCounter>9</ModifCounter><ProductList><Product><Name>Editor</Name></Product>"
                              "</ProductList>")));
    phase1xml next("http://host/", "P");
    ASSERT_EQ(1, next.GetPreviousXMLDoc());
    ASSERT_EQ(1, next.ParseXMLDocument(&releases, ""));
    EXPECT_EQ(9u, next.GetModifCounter());
    ASSERT_EQ(1, releases.count());
    EXPECT_STREQ("Editor", releases.at(0).GetName());
}

TEST_F(NewConfiguration, IsParsedFromTheSameDocument)
{
    fill();
    phase1xml list("http://host/", "P");
    loadAnswer(list, answer("<ProductList><Product><Name>Editor</Name></Product></ProductList>"));
    ASSERT_EQ(1, list.IsNewConfiguration(&kept, "A"));
    ASSERT_EQ(1, list.ParseXMLDocument(&kept, "A"));
    EXPECT_EQ((Names{"Local", "Second", "Editor"}), names());
    POSITION at = FindCIDinReleaseList(&kept, "A");
    ASSERT_NE(nullptr, at);
    owned.emplace_back(kept.GetNext(at));
    EXPECT_EQ((Names{"", "A"}), deliveries("Editor"));
}

TEST_F(NewConfiguration, ReplacesTheFileOfThePreviousOne)
{
    phase1xml list("http://host/", "P");
    loadAnswer(list, kNew);
    data.writeFile("P_productList.xml", std::string(100000, 'x'));
    EXPECT_EQ(1, list.IsNewConfiguration(&kept, "A"));
    EXPECT_EQ(1, list.GetPreviousXMLDoc());
}

struct FileRow
{
    const char* name;
    bool local;
    const char* prefix;
    const char* file;
};
class ConfigurationFile : public NewConfiguration, public ::testing::WithParamInterface<FileRow>
{
};
TEST_P(ConfigurationFile, IsNamedAsThePreviousListIsFound)
{
    if (GetParam().local)
        registry.write("", "LocalInstall", 1);
    phase1xml list("http://host/", GetParam().prefix);
    loadAnswer(list, kNew);
    EXPECT_EQ(1, list.IsNewConfiguration(&kept, "A"));
    EXPECT_EQ((Events{{"Info", (data / GetParam().file) + " file saved"}}), log.events());
    EXPECT_TRUE(data.exists(GetParam().file));
    EXPECT_EQ(1, list.GetPreviousXMLDoc());
}
INSTANTIATE_TEST_SUITE_P(Rows, ConfigurationFile,
                         ::testing::Values(FileRow{"NoPrefix", false, "", "productList.xml"},
                                           FileRow{"Prefix", false, "P", "P_productList.xml"},
                                           FileRow{"TrimmedPrefix", false, "  P 1 ", "P 1_productList.xml"},
                                           FileRow{"Local", true, "", "localProductList.xml"},
                                           FileRow{"LocalWithPrefix", true, "P", "localProductList.xml"}),
                         [](const auto& row) { return row.param.name; });

TEST_F(NewConfiguration, WithUnknownStatusIsOneAllTheSame)
{
    for (const char* const xml :
         {"<r/>", "<r><Status><OK/></Status></r>", "<r><NoChange/></r>", "<r><Error/></r>", "<Status><Error/></Status>",
          "<r><Data><NoDataFound/></Data></r>", "<html><body>Proxy</body></html>"})
        EXPECT_EQ(1, check(xml)) << xml;
}

TEST_F(NewConfiguration, OfTheEmptyCertificateTakesTheLocalReleasesOut)
{
    fill();
    EXPECT_EQ(1, check(kNew, ""));
    EXPECT_EQ((Names{"First", "Second", "Third"}), names());
}

TEST_F(NewConfiguration, ComparesCertificatesWithoutRegardToCase)
{
    add("First", "cid-A");
    EXPECT_EQ(1, check(kNew, "CID-a"));
    EXPECT_EQ(0, kept.GetCount());
}

TEST_F(NewConfiguration, StepsOverNullPointersInTheList)
{
    kept.AddTail(nullptr);
    add("First", "A");
    kept.AddTail(nullptr);
    EXPECT_EQ(1, check(kNew));
    EXPECT_EQ((Names{"-", "-"}), names());
    EXPECT_EQ(1, check(kNew, ""));
    EXPECT_EQ(2, kept.GetCount());
}

TEST_F(NewConfiguration, NeedsNoList)
{
    phase1xml list("http://host/", "P");
    loadAnswer(list, kNew);
    EXPECT_EQ(1, list.IsNewConfiguration(nullptr, "A"));
    deliver("First", {"A"});
    loadAnswer(list, kNoData);
    EXPECT_EQ(0, list.IsNewConfiguration(nullptr, "A"));
    EXPECT_FALSE(registry.keyExists("Data\\WebConf\\First"));
}

TEST_F(NewConfiguration, WithoutADocumentThereIsNone)
{
    fill();
    phase1xml list("http://host/", "P");
    EXPECT_EQ(0, list.IsNewConfiguration(&kept, "A"));
    EXPECT_EQ((Events{{"Warning", "phase1xml::IsNewConfiguration pDocRoot is NULL"}}), log.events());
    expectUntouched();
}

TEST_F(NewConfiguration, ManyReleasesAreTakenOut)
{
    for (int i = 0; i < 1000; ++i)
        add("Release", i % 2 == 0 ? "A" : "B");
    EXPECT_EQ(1, check(kNew));
    EXPECT_EQ(500, kept.GetCount());
}

TEST_F(NewConfiguration, LeavesNoHandleOpen)
{
    fill();
    EXPECT_EQ(1, check(kNew));
    const std::size_t before = auttest::openHandles();
    for (int i = 0; i < 20; ++i)
    {
        check(kNew);
        check(refusedFor("102:"));
    }
    EXPECT_EQ(before, auttest::openHandles());
}

// What cannot be saved.

TEST_F(NewConfiguration, WithoutTheDataFolderRaises)
{
    fill();
    registry.write("", "DataPath", data / "missing");
    EXPECT_THROW(check(kNew), _com_error);
    expectUntouched();
    EXPECT_EQ(Events{}, log.events());
}

// The prefix is the caller's choice and may be made of what a server sent.
TEST_F(NewConfiguration, WithAPrefixThatLeadsOutOfTheDataFolderRaises)
{
    fill();
    registry.write("", "DataPath", data.makeFolder("data"));
    data.writeFile("P_productList.xml", "<outside/>");
    for (const std::string prefix : {"..\\P", "../P", "x\\..\\..\\P", "C:P", ".."})
    {
        phase1xml list("http://host/", prefix.c_str());
        loadAnswer(list, kNew);
        EXPECT_THROW(list.IsNewConfiguration(&kept, "A"), _com_error);
        EXPECT_EQ((Events{{"Error", "phase1xml - name prefix " + prefix + " refused: no product list of its own"}}),
                  log.events());
        EXPECT_EQ(0, list.GetPreviousXMLDoc());
    }
    EXPECT_EQ("<outside/>", data.readFile("P_productList.xml"));
    EXPECT_EQ((Names{"First", "Local", "Second", "Third"}), names());
}

TEST_F(NewConfiguration, OntoAReadOnlyFileRaises)
{
    fill();
    phase1xml list("http://host/", "P");
    loadAnswer(list, kNew);
    const std::string path = data.writeFile("P_productList.xml", "old");
    ::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_THROW(list.IsNewConfiguration(&kept, "A"), _com_error);
    EXPECT_EQ("old", data.readFile("P_productList.xml"));
    EXPECT_EQ((Names{"First", "Local", "Second", "Third"}), names());
    EXPECT_EQ(Events{}, log.events());
}

// The parser that the tests run with does not tell that a disk is full: here it is one that does.
TEST_F(NewConfiguration, TheErrorRaisedIsTheOneOfSaving)
{
    fill();
    auttest::DocumentChanges changes;
    const HRESULT diskFull = HRESULT_FROM_WIN32(ERROR_DISK_FULL);
    for (const auto& [status, raised] :
         {std::pair{diskFull, diskFull}, std::pair{E_ACCESSDENIED, E_ACCESSDENIED}, std::pair{S_FALSE, E_FAIL}})
    {
        changes.saveStatus = status;
        const auttest::StandInDocument standIn(changes);
        try
        {
            check(kNew);
            ADD_FAILURE() << "no error was raised";
        }
        catch (const _com_error& error)
        {
            EXPECT_EQ(raised, error.Error());
        }
    }
    expectUntouched();
}

TEST_F(NewConfiguration, ThatCannotBeSavedLeavesThePreviousOne)
{
    data.writeFile("P_productList.xml", "old");
    {
        auttest::DocumentChanges changes;
        changes.saveStatus = HRESULT_FROM_WIN32(ERROR_DISK_FULL);
        const auttest::StandInDocument standIn(changes);
        EXPECT_THROW(check(kNew), _com_error);
    }
    EXPECT_EQ("old", data.readFile("P_productList.xml"));
}

// Answers that are none.

TEST_F(NewConfiguration, NoDataFoundWithdrawsTheCertificate)
{
    fill();
    EXPECT_EQ(0, check(kNoData));
    expectWithdrawn();
    EXPECT_EQ(Events{}, log.events());
    EXPECT_FALSE(IsCIDRevoked("A"));
}

TEST_F(NewConfiguration, NoDataFoundMayBeEmptyAndComesFirst)
{
    fill();
    EXPECT_EQ(0, check("<r><Status><Error><Kind><Business><AccessMissing><DBReason>102:</DBReason></AccessMissing>"
                       "<NoDataFound/></Business></Kind></Error></Status><Data><NoChange/></Data></r>"));
    expectWithdrawn();
    EXPECT_EQ(Events{}, log.events());
    EXPECT_FALSE(IsCIDRevoked("A"));
}

TEST_F(NewConfiguration, AnErrorChangesNothing)
{
    fill();
    for (const char* const xml : {kError, "<r><Status><Error/></Status></r>",
                                  "<r><Status><Error><Kind><Business><AccessMissing/></Business></Kind></Error>"
                                  "</Status></r>",
                                  "<r><Status><Error><NoDataFound/></Error></Status></r>",
                                  "<r><Status><Error/></Status><Data><NewData/></Data></r>"})
        EXPECT_EQ(0, check(xml)) << xml;
    expectUntouched();
    EXPECT_EQ(Events{}, log.events());
}

TEST_F(NewConfiguration, NoChangeChangesNothing)
{
    fill();
    EXPECT_EQ(0, check(kNoChange));
    EXPECT_EQ(0, check("<r><Data><NewData/><NoChange/></Data></r>"));
    expectUntouched();
    EXPECT_EQ(Events{}, log.events());
}

TEST_F(NewConfiguration, NoChangeStillSetsTheClock)
{
    fill();
    EXPECT_EQ(0, check("<r><Status><OK/></Status><Data><NoChange><CurrentDateTime>2037-01-31 12:00</CurrentDateTime>"
                       "</NoChange></Data></r>"));
    expectUntouched();
    EXPECT_FALSE(data.exists("productList.xml"));
    EXPECT_EQ(Events{}, log.events());
    EXPECT_GT(CRegConfig(true).GetWebConfDiffDate(), 0) << "the server is ahead";
}

class AnswerTime : public NewConfiguration, public ::testing::WithParamInterface<std::pair<const char*, const char*>>
{
};
TEST_P(AnswerTime, IsStoredWhateverTheAnswerIs)
{
    ASSERT_FALSE(registry.valueExists("Config", "DiffWebConfDate"));
    check(std::string("<r>") + GetParam().second + "</r>");
    EXPECT_TRUE(registry.valueExists("Config", "DiffWebConfDate"));
    EXPECT_GT(CRegConfig(true).GetWebConfDiffDate(), 0) << "the server is ahead";
}
INSTANTIATE_TEST_SUITE_P(
    Answers, AnswerTime,
    ::testing::Values(
        std::pair{"NoChange", "<Data><NoChange><CurrentDateTime>2037-01-31 12:00</CurrentDateTime></NoChange></Data>"},
        std::pair{"NewData", "<Data><NewData><CurrentDateTime>2037-01-31 12:00</CurrentDateTime></NewData></Data>"},
        std::pair{"NoDataFound",
                  "<Status><Error><Kind><Business><NoDataFound/></Business></Kind></Error></Status>"
                  "<Data><NoChange><CurrentDateTime>2037-01-31 12:00</CurrentDateTime></NoChange></Data>"},
        std::pair{"Refused", "<Status><Error><Kind><Business><AccessMissing><DBReason>103:</DBReason></AccessMissing>"
                             "</Business></Kind></Error></Status>"
                             "<Data><NoChange><CurrentDateTime>2037-01-31 12:00</CurrentDateTime></NoChange></Data>"},
        std::pair{"Error", "<Status><Error/></Status>"
                           "<Data><NoChange><CurrentDateTime>2037-01-31 12:00</CurrentDateTime></NoChange></Data>"}),
    [](const auto& row) { return row.param.first; });

// Refusals.

struct ReasonRow
{
    const char* name;
    std::string reasons;
    const char* logged; ///< the text of the first one
    bool revoked;
};
class Refusal : public NewConfiguration, public ::testing::WithParamInterface<ReasonRow>
{
};
TEST_P(Refusal, RevokesWhenItsReasonSaysSo)
{
    fill();
    EXPECT_EQ(0, check(refused(GetParam().reasons)));
    EXPECT_EQ((Events{{"Warning", std::string("Get info for Certificate A returned: \"") + GetParam().logged + "\""}}),
              log.events());
    EXPECT_EQ(GetParam().revoked, IsCIDRevoked("A"));
    if (GetParam().revoked)
    {
        expectWithdrawn();
        EXPECT_EQ("Revoked", registry.readText("Config\\Cache\\Certificates\\A", "Status"));
    }
    else
    {
        expectUntouched();
        EXPECT_FALSE(registry.keyExists("Config\\Cache\\Certificates"));
    }
}
INSTANTIATE_TEST_SUITE_P(
    Reasons, Refusal,
    ::testing::Values(
        ReasonRow{"Expired", "<DBReason>Err 102: certificate expired</DBReason>", "Err 102: certificate expired", true},
        ReasonRow{"Unknown", "<DBReason>101: unknown</DBReason>", "101: unknown", true},
        ReasonRow{"AtTheEnd", "<DBReason>error 101:</DBReason>", "error 101:", true},
        ReasonRow{"WithinANumber", "<DBReason>5102:</DBReason>", "5102:", true},
        ReasonRow{"Other", "<DBReason>103: other</DBReason>", "103: other", false},
        ReasonRow{"NoColon", "<DBReason>101 102</DBReason>", "101 102", false},
        ReasonRow{"Split", "<DBReason>10 1:</DBReason>", "10 1:", false}, ReasonRow{"Empty", "<DBReason/>", "", false},
        ReasonRow{"SeveralFirstCounts", "<DBReason>103: other</DBReason><DBReason>102:</DBReason>", "103: other",
                  false},
        ReasonRow{"SeveralFirstRevokes", "<DBReason>102:</DBReason><DBReason>103:</DBReason>", "102:", true},
        ReasonRow{"InPieces", "<DBReason>10<b>2</b>:</DBReason>", "102:", true},
        ReasonRow{"Formats", "<DBReason>102: %s%n &quot;x&quot;</DBReason>", "102: %s%n \"x\"", true}),
    [](const auto& row) { return row.param.name; });

TEST_F(NewConfiguration, ARevokedCertificateMayHaveAnyCharacterOfTheAlphabet)
{
    deliver("First", {"QUJD+/12345="});
    add("First", "QUJD+/12345=");
    EXPECT_EQ(0, check(refusedFor("102:"), "QUJD+/12345="));
    EXPECT_TRUE(IsCIDRevoked("QUJD+/12345="));
    EXPECT_EQ(Names{"QUJD+/12345="}, registry.subkeys("Config\\Cache\\Certificates"));
    EXPECT_FALSE(registry.keyExists("Data\\WebConf\\First"));
    EXPECT_EQ(0, kept.GetCount());
}

TEST_F(NewConfiguration, AnotherStatusOfTheCertificateIsReplaced)
{
    registry.write("Config\\Cache\\Certificates\\A", "Status", "Valid");
    EXPECT_EQ(0, check(refusedFor("101:")));
    EXPECT_EQ("Revoked", registry.readText("Config\\Cache\\Certificates\\A", "Status"));
}

TEST_F(NewConfiguration, TheEmptyCertificateIsNeverRevoked)
{
    fill();
    EXPECT_EQ(0, check(refusedFor("102:"), ""));
    EXPECT_FALSE(registry.keyExists("Config\\Cache\\Certificates"));
    EXPECT_EQ((Names{"First", "Second", "Third"}), names()) << "the local releases are taken out";
    EXPECT_EQ((Names{"", "A"}), deliveries("First")) << "the values without a name are no certificate's";
    EXPECT_EQ((Names{"", "A", "B"}), deliveries("Second"));
}

TEST_F(NewConfiguration, ACertificateTooLongForItsKeyIsLogged)
{
    const std::string certificateId(300, 'A');
    EXPECT_EQ(0, check(refusedFor("102:"), certificateId.c_str()));
    EXPECT_EQ((Events{{"Warning", "Get info for Certificate " + certificateId + " returned: \"102:\""},
                      {"Error", "Certificate " + certificateId + " is revoked: not recorded"}}),
              log.events());
}

// Withdrawing a certificate.

TEST_F(NewConfiguration, WithoutRecordsTheListStays)
{
    add("First", "A");
    EXPECT_EQ(0, check(kNoData));
    EXPECT_EQ(Names{"First"}, names());
    EXPECT_FALSE(registry.keyExists("Data\\WebConf"));
    EXPECT_EQ(0, check(refusedFor("102:")));
    EXPECT_EQ(Names{"First"}, names());
    EXPECT_TRUE(IsCIDRevoked("A")) << "it is revoked all the same";
}

TEST_F(NewConfiguration, WithRecordsOfNoReleaseTheListIsCleared)
{
    registry.createKey("Data\\WebConf");
    add("First", "A");
    EXPECT_EQ(0, check(kNoData));
    EXPECT_EQ(Names{}, names());
    EXPECT_TRUE(registry.keyExists("Data\\WebConf"));
}

TEST_F(NewConfiguration, KeysWithFewerThanTwoValuesGo)
{
    deliver("OnlyVersion", {});
    registry.createKey("Data\\WebConf\\Empty");
    deliver("Both", {"A", "B"});
    deliver("Other", {"B"});
    EXPECT_EQ(0, check(kNoData));
    Names left = registry.subkeys("Data\\WebConf");
    std::sort(left.begin(), left.end());
    EXPECT_EQ((Names{"Both", "Other"}), left);
    EXPECT_EQ((Names{"", "B"}), deliveries("Both"));
}

TEST_F(NewConfiguration, AKeyWhoseValuesCannotAllBeReadStays)
{
    deliver("First", {"A", std::string(300, 'C')}); // longer than the names that are read
    EXPECT_EQ(0, check(kNoData));
    EXPECT_EQ((Names{"", std::string(300, 'C')}), deliveries("First"));
}

TEST_F(NewConfiguration, ReleaseFilesAreKept)
{
    deliver("First", {"A"});
    data.writeFile("First.lst", "record");
    EXPECT_EQ(0, check(kNoData));
    EXPECT_TRUE(data.exists("First.lst"));
}

TEST_F(NewConfiguration, AThousandReleasesAreWithdrawn)
{
    for (int i = 0; i < 1000; ++i)
        deliver("Release " + std::to_string(i), i % 2 == 0 ? Names{"A"} : Names{"A", "B"});
    EXPECT_EQ(0, check(kNoData));
    EXPECT_EQ(500u, registry.subkeys("Data\\WebConf").size());
    EXPECT_EQ((Names{"", "B"}), deliveries("Release 1"));
}

// Over the wire.

TEST_F(NewConfiguration, TheSamplePagesAreUnderstood)
{
    const webconf_sample::WebConfigurator server(AUTOOLS_WEBCONFIGURATOR_TEMPLATES);
    const auto ask = [&](const char* certificateId)
    {
        const std::string query = std::string("CertificateID=") + certificateId;
        phase1xml list(server.url("wcfgGetProductList.asp", query).c_str(), "P");
        EXPECT_EQ(1, list.GetXMLDoc(nullptr));
        return list.IsNewConfiguration(&kept, certificateId);
    };
    registry.createKey("Data\\WebConf");
    for (const char* const certificateId :
         {"QUNNRS1XUy0wMDAx", "Tk9EQVRBLUNJRDAx", "UkVWT0tFRC1DSUQx", "RVJST1ItQ0lEMDAw", "Tk9DSEFOR0UtQ0lE"})
        add(certificateId, certificateId);

    EXPECT_EQ(0, ask("Tk9EQVRBLUNJRDAx"));
    EXPECT_EQ(0, ask("UkVWT0tFRC1DSUQx"));
    EXPECT_TRUE(IsCIDRevoked("UkVWT0tFRC1DSUQx"));
    EXPECT_EQ(0, ask("RVJST1ItQ0lEMDAw"));
    EXPECT_EQ(0, ask("Tk9DSEFOR0UtQ0lE"));
    EXPECT_EQ((Names{"QUNNRS1XUy0wMDAx", "RVJST1ItQ0lEMDAw", "Tk9DSEFOR0UtQ0lE"}), names());
    EXPECT_FALSE(data.exists("P_productList.xml"));
    EXPECT_EQ(1, ask("QUNNRS1XUy0wMDAx"));
    EXPECT_EQ((Names{"RVJST1ItQ0lEMDAw", "Tk9DSEFOR0UtQ0lE"}), names());
    EXPECT_TRUE(data.exists("P_productList.xml"));
}
