#ifndef AUTOOLS_WEBCONFIGURATOR_WEBCONFIGURATOR_H
#define AUTOOLS_WEBCONFIGURATOR_WEBCONFIGURATOR_H

#include "webconfigurator/HttpRequest.h"
#include "webconfigurator/Rule.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace webconf_sample
{
/// A small Web Configurator on the loopback: serves pages from template files, chosen by rules, and misbehaves where a
/// rule says so. It runs on threads of its own from construction to destruction; all members may be called from any
/// thread.
///
///     webconf_sample::WebConfigurator server(folder);           // reads folder\pages.rules
///     server.addRule("page=wcfgGetProductList.asp, cut=100");   // from now on cut off; the file's rules still say
///     what GetDataFromStream(server.url("wcfgGetProductList.asp", "CertificateID=...").c_str(), ...);
///
/// A rule that was added later goes before those added earlier, and all of them before those of "pages.rules"; among
/// the rules that fit, the first one that states a setting decides it. A request whose content no rule states gets 404.
///
/// In a template "{{NAME}}" is replaced by the query parameter of that name, escaped for XML, "{{Host}}" by the
/// server's host and port, and "{{Now}}" by the current local time ("2026-01-31 18:30:00").
class WebConfigurator
{
public:
    /// @param templates  Folder of the templates and of "pages.rules"; empty: no files, rules only.
    /// @param port       0 takes a free port.
    /// Throws std::runtime_error (the port is taken) or std::invalid_argument (a bad rule in the file).
    explicit WebConfigurator(const std::string& templates = std::string(), unsigned short port = 0);
    WebConfigurator(const WebConfigurator&) = delete;
    WebConfigurator& operator=(const WebConfigurator&) = delete;
    /// Ends every connection and waits for the threads.
    ~WebConfigurator();

    unsigned short port() const noexcept;
    /// "127.0.0.1:port", the value of the client's `WebServer` setting.
    std::string host() const;
    /// "http://127.0.0.1:port/WebConfV1/page", and "?query" when there is one. Nothing is escaped.
    std::string url(std::string_view page, std::string_view query = std::string_view()) const;

    void addRule(Rule rule);
    /// The text form; throws std::invalid_argument.
    void addRule(std::string_view rule);
    /// Drops the rules that were added; those of the file stay.
    void clearRules();

    /// From now on the files of this folder are served under "/Depot/", unless a rule says otherwise; "" ends that.
    void serveDepot(const std::string& folder);

    /// The requests received so far, in order.
    std::vector<HttpRequest> requests() const;
    void clearRequests();
    /// Called for each request before it is answered, on the connection's thread.
    void onRequest(std::function<void(const HttpRequest&)> observer);
    unsigned connectionCount() const;

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};
} // namespace webconf_sample

#endif
