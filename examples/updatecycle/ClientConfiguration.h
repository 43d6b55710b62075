#ifndef AUTOOLS_UPDATECYCLE_CLIENTCONFIGURATION_H
#define AUTOOLS_UPDATECYCLE_CLIENTCONFIGURATION_H

#include "Options.h"

#include <7xAutoUpdateTools.h>

#include <optional>

namespace updatecycle
{
/// The client's own configuration, AUKernelData.xml, as the Web Configurator's last good answer left it. Without the
/// file the download library's own transfer settings are used, and installations are permitted at any hour.
class ClientConfiguration
{
public:
    ClientConfiguration();
    /// The transfer settings; null without a file. The pointer stays valid as long as this object.
    const CConfig* get() const { return m_known ? &m_config : nullptr; }
    /// The hours in which installations are permitted; nothing when they are at any hour.
    std::optional<Hours> installationHours() const;

private:
    CConfig m_config;
    bool m_known = false;
};
} // namespace updatecycle

#endif
