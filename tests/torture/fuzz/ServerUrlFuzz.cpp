#include "tests/torture/fuzz/Fuzz.h"
#include "tests/torture/fuzz/Model.h"

#include "webconf/CHTTPServer.h"

#include <string>

namespace
{
namespace model = torture::model;

const torture::Words kWords = {"http://",
                               "HTTP://",
                               "ftp://",
                               "FtP://",
                               "file://",
                               "FILE://",
                               "gopher://",
                               "https://",
                               "http:\\\\",
                               "ftp:/",
                               "depot",
                               "server",
                               "10.0.0.1",
                               ":80",
                               ":8080",
                               ":",
                               ":0",
                               ":-1",
                               ":99999999999",
                               ": 21",
                               "/",
                               "\\",
                               "//",
                               "dir/sub",
                               "?x=1",
                               "?",
                               "??",
                               "?a=/b:c?",
                               "p.cab",
                               "wcfgGetConfigForProduct.asp",
                               "@",
                               "user:pw@",
                               "#x",
                               "%20",
                               "\\\\server\\share\\dir",
                               "http://server:80/WebConfV1?CertificateID=7"};

struct Url
{
    int type = 3;
    int port = 80;
    std::string scheme;
    std::string server;
    std::string path;
    std::string parameters;
};

/// What stands before and behind a character; all of it before when there is no such character.
std::string cutOff(std::string& text, std::size_t at)
{
    const std::string behind = at == std::string::npos ? std::string() : text.substr(at + 1);
    text = text.substr(0, at);
    return behind;
}

Url parsed(const std::string& given)
{
    Url url;
    if (given.empty())
        return url;
    std::string rest = model::replaced(given, '\\', '/');
    url.scheme = "HTTP://";
    const struct
    {
        int type;
        const char* prefix;
    } kKnown[] = {{0, "file://"}, {1, "ftp://"}, {3, "http://"}};
    const std::string folded = model::lower(rest);
    for (const auto& known : kKnown)
    {
        const std::size_t length = std::string(known.prefix).size();
        if (folded.rfind(known.prefix, 0) != 0)
            continue;
        url.type = known.type;
        url.scheme = rest.substr(0, length);
        rest.erase(0, length);
        break;
    }
    url.parameters = cutOff(rest, rest.rfind('?'));
    url.path = cutOff(rest, rest.find('/'));
    if (url.type == 0)
        url.port = 0;
    else if (rest.find(':') != std::string::npos)
        url.port = model::decimal(cutOff(rest, rest.find(':')));
    url.server = rest;
    return url;
}

std::string relative(const Url& url) { return url.path + (url.parameters.empty() ? "" : "?" + url.parameters); }

std::string complete(const Url& url, const std::string& page)
{
    std::string text = url.type == 0 ? "FILE://" : url.type == 1 ? "FTP://" : "HTTP://";
    text += url.server + (url.port != 0 ? ":" + std::to_string(url.port) : "");
    text += url.path.empty() ? "" : "/" + url.path;
    text += page.empty() ? "" : "/" + model::replaced(page, '\\', '/');
    return text + (url.parameters.empty() ? "" : "?" + url.parameters);
}

void expectSame(const Url& url, CHTTPServer& server, const std::string& page, torture::Differences& differences)
{
    differences.expect("type", url.type, server.GetServiceType());
    differences.expect("port", url.port, server.GetPort());
    differences.expect("scheme", url.scheme, std::string(server.GetServiceTypeString()));
    differences.expect("server", url.server, std::string(server.GetServerName()));
    differences.expect("path", url.path, std::string(server.GetPath()));
    differences.expect("parameters", url.parameters, std::string(server.GetParameters()));
    differences.expect("relative URL", relative(url), std::string(static_cast<const char*>(server.GetRelativeURL())));
    const String whole = server.GetCompleteURL(page.c_str());
    differences.expect("complete URL", complete(url, page), std::string(static_cast<const char*>(whole)));
}

void checkServerUrl(torture::Generator& input, torture::Differences& differences)
{
    CHTTPServer server;
    for (int left = input.number(1, 2); left > 0; --left) // the second parse finds nothing of the first
    {
        const std::string text = input.text(kWords);
        const std::string page = input.text(kWords, 300);
        Url url = parsed(text);
        differences.expect("parsed", !text.empty(), server.ParseServerURL(text.c_str()));
        expectSame(url, server, page, differences);

        url.parameters = page;
        server.SetParameters(page.c_str());
        url.scheme = text;
        server.SetServiceTypeString(text.c_str());
        CHTTPServer copy(server);
        expectSame(url, copy, "", differences);
    }
}
} // namespace

AUTOOLS_FUZZ_TARGET(ServerUrls, "server URLs", checkServerUrl)
