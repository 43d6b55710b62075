#include "tests/productlist/ProductListFixture.h"
#include "tests/productlist/StandInDocument.h"

#include <windows.h>

#include <comdef.h>

#include <cstring>
#include <string>

using auttest::componentAt;
using auttest::Events;

namespace
{
const char* const kVersions = "Data\\WebConf";

std::string element(const std::string& name, const std::string& text)
{
    return "<" + name + ">" + text + "</" + name + ">";
}
std::string product(const std::string& fields) { return element("Product", fields); }
std::string component(const std::string& fields)
{
    return product("<ComponentList>" + element("Component", fields) + "</ComponentList>");
}
} // namespace

class ProductListParser : public auttest::ProductListTest
{
};

// The fields of a release and of a component.

TEST_F(ProductListParser, ReadsEveryFieldOfAProduct)
{
    parseProducts(product("<ProductReleaseID>4711</ProductReleaseID><Name>Editor</Name><Language>EN</Language>"
                          "<Version>3.3.302</Version><Build>B1</Build><Action>REMOVE</Action>"
                          "<StartDate>2026-11-20 14:05</StartDate><PreInstallOnly>TRUE</PreInstallOnly>"
                          "<NoDownload>TRUE</NoDownload><MarketingName>Velmora Editor</MarketingName>"
                          "<TechnicalName>VED</TechnicalName>"),
                  "CID-1");

    ASSERT_EQ(1, releases.count());
    CRelease& release = releases.at(0);
    EXPECT_EQ(4711, release.GetId());
    EXPECT_STREQ("Editor", release.GetName());
    EXPECT_STREQ("EN", release.GetLanguage());
    EXPECT_STREQ("3.3.302", release.GetVersion());
    EXPECT_STREQ("B1", release.GetBuild());
    EXPECT_STREQ("3.3.302B1_EN", release.GetFullVersion());
    EXPECT_EQ(1, release.GetAction());
    EXPECT_EQ(1, release.IsEnabled());
    EXPECT_EQ(ConvertDate("2026-11-20 14:05"), release.GetActivationDate());
    EXPECT_EQ(1, release.IsPreInstallOnly());
    EXPECT_EQ(1, release.IsNoDownload());
    EXPECT_STREQ("Velmora Editor", release.GetMarketingName());
    EXPECT_STREQ("VED", release.GetTechnicalName());
    EXPECT_STREQ("CID-1", release.GetCertificateID());
    EXPECT_EQ(0, release.GetInstallationStartHour());
    EXPECT_EQ(0, release.GetInstallationEndHour());
    EXPECT_FALSE(release.IsPending());
    EXPECT_TRUE(release.GetComponentList().IsEmpty());
}

TEST_F(ProductListParser, MissingProductElementsTakeTheirDefaults)
{
    parseProducts("<Product/>");

    ASSERT_EQ(1, releases.count());
    CRelease& release = releases.at(0);
    EXPECT_EQ(0, release.GetId());
    EXPECT_STREQ("", release.GetName());
    EXPECT_STREQ("", release.GetLanguage());
    EXPECT_STREQ("", release.GetVersion());
    EXPECT_STREQ("", release.GetBuild());
    EXPECT_STREQ("", release.GetFullVersion());
    EXPECT_EQ(0, release.GetAction());
    EXPECT_EQ(1, release.IsEnabled());
    EXPECT_EQ(0, release.GetActivationDate());
    EXPECT_EQ(0, release.IsPreInstallOnly());
    EXPECT_EQ(0, release.IsNoDownload());
    EXPECT_STREQ("", release.GetMarketingName());
    EXPECT_STREQ("", release.GetTechnicalName());
    EXPECT_STREQ("", release.GetCertificateID());
    EXPECT_TRUE(release.GetComponentList().IsEmpty());
}

TEST_F(ProductListParser, ReadsEveryFieldOfAComponent)
{
    parseProducts(component("<ComponentReleaseID>815</ComponentReleaseID><Name>Spell</Name><Language>SV</Language>"
                            "<Version>2.1</Version><Build>05</Build><URL>HTTP://depot/spell.cab</URL>"
                            "<Action>FORCEREINSTALL</Action><Shared>True</Shared>"));

    ASSERT_EQ(1, releases.at(0).GetComponentList().GetCount());
    CComponent& parsed = componentAt(releases.at(0), 0);
    EXPECT_EQ(815, parsed.GetId());
    EXPECT_STREQ("Spell", parsed.GetName());
    EXPECT_STREQ("SV", parsed.GetLanguage());
    EXPECT_STREQ("2.1", parsed.GetVersion());
    EXPECT_STREQ("05", parsed.GetBuild());
    EXPECT_STREQ("2.105_SV", parsed.GetFullVersion());
    EXPECT_STREQ("HTTP://depot/spell.cab", parsed.GetSourceLocation());
    EXPECT_EQ(2, parsed.GetAction());
    EXPECT_EQ(1, parsed.IsShared());
    EXPECT_EQ(1, parsed.IsEnabled());
}

TEST_F(ProductListParser, MissingComponentElementsTakeTheirDefaults)
{
    parseProducts(component(""));

    CComponent& parsed = componentAt(releases.at(0), 0);
    EXPECT_EQ(0, parsed.GetId());
    EXPECT_STREQ("", parsed.GetName());
    EXPECT_STREQ("", parsed.GetFullVersion());
    EXPECT_STREQ("", parsed.GetSourceLocation());
    EXPECT_EQ(0, parsed.GetAction());
    EXPECT_EQ(0, parsed.IsShared());
    EXPECT_EQ(1, parsed.IsEnabled());
}

// Action words, flags and ids: one row each.

struct ActionRow
{
    const char* name;
    const char* word;
    int action;
    int releaseEnabled;
};
class ProductListAction : public ProductListParser, public ::testing::WithParamInterface<ActionRow>
{
};
TEST_P(ProductListAction, OfAReleaseAlsoEnablesIt)
{
    parseProducts(product(element("Action", GetParam().word)));
    EXPECT_EQ(GetParam().action, releases.at(0).GetAction());
    EXPECT_EQ(GetParam().releaseEnabled, releases.at(0).IsEnabled());
}
TEST_P(ProductListAction, OfAComponentLeavesItEnabled)
{
    parseProducts(component(element("Action", GetParam().word)));
    EXPECT_EQ(GetParam().action, componentAt(releases.at(0), 0).GetAction());
    EXPECT_EQ(1, componentAt(releases.at(0), 0).IsEnabled());
}
INSTANTIATE_TEST_SUITE_P(Words, ProductListAction,
                         ::testing::Values(ActionRow{"Install", "INSTALL", 0, 1}, ActionRow{"Remove", "REMOVE", 1, 1},
                                           ActionRow{"ForceReinstall", "FORCEREINSTALL", 2, 1},
                                           ActionRow{"Disable", "DISABLE", 3, 0},
                                           ActionRow{"MixedCase", "ForceReInstall", 2, 1},
                                           ActionRow{"LowerCaseDisable", "disable", 3, 0},
                                           ActionRow{"Unknown", "UPGRADE", 0, 1}, ActionRow{"Empty", "", 0, 1}),
                         [](const auto& row) { return row.param.name; });

struct FlagRow
{
    const char* name;
    const char* text;
    int value;
};
class ProductListFlag : public ProductListParser, public ::testing::WithParamInterface<FlagRow>
{
};
TEST_P(ProductListFlag, IsTheWordTrueInAnyCase)
{
    const std::string text = GetParam().text;
    parseProducts(product(element("PreInstallOnly", text)) + product(element("NoDownload", text)) +
                  component(element("Shared", text)));
    EXPECT_EQ(GetParam().value, releases.at(0).IsPreInstallOnly());
    EXPECT_EQ(0, releases.at(0).IsNoDownload());
    EXPECT_EQ(0, releases.at(1).IsPreInstallOnly());
    EXPECT_EQ(GetParam().value, releases.at(1).IsNoDownload());
    EXPECT_EQ(GetParam().value, componentAt(releases.at(2), 0).IsShared());
}
INSTANTIATE_TEST_SUITE_P(Texts, ProductListFlag,
                         ::testing::Values(FlagRow{"UpperCase", "TRUE", 1}, FlagRow{"LowerCase", "true", 1},
                                           FlagRow{"Capitalised", "True", 1}, FlagRow{"False", "FALSE", 0},
                                           FlagRow{"Yes", "Yes", 0}, FlagRow{"One", "1", 0}, FlagRow{"Empty", "", 0},
                                           FlagRow{"Longer", "TRUE!", 0}),
                         [](const auto& row) { return row.param.name; });

struct IdRow
{
    const char* name;
    const char* text;
    long id;
};
class ProductListId : public ProductListParser, public ::testing::WithParamInterface<IdRow>
{
};
TEST_P(ProductListId, IsTheLeadingNumber)
{
    parseProducts(product(element("ProductReleaseID", GetParam().text)) +
                  component(element("ComponentReleaseID", GetParam().text)));
    EXPECT_EQ(GetParam().id, releases.at(0).GetId());
    EXPECT_EQ(GetParam().id, componentAt(releases.at(1), 0).GetId());
}
INSTANTIATE_TEST_SUITE_P(Texts, ProductListId,
                         ::testing::Values(IdRow{"Plain", "42", 42}, IdRow{"FollowedByLetters", "12abc", 12},
                                           IdRow{"Letters", "abc", 0}, IdRow{"Empty", "", 0},
                                           IdRow{"LargestSigned", "2147483647", 2147483647},
                                           IdRow{"LargestUnsigned", "4294967295", -1},
                                           IdRow{"TooLarge", "99999999999999999999", -1},
                                           IdRow{"TooSmall", "-99999999999999999999", -1}),
                         [](const auto& row) { return row.param.name; });

// Which elements count.

TEST_F(ProductListParser, KeepsTheOrderOfReleasesAndComponents)
{
    parseProducts(
        "<Product><Name>A</Name><ComponentList><Component><Name>1</Name></Component>"
        "<Component><Name>2</Name></Component></ComponentList></Product>"
        "<Product><Name>B</Name><ComponentList><Component><Name>3</Name></Component></ComponentList></Product>");

    ASSERT_EQ(2, releases.count());
    EXPECT_STREQ("A", releases.at(0).GetName());
    EXPECT_STREQ("B", releases.at(1).GetName());
    ASSERT_EQ(2, releases.at(0).GetComponentList().GetCount());
    EXPECT_STREQ("1", componentAt(releases.at(0), 0).GetName());
    EXPECT_STREQ("2", componentAt(releases.at(0), 1).GetName());
    ASSERT_EQ(1, releases.at(1).GetComponentList().GetCount());
    EXPECT_STREQ("3", componentAt(releases.at(1), 0).GetName());
}

TEST_F(ProductListParser, AppendsToWhatTheListHolds)
{
    parseProducts(product("<Name>A</Name>"));
    parseProducts(product("<Name>B</Name>"));
    ASSERT_EQ(2, releases.count());
    EXPECT_STREQ("A", releases.at(0).GetName());
    EXPECT_STREQ("B", releases.at(1).GetName());
}

TEST_F(ProductListParser, TheNameOfTheDocumentElementDoesNotMatter)
{
    ASSERT_EQ(1, parse("<anything><Data><NewData><ProductList><Product/></ProductList></NewData></Data></anything>"));
    EXPECT_EQ(1, releases.count());
}

TEST_F(ProductListParser, CollectsProductsAndComponentsOfRepeatedLists)
{
    ASSERT_EQ(1, parse(answer("<ProductList><Product><Name>A</Name></Product></ProductList>"
                              "<ProductList><Product><Name>B</Name><ComponentList><Component><Name>1</Name></Component>"
                              "</ComponentList><Other/><ComponentList><Component><Name>2</Name></Component>"
                              "</ComponentList></Product></ProductList>")));
    ASSERT_EQ(2, releases.count());
    ASSERT_EQ(2, releases.at(1).GetComponentList().GetCount());
    EXPECT_STREQ("1", componentAt(releases.at(1), 0).GetName());
    EXPECT_STREQ("2", componentAt(releases.at(1), 1).GetName());
}

TEST_F(ProductListParser, ProductsAndComponentsElsewhereAreNotRead)
{
    ASSERT_EQ(1, parse("<r><Product/><Data><Product/><ProductList><Product/></ProductList><NewData><Product/>"
                       "<ProductList><Group><Product/></Group><Product><Component/><ComponentList><Group><Component/>"
                       "</Group></ComponentList></Product></ProductList></NewData></Data></r>"));
    ASSERT_EQ(1, releases.count());
    EXPECT_TRUE(releases.at(0).GetComponentList().IsEmpty());
}

struct NameRow
{
    const char* name;
    const char* fields;
    const char* expected;
};
class ProductListElement : public ProductListParser, public ::testing::WithParamInterface<NameRow>
{
};
TEST_P(ProductListElement, IsTheFirstChildElementOfThatNameWithItsWholeText)
{
    phase1xml list("");
    load(list, answer("<ProductList>" + product(GetParam().fields) + "</ProductList>"));
    ASSERT_EQ(1, list.ParseXMLDocument(&releases, ""));
    EXPECT_STREQ(GetParam().expected, releases.at(0).GetName());
    // Walking the children must not differ from selecting the path.
    EXPECT_STREQ(GetParam().expected, auttest::Inside::attribute(list, "Data/NewData/ProductList/Product/Name"));
}
INSTANTIATE_TEST_SUITE_P(
    Texts, ProductListElement,
    ::testing::Values(NameRow{"Repeated", "<Name>first</Name><Name>second</Name>", "first"},
                      NameRow{"RepeatedWithEmptyFirst", "<Name/><Name>second</Name>", ""},
                      NameRow{"OtherCase", "<name>no</name><NAME>no</NAME>", ""},
                      NameRow{"OtherCaseFirst", "<name>no</name><Name>yes</Name>", "yes"},
                      NameRow{"Attribute", "<Name text='no'/>", ""},
                      NameRow{"NestedMarkup", "<Name>a<b>b<c>c</c></b>d</Name>", "abcd"},
                      NameRow{"CharacterData", "<Name><![CDATA[<a> & b]]></Name>", "<a> & b"},
                      NameRow{"Escapes", "<Name>&lt;a&gt; &amp; &#98;</Name>", "<a> & b"},
                      NameRow{"CommentInside", "<Name>a<!-- no -->b</Name>", "ab"},
                      NameRow{"ProcessingInstructionOfThatName", "<?Name no?><Name>yes</Name>", "yes"},
                      NameRow{"CommentBefore", "<!-- Name --><Name>yes</Name>", "yes"},
                      NameRow{"TextBefore", "text<Name>yes</Name>", "yes"},
                      NameRow{"PrefixedName", "<x:Name xmlns:x='urn:x'>no</x:Name><Name>yes</Name>", "yes"},
                      NameRow{"DefaultNamespace", "<Name xmlns='urn:x'>yes</Name>", "yes"},
                      NameRow{"Deeper", "<Group><Name>no</Name></Group>", ""},
                      NameRow{"BehindTheComponents",
                              "<ComponentList><Component><Name>no</Name></Component></ComponentList><Name>yes</Name>",
                              "yes"}),
    [](const auto& row) { return row.param.name; });

// Texts that do not fit.

TEST_F(ProductListParser, CutsTextsTo259Characters)
{
    const std::string longText(100000, 'x');
    const std::string cut(259, 'x');
    std::string fields;
    for (const char* name : {"ProductReleaseID", "Name", "Language", "Version", "Build", "Action", "StartDate",
                             "PreInstallOnly", "NoDownload"})
        fields += element(name, longText);
    std::string componentFields;
    for (const char* name : {"ComponentReleaseID", "Name", "Language", "Version", "Build", "URL", "Action", "Shared"})
        componentFields += element(name, longText);
    parseProducts(product(fields + "<ComponentList>" + element("Component", componentFields) + "</ComponentList>"),
                  longText.c_str());

    const CRelease& release = releases.at(0);
    EXPECT_EQ(cut, release.GetName());
    EXPECT_EQ(cut, release.GetLanguage());
    EXPECT_EQ(cut, release.GetVersion());
    EXPECT_EQ(cut, release.GetBuild());
    EXPECT_EQ(cut, release.GetFullVersion());
    EXPECT_EQ(cut, release.GetCertificateID());
    EXPECT_EQ(0, release.GetId());
    EXPECT_EQ(0, release.GetAction());
    const CComponent& parsed = componentAt(releases.at(0), 0);
    EXPECT_EQ(cut, parsed.GetName());
    EXPECT_EQ(cut, parsed.GetSourceLocation());
    EXPECT_EQ(0, parsed.IsShared());
}

TEST_F(ProductListParser, KeepsLongProductNamesWhole)
{
    const std::string longText(100000, 'x');
    parseProducts(product(element("MarketingName", longText) + element("TechnicalName", longText)));
    EXPECT_EQ(longText, releases.at(0).GetMarketingName());
    EXPECT_EQ(longText, releases.at(0).GetTechnicalName());
}

TEST_F(ProductListParser, EntitiesThatMultiplyAreRefusedOrReadWithoutHarm)
{
    // Ten levels of ten: spelled out, the name would have ten thousand million characters.
    std::string document = "<!DOCTYPE r [<!ENTITY e0 \"x\">";
    for (int level = 1; level <= 10; ++level)
    {
        const std::string inner = "&e" + std::to_string(level - 1) + ";";
        document += "<!ENTITY e" + std::to_string(level) + " \"";
        for (int i = 0; i < 10; ++i)
            document += inner;
        document += "\">";
    }
    document += "]>" + answer("<ProductList>" + product(element("Name", "&e10;")) + "</ProductList>");
    data.writeFile("productList.xml", document);
    phase1xml list("http://localhost/");
    if (list.GetPreviousXMLDoc() == 0)
        EXPECT_EQ(500, result->GetStatusCode());
    else
    {
        EXPECT_EQ(1, list.ParseXMLDocument(&releases, ""));
        EXPECT_GT(260U, std::strlen(releases.at(0).GetName()));
    }
}

TEST_F(ProductListParser, CharactersComeOutInTheAnsiCodePage)
{
    parseProducts(product("<Name>Caf\xC3\xA9</Name>"));
    char ansi[16] = {};
    ::WideCharToMultiByte(CP_ACP, 0, L"Caf\u00E9", -1, ansi, sizeof ansi, nullptr, nullptr);
    EXPECT_STREQ(ansi, releases.at(0).GetName());
}

TEST_F(ProductListParser, TextsNestedHundredsDeepAreRead)
{
    std::string nested = "deep";
    for (int level = 0; level < 200; ++level)
        nested = "<b>" + nested + "</b>";
    parseProducts(product(element("Name", nested)));
    EXPECT_STREQ("deep", releases.at(0).GetName());
}

// The whole document.

TEST_F(ProductListParser, WithoutARootReturns0AndSaysSo)
{
    phase1xml list("");
    EXPECT_EQ(0, list.ParseXMLDocument(&releases, "CID"));
    EXPECT_EQ((Events{{"Warning", "phase1xml::ParseXMLDocument pDocRoot is NULL"}}), log.events());
    EXPECT_EQ(0, releases.count());
}

TEST_F(ProductListParser, AfterAFailedLoadThereIsNoRoot)
{
    phase1xml list("");
    load(list, answer("<ProductList><Product/></ProductList>"));
    data.writeFile("productList.xml", "<not><well></formed>");
    ASSERT_EQ(0, list.GetPreviousXMLDoc());
    EXPECT_EQ(0, list.ParseXMLDocument(&releases, ""));
    EXPECT_EQ(0, releases.count());
}

TEST_F(ProductListParser, WithoutProductsReturns1AndAnEmptyList)
{
    EXPECT_EQ(1, parse(answer("<ProductList/>")));
    EXPECT_EQ(1, parse("<empty/>"));
    EXPECT_EQ(1, parse("<wcfgResponse><Data><NoChange/></Data></wcfgResponse>"));
    EXPECT_EQ(0, releases.count());
    EXPECT_EQ(Events{}, log.events());
}

TEST_F(ProductListParser, WithoutAListToFillReturns0)
{
    phase1xml list("");
    load(list, answer("<ProductList><Product/></ProductList>"));
    EXPECT_EQ(0, list.ParseXMLDocument(nullptr, ""));
}

TEST_F(ProductListParser, CanBeParsedTwice)
{
    phase1xml list("");
    load(list, answer("<ProductList><Product><Name>A</Name></Product></ProductList>"));
    EXPECT_EQ(1, list.ParseXMLDocument(&releases, ""));
    EXPECT_EQ(1, list.ParseXMLDocument(&releases, ""));
    EXPECT_EQ(2, releases.count());
}

TEST_F(ProductListParser, TracesItsStepsAtDetailLevel2)
{
    logDetail(2);
    EXPECT_EQ(1, parse(answer("<ProductList/>")));
    EXPECT_EQ((Events{{"Info", "phase1xml::ParseXMLDocument - START"},
                      {"Info", "phase1xml::GetCountry - START"},
                      {"Info", "phase1xml::GetCountry - END"},
                      {"Info", "phase1xml::ParseXMLDocument - END"}}),
              log.events());
    logDetail(1);
    EXPECT_EQ(1, parse(answer("<ProductList/>")));
    EXPECT_EQ(Events{}, log.events());
    logDetail(0);
}

TEST_F(ProductListParser, ComErrorsReachTheCaller)
{
    auttest::DocumentChanges changes;
    changes.documentElementStatus = E_ACCESSDENIED;
    const auttest::StandInDocument standIn(changes);
    phase1xml list("");
    load(list, "<r/>");
    try
    {
        list.ParseXMLDocument(&releases, "");
        FAIL() << "no error was raised";
    }
    catch (const _com_error& error)
    {
        EXPECT_EQ(E_ACCESSDENIED, error.Error());
    }
}

// The modification counter.

TEST_F(ProductListParser, StoresTheModificationCounter)
{
    phase1xml list("");
    load(list, answer("<ModifCounter>123abc</ModifCounter>"));
    ASSERT_EQ(1, list.ParseXMLDocument(&releases, ""));
    EXPECT_EQ(123u, list.GetModifCounter());
}

TEST_F(ProductListParser, KeepsTheModificationCounterWithoutANewOne)
{
    phase1xml list("");
    load(list, answer("<ModifCounter>7</ModifCounter>"));
    ASSERT_EQ(1, list.ParseXMLDocument(&releases, ""));
    for (const char* without : {"", "<ModifCounter/>", "<ModifCounter></ModifCounter>"})
    {
        load(list, answer(without));
        ASSERT_EQ(1, list.ParseXMLDocument(&releases, ""));
        EXPECT_EQ(7u, list.GetModifCounter()) << without;
    }
    load(list, answer("<ModifCounter>none</ModifCounter>"));
    ASSERT_EQ(1, list.ParseXMLDocument(&releases, ""));
    EXPECT_EQ(0u, list.GetModifCounter());
}

// The country.

TEST_F(ProductListParser, StoresTheCountryCode)
{
    ASSERT_EQ(1, parse(answer("<CountryCode>SE</CountryCode>")));
    EXPECT_EQ("SE", registry.readText("", "CountryCode"));
    ASSERT_EQ(1, parse(answer("<CountryCode>FR</CountryCode>")));
    EXPECT_EQ("FR", registry.readText("", "CountryCode"));
}

TEST_F(ProductListParser, KeepsACountryCodeThatDiffersInCaseOnly)
{
    registry.write("", "CountryCode", "se");
    ASSERT_EQ(1, parse(answer("<CountryCode>SE</CountryCode>")));
    EXPECT_EQ("se", registry.readText("", "CountryCode"));
}

TEST_F(ProductListParser, KeepsTheCountryCodeWithoutANewOne)
{
    registry.write("", "CountryCode", "SE");
    ASSERT_EQ(1, parse(answer("<CountryCode/>")));
    ASSERT_EQ(1, parse(answer("")));
    EXPECT_EQ("SE", registry.readText("", "CountryCode"));
}

// The registry's record of versions per certificate.

TEST_F(ProductListParser, RecordsTheVersionForTheCertificate)
{
    parseProducts(product("<Name>Editor</Name><Version>3.3</Version><Build>B1</Build><Language>EN</Language>"),
                  "CID-1");
    EXPECT_EQ("CID-1", registry.readText("Data\\WebConf\\Editor", "CID-1"));
    EXPECT_EQ("3.3B1_EN", registry.readText("Data\\WebConf\\Editor", ""));
    EXPECT_EQ(2u, registry.valueNames("Data\\WebConf\\Editor").size());
    EXPECT_STREQ("CID-1", releases.at(0).GetCertificateID());
}

TEST_F(ProductListParser, RecordsOneValueForEachCertificate)
{
    parseProducts(product("<Name>Editor</Name><Version>1</Version>"), "CID-1");
    parseProducts(product("<Name>Editor</Name><Version>2</Version>"), "CID-2");
    EXPECT_EQ("CID-1", registry.readText("Data\\WebConf\\Editor", "CID-1"));
    EXPECT_EQ("CID-2", registry.readText("Data\\WebConf\\Editor", "CID-2"));
    EXPECT_EQ("2", registry.readText("Data\\WebConf\\Editor", ""));
}

TEST_F(ProductListParser, OfTwoProductsOfOneNameBothAreListedAndTheLaterRecorded)
{
    parseProducts(product("<Name>Editor</Name><Version>1</Version>") +
                      product("<Name>Editor</Name><Version>2</Version>"),
                  "CID-1");
    EXPECT_EQ(2, releases.count());
    EXPECT_EQ("2", registry.readText("Data\\WebConf\\Editor", ""));
}

TEST_F(ProductListParser, WithoutACertificateNothingIsRecorded)
{
    parseProducts(product("<Name>Editor</Name>"));
    EXPECT_FALSE(registry.keyExists("Data"));
    EXPECT_STREQ("", releases.at(0).GetCertificateID());
}

class ProductListName : public ProductListParser, public ::testing::WithParamInterface<const char*>
{
};
TEST_P(ProductListName, ThatWouldLeaveTheClientsFolderIsNotRecorded)
{
    const std::string name = GetParam();
    parseProducts(product(element("Name", name)) + product("<Name>Editor</Name>"), "CID-1");

    ASSERT_EQ(2, releases.count());
    EXPECT_EQ(name, releases.at(0).GetName());
    EXPECT_EQ(std::vector<std::string>{"Editor"}, registry.subkeys(kVersions));
    EXPECT_EQ((Events{{"Error", "phase1xml::ParseXMLDocument - product name " + name + " refused: not recorded"}}),
              log.events());
}
INSTANTIATE_TEST_SUITE_P(Names, ProductListName,
                         ::testing::Values("..\\..\\Config", "\\Config", "a\\b", "../up", "/", "a/b", "C:", "a:b", ".",
                                           "..", ". ."));

TEST_F(ProductListParser, ANameThatMakesTheKeyTooLongIsNotRecorded)
{
    parseProducts(product(element("Name", std::string(259, 'n'))), "CID-1");
    EXPECT_EQ(1, releases.count());
    EXPECT_TRUE(registry.subkeys(kVersions).empty());
    EXPECT_EQ((Events{{"Error", "phase1xml::ParseXMLDocument - product " + std::string(259, 'n') + " not recorded"}}),
              log.events());
}

// Locations on a local installation.

struct LocationRow
{
    const char* name;
    const char* source; ///< the location of the installation source
    const char* url;
    const char* location;
};
class LocalInstallation : public ProductListParser, public ::testing::WithParamInterface<LocationRow>
{
};
TEST_P(LocalInstallation, TakesRelativeFileUrlsFromTheInstallationSource)
{
    registry.write("", "LocalInstall", 1);
    registry.write("IN_PROGRESS_LOCAL", "Location", GetParam().source);
    parseProducts(component(element("URL", GetParam().url)));
    EXPECT_STREQ(GetParam().location, componentAt(releases.at(0), 0).GetSourceLocation());
}
INSTANTIATE_TEST_SUITE_P(
    Urls, LocalInstallation,
    ::testing::Values(
        // A plain path comes out as what taking it apart as a server URL makes of it.
        LocationRow{"BesideTheSource", "C:\\Src\\Setup\\AU.xml", "FILE://./comp/a.cab",
                    "HTTP://C/Src/Setup/comp/a.cab"},
        LocationRow{"AboveTheSource", "C:\\Src\\Setup\\AU.xml", "FILE://../comp/a.cab", "HTTP://C/Src/comp/a.cab"},
        LocationRow{"SourceIsAFileUrl", "FILE://C:/Src/Setup/AU.xml", "FILE://./comp/a.cab",
                    "FILE://C:/Src/Setup/comp/a.cab"},
        LocationRow{"AboveAFileUrl", "FILE://C:/Src/Setup/AU.xml", "FILE://../a.cab", "FILE://C:/Src/a.cab"},
        LocationRow{"SourceIsAWebUrl", "http://depot/src/AU.xml", "FILE://./a.cab", "HTTP://depot:80/src/a.cab"},
        LocationRow{"TheLastSeparatorOfEitherKindCuts", "FILE://C:/Src\\Setup/AU.xml", "FILE://../a.cab",
                    "FILE://C:/Src/a.cab"},
        LocationRow{"SlashThenBackslash", "FILE://C:/Src/Setup\\AU.xml", "FILE://./a.cab", "FILE://C:/Src/Setup/a.cab"},
        LocationRow{"SchemeInLowerCase", "FILE://C:/Src/AU.xml", "file://./a.cab", "FILE://C:/Src/a.cab"},
        LocationRow{"Backslashes", "FILE://C:/Src/AU.xml", "FILE:\\\\.\\dir\\a.cab", "FILE://C:/Src/dir/a.cab"},
        LocationRow{"ParametersAreDropped", "FILE://C:/Src/AU.xml", "FILE://./a.cab?x=1", "FILE://C:/Src/a.cab"},
        LocationRow{"OtherServer", "C:\\Src\\AU.xml", "FILE://depot/a.cab", "FILE://depot/a.cab"},
        LocationRow{"ThreeDots", "C:\\Src\\AU.xml", "FILE://.../a.cab", "FILE://.../a.cab"},
        LocationRow{"OtherService", "C:\\Src\\AU.xml", "HTTP://./a.cab", "HTTP://./a.cab"},
        LocationRow{"NoScheme", "C:\\Src\\AU.xml", "./a.cab", "./a.cab"},
        LocationRow{"EmptyUrl", "C:\\Src\\AU.xml", "", ""}),
    [](const auto& row) { return row.param.name; });

TEST_F(ProductListParser, WithoutASourceLocationTheObjectPathRemains)
{
    registry.write("", "LocalInstall", 1);
    parseProducts(component("<URL>FILE://../comp/a.cab</URL>"));
    EXPECT_STREQ("HTTP://:80/comp/a.cab", componentAt(releases.at(0), 0).GetSourceLocation());
}

TEST_F(ProductListParser, WithoutALocalInstallationEveryUrlStaysAsItIs)
{
    registry.write("IN_PROGRESS_LOCAL", "Location", "C:\\Src\\AU.xml");
    parseProducts(component("<URL>FILE://./comp/a.cab</URL>"));
    EXPECT_STREQ("FILE://./comp/a.cab", componentAt(releases.at(0), 0).GetSourceLocation());
}
