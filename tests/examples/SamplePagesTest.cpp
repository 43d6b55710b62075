#include "examples/webconfigurator/WebConfigurator.h"
#include "tests/examples/RawClient.h"

#include <windows.h>

#include <msxml.h>
#include <oleauto.h>

#include <gtest/gtest.h>
#include <string>

using auttest::bodyOf;
using auttest::getPage;
using webconf_sample::WebConfigurator;

namespace
{
/// A document read by MSXML, as the client reads it.
class Document
{
public:
    explicit Document(const std::string& text)
    {
        ::CoInitialize(nullptr);
        EXPECT_EQ(S_OK, ::CoCreateInstance(CLSID_DOMDocument, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                                           reinterpret_cast<void**>(&m_document)));
        const std::wstring wide(text.begin(), text.end()); // the sample pages are ASCII
        BSTR source = ::SysAllocString(wide.c_str());
        VARIANT_BOOL good = VARIANT_FALSE;
        m_document->loadXML(source, &good);
        ::SysFreeString(source);
        m_good = good == VARIANT_TRUE;
    }
    ~Document()
    {
        m_document->Release();
        ::CoUninitialize();
    }
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    bool good() const { return m_good; }
    long count(const wchar_t* path) const
    {
        IXMLDOMNodeList* nodes = nullptr;
        BSTR query = ::SysAllocString(path);
        long length = -1;
        if (m_document->selectNodes(query, &nodes) == S_OK)
        {
            nodes->get_length(&length);
            nodes->Release();
        }
        ::SysFreeString(query);
        return length;
    }

private:
    IXMLDOMDocument* m_document = nullptr;
    bool m_good = false;
};

struct PageRow
{
    const char* name;
    const char* target;
    const wchar_t* path; ///< what the page must hold
    long count;
};

class SamplePage : public ::testing::TestWithParam<PageRow>
{
protected:
    WebConfigurator m_server{AUTOOLS_WEBCONFIGURATOR_TEMPLATES};
};
} // namespace

TEST_P(SamplePage, HoldsWhatTheClientLooksFor)
{
    const std::string answer = getPage(m_server.port(), std::string("/WebConfV1/") + GetParam().target);
    ASSERT_EQ("HTTP/1.1 200 OK", answer.substr(0, 15));
    const Document document(bodyOf(answer));
    ASSERT_TRUE(document.good());
    EXPECT_EQ(GetParam().count, document.count(GetParam().path));
}

INSTANTIATE_TEST_SUITE_P(
    All, SamplePage,
    ::testing::Values(
        PageRow{"ProductList", "wcfgGetProductList.asp?CertificateID=QUNNRS1XUy0wMDAx",
                L"wcfgResponse/Data/NewData/ProductList/Product", 4},
        PageRow{"Components", "wcfgGetProductList.asp?CertificateID=QUNNRS1XUy0wMDAx",
                L"wcfgResponse/Data/NewData/ProductList/Product/ComponentList/Component", 4},
        PageRow{"NoData", "wcfgGetProductList.asp?CertificateID=Tk9EQVRBLUNJRDAx",
                L"wcfgResponse/Status/Error/Kind/Business/NoDataFound", 1},
        PageRow{"Revoked", "wcfgGetProductList.asp?CertificateID=UkVWT0tFRC1DSUQx",
                L"wcfgResponse/Status/Error/Kind/Business/AccessMissing/DBReason", 1},
        PageRow{"Error", "wcfgGetConfigForProduct.asp?CertificateID=RVJST1ItQ0lEMDAw", L"wcfgResponse/Status/Error", 1},
        PageRow{"NoChange", "wcfgGetProductList.asp?CertificateID=Tk9DSEFOR0UtQ0lE",
                L"wcfgResponse/Data/NoChange/CurrentDateTime", 1},
        PageRow{"Cids", "wcfgGetCidListFromHWID1.asp?HWID1=4711", L"wcfgResponse/Data/CIDList/CID", 3},
        PageRow{"MasterCid", "wcfgGetCidListFromHWID1.asp?HWID1=4711", L"wcfgResponse/Data/CIDList/CID[@master]", 1},
        PageRow{"KernelOfAProduct", "wcfgGetConfigForProduct.asp?CertificateID=A&ProductName=Automatic%20Update",
                L"wcfgResponse/Data/ComponentList/Component/Configuration/AutomaticUpdateData/ErrorSettings/*", 2},
        PageRow{"KernelOfAComponent", "wcfgGetConfigForComponent.asp?CertificateID=A&ComponentName=AUKernelData",
                L"wcfgResponse/Data/ComponentList/Component/Configuration/AutomaticUpdateData", 1},
        PageRow{"KernelOfAPackage", "wcfgPPGetConfigForProduct.asp?CertificateID=A&PackageTechnicalName=VELAU",
                L"wcfgResponse/Data/ComponentList/Component/Configuration/AutomaticUpdateData", 1},
        PageRow{"KernelUnchanged",
                "wcfgGetConfigForProduct.asp?CertificateID=A&ProductName=Automatic%20Update&TimeStamp=2026-01-15%2010:"
                "00:00",
                L"wcfgResponse/Data/NoChange", 1},
        PageRow{"Product",
                "wcfgGetConfigForProduct.asp?CertificateID=A&ProductName=Ledger&TimeStamp=1980-01-01%2000:00:00",
                L"wcfgResponse/Data/TimeStamp", 1},
        PageRow{"PackageComponent", "wcfgPPGetConfigForComponent.asp?PackageTechnicalName=VELLEDGER&ComponentName=Core",
                L"wcfgResponse/Data/ComponentList/Component/Configuration", 1}),
    [](const auto& row) { return row.param.name; });

TEST(SamplePages, OfSomethingElseOnTheWayAreNoDocuments)
{
    const WebConfigurator server(AUTOOLS_WEBCONFIGURATOR_TEMPLATES);
    EXPECT_FALSE(Document(bodyOf(getPage(server.port(), "/malformed.asp"))).good());
    EXPECT_EQ("", bodyOf(getPage(server.port(), "/empty.asp")));
    const std::string page = getPage(server.port(), "/proxy-page.html");
    EXPECT_NE(std::string::npos, page.find("Content-Type: text/html\r\n"));
    EXPECT_FALSE(Document(bodyOf(page)).good());
}
