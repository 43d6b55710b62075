#ifndef AUTOOLS_UPDATECYCLE_COMPONENTSETUP_H
#define AUTOOLS_UPDATECYCLE_COMPONENTSETUP_H

#include "ClientConfiguration.h"
#include "Description.h"
#include "Settings.h"

#include <7xAutoUpdateTools.h>

#include <string>

namespace updatecycle
{
/// Puts the components of one product in their places and takes them away again, and records it. Every member says what
/// it does, and gives false, having said why, when it fails. Borrows settings and configuration.
class ComponentSetup
{
public:
    ComponentSetup(std::string product, std::string productFolder, bool mayDownload, const Settings& settings,
                   const ClientConfiguration& configuration);

    /// Only brings the component's files into the component folder.
    bool bring(const CComponent& component) const;
    /// Brings the component's files and installs them, also in the place of another level. What is in use is replaced
    /// when Windows starts next.
    bool install(CComponent& component, WHEN when) const;
    /// Counts the product as a further user of what another product has installed.
    bool join(const CComponent& component) const;
    /// Removes what is recorded of the component, or only this product's share in it.
    bool remove(const std::string& component) const;
    void disable(const CComponent& component) const;

private:
    std::string folderOf(const Description& description, const std::string& level) const;
    bool share(const CComponent& component, const Description& description, const std::string& folder) const;

    const std::string m_product;
    const std::string m_productFolder;
    const bool m_mayDownload;
    const Settings& m_settings;
    const ClientConfiguration& m_configuration;
};

/// Removes a folder that holds nothing any more.
void removeWhenEmpty(const std::string& folder);
} // namespace updatecycle

#endif
