#include "Settings.h"

#include <7xAutoUpdateTools.h>

#include <cstdio>
#include <filesystem>

namespace updatecycle
{
namespace
{
bool makeDataFolder(CRegAutoUpdate& client, const Options& options, Settings& settings)
{
    if (!options.dataFolder.empty())
        client.SetDataPath(options.dataFolder.c_str());
    settings.dataFolder = client.GetDataPath();
    std::error_code error;
    if (!settings.dataFolder.empty())
        std::filesystem::create_directories(settings.dataFolder, error);
    if (!settings.dataFolder.empty() && std::filesystem::is_directory(settings.dataFolder, error))
        return true;
    std::printf("There is no data folder%s%s; name one with --data.\n", settings.dataFolder.empty() ? "" : ": ",
                settings.dataFolder.c_str());
    return false;
}

/// Below the data folder, unless the client's installer chose others.
void makeComponentFolders(CRegAutoUpdate& client, Settings& settings)
{
    if (*client.GetDownloadPath() == '\0')
        client.SetDownloadPath((settings.dataFolder + "\\Download").c_str());
    if (*client.GetComponentPath() == '\0')
        client.SetComponentPath((settings.dataFolder + "\\Components").c_str());
    settings.downloadFolder = client.GetDownloadPath();
    settings.componentFolder = client.GetComponentPath();
}

std::string listUrl(const char* host, const Options& options)
{
    DataExchange request;
    std::snprintf(request.m_host, sizeof request.m_host, "%s", host);
    std::snprintf(request.m_certificateId, sizeof request.m_certificateId, "%s", options.certificateId.c_str());
    std::snprintf(request.m_productName, sizeof request.m_productName, "Automatic Update");
    request.UpdateVersions(); // without an installed client the versions stay empty, and the page does not need them
    return static_cast<const char*>(request.ConstructURL("wcfgGetProductList.asp"));
}
} // namespace

std::optional<Settings> makeSettings(const Options& options)
{
    if (!options.server.empty() && !SetWebServer(options.server.c_str(), nullptr))
    {
        std::printf("The server cannot be stored in the client's settings.\n");
        return std::nullopt;
    }
    CRegAutoUpdate client(false);
    Settings settings;
    settings.certificateId = options.certificateId;
    settings.hours = options.hours;
    if (!makeDataFolder(client, options, settings))
        return std::nullopt;
    if (!options.listOnly)
        makeComponentFolders(client, settings);

    char host[sizeof DataExchange::m_host] = {};
    if (options.url.empty() && !GetWebServer(host, nullptr))
    {
        std::printf("No Web Configurator is known; name one with --server.\n");
        return std::nullopt;
    }
    settings.server = host;
    settings.url = options.url.empty() ? listUrl(host, options) : options.url;
    return settings;
}
} // namespace updatecycle
