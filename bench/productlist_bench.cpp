// What a product list costs: parsing it beside the parser's own loading of the same text, with a certificate ID beside
// the registry calls that it asks for, and that all of it grows linearly.

#include "7xAutoUpdateTools.h"
#include "bench/Figures.h"

#include <windows.h>

#include <msxml.h>
#include <objbase.h>

#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace
{
using Releases = RT_List<CRelease*, CRelease*>;

constexpr int kFew = 5000;
constexpr int kMany = 50000;
const char* const kCertificate = "ABCDEFGHIJKLMNOP";
const char* const kDeliveries = "Software\\Velmora\\7xAutoUpdate\\Data\\WebConf";

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

std::string scratchFolder()
{
    char folder[MAX_PATH] = {};
    ::GetTempPathA(MAX_PATH, folder);
    return folder;
}

/// Deletes what is in the list.
void freeAll(Releases& releases)
{
    while (!releases.IsEmpty())
        delete releases.RemoveHead();
}

/// One product list as a text for the parser and as a document of ours.
class List
{
public:
    explicit List(int products) : m_products(products)
    {
        const std::string xml = productList(products);
        CRegAutoUpdate(false).SetDataPath(scratchFolder().c_str());
        const std::string file = scratchFolder() + "\\productList.xml";
        std::ofstream(file, std::ios::binary) << xml;
        bench::require(m_document.GetPreviousXMLDoc() == 1, "loading the list");
        ::DeleteFileA(file.c_str());
        m_text = ::SysAllocString(std::wstring(xml.begin(), xml.end()).c_str());
    }
    List(const List&) = delete;
    List& operator=(const List&) = delete;
    ~List() { ::SysFreeString(m_text); }

    /// The parser alone, as any program would use it; the document is freed outside of the time.
    double secondsToLoad() const
    {
        Microsoft::WRL::ComPtr<IXMLDOMDocument> document;
        const CLSID domDocument = {0x2933BF90, 0x7B36, 0x11D2, {0xB2, 0x0E, 0x00, 0xC0, 0x4F, 0x98, 0x3E, 0x60}};
        VARIANT_BOOL loaded = VARIANT_FALSE;
        const double seconds = bench::secondsOf(
            [&]
            {
                ::CoCreateInstance(domDocument, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                                   reinterpret_cast<void**>(document.GetAddressOf()));
                document->loadXML(m_text, &loaded);
            });
        bench::require(loaded == VARIANT_TRUE, "loading");
        return seconds;
    }

    /// The records are built and freed.
    double secondsToParse(const char* certificateId)
    {
        return bench::secondsOf(
            [&]
            {
                Releases releases;
                const int parsed = m_document.ParseXMLDocument(&releases, certificateId);
                bench::require(parsed == 1 && releases.GetCount() == m_products, "parsing");
                freeAll(releases);
            });
    }

    double secondsToSave()
    {
        return bench::secondsOf(
            [&] { bench::require(m_document.IsNewConfiguration(nullptr, kCertificate) == 1, "saving"); });
    }

    double secondsToSerialise()
    {
        Releases releases;
        bench::require(m_document.ParseXMLDocument(&releases, "") == 1, "parsing");
        const std::string file = scratchFolder() + "\\releases.lst";
        const double seconds = bench::secondsOf(
            [&]
            {
                std::ofstream out(file, std::ios::binary);
                for (POSITION at = releases.GetHeadPosition(); at != nullptr;)
                    bench::require(releases.GetNext(at)->Serialize(out) == 1, "serialising");
            });
        freeAll(releases);
        ::DeleteFileA(file.c_str());
        return seconds;
    }

private:
    int m_products;
    phase1xml m_document{""};
    BSTR m_text = nullptr;
};

/// What recording the deliveries asks of the registry, and nothing else.
double secondsForRegistryCalls(int products)
{
    std::vector<std::string> keys;
    for (int product = 0; product < products; ++product)
        keys.push_back(std::string(kDeliveries) + "\\Product" + std::to_string(product));
    const char* const version = "3.3.302B1_EN";
    return bench::secondsOf(
        [&]
        {
            for (const std::string& path : keys)
            {
                HKEY key = nullptr;
                const REGSAM access = DELETE | READ_CONTROL | KEY_QUERY_VALUE | KEY_SET_VALUE | KEY_CREATE_SUB_KEY |
                                      KEY_ENUMERATE_SUB_KEYS | KEY_NOTIFY | KEY_WOW64_64KEY;
                bench::require(::RegOpenKeyExA(HKEY_LOCAL_MACHINE, path.c_str(), 0, access, &key) == ERROR_SUCCESS,
                               "opening a delivery");
                ::RegSetValueExA(key, "", 0, REG_SZ, reinterpret_cast<const BYTE*>(version),
                                 static_cast<DWORD>(std::strlen(version) + 1));
                ::RegFlushKey(key);
                ::RegSetValueExA(key, kCertificate, 0, REG_SZ, reinterpret_cast<const BYTE*>(kCertificate),
                                 static_cast<DWORD>(std::strlen(kCertificate) + 1));
                ::RegFlushKey(key);
                ::RegCloseKey(key);
            }
        });
}

/// Seconds of one run for few. Ten of them take as long as one for many: so whatever else the machine does meets both.
template <typename Work> double averageOfTen(Work&& work)
{
    constexpr int kRuns = kMany / kFew;
    double seconds = 0;
    for (int run = 0; run < kRuns; ++run)
        seconds += work();
    return seconds / kRuns;
}

/// Times of many against few.
void linear(const char* what, const bench::Times& times)
{
    bench::figure(what, bench::text("%.1f x (%.1f ms, %.1f ms)", times.ratio(), times.ours * 1e3, times.theirs * 1e3),
                  "at most 12 x", times.ratio() <= 12);
}
} // namespace

int main()
{
    ::CoInitialize(nullptr);
    {
        auto few = std::make_unique<List>(kFew);
        auto many = std::make_unique<List>(kMany);
        bench::Times loading;
        bench::Times parsing;
        bench::Times saving;
        bench::Times serialising;
        for (int round = 0; round < bench::rounds(); ++round)
        {
            bench::addRound(
                loading, [&] { return many->secondsToParse(""); }, [&] { return many->secondsToLoad(); });
            parsing.theirs = std::min(parsing.theirs, averageOfTen([&] { return few->secondsToParse(""); }));
            bench::addRound(
                saving, [&] { return many->secondsToSave(); },
                [&] { return averageOfTen([&] { return few->secondsToSave(); }); });
            bench::addRound(
                serialising, [&] { return many->secondsToSerialise(); },
                [&] { return averageOfTen([&] { return few->secondsToSerialise(); }); });
        }
        parsing.ours = loading.ours;
        bench::atMost("ParseXMLDocument, 50,000 products; loadXML of the same text", loading, 1.3);
        linear("parsing 50,000 products; 5,000", parsing);
        linear("saving 50,000 products; 5,000", saving);
        linear("serialising 50,000 products; 5,000", serialising);

        many->secondsToParse(kCertificate); // makes the keys, which stay from one cycle to the next
        // Parsing the document is no work for the certificate ID: it is taken off, as measured in the same turns.
        bench::Times recording;
        double parsingAlone = 1e9;
        for (int round = 0; round < bench::rounds(); ++round)
        {
            parsingAlone = std::min(parsingAlone, many->secondsToParse(""));
            bench::addRound(
                recording, [&] { return many->secondsToParse(kCertificate); },
                [] { return secondsForRegistryCalls(kMany); });
        }
        bench::Times added = recording;
        added.ours -= parsingAlone;
        bench::atMost("ParseXMLDocument with a CID, what the CID adds; bare registry calls", added, 1.15);
    }
    ::CoUninitialize();
    return bench::status();
}
