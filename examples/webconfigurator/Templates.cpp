#include "webconfigurator/Templates.h"

#include <ctime>
#include <fstream>
#include <sstream>

namespace webconf_sample
{
namespace
{
std::string escapedForXml(std::string_view text)
{
    std::string escaped;
    for (const char c : text)
        switch (c)
        {
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '&':
            escaped += "&amp;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += c;
        }
    return escaped;
}

std::string now()
{
    const std::time_t time = std::time(nullptr);
    std::tm local{};
    localtime_s(&local, &time);
    char text[32];
    std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S", &local);
    return text;
}

std::string valueOf(std::string_view name, const HttpRequest& request, const std::string& host)
{
    if (name == "Host")
        return host;
    if (name == "Now")
        return now();
    return escapedForXml(request.parameter(name));
}
} // namespace

std::optional<std::string> Templates::read(std::string_view file) const
{
    if (m_folder.empty())
        return std::nullopt;
    std::ifstream stream(m_folder + "/" + std::string(file), std::ios::binary);
    if (!stream)
        return std::nullopt;
    std::ostringstream bytes;
    bytes << stream.rdbuf();
    return bytes.str();
}

std::string Templates::rulesText() const { return read("pages.rules").value_or(std::string()); }

std::optional<std::string> Templates::render(std::string_view file, const HttpRequest& request,
                                             const std::string& host) const
{
    const auto source = read(file);
    if (!source)
        return std::nullopt;
    std::string filled;
    std::size_t done = 0;
    for (std::size_t open = source->find("{{"); open != std::string::npos; open = source->find("{{", done))
    {
        const std::size_t close = source->find("}}", open);
        if (close == std::string::npos)
            break;
        filled.append(*source, done, open - done);
        filled += valueOf(std::string_view(*source).substr(open + 2, close - open - 2), request, host);
        done = close + 2;
    }
    return filled.append(*source, done, std::string::npos);
}
} // namespace webconf_sample
