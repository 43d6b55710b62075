#include "ComponentSetup.h"

#include "ComponentFiles.h"
#include "FilePlacement.h"
#include "InstallationRecord.h"
#include "Steps.h"

#include <optional>
#include <utility>

namespace updatecycle
{
namespace
{
void sayUsers(RT_File& file)
{
    const std::string path = file.GetFullPath();
    componentStep("shared", path + " is used by " + std::to_string(sharedCount(path.c_str())));
}
} // namespace

ComponentSetup::ComponentSetup(std::string product, std::string productFolder, bool mayDownload,
                               const Settings& settings, const ClientConfiguration& configuration)
    : m_product(std::move(product)), m_productFolder(std::move(productFolder)), m_mayDownload(mayDownload),
      m_settings(settings), m_configuration(configuration)
{
}

bool ComponentSetup::bring(const CComponent& component) const
{
    return bringFiles(component, m_mayDownload, m_settings, m_configuration);
}

bool ComponentSetup::install(CComponent& component, WHEN when) const
{
    if (!bring(component))
        return false;
    const std::string level = levelFolder(m_settings, component.GetName(), component.GetFullVersion());
    const std::optional<Description> description = readDescription(level);
    if (!description)
        return false;
    const std::string folder = folderOf(*description, level);
    if (folder.empty() || !placeFiles(*description, level, folder, when))
        return false;
    if (!share(component, *description, folder))
        return false;
    recordComponent(component, m_product, folder);
    component.InsertLevelIntoRegistry();
    componentStep("recorded", std::string(component.GetName()) + " " + component.GetFullVersion());
    return true;
}

bool ComponentSetup::join(const CComponent& component) const
{
    const InstalledComponent installed(component.GetName(), m_product);
    const std::string level = levelFolder(m_settings, component.GetName(), installed.fullVersion());
    const std::optional<Description> description = readDescription(level);
    if (!description)
        return false;
    if (!share(component, *description, installed.folder))
        return false;
    recordUse(component.GetName(), m_product);
    return true;
}

bool ComponentSetup::remove(const std::string& component) const
{
    const InstalledComponent installed(component, m_product);
    const std::optional<Description> description =
        readDescription(levelFolder(m_settings, component, installed.fullVersion()));
    if (!description)
        return false;
    unsigned long users = 0;
    if (installed.shared)
        for (const std::string& name : description->files)
        {
            RT_File file(installed.folder.c_str(), name.c_str());
            file.UnShare();
            users = sharedCount(file.GetFullPath());
            sayUsers(file);
        }
    if (users == 0)
    {
        if (!takeFilesAway(*description, installed.folder))
            return false;
        removeWhenEmpty(installed.folder);
    }
    if (forgetComponent(component, m_product))
        RT_Dir((m_settings.componentFolder + "\\" + component).c_str()).Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE);
    componentStep("forgotten", component + " " + installed.fullVersion());
    return true;
}

void ComponentSetup::disable(const CComponent& component) const
{
    CRegProductForComponent(component.GetName(), m_product.c_str(), false, true).Disable();
    componentStep("disabled", component.GetName());
}

/// Empty, having said why, when the description's path leads nowhere.
std::string ComponentSetup::folderOf(const Description& description, const std::string& level) const
{
    if (description.type == Description::kInstaller)
        return level; // it works from there and knows itself where its files go
    RT_PathExpression expression("Path", description.path.c_str(), m_productFolder.c_str());
    const String value = expression.Evaluate();
    std::string folder = static_cast<const char*>(RT_Dir(value).GetFullPath());
    if (folder.empty() || folder.find_first_of("{}%;") != std::string::npos)
    {
        componentStep("failed", "its path leads nowhere: " + description.path);
        return std::string();
    }
    componentStep("path", description.path);
    componentStep("", "is " + folder);
    return folder;
}

/// Counts each product once, however often it installs the component again.
bool ComponentSetup::share(const CComponent& component, const Description& description, const std::string& folder) const
{
    if (component.IsShared() == 0 || isRecorded(component.GetName(), m_product))
        return true;
    for (const std::string& name : description.files)
    {
        RT_File file(folder.c_str(), name.c_str());
        if (!file.Share())
        {
            componentStep("failed", std::string(file.GetFullPath()) + " cannot be counted as shared");
            return false;
        }
        sayUsers(file);
    }
    return true;
}

void removeWhenEmpty(const std::string& folder)
{
    RT_Dir directory(folder.c_str());
    // Its own files only: what has subfolders is refused by Windows.
    if (directory.IsExisting() != 0 && directory.IsEmpty(DIR_TOP_ONLY) != 0)
        directory.Remove(OVERWRITE_NOW_ONLY, DIR_TOP_ONLY);
}
} // namespace updatecycle
