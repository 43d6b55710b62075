#include "productlist/phase1xml.h"

#include "foundation/EventLog.h"
#include "foundation/RT_RESULT.h"
#include "platform/Layout.h"
#include "platform/Xml.h"
#include "productlist/DocumentLoading.h"
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
        aut::reportNoDocument("phase1xml::GetXMLDoc", m_url);
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
        aut::reportUnreadable(m_document.Get(), "phase1xml::GetXMLDoc");
        return 0;
    }
    return aut::acceptLoaded(m_document, "GetXMLDoc") ? 1 : 0;
}

int phase1xml::GetPreviousXMLDoc()
{
    m_document.Reset();
    if (InitializeDOMDocument() == 0)
    {
        aut::reportNoDocument("phase1xml::GetPreviousXMLDoc", m_url);
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
    return aut::acceptLoaded(m_document, "GetXMLDoc") ? 1 : 0;
}
