// What parsing a product list costs beside the parser's own loading of the same document, and that it grows linearly.

#include "7xAutoUpdateTools.h"
#include "bench/Ratio.h"

#include <windows.h>

#include <msxml.h>
#include <objbase.h>

#include <cstdlib>
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
double secondsToLoad(BSTR text)
{
    return bench::seconds(
        [&]
        {
            Microsoft::WRL::ComPtr<IXMLDOMDocument> document;
            const CLSID domDocument = {0x2933BF90, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
            ::CoCreateInstance(domDocument, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                               reinterpret_cast<void**>(document.GetAddressOf()));
            VARIANT_BOOL loaded = VARIANT_FALSE;
            document->loadXML(text, &loaded);
        },
        1);
}

/// The releases are deleted outside the measured time. 0 when not all came out.
double secondsToParse(phase1xml& list, int products)
{
    RT_List<CRelease*, CRelease*> releases;
    int parsed = 0;
    const double seconds = bench::seconds([&] { parsed = list.ParseXMLDocument(&releases, ""); }, 1);
    const bool whole = parsed == 1 && releases.GetCount() == products;
    while (!releases.IsEmpty())
        delete releases.RemoveHead();
    return whole ? seconds : 0;
}

struct Times
{
    double load = 1e9;
    double parse = 1e9;
};

/// The best of several rounds. Both are measured in turns, so that whatever else the machine does meets both.
Times measure(int products, int rounds)
{
    const std::string xml = productList(products);
    char folder[MAX_PATH] = {};
    ::GetTempPathA(MAX_PATH, folder);
    CRegAutoUpdate(false).SetDataPath(folder);
    const std::string file = std::string(folder) + "\\productList.xml";
    std::ofstream(file, std::ios::binary) << xml;
    phase1xml list("");
    const bool loaded = list.GetPreviousXMLDoc() == 1;
    ::DeleteFileA(file.c_str());

    Times best;
    const BSTR text = ::SysAllocString(std::wstring(xml.begin(), xml.end()).c_str());
    for (int round = 0; loaded && round < rounds; ++round)
    {
        best.parse = std::min(best.parse, secondsToParse(list, products));
        best.load = std::min(best.load, secondsToLoad(text));
    }
    ::SysFreeString(text);
    if (!loaded || best.parse == 0)
    {
        std::printf("the product list was not parsed\n");
        std::exit(1);
    }
    return best;
}
} // namespace

int main()
{
    ::CoInitialize(nullptr);
    const Times shortList = measure(5000, 15);
    const Times longList = measure(50000, 3);
    ::CoUninitialize();
    bool kept = bench::ratio("ParseXMLDocument, 5000 products", shortList.parse, "loadXML of the same document",
                             shortList.load, 1.5);
    kept &= bench::ratio("ParseXMLDocument, 50000 products", longList.parse, "loadXML of the same document",
                         longList.load, 1.5);
    kept &= bench::ratio("one product of 50000", longList.parse / 50000, "one product of 5000", shortList.parse / 5000,
                         1.5);
    return kept ? 0 : 1;
}
