#include "filetransfer/HttpHead.h"

#include <algorithm>
#include <charconv>

namespace filetransfer
{
namespace
{
char lower(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool equalIgnoringCase(std::string_view left, std::string_view right) noexcept
{
    return left.size() == right.size() &&
           std::equal(left.begin(), left.end(), right.begin(), [](char a, char b) { return lower(a) == lower(b); });
}

std::string_view trimmed(std::string_view text) noexcept
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
    return text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
}

/// Cuts off and returns what stands before the next line feed.
std::string_view takeLine(std::string_view& text) noexcept
{
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return trimmed(line);
}

/// "HTTP/1.1 200 OK"; 0 when it is none.
std::uint32_t statusOf(std::string_view line) noexcept
{
    constexpr std::string_view kProtocol = "HTTP/1.";
    const std::size_t blank = line.find(' ');
    if (line.substr(0, kProtocol.size()) != kProtocol || blank == std::string_view::npos)
        return 0;
    const std::string_view digits = line.substr(blank + 1, 3);
    std::uint64_t status = 0;
    return digits.size() == 3 && parseLength(digits, status) && status >= 100 ? static_cast<std::uint32_t>(status) : 0;
}

std::string base64(std::string_view bytes)
{
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3)
    {
        unsigned group = 0;
        for (std::size_t k = 0; k < 3; ++k)
            group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0u);
        for (unsigned k = 0; k < 4; ++k)
            text += i + k > bytes.size() ? '=' : kDigits[group >> (18 - 6 * k) & 63];
    }
    return text;
}
} // namespace

bool endsHead(std::string_view text) noexcept
{
    const auto endsWith = [text](std::string_view end)
    { return text.size() >= end.size() && text.substr(text.size() - end.size()) == end; };
    return endsWith("\r\n\r\n") || endsWith("\n\n");
}

bool parseLength(std::string_view text, std::uint64_t& length) noexcept
{
    const auto [last, error] = std::from_chars(text.data(), text.data() + text.size(), length);
    return error == std::errc() && last == text.data() + text.size();
}

bool parseHead(std::string_view text, HttpHead& head)
{
    const std::uint32_t status = statusOf(takeLine(text));
    while (!text.empty())
    {
        const std::string_view line = takeLine(text);
        const std::size_t colon = std::min(line.find(':'), line.size());
        const std::string_view name = trimmed(line.substr(0, colon));
        const std::string_view value = trimmed(line.substr(std::min(colon + 1, line.size())));
        if (equalIgnoringCase(name, "Transfer-Encoding"))
            head.chunked = !equalIgnoringCase(value, "identity");
        if (equalIgnoringCase(name, "WWW-Authenticate"))
            head.asksBasic = head.asksBasic || equalIgnoringCase(value.substr(0, value.find(' ')), "Basic");
        if (!equalIgnoringCase(name, "Content-Length"))
            continue;
        std::uint64_t length = 0;
        if (!parseLength(value, length) || head.length.value_or(length) != length)
            return false;
        head.length = length;
    }
    if (head.chunked)
        head.length.reset();
    head.status = status;
    return status != 0;
}

std::string directRequest(const Url& url, bool pastCaches, bool logOn)
{
    std::string request = "GET " + url.object + " HTTP/1.1\r\nHost: " + url.host;
    if (url.port != 80)
        request += ":" + std::to_string(url.port);
    request += "\r\nUser-Agent: 7xFileTransfer/" FILETRANSFER_VERSION "\r\nAccept: */*\r\nConnection: close\r\n";
    if (pastCaches)
        request += "Pragma: no-cache\r\nCache-Control: no-cache\r\n";
    if (logOn)
        request += "Authorization: Basic " + base64(url.user + ":" + url.password) + "\r\n";
    return request + "\r\n";
}
} // namespace filetransfer
