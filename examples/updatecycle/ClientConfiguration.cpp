#include "ClientConfiguration.h"

#include <filesystem>

namespace updatecycle
{
ClientConfiguration::ClientConfiguration()
{
    std::error_code error;
    m_known =
        std::filesystem::exists(static_cast<const char*>(m_config.GetConfigDataFile()), error) && m_config.GetValues();
}

std::optional<Hours> ClientConfiguration::installationHours() const
{
    if (!m_known || !m_config.m_installRestricted)
        return std::nullopt;
    return Hours{m_config.m_installWindow.m_lower, m_config.m_installWindow.m_upper};
}
} // namespace updatecycle
