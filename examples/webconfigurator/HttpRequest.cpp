#include "webconfigurator/HttpRequest.h"

#include <algorithm>
#include <charconv>

namespace webconf_sample
{
namespace
{
char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::string unescape(std::string_view text, bool plusIsBlank)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        unsigned value = 0;
        const char* const digits = text.data() + i + 1;
        if (text[i] == '%' && i + 2 < text.size() && std::from_chars(digits, digits + 2, value, 16).ptr == digits + 2)
        {
            plain += static_cast<char>(value);
            i += 2;
        }
        else
            plain += plusIsBlank && text[i] == '+' ? ' ' : text[i];
    }
    return plain;
}

/// Cuts off and returns what stands before `mark`; everything when there is none.
std::string_view take(std::string_view& text, std::string_view mark)
{
    const std::size_t at = text.find(mark);
    const std::string_view part = text.substr(0, at);
    text.remove_prefix(at == std::string_view::npos ? text.size() : at + mark.size());
    return part;
}

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = std::min(text.find_first_not_of(" \t"), text.size());
    text.remove_prefix(first);
    return text.substr(0, text.find_last_not_of(" \t") + 1);
}

void splitTarget(HttpRequest& request)
{
    std::string_view rest = request.target;
    if (const std::size_t scheme = rest.find("://");
        scheme != std::string_view::npos && scheme < rest.find_first_of("/?"))
    {
        rest.remove_prefix(scheme + 3);
        rest.remove_prefix(std::min(rest.find('/'), rest.size()));
    }
    request.path = unescape(take(rest, "?"), false);
    request.page = request.path.substr(request.path.rfind('/') + 1);
    while (!rest.empty())
    {
        std::string_view pair = take(rest, "&");
        const std::string name = unescape(take(pair, "="), true);
        request.query[name] = unescape(pair, true);
    }
}
} // namespace

bool IgnoringCase::operator()(std::string_view left, std::string_view right) const noexcept
{
    return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(),
                                        [](char a, char b) { return lower(a) < lower(b); });
}

bool equalIgnoringCase(std::string_view left, std::string_view right) noexcept
{
    return left.size() == right.size() &&
           std::equal(left.begin(), left.end(), right.begin(), [](char a, char b) { return lower(a) == lower(b); });
}

std::string HttpRequest::header(std::string_view name) const
{
    const auto found = headers.find(name);
    return found != headers.end() ? found->second : std::string();
}

std::string HttpRequest::parameter(std::string_view name) const
{
    const auto found = query.find(name);
    return found != query.end() ? found->second : std::string();
}

std::optional<HttpRequest> parseRequest(std::string_view head)
{
    HttpRequest request;
    request.line = take(head, "\r\n");
    std::string_view line = request.line;
    request.method = take(line, " ");
    request.target = take(line, " ");
    request.version = line;
    if (request.method.empty() || request.target.empty() || request.version.substr(0, 5) != "HTTP/")
        return std::nullopt;
    splitTarget(request);
    while (!head.empty())
    {
        std::string_view value = take(head, "\r\n");
        const std::string name(trimmed(take(value, ":")));
        if (!name.empty())
            request.headers[name] = trimmed(value);
    }
    return request;
}
} // namespace webconf_sample
