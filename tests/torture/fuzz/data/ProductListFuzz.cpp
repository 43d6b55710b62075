// Product lists: what each element of a document becomes in the releases and their components.

#include "productlist/phase1xml.h"
#include "registry/CRegAutoUpdate.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/TestFolder.h"
#include "tests/torture/fuzz/data/Batches.h"
#include "tests/torture/fuzz/data/XmlText.h"

#include <windows.h>

#include <objbase.h>

#include <ctime>
#include <map>

namespace
{
using torture::Differences;
using torture::Generator;

constexpr int kProducts = 40;
constexpr int kMostComponents = 3;

const torture::Words& words()
{
    static const torture::Words all = {"12abc",
                                       "4294967295",
                                       "99999999999",
                                       "-5",
                                       "+7",
                                       "0",
                                       "Install",
                                       "REMOVE",
                                       "forcereinstall",
                                       "DISABLE",
                                       "TRUE",
                                       "true",
                                       "True",
                                       "Yes",
                                       "3.3.302",
                                       "B1",
                                       "EN",
                                       "http://host:80/a?b=c",
                                       "FILE://./comp/a.cab",
                                       "&<>\"'",
                                       "]]>",
                                       "a b"};
    return all;
}

/// What a document says of one record: elements in their order, a name possibly several times. What is nested or has a
/// name of its own is not looked at.
class Element
{
public:
    void add(Generator& input, const std::string& name, const std::string& text)
    {
        m_first.emplace(name, text);
        m_xml += "<" + name + (input.oneIn(12) ? " Name=\"attribute\">" : ">") + torture::xmlText(input, text) + "</" +
                 name + ">";
        if (input.oneIn(10))
            m_xml += input.oneIn(2) ? "<Other><Name>nested</Name><Version>9</Version></Other>"
                                    : "<!-- <Name>x</Name> -->\n ";
    }
    void addXml(const std::string& xml) { m_xml += xml; }
    /// The first of a name counts.
    std::string operator[](const std::string& name) const
    {
        const auto found = m_first.find(name);
        return found != m_first.end() ? found->second : "";
    }
    const std::string& xml() const { return m_xml; }

private:
    std::map<std::string, std::string> m_first;
    std::string m_xml;
};

std::string lower(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    return text;
}

/// Leading digits with an optional sign, in 32 bits; too many of them are the largest number.
long idOf(const std::string& text)
{
    std::size_t at = text.find_first_not_of(' ');
    if (at == std::string::npos)
        return 0;
    const bool negative = text[at] == '-';
    at += negative || text[at] == '+' ? 1 : 0;
    unsigned long long value = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at)
        value = std::min(value * 10 + static_cast<unsigned long long>(text[at] - '0'), 0x100000000ULL);
    if (value > 0xFFFFFFFFULL)
        return -1; // the largest one, whatever its sign
    const auto id = static_cast<std::uint32_t>(value);
    return static_cast<long>(static_cast<std::int32_t>(negative ? 0U - id : id));
}

int actionOf(const std::string& text)
{
    const std::string word = lower(text);
    return word == "remove" ? 1 : word == "forcereinstall" ? 2 : word == "disable" ? 3 : 0;
}

std::string cut(const std::string& text) { return text.substr(0, 259); }

struct Date
{
    const char* text;
    int year, month, day, hour, minute;
};
constexpr Date kDates[] = {{"2010-07-22 14:05", 2010, 7, 22, 14, 5},
                           {"10-07-22", 2010, 7, 22, 0, 0},
                           {"99-1-1", 1999, 1, 1, 0, 0},
                           {"2030-12-31 23:59", 2030, 12, 31, 23, 59}};

long long timeOf(const std::string& text)
{
    for (const Date& date : kDates)
    {
        if (text != date.text)
            continue;
        std::tm local{};
        local.tm_year = date.year - 1900;
        local.tm_mon = date.month - 1;
        local.tm_mday = date.day;
        local.tm_hour = date.hour;
        local.tm_min = date.minute;
        return ::_mktime64(&local);
    }
    return 0;
}

std::string drawnText(Generator& input)
{
    std::string text = input.oneIn(2) ? input.oneOf(words()) : input.text(words(), input.oneIn(15) ? 600 : 30);
    torture::keepXmlText(text);
    return text;
}

void addCommon(Generator& input, Element& element, const char* id, bool product)
{
    const std::vector<std::string> names =
        product ? std::vector<std::string>{id,       "Name",           "Language",   "Version",       "Build",
                                           "Action", "PreInstallOnly", "NoDownload", "MarketingName", "TechnicalName"}
                : std::vector<std::string>{id, "Name", "Language", "Version", "Build", "URL", "Action", "Shared"};
    const unsigned begin = input.below(static_cast<unsigned>(names.size())); // any order
    for (std::size_t i = 0; i < names.size(); ++i)
        if (!input.oneIn(6))
            element.add(input, names[(begin + i) % names.size()], drawnText(input));
    if (input.oneIn(8))
        element.add(input, input.oneOf(names), drawnText(input));
}

std::string told(long id, const std::string& name, const std::string& version, const std::string& build,
                 const std::string& language, int action, int enabled)
{
    const std::string full = cut(version + build + (language.empty() ? "" : "_" + language));
    return std::to_string(id) + "|" + name + "|" + version + "|" + build + "|" + language + "|" + full + "|" +
           std::to_string(action) + "|" + std::to_string(enabled);
}

std::string told(const AutoUpdateObject& object)
{
    return std::to_string(object.GetId()) + "|" + object.GetName() + "|" + object.GetVersion() + "|" +
           object.GetBuild() + "|" + object.GetLanguage() + "|" + object.GetFullVersion() + "|" +
           std::to_string(object.GetAction()) + "|" + std::to_string(object.IsEnabled());
}

std::string documentedComponent(const Element& element)
{
    return told(idOf(element["ComponentReleaseID"]), cut(element["Name"]), cut(element["Version"]),
                cut(element["Build"]), cut(element["Language"]), actionOf(element["Action"]), 1) +
           "|" + cut(element["URL"]) + "|" + (lower(element["Shared"]) == "true" ? "1" : "0");
}

std::string documentedProduct(const Element& element, const std::string& certificateId)
{
    const int action = actionOf(element["Action"]);
    return told(idOf(element["ProductReleaseID"]), cut(element["Name"]), cut(element["Version"]), cut(element["Build"]),
                cut(element["Language"]), action, action == 3 ? 0 : 1) +
           "|" + std::to_string(timeOf(element["StartDate"])) + "|" +
           (lower(element["PreInstallOnly"]) == "true" ? "1" : "0") + "|" +
           (lower(element["NoDownload"]) == "true" ? "1" : "0") + "|" + element["MarketingName"] + "|" +
           element["TechnicalName"] + "|" + certificateId + "|0|0|0";
}

std::string told(const CRelease& release)
{
    return told(static_cast<const AutoUpdateObject&>(release)) + "|" + std::to_string(release.GetActivationDate()) +
           "|" + std::to_string(release.IsPreInstallOnly()) + "|" + std::to_string(release.IsNoDownload()) + "|" +
           release.GetMarketingName() + "|" + release.GetTechnicalName() + "|" + release.GetCertificateID() + "|" +
           std::to_string(release.GetInstallationStartHour()) + "|" + std::to_string(release.GetInstallationEndHour()) +
           "|" + (release.IsPending() ? "1" : "0");
}

std::string told(const CComponent& component)
{
    return told(static_cast<const AutoUpdateObject&>(component)) + "|" + component.GetSourceLocation() + "|" +
           std::to_string(component.IsShared());
}

/// A document with its records as the rules read them.
struct Document
{
    std::string xml;
    std::vector<std::string> records;
    unsigned long counter = 0;
};

Document drawnDocument(Generator& input, const std::string& certificateId)
{
    Document document;
    std::string& xml = document.xml;
    xml = "<any><Data><NoChange/></Data><Data><NewData><ModifCounter>";
    const std::string counter = std::to_string(input.index(1000000));
    for (std::size_t at = 0; at < counter.size() && counter[at] >= '0' && counter[at] <= '9'; ++at)
        document.counter = document.counter * 10 + static_cast<unsigned long>(counter[at] - '0');
    xml += counter + "</ModifCounter><ProductList>";
    for (int i = 0; i < kProducts; ++i)
    {
        if (input.oneIn(15))
            xml += "</ProductList>\n<Product><Name>not in a list</Name></Product><ProductList>";
        if (input.oneIn(30))
            xml += "</ProductList></NewData><NewData><ProductList>";
        Element product;
        addCommon(input, product, "ProductReleaseID", true);
        if (input.oneIn(3))
            product.add(input, "StartDate", input.oneIn(2) ? kDates[input.below(4)].text : "");
        std::vector<std::string> components;
        product.addXml("<ComponentList>");
        for (int left = input.number(0, kMostComponents); left > 0; --left)
        {
            if (input.oneIn(8))
                product.addXml("</ComponentList><Component><Name>stray</Name></Component> <ComponentList>");
            Element component;
            addCommon(input, component, "ComponentReleaseID", false);
            product.addXml("<Component>" + component.xml() + "</Component>");
            components.push_back(documentedComponent(component));
        }
        product.addXml("</ComponentList>");
        if (input.oneIn(5))
            product.add(input, "Name", "behind the components");
        xml += "<Product>" + product.xml() + "</Product>";
        document.records.push_back(documentedProduct(product, certificateId));
        document.records.insert(document.records.end(), components.begin(), components.end());
    }
    xml += "</ProductList></NewData></Data></any>";
    return document;
}

const auttest::TestFolder* folder = nullptr;

void checkDocument(Generator& input, Differences& differences)
{
    const std::string certificateId = input.oneIn(4) ? "CID" + std::to_string(input.number(0, 3)) : "";
    const Document document = drawnDocument(input, certificateId);
    folder->writeFile("productList.xml", document.xml);
    phase1xml list("http://localhost/");
    RT_List<CRelease*, CRelease*> releases;
    differences.expect("loading", 1, list.GetPreviousXMLDoc());
    differences.expect("parsing", 1, list.ParseXMLDocument(&releases, certificateId.c_str()));
    differences.expect("counter", document.counter, list.GetModifCounter());

    std::vector<std::string> records;
    while (!releases.IsEmpty())
    {
        CRelease* const release = releases.RemoveHead();
        records.push_back(told(*release));
        const auto& components = release->GetComponentList();
        for (POSITION at = components.GetHeadPosition(); at != nullptr;)
            records.push_back(told(*components.GetNext(at)));
        delete release;
    }
    differences.expect("records", document.records.size(), records.size());
    for (std::size_t i = 0; i < records.size() && i < document.records.size(); ++i)
        differences.expect("record", document.records[i], records[i]);
    if (!differences.text().empty())
        differences.note("document", torture::literal(document.xml), "");
}
} // namespace

TEST(Fuzz, ProductListsAnswerAsTheModelDoes)
{
    ::CoInitialize(nullptr);
    const auttest::ClientRegistry registry;
    const auttest::TestFolder data;
    folder = &data;
    registry.write("", "DataPath", data.path());
    torture::fuzzBatches("product lists", "products with up to 3 components", checkDocument, kProducts);
    ::CoUninitialize();
}
