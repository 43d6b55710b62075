#include "webconfigurator/Depot.h"

#include "webconfigurator/HttpRequest.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace webconf_sample
{
std::optional<std::string> Depot::read(std::string_view path) const
{
    constexpr std::string_view kRoot = "/Depot/";
    const std::string_view below = path.substr(std::min(kRoot.size(), path.size()));
    if (m_folder.empty() || !equalIgnoringCase(path.substr(0, kRoot.size()), kRoot) ||
        below.find_first_of("\\:") != std::string_view::npos || below.find("..") != std::string_view::npos)
        return std::nullopt;
    std::ifstream stream(m_folder + "/" + std::string(below), std::ios::binary);
    if (!stream)
        return std::nullopt;
    std::ostringstream bytes;
    bytes << stream.rdbuf();
    return bytes.str();
}
} // namespace webconf_sample
