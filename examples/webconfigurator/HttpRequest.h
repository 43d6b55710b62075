#ifndef AUTOOLS_WEBCONFIGURATOR_HTTPREQUEST_H
#define AUTOOLS_WEBCONFIGURATOR_HTTPREQUEST_H

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace webconf_sample
{
/// Compares header and query names as HTTP and the pages do: without regard to the case of ASCII letters.
struct IgnoringCase
{
    using is_transparent = void;
    bool operator()(std::string_view left, std::string_view right) const noexcept;
};
bool equalIgnoringCase(std::string_view left, std::string_view right) noexcept;

/// One request as it came.
struct HttpRequest
{
    std::string line;   ///< the whole request line, without its line end
    std::string method; ///< "GET"
    std::string
        target; ///< as sent: "/WebConfV1/wcfgGetConfigForProduct.asp?CertificateID=A%2BB", or a whole URL to a proxy
    std::string version;                                      ///< "HTTP/1.1"
    std::string path;                                         ///< the target's path, unescaped
    std::string page;                                         ///< the path's last part
    std::map<std::string, std::string, IgnoringCase> query;   ///< unescaped; "+" is a blank
    std::map<std::string, std::string, IgnoringCase> headers; ///< the last of several wins
    unsigned connection = 0;                                  ///< counts the server's connections, from 1

    /// Empty when absent.
    std::string header(std::string_view name) const;
    std::string parameter(std::string_view name) const;
};

/// Nothing when `head` (up to and with its empty line) is no HTTP request.
std::optional<HttpRequest> parseRequest(std::string_view head);
} // namespace webconf_sample

#endif
