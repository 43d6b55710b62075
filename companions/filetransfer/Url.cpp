#include "filetransfer/Url.h"

#include "filetransfer/FileTransfer.h"

#include <windows.h>
#include <wininet.h>

#include <algorithm>
#include <charconv>
#include <optional>

namespace filetransfer
{
namespace
{
constexpr int kInvalidUrl = ERROR_INTERNET_INVALID_URL;

struct SchemeRow
{
    std::string_view prefix;
    Scheme scheme;
    unsigned short defaultPort;
};
constexpr SchemeRow kSchemes[] = {
    {"http:", Scheme::http, 80},
    {"https:", Scheme::https, 443},
    {"ftp:", Scheme::ftp, 21},
    {"file:", Scheme::file, 0},
};

/// Without regard to the locale: a URL is ASCII.
char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool beginsWith(std::string_view text, std::string_view lowerCasePrefix)
{
    return text.size() >= lowerCasePrefix.size() &&
           std::equal(lowerCasePrefix.begin(), lowerCasePrefix.end(), text.begin(),
                      [](char wanted, char c) { return wanted == lower(c); });
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    c = lower(c);
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

/// "%41" becomes "A"; a "%" without two digits stays. Nothing for a control character, which no name or path may hold
/// and which could smuggle a second command into an FTP session.
std::optional<std::string> unescape(std::string_view text)
{
    std::string plain;
    plain.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        char c = text[i];
        if (c == '%' && i + 2 < text.size() && hexValue(text[i + 1]) >= 0 && hexValue(text[i + 2]) >= 0)
        {
            c = static_cast<char>(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2]));
            i += 2;
        }
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
            return std::nullopt;
        plain += c;
    }
    return plain;
}

/// What a request line cannot carry becomes "%XX"; clients insert names with blanks as they stand. A "%" stays, because
/// the rest may be escaped already.
std::string escapeUnsafe(std::string_view text)
{
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string safe;
    safe.reserve(text.size());
    for (const char c : text)
    {
        const auto byte = static_cast<unsigned char>(c);
        if (byte > 0x20 && byte < 0x7f && c != '"' && c != '<' && c != '>' && c != '\\')
        {
            safe += c;
            continue;
        }
        safe += '%';
        safe += kDigits[byte >> 4];
        safe += kDigits[byte & 0xf];
    }
    return safe;
}

bool isHostCharacter(char c)
{
    return (c >= '0' && c <= '9') || (lower(c) >= 'a' && lower(c) <= 'z') || c == '-' || c == '.' || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

/// "host", "host:port" or "[address]:port".
bool takeHostAndPort(std::string_view text, Url& url)
{
    const bool bracketed = !text.empty() && text.front() == '[';
    const std::size_t hostEnd = bracketed ? text.find(']') : text.find(':');
    if (bracketed && hostEnd == std::string_view::npos)
        return false;
    const std::size_t portMark = bracketed ? hostEnd + 1 : std::min(hostEnd, text.size());
    const std::string_view name = bracketed ? text.substr(1, hostEnd - 1) : text.substr(0, portMark);
    const auto allowed = [bracketed](char c) { return bracketed ? hexValue(c) >= 0 || c == ':' : isHostCharacter(c); };
    if (name.empty() || name.size() > INTERNET_MAX_HOST_NAME_LENGTH || !std::all_of(name.begin(), name.end(), allowed))
        return false;
    url.host = text.substr(0, portMark);

    const std::string_view behind = text.substr(portMark);
    if (behind.empty() || behind == ":")
        return true;
    const char* const end = behind.data() + behind.size();
    const auto [last, error] = std::from_chars(behind.data() + 1, end, url.port);
    return behind.front() == ':' && error == std::errc() && last == end && url.port != 0;
}

bool takeAuthority(std::string_view authority, Url& url)
{
    const std::size_t at = authority.rfind('@');
    if (at != std::string_view::npos)
    {
        const std::string_view login = authority.substr(0, at);
        const std::size_t colon = login.find(':');
        const auto user = unescape(login.substr(0, colon));
        const auto password = unescape(colon == std::string_view::npos ? std::string_view() : login.substr(colon + 1));
        if (!user || !password)
            return false;
        url.user = *user;
        url.password = *password;
        authority.remove_prefix(at + 1);
    }
    return takeHostAndPort(authority, url);
}

bool isDrive(std::string_view text)
{
    return text.size() >= 2 && lower(text[0]) >= 'a' && lower(text[0]) <= 'z' && (text[1] == ':' || text[1] == '|');
}

/// `rest` is what follows "file:", with slashes: "///C:/dir/f", "//C:/dir/f", "//server/share/f", "////server/share/f",
/// "/C:/dir/f" and "C:/dir/f" are all in use.
bool takeFile(std::string_view rest, Url& url)
{
    auto plain = unescape(rest);
    if (!plain)
        return false;
    std::replace(plain->begin(), plain->end(), '\\', '/'); // escaped ones, too
    std::string_view path = *plain;
    const std::size_t slashes = std::min(path.find_first_not_of('/'), path.size());
    path.remove_prefix(slashes);
    bool onThisMachine = slashes == 0 || slashes == 1 || slashes == 3;
    if (slashes == 2 && beginsWith(path, "localhost/"))
    {
        path.remove_prefix(std::string_view("localhost").size());
        path.remove_prefix(std::min(path.find_first_not_of('/'), path.size())); // or "//./" behind it were a device
        onThisMachine = true;
    }
    if (path.empty())
        return false;
    if (isDrive(path))
    {
        url.object = path;
        url.object[1] = ':';
    }
    else if (onThisMachine)
        url.object = "\\" + std::string(path);
    else if (path.front() == '.' || path.front() == '?')
        return false; // "\\.\" and "\\?\" lead to devices, not to files
    else
        url.object = "\\\\" + std::string(path);
    std::replace(url.object.begin(), url.object.end(), '/', '\\');
    return true;
}
} // namespace

std::string Url::hostName() const { return host.front() == '[' ? host.substr(1, host.size() - 2) : host; }

std::string Url::text() const
{
    return (scheme == Scheme::https ? "https://" : "http://") + host + ":" + std::to_string(port) + object;
}

int parseUrl(std::string_view text, Url& url)
{
    const auto row = std::find_if(std::begin(kSchemes), std::end(kSchemes),
                                  [text](const SchemeRow& known) { return beginsWith(text, known.prefix); });
    if (row == std::end(kSchemes))
        return kUnsupportedScheme;
    url = Url();
    url.scheme = row->scheme;
    url.port = row->defaultPort;

    std::string rest(text.substr(row->prefix.size()));
    rest.resize(std::min(rest.find('#'), rest.size()));
    const std::size_t query = std::min(rest.find('?'), rest.size());
    std::replace(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(query), '\\', '/');
    if (url.scheme == Scheme::file || url.scheme == Scheme::ftp)
        rest.resize(query);

    if (url.scheme == Scheme::file)
        return takeFile(rest, url) ? 0 : kInvalidUrl;
    if (!beginsWith(rest, "//"))
        return kInvalidUrl;
    const std::size_t authorityEnd = std::min(rest.find_first_of("/?", 2), rest.size());
    if (!takeAuthority(std::string_view(rest).substr(2, authorityEnd - 2), url))
        return kInvalidUrl;

    const std::string_view object = std::string_view(rest).substr(authorityEnd);
    if (url.scheme != Scheme::ftp)
    {
        url.object = escapeUnsafe(object);
        if (url.object.empty() || url.object.front() != '/')
            url.object.insert(url.object.begin(), '/');
        return 0;
    }
    const auto path = unescape(object.empty() ? object : object.substr(1));
    if (!path || path->empty())
        return kInvalidUrl;
    url.object = *path;
    return 0;
}
} // namespace filetransfer
