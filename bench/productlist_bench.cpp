// What parsing a product list costs beside the parser's own loading of the same document, and that it grows linearly.

#include "7xAutoUpdateTools.h"
#include "bench/Ratio.h"

#include <windows.h>

#include <msxml.h>
#include <objbase.h>

#include <fstream>
#include <string>

namespace
{
std::string element(const char* name, const std::string& text)
{
    return std::string("<") + name + ">" + text + "</" + name + ">\r\n";
}

std::string productList(int products)
{
    std::string xml = "<?xml version=\"1.0\"?>\r\n<wcfgResponse><Data><NewData><ModifCounter>7</ModifCounter>\r\n"
                      "<ProductList>\r\n";
    for (int product = 0; product < products; ++product)
    {
        const std::string number = std::to_string(product);
        xml += "<Product>\r\n" + element("ProductReleaseID", number) + element("Name", "Product" + number) +
               element("Language", "EN") + element("Version", "3.3.302") + element("Build", "B1") +
               element("Action", "INSTALL") + element("StartDate", "2026-11-20 14:05") +
               element("PreInstallOnly", "FALSE") + element("NoDownload", "FALSE") +
               element("MarketingName", "Velmora Product " + number) + element("TechnicalName", "VP" + number) +
               "<ComponentList>\r\n";
        for (const char* name : {"Program", "Spelling", "Help"})
            xml += "<Component>\r\n" + element("ComponentReleaseID", number) + element("Name", name) +
                   element("Language", "EN") + element("Version", "1.0") + element("Build", "B2") +
                   element("URL", std::string("HTTP://depot.velmora.example/") + name + number + ".cab") +
                   element("Action", "INSTALL") + element("Shared", "False") + "</Component>\r\n";
        xml += "</ComponentList>\r\n</Product>\r\n";
    }
    return xml + "</ProductList></NewData></Data></wcfgResponse>\r\n";
}

/// The parser alone, as any program would use it.
double secondsToLoad(const std::string& xml)
{
    const BSTR text = ::SysAllocString(std::wstring(xml.begin(), xml.end()).c_str());
    const double best = bench::seconds(
        [&]
        {
            Microsoft::WRL::ComPtr<IXMLDOMDocument> document;
            const CLSID domDocument = {0x2933BF90, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
            ::CoCreateInstance(domDocument, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                               reinterpret_cast<void**>(document.GetAddressOf()));
            VARIANT_BOOL loaded = VARIANT_FALSE;
            document->loadXML(text, &loaded);
        },
        3);
    ::SysFreeString(text);
    return best;
}

/// Parses the list that lies in the data folder. The releases are deleted outside the measured time.
double secondsToParse(int products)
{
    phase1xml list("");
    if (list.GetPreviousXMLDoc() != 1)
        return 0;
    double best = 1e9;
    for (int run = 0; run < 3; ++run)
    {
        RT_List<CRelease*, CRelease*> releases;
        int parsed = 0;
        best = std::min(best, bench::seconds([&] { parsed = list.ParseXMLDocument(&releases, ""); }, 1));
        if (parsed != 1 || releases.GetCount() != products)
            return 0;
        while (!releases.IsEmpty())
            delete releases.RemoveHead();
    }
    return best;
}
} // namespace

int main()
{
    ::CoInitialize(nullptr);
    char folder[MAX_PATH] = {};
    ::GetTempPathA(MAX_PATH, folder);
    CRegAutoUpdate(false).SetDataPath(folder);
    const std::string file = std::string(folder) + "\\productList.xml";
    bool kept = true;
    double secondsPerProduct = 0;
    for (const int products : {5000, 50000})
    {
        const std::string xml = productList(products);
        std::ofstream(file, std::ios::binary) << xml;
        const double parsing = secondsToParse(products);
        if (parsing <= 0)
        {
            std::printf("the product list was not parsed\n");
            return 1;
        }
        const std::string what = "ParseXMLDocument, " + std::to_string(products) + " products";
        kept &= bench::ratio(what.c_str(), parsing, "loadXML of the same document", secondsToLoad(xml), 1.5);
        if (secondsPerProduct > 0)
            kept &=
                bench::ratio("one product of 50000", parsing / products, "one product of 5000", secondsPerProduct, 1.5);
        secondsPerProduct = parsing / products;
    }
    ::DeleteFileA(file.c_str());
    ::CoUninitialize();
    return kept ? 0 : 1;
}
