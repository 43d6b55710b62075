#include "tests/productlist/ProductListFixture.h"
#include "tests/productlist/StandInDocument.h"

#include <windows.h>

#include <comdef.h>

#include <memory>
#include <string>

using auttest::Events;
using auttest::Inside;
using auttest::withoutCom;

class Phase1Xml : public auttest::ProductListTest
{
};

// Construction and copies.

TEST_F(Phase1Xml, KeepsItsUrl)
{
    phase1xml list("http://host/List.asp?Case=1");
    EXPECT_STREQ("http://host/List.asp?Case=1", list.GetURL());
    EXPECT_STREQ("", phase1xml("", "prefix").GetURL());
}

TEST_F(Phase1Xml, StartsWithoutADocument)
{
    phase1xml list("http://host/");
    EXPECT_FALSE(Inside::holdsDocument(list));
    EXPECT_EQ(0, list.ParseXMLDocument(&releases, ""));
}

TEST_F(Phase1Xml, ACopySharesTheDocument)
{
    auto original = std::make_unique<phase1xml>("http://host/", "P");
    data.writeFile("P_productList.xml", answer("<ProductList><Product><Name>A</Name></Product></ProductList>"));
    ASSERT_EQ(1, original->GetPreviousXMLDoc());
    phase1xml copy(*original);
    phase1xml assigned("");
    assigned = *original;
    original.reset();

    EXPECT_STREQ("http://host/", copy.GetURL());
    EXPECT_EQ(1, copy.ParseXMLDocument(&releases, ""));
    EXPECT_STREQ("http://host/", assigned.GetURL());
    EXPECT_EQ(1, assigned.ParseXMLDocument(&releases, ""));
    EXPECT_EQ(2, releases.count());
    EXPECT_EQ(1, assigned.GetPreviousXMLDoc()) << "the prefix is copied too";
}

// Creating a document.

TEST_F(Phase1Xml, CreatingADocumentKeepsTheComStatus)
{
    phase1xml list("");
    EXPECT_EQ(1, Inside::initializeDocument(list));
    EXPECT_EQ(S_OK, Inside::lastComStatus(list));
    EXPECT_TRUE(Inside::holdsDocument(list));
    EXPECT_EQ(0, result->GetStatusCode());
}

TEST_F(Phase1Xml, WithoutComCreatingADocumentLeaves551)
{
    phase1xml list("");
    result->Set(1, "", "", "old1", "old2", 0, "");
    withoutCom([&] { EXPECT_EQ(0, Inside::initializeDocument(list)); });
    EXPECT_EQ(CO_E_NOTINITIALIZED, Inside::lastComStatus(list));
    EXPECT_EQ(551, result->GetStatusCode());
    EXPECT_STREQ("InitializeDOMDocument", result->GetAction());
    EXPECT_STREQ("CreateInstance", result->GetFunction());
    EXPECT_STREQ("pDoc", result->GetObjectA());
    String win32;
    result->GetWin32ErrorMessage(win32);
    EXPECT_GE(win32.Find("800401f0"), 0) << static_cast<const char*>(win32);
}

TEST_F(Phase1Xml, WithoutComThePreviousListIsNotLoaded)
{
    phase1xml list("http://host/x");
    withoutCom([&] { EXPECT_EQ(0, list.GetPreviousXMLDoc()); });
    EXPECT_EQ((Events{{"Warning", "Phase1: Unable for Initialize DOM Document"}}), log.events());
    EXPECT_EQ(551, result->GetStatusCode());
    EXPECT_STREQ("DOM initialization failed", result->GetAction());
    EXPECT_STREQ("phase1xml::GetPreviousXMLDoc", result->GetFunction());
    EXPECT_STREQ("", result->GetArgument1());
    EXPECT_STREQ("", result->GetArgument2());
    EXPECT_STREQ("http://host/x", result->GetObjectA());
}

TEST_F(Phase1Xml, WithoutComNoListIsFetched)
{
    phase1xml list("http://host/x");
    withoutCom([&] { EXPECT_EQ(0, list.GetXMLDoc(nullptr)); });
    EXPECT_EQ((Events{{"Warning", "Phase1: Unable for Initialize DOM Document"}}), log.events());
    EXPECT_EQ(551, result->GetStatusCode());
    EXPECT_STREQ("DOM initialization failed", result->GetAction());
    EXPECT_STREQ("phase1xml::GetXMLDoc", result->GetFunction());
    EXPECT_STREQ("", result->GetArgument1());
    EXPECT_STREQ("", result->GetArgument2());
    EXPECT_STREQ("http://host/x", result->GetObjectA());
}

TEST_F(Phase1Xml, AFailedCreationDropsTheDocumentHeldBefore)
{
    phase1xml list("");
    load(list, "<r/>");
    withoutCom([&] { EXPECT_EQ(0, list.GetPreviousXMLDoc()); });
    EXPECT_FALSE(Inside::holdsDocument(list));
}

// The list of the previous cycle.

TEST_F(Phase1Xml, LoadsThePreviousListWithoutPrefix)
{
    const std::string path = data.writeFile("productList.xml", "<r/>");
    phase1xml list("http://host/");
    EXPECT_EQ(1, list.GetPreviousXMLDoc());
    EXPECT_EQ((Events{{"Info", "Loading " + path + " file"}}), log.events());
    EXPECT_EQ(0, result->GetStatusCode());
}

TEST_F(Phase1Xml, LoadsThePreviousListOfItsTrimmedPrefix)
{
    const std::string path = data.writeFile("P 1_productList.xml", "<r/>");
    phase1xml list("http://host/", "  P 1 ");
    EXPECT_EQ(1, list.GetPreviousXMLDoc());
    EXPECT_EQ((Events{{"Info", "Loading " + path + " file"}}), log.events());
}

TEST_F(Phase1Xml, APrefixOfBlanksIsNone)
{
    data.writeFile("productList.xml", "<r/>");
    phase1xml list("http://host/", "   ");
    EXPECT_EQ(1, list.GetPreviousXMLDoc());
}

TEST_F(Phase1Xml, OnALocalInstallationThePrefixDoesNotMatter)
{
    registry.write("", "LocalInstall", 1);
    const std::string path = data.writeFile("localProductList.xml", "<r/>");
    phase1xml plain("http://host/");
    phase1xml prefixed("http://host/", "P");
    EXPECT_EQ(1, plain.GetPreviousXMLDoc());
    EXPECT_EQ(1, prefixed.GetPreviousXMLDoc());
    EXPECT_EQ((Events{{"Info", "Loading " + path + " file"}, {"Info", "Loading " + path + " file"}}), log.events());
}

TEST_F(Phase1Xml, AMissingPreviousListGives0AndItsPath)
{
    phase1xml list("http://host/", "P");
    const std::string path = data / "P_productList.xml";
    EXPECT_EQ(0, list.GetPreviousXMLDoc());
    EXPECT_EQ(
        (Events{{"Info", "Loading " + path + " file"}, {"Warning", "Phase1: Unable to load XML document " + path}}),
        log.events());
    EXPECT_EQ(500, result->GetStatusCode());
    EXPECT_STREQ("Unable to create XML document from file", result->GetAction());
    EXPECT_STREQ("phase1xml::GetPreviousXMLDoc", result->GetFunction());
    EXPECT_STREQ("", result->GetArgument1());
    EXPECT_STREQ("", result->GetArgument2());
    EXPECT_STREQ("pDoc->loadXML", result->GetObjectA());
    EXPECT_EQ(1, result->IsError());
}

struct BadFile
{
    const char* name;
    std::string content;
};
class Phase1XmlBadFile : public Phase1Xml, public ::testing::WithParamInterface<BadFile>
{
};
TEST_P(Phase1XmlBadFile, IsNotLoaded)
{
    const std::string path = data.writeFile("productList.xml", GetParam().content);
    phase1xml list("");
    EXPECT_EQ(0, list.GetPreviousXMLDoc());
    EXPECT_TRUE(log.has("Warning", "Phase1: Unable to load XML document " + path));
    EXPECT_EQ(500, result->GetStatusCode());
    EXPECT_EQ(0, list.ParseXMLDocument(&releases, ""));
}
INSTANTIATE_TEST_SUITE_P(Contents, Phase1XmlBadFile,
                         ::testing::Values(BadFile{"Empty", ""}, BadFile{"Blanks", "  \r\n"},
                                           BadFile{"Text", "no product list"},
                                           BadFile{"Zeros", std::string(1000, '\0')}, BadFile{"Unclosed", "<a><b></b>"},
                                           BadFile{"Crossed", "<a><b></a></b>"}, BadFile{"TwoRoots", "<a/><b/>"},
                                           BadFile{"UnknownEntity", "<a>&nothing;</a>"},
                                           BadFile{"BrokenUtf8", "<a>\xFF\xFE\xFD</a>"}),
                         [](const auto& row) { return row.param.name; });

struct Encoding
{
    const char* name;
    std::string bytes; ///< of a product list with one product named as below
};
class Phase1XmlEncoding : public Phase1Xml, public ::testing::WithParamInterface<Encoding>
{
};
TEST_P(Phase1XmlEncoding, IsUnderstood)
{
    data.writeFile("productList.xml", GetParam().bytes);
    phase1xml list("");
    ASSERT_EQ(1, list.GetPreviousXMLDoc());
    ASSERT_EQ(1, list.ParseXMLDocument(&releases, ""));
    ASSERT_EQ(1, releases.count());
    char ansi[16] = {};
    ::WideCharToMultiByte(CP_ACP, 0, L"Caf\u00E9", -1, ansi, sizeof ansi, nullptr, nullptr);
    EXPECT_STREQ(ansi, releases.at(0).GetName());
}

namespace
{
std::string namedList(const std::string& declaration, const std::string& name)
{
    return declaration + "<r><Data><NewData><ProductList><Product><Name>" + name +
           "</Name></Product></ProductList></NewData></Data></r>";
}
std::string asUtf16(const std::wstring& text)
{
    return std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
}
} // namespace

INSTANTIATE_TEST_SUITE_P(
    Encodings, Phase1XmlEncoding,
    ::testing::Values(Encoding{"None", namedList("", "Caf\xC3\xA9")},
                      Encoding{"Utf8", namedList("<?xml version='1.0' encoding='UTF-8'?>", "Caf\xC3\xA9")},
                      Encoding{"Utf8Mark", namedList("\xEF\xBB\xBF", "Caf\xC3\xA9")},
                      Encoding{"Latin1", namedList("<?xml version='1.0' encoding='ISO-8859-1'?>", "Caf\xE9")},
                      Encoding{"Utf16", asUtf16(L"\uFEFF<?xml version='1.0' encoding='UTF-16'?><r><Data><NewData>"
                                                L"<ProductList><Product><Name>Caf\u00E9</Name></Product></ProductList>"
                                                L"</NewData></Data></r>")}),
    [](const auto& row) { return row.param.name; });

TEST_F(Phase1Xml, ALoadDropsTheDocumentHeldBefore)
{
    phase1xml list("");
    load(list, answer("<ProductList><Product/></ProductList>"));
    data.writeFile("productList.xml", answer("<ProductList/>"));
    ASSERT_EQ(1, list.GetPreviousXMLDoc());
    EXPECT_EQ(1, list.ParseXMLDocument(&releases, ""));
    EXPECT_EQ(0, releases.count());
}

TEST_F(Phase1Xml, ADocumentNestedWithoutEndIsRefused)
{
    std::string xml;
    for (int level = 0; level < 100000; ++level)
        xml += "<a>";
    for (int level = 0; level < 100000; ++level)
        xml += "</a>";
    data.writeFile("productList.xml", xml);
    phase1xml list("");
    EXPECT_EQ(0, list.GetPreviousXMLDoc());
    EXPECT_EQ(500, result->GetStatusCode());
}

// The check of a loaded document.

TEST_F(Phase1Xml, ADocumentThatDoesNotValidateIsDropped)
{
    auttest::DocumentChanges changes;
    changes.validatesOnParse = false;
    const auttest::StandInDocument standIn(changes);
    data.writeFile("productList.xml", "<r/>");
    phase1xml list("");
    EXPECT_EQ(0, list.GetPreviousXMLDoc());
    EXPECT_FALSE(Inside::holdsDocument(list));
    EXPECT_EQ(0, result->GetStatusCode()) << "without an error code there is no failure to describe";
    EXPECT_EQ(0, list.ParseXMLDocument(&releases, ""));
}

TEST_F(Phase1Xml, ADocumentThatDoesNotValidateAndHasAnErrorLeaves554)
{
    auttest::DocumentChanges changes;
    changes.validatesOnParse = false;
    changes.ownParseError = true;
    changes.errorCode = 0x2A;
    const auttest::StandInDocument standIn(changes);
    data.writeFile("productList.xml", "<r/>");
    phase1xml list("");
    EXPECT_EQ(0, list.GetPreviousXMLDoc());
    EXPECT_FALSE(Inside::holdsDocument(list));
    EXPECT_EQ(554, result->GetStatusCode());
    EXPECT_STREQ("GetXMLDoc", result->GetAction());
    EXPECT_STREQ("pDoc->GetvalidateOnParse", result->GetFunction());
    EXPECT_STREQ("pDoc", result->GetObjectA());
    String win32;
    result->GetWin32ErrorMessage(win32);
    EXPECT_GE(win32.Find("Error Code=2a"), 0) << static_cast<const char*>(win32);
}

TEST_F(Phase1Xml, AValidatingDocumentWithAnErrorIsAccepted)
{
    auttest::DocumentChanges changes;
    changes.ownParseError = true;
    changes.errorCode = 0x2A;
    const auttest::StandInDocument standIn(changes);
    data.writeFile("productList.xml", "<r/>");
    phase1xml list("");
    EXPECT_EQ(1, list.GetPreviousXMLDoc());
    EXPECT_EQ(0, result->GetStatusCode());
}

TEST_F(Phase1Xml, AComErrorOfTheCheckReachesTheCaller)
{
    auttest::DocumentChanges changes;
    changes.validateOnParseStatus = E_ACCESSDENIED;
    const auttest::StandInDocument standIn(changes);
    data.writeFile("productList.xml", "<r/>");
    phase1xml list("");
    try
    {
        list.GetPreviousXMLDoc();
        FAIL() << "no error was raised";
    }
    catch (const _com_error& error)
    {
        EXPECT_EQ(E_ACCESSDENIED, error.Error());
    }
}
