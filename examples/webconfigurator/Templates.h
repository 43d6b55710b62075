#ifndef AUTOOLS_WEBCONFIGURATOR_TEMPLATES_H
#define AUTOOLS_WEBCONFIGURATOR_TEMPLATES_H

#include "webconfigurator/HttpRequest.h"

#include <optional>
#include <string>
#include <string_view>

namespace webconf_sample
{
/// The template files of a folder. Files are read afresh for each request, so that they can be edited meanwhile.
class Templates
{
public:
    explicit Templates(std::string folder) : m_folder(std::move(folder)) {}

    /// The folder's "pages.rules"; empty when there is none.
    std::string rulesText() const;
    /// The template with its "{{NAME}}" places filled; nothing when the file cannot be read.
    std::optional<std::string> render(std::string_view file, const HttpRequest& request, const std::string& host) const;

private:
    std::optional<std::string> read(std::string_view file) const;

    std::string m_folder;
};
} // namespace webconf_sample

#endif
