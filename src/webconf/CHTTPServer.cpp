#include "webconf/CHTTPServer.h"

#include "foundation/NumberScan.h"
#include "platform/Layout.h"

#include <cstring>
#include <string>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<CHTTPServer>
{
    static_assert(offsetof(CHTTPServer, m_serviceType) == 8);
    static_assert(offsetof(CHTTPServer, m_port) == 12);
    static_assert(offsetof(CHTTPServer, m_path) == 16);
    static_assert(offsetof(CHTTPServer, m_serverName) == 32);
    static_assert(offsetof(CHTTPServer, m_parameters) == 48);
    static_assert(offsetof(CHTTPServer, m_serviceTypeString) == 64);
    static_assert(sizeof(CHTTPServer) == 80);
};
AUT_LAYOUT_END

namespace
{
enum ServiceType
{
    kNoService = -1,
    kFile = 0,
    kFtp = 1,
    kGopher = 2,
    kHttp = 3,
    kServiceCount = 4
};

// Slot 2 keeps the numbers of the others; its text is one that no URL starts with, and parsing skips it.
constexpr char kServices[kServiceCount][32] = {"FILE://", "FTP://", "gopher_not_recognized", "HTTP://"};
constexpr int kDefaultPort = 80;
} // namespace

CHTTPServer::CHTTPServer() { ResetData(); }

CHTTPServer::CHTTPServer(const CHTTPServer& other) = default;
CHTTPServer& CHTTPServer::operator=(const CHTTPServer& other) = default;
CHTTPServer::~CHTTPServer() = default;

void CHTTPServer::ResetData()
{
    m_serviceType = kHttp;
    m_port = kDefaultPort;
    m_path.Empty();
    m_serverName.Empty();
    m_parameters.Empty();
    m_serviceTypeString.Empty();
}

bool CHTTPServer::ParseServerURL(const String& url)
{
    String rest(url); // before the reset: the text may be one of our own
    ResetData();
    if (rest.IsEmpty())
        return false;
    rest.Replace('\\', '/');
    ExtractServiceType(rest);
    ExtractParameters(rest);
    ExtractServerNameAndPort(rest);
    return true;
}

void CHTTPServer::ExtractServiceType(String& url)
{
    m_serviceType = kNoService;
    for (const int slot : {kFile, kFtp, kHttp})
    {
        const int length = static_cast<int>(std::strlen(kServices[slot]));
        if (::_strnicmp(url, kServices[slot], static_cast<std::size_t>(length)) != 0)
            continue;
        m_serviceType = slot;
        m_serviceTypeString = url.Left(length);
        url = url.Mid(length);
        return;
    }
    m_serviceType = kHttp;
    m_serviceTypeString = kServices[kHttp];
}

void CHTTPServer::ExtractParameters(String& url)
{
    const int mark = url.ReverseFind('?');
    if (mark < 0)
        return;
    m_parameters = url.Mid(mark + 1);
    url = url.Left(mark);
}

void CHTTPServer::ExtractServerNameAndPort(String& url)
{
    const int slash = url.Find('/');
    if (slash >= 0)
    {
        m_path = url.Mid(slash + 1);
        url = url.Left(slash);
    }
    const int colon = m_serviceType == kFile ? -1 : url.Find(':');
    if (m_serviceType == kFile)
        m_port = 0;
    if (colon >= 0)
    {
        // What atoi reads, but defined for a number that does not fit: the nearest that does.
        const char* number = static_cast<const char*>(url) + colon + 1;
        m_port = 0;
        aut::scanNumber(number, m_port);
        url = url.Left(colon);
    }
    m_serverName = url;
}

String CHTTPServer::GetCompleteURL(const String& page)
{
    String url;
    if (m_serviceType < 0 || m_serviceType >= kServiceCount)
        return url;
    String pagePath(page);
    pagePath.Replace('\\', '/');

    url = kServices[m_serviceType];
    url += m_serverName;
    if (m_port != 0)
    {
        url += ':';
        url += std::to_string(m_port).c_str();
    }
    if (!m_path.IsEmpty())
    {
        url += '/';
        url += m_path;
    }
    if (!pagePath.IsEmpty())
    {
        url += '/';
        url += pagePath;
    }
    if (!m_parameters.IsEmpty())
    {
        url += '?';
        url += m_parameters;
    }
    return url;
}

String CHTTPServer::GetRelativeURL()
{
    String url(m_path);
    if (!m_parameters.IsEmpty())
    {
        url += '?';
        url += m_parameters;
    }
    return url;
}

const char* CHTTPServer::GetServerName() { return m_serverName; }

const char* CHTTPServer::GetParameters() { return m_parameters; }

const char* CHTTPServer::GetServiceTypeString() { return m_serviceTypeString; }

int CHTTPServer::GetServiceType() const { return m_serviceType; }

int CHTTPServer::GetPort() const { return m_port; }

const char* CHTTPServer::GetPath() { return m_path; }

void CHTTPServer::SetServiceTypeString(String text) { m_serviceTypeString = text; }

void CHTTPServer::SetParameters(String text) { m_parameters = text; }
