#ifndef AUTOOLS_WEBCONF_CHTTPSERVER_H
#define AUTOOLS_WEBCONF_CHTTPSERVER_H

#include "foundation/Export.h"
#include "foundation/String.h"

/// A server URL taken apart into service type, server name, port, path and parameters.
class AUTOOLS_API CHTTPServer
{
public:
    CHTTPServer();
    CHTTPServer(const CHTTPServer& other);
    CHTTPServer& operator=(const CHTTPServer& other);
    virtual ~CHTTPServer();

    /// "\" counts as "/". A text without a known scheme is an HTTP server; FTP deliberately defaults to port 80 too,
    /// FILE has port 0. False only for an empty URL.
    bool ParseServerURL(const String& url);
    /// The URL put together around a page; a parsed HTTP server always yields its port.
    String GetCompleteURL(const String& page);
    /// The path and the parameters.
    String GetRelativeURL();

    const char* GetServerName();
    const char* GetParameters();
    const char* GetServiceTypeString();
    /// 0 FILE, 1 FTP, 3 HTTP.
    int GetServiceType() const;
    int GetPort() const;
    const char* GetPath();
    void SetServiceTypeString(String text);
    void SetParameters(String text);

protected:
    template <typename T> friend struct aut::LayoutOf;

    void ResetData();
    /// Each cuts its part off the remaining URL.
    void ExtractServiceType(String& url);
    void ExtractParameters(String& url);
    void ExtractServerNameAndPort(String& url);

    int m_serviceType;
    int m_port;
    String m_path;
    String m_serverName;
    String m_parameters;
    String m_serviceTypeString;
};

#endif
