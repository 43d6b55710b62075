#include "webconf/DataExchange.h"

#include "foundation/EventLog.h"
#include "foundation/VersionText.h"
#include "platform/BoundedText.h"
#include "platform/Layout.h"
#include "platform/Xml.h"
#include "registry/CRegAutoUpdate.h"
#include "registry/CRegProduct.h"
#include "registry/CRegProductForComponent.h"
#include "webconf/WebServer.h"

#include <comdef.h>

#include <cstring>
#include <initializer_list>
#include <type_traits>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<DataExchange>
{
    static_assert(offsetof(DataExchange, m_entryFlag) == 0);
    static_assert(offsetof(DataExchange, m_transferFlag) == 1);
    static_assert(offsetof(DataExchange, m_host) == 2);
    static_assert(offsetof(DataExchange, m_certificateId) == 258);
    static_assert(offsetof(DataExchange, m_productName) == 322);
    static_assert(offsetof(DataExchange, m_version) == 450);
    static_assert(offsetof(DataExchange, m_build) == 514);
    static_assert(offsetof(DataExchange, m_language) == 578);
    static_assert(offsetof(DataExchange, m_packageTechnicalName) == 642);
    static_assert(offsetof(DataExchange, m_componentName) == 770);
    static_assert(offsetof(DataExchange, m_resultText) == 898);
};
AUT_LAYOUT_END

namespace
{
constexpr char kClientProduct[] = "Automatic Update";
constexpr char kKernelComponent[] = "Kernel";
constexpr unsigned long kKernelMayBeAsked = 1; // bit 0 of the client's status

/// The pieces of a URL of any length.
String joined(std::initializer_list<const char*> pieces)
{
    String text;
    for (const char* piece : pieces)
        text += piece;
    return text;
}

String virtualDirectory()
{
    char host[256];
    char directory[256];
    GetWebServer(host, directory);
    return String(directory);
}

/// http://host/virtual directory/page
String pageUrl(const char* host, const char* page)
{
    return joined({"http://", host, "/", virtualDirectory(), "/", aut::orEmpty(page)});
}

/// The version fields of the client itself.
void fillFromClient(DataExchange& request)
{
    CRegAutoUpdate client(true);
    String build;
    String version;
    String language;
    ExtractBuildVersionAndLanguage(client.GetAUProductVersion(), build, version, language);
    aut::copyText(request.m_version, version);
    aut::copyText(request.m_build, build);
    aut::copyText(request.m_language, language);
    aut::copyText(request.m_packageTechnicalName, client.GetTechnicalName());
}

/// The version fields of an installed product; all three stay empty when it is not enabled.
void fillFromProduct(DataExchange& request)
{
    CRegProduct product(request.m_productName, true);
    request.m_version[0] = '\0';
    request.m_build[0] = '\0';
    request.m_language[0] = '\0';
    if (!product.IsEnabled())
        return;
    char version[260];
    char build[260];
    aut::copyText(request.m_packageTechnicalName, product.GetTechnicalName());
    product.GetBuildAndVersion(version, build);
    aut::copyText(request.m_build, build);
    aut::copyText(request.m_version, version);
    aut::copyText(request.m_language, product.GetLanguage());
}

bool mayAskForComponent(const DataExchange& request)
{
    if (String(request.m_componentName) == kKernelComponent)
        return (CRegAutoUpdate(true).GetStatus() & kKernelMayBeAsked) != 0;
    return CRegProductForComponent(request.m_componentName, request.m_productName, true, true).IsEnabled();
}
} // namespace

DataExchange::DataExchange()
{
    static_assert(std::is_trivially_destructible_v<DataExchange>);
    m_entryFlag = 0;
    m_transferFlag = 0;
    // Each field is cleared whole: the record is copied and compared as bytes elsewhere.
    std::memset(m_host, 0, sizeof m_host);
    std::memset(m_certificateId, 0, sizeof m_certificateId);
    std::memset(m_productName, 0, sizeof m_productName);
    std::memset(m_version, 0, sizeof m_version);
    std::memset(m_build, 0, sizeof m_build);
    std::memset(m_language, 0, sizeof m_language);
    std::memset(m_packageTechnicalName, 0, sizeof m_packageTechnicalName);
    std::memset(m_componentName, 0, sizeof m_componentName);
    std::memset(m_resultText, 0, sizeof m_resultText);
}

DataExchange::DataExchange(const DataExchange& other) = default;
DataExchange& DataExchange::operator=(const DataExchange& other) = default;

bool DataExchange::IsComponentSpecified() { return m_componentName[0] != '\0'; }

bool DataExchange::UpdateVersions()
{
    if (String(m_productName) == kClientProduct)
    {
        fillFromClient(*this);
        return true;
    }
    fillFromProduct(*this);
    if (aut::isEmpty(m_version) || aut::isEmpty(m_build) || aut::isEmpty(m_language))
        return false;
    return !IsComponentSpecified() || mayAskForComponent(*this);
}

String DataExchange::ConstructURL(const char* page)
{
    String url = pageUrl(m_host, page);
    url += joined({"?CertificateID=", m_certificateId});
    if (m_packageTechnicalName[0] == '\0')
    {
        url += joined({"&ProductName=", m_productName});
        url += joined({"&Version=", m_version, "&Build=", m_build, "&Language=", m_language});
    }
    else
        url += joined({"&PackageTechnicalName=", m_packageTechnicalName});
    if (IsComponentSpecified())
        url += joined({"&ComponentName=", m_componentName});
    return url;
}

String DataExchange::ConstructShortURL(const char* page)
{
    String url = pageUrl(m_host, page);
    url += joined({"?CID=", m_certificateId});
    return url;
}

String DataExchange::ExtractXmlNode(String xml, String xpath)
{
    XmlDocumentPtr document;
    if (FAILED(aut::createXmlDocument(document, CLSCTX_ALL)))
    {
        Log(1, "Unable to initialize DOM Document and to Extract Xml Node");
        return String();
    }
    if (!aut::loadXmlText(document.Get(), xml, static_cast<std::size_t>(xml.GetLength())))
    {
        Log(1, "ExtractXmlNode: Unable to create XML document from data");
        return String();
    }
    try
    {
        const XmlNodePtr node = aut::selectXmlNode(document.Get(), xpath);
        if (node != nullptr)
            return aut::xmlMarkup(node.Get());
    }
    catch (const _com_error&)
    {
        // an expression that is not a path finds nothing either
    }
    Log(1, "ExtractXmlNode: Unable to found XPath in XML document");
    return String();
}
