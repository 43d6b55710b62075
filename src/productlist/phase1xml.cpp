#include "productlist/phase1xml.h"

#include "foundation/EventLog.h"
#include "foundation/RT_RESULT.h"
#include "platform/Layout.h"
#include "platform/Xml.h"
#include "productlist/ProductListFile.h"
#include "registry/CRegConfig.h"
#include "webconf/CConfig.h"
#include "webconf/Network.h"

#include <windows.h>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<phase1xml>
{
    static_assert(sizeof(phase1xml) == 72);
    static_assert(offsetof(phase1xml, m_modifCounter) == 8);
    static_assert(offsetof(phase1xml, m_url) == 16);
    static_assert(offsetof(phase1xml, m_namePrefix) == 32);
    static_assert(offsetof(phase1xml, m_document) == 48);
    static_assert(offsetof(phase1xml, m_root) == 56);
    static_assert(offsetof(phase1xml, m_lastComStatus) == 64);
};
AUT_LAYOUT_END

namespace
{
/// Whether a document that has loaded is accepted: only one that validates while parsing, as documents do by default.
///
/// Loading never changes that property, so this refuses a document only where something else turned validation off.
/// It is kept because callers know the refusal by its code; a refused document is dropped.
bool acceptLoaded(XmlDocumentPtr& document)
{
    if (aut::validatesOnParse(document.Get()))
        return true;
    const long code = aut::xmlParseError(document.Get()).code;
    if (code != 0)
        result->Set(554, "GetXMLDoc", "pDoc->GetvalidateOnParse", code, "pDoc");
    document.Reset();
    return false;
}
} // namespace

phase1xml::phase1xml(const String& url) : m_modifCounter(0), m_url(url), m_lastComStatus(S_OK) {}

phase1xml::phase1xml(const String& url, const String& namePrefix)
    : m_modifCounter(0), m_url(url), m_namePrefix(namePrefix), m_lastComStatus(S_OK)
{
    m_namePrefix.Trim();
}

phase1xml::phase1xml(const phase1xml& other) = default;
phase1xml& phase1xml::operator=(const phase1xml& other) = default;

phase1xml::~phase1xml()
{
    m_root.Reset(); // before its document
    m_document.Reset();
}

String phase1xml::GetURL() { return m_url; }

int phase1xml::InitializeDOMDocument()
{
    const DWORD anyServer = CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;
    m_lastComStatus = aut::createXmlDocument(m_document, anyServer);
    if (SUCCEEDED(m_lastComStatus))
        return 1;
    result->Set(551, "InitializeDOMDocument", "CreateInstance", m_lastComStatus, "pDoc");
    return 0;
}

int phase1xml::GetXMLDoc(const CConfig* config)
{
    m_document.Reset();
    if (InitializeDOMDocument() == 0)
    {
        Log(1, "Phase1: Unable for Initialize DOM Document");
        result->Set(551, "DOM initialization failed", "phase1xml::GetXMLDoc", "", "", m_url);
        return 0;
    }

    // With the dialog flag set the transfer deliberately runs without the configuration's settings.
    const bool showDialog = CRegConfig(true).GetFlag("ShowDialog");
    int status = 0;
    String data;
    GetDataFromStream(m_url, &status, showDialog ? nullptr : config, data);
    if (data.IsEmpty())
    {
        Log(1, "Phase1: No data returned by the server");
        result->Set(status, "no data returned by the server", "phase1xml::GetXMLDoc", "", "", m_url);
        return 0;
    }

    if (!aut::loadXmlText(m_document.Get(), data, static_cast<std::size_t>(data.GetLength())))
    {
        Log(1, "Phase1: Unable to create XML document from data");
        Log(1, "Phase1: New log");
        result->Set(500, "Unable to create XML document from data", "phase1xml::GetXMLDoc", "", "", "pDoc->loadXML");
        const aut::XmlParseError error = aut::xmlParseError(m_document.Get());
        Log(1, "Error code: %d, reason = %s, line = %d, linepos = %d", static_cast<int>(error.code),
            static_cast<const char*>(error.reason), static_cast<int>(error.line), static_cast<int>(error.column));
        return 0;
    }
    return acceptLoaded(m_document) ? 1 : 0;
}

int phase1xml::GetPreviousXMLDoc()
{
    m_document.Reset();
    if (InitializeDOMDocument() == 0)
    {
        Log(1, "Phase1: Unable for Initialize DOM Document");
        result->Set(551, "DOM initialization failed", "phase1xml::GetPreviousXMLDoc", "", "", m_url);
        return 0;
    }

    const String file = aut::productListFile(m_namePrefix);
    const char* const path = file;
    Log(0, "Loading %s file", path);
    if (!aut::loadXmlFile(m_document.Get(), path))
    {
        Log(1, "Phase1: Unable to load XML document %s", path);
        result->Set(500, "Unable to create XML document from file", "phase1xml::GetPreviousXMLDoc", "", "",
                    "pDoc->loadXML");
        return 0;
    }
    return acceptLoaded(m_document) ? 1 : 0;
}
