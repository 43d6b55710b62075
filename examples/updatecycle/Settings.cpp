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

/// The home of the client's own configuration: below the data folder, too, unless the installer chose another.
void makeClientFolder(CRegAutoUpdate& client, const Settings& settings)
{
    if (*client.GetPath() == '\0')
        client.SetPath((settings.dataFolder + "\\Client").c_str());
    std::error_code error;
    std::filesystem::create_directories(client.GetPath(), error); // without it the configuration does not stay
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
    settings.url = options.url;
    settings.hours = options.hours;
    if (!makeDataFolder(client, options, settings))
        return std::nullopt;
    if (settings.url.empty() && settings.certificateId.empty())
        makeClientFolder(client, settings);
    if (!options.listOnly)
        makeComponentFolders(client, settings);

    char host[sizeof DataExchange::m_host] = {};
    if (options.url.empty() && !GetWebServer(host, nullptr))
    {
        std::printf("No Web Configurator is known; name one with --server.\n");
        return std::nullopt;
    }
    settings.server = host;
    return settings;
}
} // namespace updatecycle
