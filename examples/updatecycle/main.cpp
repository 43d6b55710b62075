// updatecycle.exe: a host that drives the first half of an update cycle. See kUsage for its command line.

#include "EventLogView.h"
#include "ExitCodes.h"
#include "Options.h"
#include "Progress.h"
#include "ReleaseList.h"
#include "ReleaseRecords.h"
#include "ReleaseTable.h"

#include <7xAutoUpdateTools.h>

#include <windows.h>

#include <comdef.h>
#include <objbase.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>

namespace
{
using namespace updatecycle;

enum EventType : unsigned long
{
    kInfo = 0,
    kPhase1Start = 3,
    kPhase1End = 6
};

/// The library wants COM initialised on the thread that uses XML documents.
class ComApartment
{
public:
    ComApartment() : m_status(::CoInitialize(nullptr)) {}
    ~ComApartment()
    {
        if (SUCCEEDED(m_status))
            ::CoUninitialize();
    }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;

private:
    const HRESULT m_status;
};

/// What the cycle works with, once command line and registry are put together.
struct Settings
{
    std::string server;
    std::string url;
    std::string certificateId;
    std::string dataFolder;
};

/// Stores what the command line gives, and takes the rest from where an earlier run or the installer stored it.
std::optional<Settings> makeSettings(const Options& options)
{
    if (!options.server.empty() && !SetWebServer(options.server.c_str(), nullptr))
    {
        std::printf("The server cannot be stored in the client's settings.\n");
        return std::nullopt;
    }
    CRegAutoUpdate client(false);
    if (!options.dataFolder.empty())
        client.SetDataPath(options.dataFolder.c_str());
    Settings settings;
    settings.dataFolder = client.GetDataPath();
    settings.certificateId = options.certificateId;
    std::error_code error;
    if (!settings.dataFolder.empty())
        std::filesystem::create_directories(settings.dataFolder, error);
    if (settings.dataFolder.empty() || !std::filesystem::is_directory(settings.dataFolder, error))
    {
        std::printf("There is no data folder%s%s; name one with --data.\n", settings.dataFolder.empty() ? "" : ": ",
                    settings.dataFolder.c_str());
        return std::nullopt;
    }

    DataExchange request;
    if (options.url.empty() && !GetWebServer(request.m_host, nullptr))
    {
        std::printf("No Web Configurator is known; name one with --server.\n");
        return std::nullopt;
    }
    settings.server = request.m_host;
    std::snprintf(request.m_certificateId, sizeof request.m_certificateId, "%s", options.certificateId.c_str());
    std::snprintf(request.m_productName, sizeof request.m_productName, "Automatic Update");
    request.UpdateVersions(); // without an installed client the versions stay empty, and the page does not need them
    settings.url = options.url.empty() ? request.ConstructURL("wcfgGetProductList.asp") : String(options.url.c_str());
    return settings;
}

void printFailure()
{
    std::printf("  %s: status %d, in %s, on %s\n", static_cast<const char*>(result->GetAction()),
                result->GetStatusCode(), static_cast<const char*>(result->GetFunction()),
                static_cast<const char*>(result->GetObjectA()));
}

/// Fetches the list and leaves it in `list`.
ExitCode fetch(phase1xml& list)
{
    // The client's own transfer settings, once it is installed; the download library's before that.
    CConfig config;
    std::error_code error;
    const bool installed = std::filesystem::exists(static_cast<const char*>(config.GetConfigDataFile()), error);
    const bool configured = installed && config.GetValues();
    int fetched = 0;
    {
        const Progress progress("Downloading the product list");
        fetched = list.GetXMLDoc(configured ? &config : nullptr);
    }
    if (fetched == 1)
        return kDone;
    const int status = result->GetStatusCode();
    const bool notUnderstood = status == 500 || status == 554;
    std::printf(notUnderstood ? "What the server sent is no product list.\n" : "No product list came.\n");
    printFailure();
    if (status == 551)
        return kUnexpected;
    return notUnderstood ? kBadAnswer : kNoAnswer;
}

ExitCode runCycle(const Settings& settings)
{
    Log(kPhase1Start, "Update cycle: product list from %s", settings.url.c_str());
    phase1xml list(settings.url.c_str());
    const ExitCode fetched = fetch(list);
    if (fetched != kDone)
        return fetched;

    ReleaseList releases;
    if (list.ParseXMLDocument(releases.get(), settings.certificateId.c_str()) != 1)
    {
        std::printf("The answer has no product list.\n");
        return kBadAnswer;
    }
    std::printf("%d releases, list number %lu, country %s\n", releases.count(), list.GetModifCounter(),
                CRegAutoUpdate(true).GetCountryCode());
    bool saved = true;
    if (releases.count() > 0)
    {
        std::printf("\n");
        printTable(releases);
        std::printf("\nRelease records\n");
        saved = saveRecords(releases, settings.dataFolder);
    }
    else
        std::printf("The server has nothing for this workstation.\n");
    Log(kPhase1End, "Update cycle: %d releases", releases.count());
    return saved ? kDone : kRecordsNotSaved;
}

int run(const Options& options)
{
    const EventLogView log;
    const std::optional<Settings> settings = makeSettings(options);
    if (!settings)
        return kNoSettings;
    std::printf("Server       %s\nCertificate  %s\nData folder  %s\nProduct list %s\n\n", settings->server.c_str(),
                settings->certificateId.empty() ? "none, local releases" : settings->certificateId.c_str(),
                settings->dataFolder.c_str(), settings->url.c_str());
    ExitCode code = kUnexpected;
    try
    {
        const ComApartment com;
        code = runCycle(*settings);
    }
    catch (const _com_error& error)
    {
        std::printf("The XML parser failed: 0x%08lx\n", static_cast<unsigned long>(error.Error()));
    }
    std::printf("\nEvent log %s\n", log.path().c_str());
    log.print();
    return code;
}
} // namespace

int main(int argc, char** argv)
{
    try
    {
        std::string complaint;
        const std::optional<Options> options = parseOptions(argc, argv, complaint);
        if (!options || options->help)
        {
            std::printf("%s%s%s", complaint.c_str(), complaint.empty() ? "" : "\n", kUsage);
            return options ? kDone : kBadUsage;
        }
        return run(*options);
    }
    catch (const std::exception& error)
    {
        std::printf("updatecycle: %s\n", error.what());
        return kUnexpected;
    }
}
