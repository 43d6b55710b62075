#include "Cycle.h"

#include "DeliveredReleases.h"
#include "ProductLists.h"
#include "ReleaseList.h"
#include "ReleaseSetup.h"
#include "ReleaseTable.h"
#include "Workstation.h"

#include <7xAutoUpdateTools.h>

#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace updatecycle
{
namespace
{
enum EventType : unsigned long
{
    kPhase1Start = 3,
    kPhase3Start = 5,
    kPhase1End = 6,
    kPhase3End = 8
};

/// While it lives the client is in its installation phase, in which the library rearranges shared components.
class InstallationPhase
{
public:
    InstallationPhase() { CRegInProgress(false).SetPhase(3); }
    ~InstallationPhase() { CRegInProgress(false).SetPhase(0); }
    InstallationPhase(const InstallationPhase&) = delete;
    InstallationPhase& operator=(const InstallationPhase&) = delete;
};

/// A parsed release is permitted at any hour; the client's own hours are put in here.
void permit(CRelease& release, const Hours& hours)
{
    const CRelease parsed(release); // InitValues must not read what it writes
    const __int64 date = parsed.GetActivationDate();
    release.InitValues(parsed.GetId(), parsed.GetMarketingName(), parsed.GetTechnicalName(), parsed.GetName(),
                       parsed.GetVersion(), parsed.GetBuild(), parsed.GetLanguage(), parsed.GetAction(), date,
                       parsed.IsEnabled(), hours.start, hours.end, false, false, false);
}

/// Those of this workstation, unless the settings name one or a list of local releases.
std::vector<std::string> certificateIdsOf(const Settings& settings)
{
    if (!settings.certificateId.empty() || !settings.url.empty())
        return {settings.certificateId};
    Workstation workstation;
    workstation.identify(settings.server);
    return workstation.certificateIds();
}

/// An answer that does not come does not keep the others from being asked for; the first failure is the code.
ExitCode askForReleases(ReleaseList& releases, const std::vector<std::string>& certificateIds, const Settings& settings,
                        const ClientConfiguration& configuration)
{
    Log(kPhase1Start, "Update cycle: product lists of %d certificates", static_cast<int>(certificateIds.size()));
    ExitCode answered = kDone;
    for (const std::string& certificateId : certificateIds)
    {
        const ExitCode code = updateReleases(releases, certificateId, settings, configuration);
        if (answered == kDone)
            answered = code;
    }
    Log(kPhase1End, "Update cycle: %d releases", releases.count());
    return answered;
}

ExitCode installAll(const ReleaseList& releases, const Settings& settings, const ClientConfiguration& configuration)
{
    const std::optional<Hours> hours = settings.hours ? settings.hours : configuration.installationHours();
    Log(kPhase3Start, "Update cycle: installation");
    std::map<Outcome, int> outcomes;
    {
        const InstallationPhase phase;
        releases.forEach(
            [&](CRelease& release)
            {
                if (hours)
                    permit(release, *hours);
                ++outcomes[processRelease(release, settings, configuration)];
            });
    }
    String summary;
    summary.Format("%d done, %d nothing to do, %d later, %d failed", outcomes[Outcome::done],
                   outcomes[Outcome::nothingToDo], outcomes[Outcome::later], outcomes[Outcome::failed]);
    std::printf("\n%s\n", static_cast<const char*>(summary));
    Log(kPhase3End, "Update cycle: %s", static_cast<const char*>(summary));
    if (bRebootNeeded)
        std::printf("Reboot Needed: Windows must be restarted to complete this.\n");
    if (outcomes[Outcome::failed] != 0)
        return kReleaseFailed;
    return bRebootNeeded ? kRebootNeeded : kDone;
}
} // namespace

ExitCode runCycle(const Settings& settings, bool listOnly)
{
    const std::vector<std::string> certificateIds = certificateIdsOf(settings);
    if (certificateIds.empty())
    {
        std::printf("This workstation has no certificate ID; install a certificate, or name one with --cid.\n");
        return kNoSettings;
    }
    const ClientConfiguration configuration;
    ReleaseList releases;
    loadDelivered(releases, settings.dataFolder);
    const ExitCode answered = askForReleases(releases, certificateIds, settings, configuration);
    if (releases.count() == 0)
    {
        if (answered == kDone)
            std::printf("The server has nothing for this workstation.\n");
        return saveDelivered(releases, certificateIds, settings.dataFolder) ? answered : kRecordsNotSaved;
    }
    std::printf("\n");
    printTable(releases);
    if (!saveDelivered(releases, certificateIds, settings.dataFolder))
        return kRecordsNotSaved;
    if (listOnly)
        return answered;
    const ExitCode installed = installAll(releases, settings, configuration);
    return installed != kDone ? installed : answered;
}
} // namespace updatecycle
