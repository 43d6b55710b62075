// updatecycle.exe: a host that drives an update cycle, as an update service would. See kUsage for its command line.

#include "Cycle.h"
#include "EventLogView.h"
#include "Holder.h"
#include "Options.h"
#include "Settings.h"

#include <windows.h>

#include <comdef.h>
#include <objbase.h>

#include <cstdio>
#include <exception>

namespace
{
using namespace updatecycle;

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

int run(const Options& options)
{
    const EventLogView log;
    const std::optional<Settings> settings = makeSettings(options);
    if (!settings)
        return kNoSettings;
    std::printf("Server       %s\nData folder  %s\n",
                settings->url.empty() ? settings->server.c_str() : settings->url.c_str(), settings->dataFolder.c_str());
    ExitCode code = kUnexpected;
    try
    {
        const ComApartment com;
        code = runCycle(*settings, options.listOnly);
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
        return options->holdFile.empty() ? run(*options) : holdFile(options->holdFile);
    }
    catch (const std::exception& error)
    {
        std::printf("updatecycle: %s\n", error.what());
        return kUnexpected;
    }
}
