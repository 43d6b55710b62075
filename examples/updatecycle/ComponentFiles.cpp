#include "ComponentFiles.h"

#include "Description.h"
#include "Steps.h"

#include <cstring>
#include <optional>

namespace updatecycle
{
namespace
{
bool download(const std::string& url, const std::string& folder, const std::string& name,
              const ClientConfiguration& configuration)
{
    int status = 0;
    String data;
    if (GetDataFromStream(url.c_str(), &status, configuration.get(), data) == 0)
    {
        componentStep("failed", url + " does not come: transfer status " + std::to_string(status));
        return false;
    }
    RT_File file(folder.c_str(), name.c_str());
    // Write access, not shared; made or emptied.
    if (file.Open(0x1001) == 0 || !file.Write(data.GetBuffer(), data.GetLength()))
    {
        componentStep("failed", std::string(file.GetFullPath()) + " cannot be written");
        return false;
    }
    return true;
}

/// The description first: it names the rest.
bool downloadAll(const std::string& baseUrl, const std::string& folder, const ClientConfiguration& configuration)
{
    if (!download(baseUrl + kDescriptionName, folder, kDescriptionName, configuration))
        return false;
    const std::optional<Description> description = readDescription(folder);
    if (!description)
        return false;
    for (const std::string& name : description->files)
        if (!download(baseUrl + name, folder, name, configuration))
            return false;
    return true;
}

/// From the download folder to the component folder, in the place of what is there of that level.
bool takeOver(const std::string& arrived, const std::string& level)
{
    RT_Dir(level.c_str()).Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE);
    const String parent = RT_Dir(level.c_str()).GetPath();
    if (RT_Dir(arrived.c_str()).MoveTo(parent, OVERWRITE_NOW_ONLY) != 0)
        return true;
    componentStep("failed", arrived + " cannot be moved to " + level);
    return false;
}
} // namespace

std::string levelFolder(const Settings& settings, const std::string& component, const std::string& fullVersion)
{
    return settings.componentFolder + "\\" + component + "\\" + fullVersion;
}

bool bringFiles(const CComponent& component, bool mayDownload, const Settings& settings,
                const ClientConfiguration& configuration)
{
    const std::string name = component.GetName();
    const std::string fullVersion = component.GetFullVersion();
    if (!isPlainName(name) || !isPlainName(fullVersion))
    {
        componentStep("failed", "its name or version is no folder name");
        return false;
    }
    const std::string source = component.GetSourceLocation();
    const std::string level = levelFolder(settings, name, fullVersion);
    if (!mayDownload || source.find("://") == std::string::npos)
    {
        componentStep("kept", level + " is to be there already");
        return true;
    }
    const std::string baseUrl = source.substr(0, source.rfind('/') + 1);
    if (source != baseUrl + kDescriptionName)
    {
        componentStep("failed", source + " is no component description");
        return false;
    }
    const std::string arrived = settings.downloadFolder + "\\" + name + "\\" + fullVersion;
    const bool brought = downloadAll(baseUrl, arrived, configuration) && takeOver(arrived, level);
    RT_Dir(arrived.c_str()).Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE); // what did not get there
    RT_Dir((settings.downloadFolder + "\\" + name).c_str()).Remove(OVERWRITE_NOW_ONLY, DIR_TOP_ONLY);
    if (brought)
        componentStep("brought", source + " to " + level);
    return brought;
}
} // namespace updatecycle
