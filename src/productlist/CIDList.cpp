#include "productlist/phase1xml.h"

#include "catalogue/ReleaseLists.h"
#include "foundation/EventLog.h"
#include "foundation/RT_RESULT.h"
#include "platform/Xml.h"
#include "productlist/DocumentLoading.h"
#include "registry/CRegConfig.h"
#include "registry/TypedValues.h"
#include "webconf/CertificateIds.h"
#include "webconf/Network.h"

namespace
{
/// The certificate ID that the element holds; "" when it is malformed or revoked.
String acceptedCertificate(IXMLDOMNode* element)
{
    String certificateId = aut::xmlText(element);
    certificateId.Trim();
    if (!aut::isWellFormedCID(static_cast<const char*>(certificateId)))
        return String();
    if (!IsCIDRevoked(certificateId))
        return certificateId;
    Log(0, "Certificate %s revoked or expired", static_cast<const char*>(certificateId));
    return String();
}

/// Selects the elements of a list of certificate IDs; false when there are none.
bool selectElements(aut::XmlSelection& elements, const XmlDocumentPtr& document, const char* path)
{
    return elements.select(aut::xmlRoot(document.Get()).Get(), path) && elements.count() > 0;
}
} // namespace

int phase1xml::GetXMLCIDListFromHWID(RT_List<String, String&>* list, String& masterCID)
{
    m_document.Reset();
    if (InitializeDOMDocument() == 0)
    {
        Log(2, "GetXMLCIDListFromHWID: Unable for Initialize DOM Document");
        result->Set(551, "DOM initialization failed", "phase1xml::GetXMLCIDListFromHWID", "", "", m_url);
        return 0;
    }

    int status = 0;
    String data;
    GetDataFromStream(m_url, &status, nullptr, data); // never with the settings of a configuration
    if (data.IsEmpty())
    {
        Log(1, "GetXMLCIDListFromHWID: No data returned by the server");
        result->Set(status, "no data returned by the server", "phase1xml::GetXMLCIDListFromHWID", "", "", m_url);
        return 0;
    }
    Log(0x40000, "GetXMLCIDListFromHWID: szData = %s", static_cast<const char*>(data));
    if (!aut::loadXmlText(m_document.Get(), data, static_cast<std::size_t>(data.GetLength())))
    {
        Log(1, "GetXMLCIDListFromHWID: Unable to create XML document from data");
        result->Set(500, "Unable to create XML document from data", "phase1xml::GetXMLCIDListFromHWID", "", "",
                    "pDoc->loadXML");
        return 0;
    }
    if (!aut::acceptLoaded(m_document, "GetXMLCIDListFromHWID"))
        return 0;

    String webServer;
    CRegConfig(true).QueryValue("WebServer", webServer); // deliberately read without a use for it here

    aut::XmlSelection elements;
    if (!selectElements(elements, m_document, "Data/CIDList/CID"))
    {
        Log(2, "GetXMLCIDListFromHWID: node \"Data/CIDList/CID\" not found");
        return 0;
    }
    while (const XmlNodePtr element = elements.next())
    {
        const String certificateId = acceptedCertificate(element.Get());
        if (certificateId.IsEmpty())
            continue;
        if (list == nullptr || !aut::appendTo(*list, certificateId))
            return 0;
        const char* const text = certificateId;
        const aut::XmlAttributes attributes(element.Get());
        if (attributes.text("master") == "True") // ignores case
        {
            masterCID = certificateId;
            Log(0, "GetXMLCIDListFromHWID: adding MASTER CID = %s", text);
        }
        else if (!attributes.exist())
            Log(0, "GetXMLCIDListFromHWID: adding CID %s", text);
    }
    return 1;
}

int phase1xml::ConcatenateCIDs(RT_List<String, String&>* list, String& xmlText)
{
    // Callers know these failures by this text, which lacks the last letter of the member's name.
    const char* const function = "phase1xml::ConcatenateCID";
    m_document.Reset();
    if (InitializeDOMDocument() == 0)
    {
        aut::reportNoDocument(function, m_url);
        return 0;
    }
    if (!aut::loadXmlText(m_document.Get(), xmlText, static_cast<std::size_t>(xmlText.GetLength())))
    {
        aut::reportUnreadable(m_document.Get(), function);
        return 0;
    }
    if (!aut::acceptLoaded(m_document, "GetXMLDoc"))
        return 0;

    aut::XmlSelection elements;
    if (!selectElements(elements, m_document, "CIDList/CID"))
        return 0;
    while (const XmlNodePtr element = elements.next())
    {
        const String certificateId = acceptedCertificate(element.Get());
        if (!certificateId.IsEmpty() && (list == nullptr || !aut::appendTo(*list, certificateId)))
            return 0;
    }
    return 1;
}
