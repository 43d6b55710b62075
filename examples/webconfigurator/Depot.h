#ifndef AUTOOLS_WEBCONFIGURATOR_DEPOT_H
#define AUTOOLS_WEBCONFIGURATOR_DEPOT_H

#include <optional>
#include <string>
#include <string_view>

namespace webconf_sample
{
/// A folder whose files are served as they are, byte for byte, under "/Depot/". Without a folder nothing is.
class Depot
{
public:
    explicit Depot(std::string folder = std::string()) : m_folder(std::move(folder)) {}

    /// The file behind an unescaped path; nothing when there is none, or when the path would leave the folder.
    std::optional<std::string> read(std::string_view path) const;

private:
    std::string m_folder;
};
} // namespace webconf_sample

#endif
