#include "productlist/phase1xml.h"

#include "catalogue/CertificateRecords.h"
#include "foundation/CText.h"
#include "foundation/EventLog.h"
#include "platform/PlainName.h"
#include "platform/Xml.h"
#include "productlist/ChildTexts.h"
#include "productlist/SourceLocation.h"
#include "registry/CRegAutoUpdate.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace
{
const unsigned long kTrace = 0x20000;

/// As reading with "%lu": leading digits count, no digits are 0. A number outside of the type is the largest one, so
/// that the cut to the record's 32 bits is the same everywhere; not every runtime does so with a negative one by
/// itself.
long toId(const char* text)
{
    errno = 0;
    const unsigned long id = std::strtoul(text, nullptr, 10);
    return static_cast<long>(errno != ERANGE ? id : ULONG_MAX);
}

bool isWord(const char* text, const char* word) { return ::_stricmp(text, word) == 0; }

int toFlag(const char* text) { return isWord(text, "TRUE") ? 1 : 0; }

/// The texts of a release, and where its components are.
aut::ChildTexts releaseTexts(IXMLDOMNode* product)
{
    return aut::ChildTexts(product,
                           {"ProductReleaseID", "Name", "Language", "Version", "Build", "Action", "StartDate",
                            "PreInstallOnly", "NoDownload", "MarketingName", "TechnicalName"},
                           "ComponentList");
}

void setRelease(const aut::ChildTexts& product, CRelease& release)
{
    const int enabled = isWord(product["Action"], "DISABLE") ? 0 : 1;
    const int noRestriction = 0;
    release.InitValues(toId(product["ProductReleaseID"]), product["MarketingName"], product["TechnicalName"],
                       product["Name"], product["Version"], product["Build"], product["Language"], product["Action"],
                       product["StartDate"], enabled, noRestriction, noRestriction, false, false, false);
    release.SetNoDownload(toFlag(product["NoDownload"]));
    release.SetPreInstallOnly(toFlag(product["PreInstallOnly"]));
}

/// Records that a certificate asked for this version of the product: one value per certificate, the full version as
/// the key's default value.
///
/// The name becomes a registry sub-key and later a file name. One that would leave the client's folder is refused
/// here; the release itself stays in the list, so that the caller sees all that the server sent.
void recordVersion(const CRelease& release, const String& certificateId)
{
    if (!aut::isPlainName(release.GetName()))
    {
        Log(2, "phase1xml::ParseXMLDocument - product name %s refused: not recorded", release.GetName());
        return;
    }
    if (!aut::recordDelivery(release, certificateId))
        Log(2, "phase1xml::ParseXMLDocument - product %s not recorded", release.GetName());
}
} // namespace

int phase1xml::ParseXMLDocument(RT_List<CRelease*, CRelease*>* list, const String& certificateId)
try
{
    Log(kTrace, "phase1xml::ParseXMLDocument - START");
    m_root = aut::xmlRoot(m_document.Get());
    if (m_root == nullptr)
    {
        Log(1, "phase1xml::ParseXMLDocument pDocRoot is NULL");
        return 0;
    }
    const String counter = GetXMLAttribute(m_root, "Data/NewData/ModifCounter");
    if (!counter.IsEmpty())
        m_modifCounter = atodw(counter);
    GetCountry();

    aut::XmlSelection products;
    if (list == nullptr || !products.select(m_root.Get(), "Data/NewData/ProductList/Product"))
        return 0;
    while (const XmlNodePtr product = products.next())
    {
        auto parsed = std::make_unique<CRelease>();
        aut::ChildTexts texts = releaseTexts(product.Get()); // as SetReleaseAttributes, which leaves no way on
        setRelease(texts, *parsed);
        list->AddTail(parsed.get());
        CRelease* const release = parsed.release(); // the list's owner has it now
        release->SetCertificateID(certificateId);
        if (!certificateId.IsEmpty())
            recordVersion(*release, certificateId);

        for (const XmlNodePtr& componentList : texts.branches())
            for (const XmlNodePtr& element : aut::childElements(componentList.Get(), "Component"))
            {
                auto component = std::make_unique<CComponent>();
                SetComponentAttributes(element, component.get());
                release->GetComponentList().AddTail(component.get());
                static_cast<void>(component.release()); // the release's list has it now
            }
    }
    Log(kTrace, "phase1xml::ParseXMLDocument - END");
    return 1;
}
catch (const std::bad_alloc&)
{
    Log(2, "phase1xml::ParseXMLDocument - out of memory");
    return 0; // what is in the list stays there and is the caller's
}

// Nodes are handed over by value in the class's interface.
// NOLINTBEGIN(performance-unnecessary-value-param)

int phase1xml::SetReleaseAttributes(XmlNodePtr node, CRelease* release)
{
    setRelease(releaseTexts(node.Get()), *release);
    return 1;
}

int phase1xml::SetComponentAttributes(XmlNodePtr node, CComponent* component)
{
    const aut::ChildTexts element(
        node.Get(), {"ComponentReleaseID", "Name", "Language", "Version", "Build", "URL", "Action", "Shared"});
    component->InitValues(toId(element["ComponentReleaseID"]), element["Name"], element["Version"], element["Build"],
                          element["Language"], element["Action"], aut::componentLocation(element["URL"]));
    component->SetShared(toFlag(element["Shared"]));
    return 1;
}

String phase1xml::GetXMLAttribute(XmlNodePtr node, const char* path)
{
    return aut::xmlText(aut::selectXmlNode(node.Get(), path).Get());
}

// NOLINTEND(performance-unnecessary-value-param)

void phase1xml::GetCountry()
{
    Log(kTrace, "phase1xml::GetCountry - START");
    const String country = GetXMLAttribute(m_root, "Data/NewData/CountryCode");
    if (!country.IsEmpty() && country != String(CRegAutoUpdate(true).GetCountryCode())) // ignores case
        CRegAutoUpdate(false).SetCountryCode(country);
    Log(kTrace, "phase1xml::GetCountry - END");
}

unsigned long phase1xml::GetModifCounter() const { return m_modifCounter; }
