#include "Cycle.h"

#include "ProductList.h"
#include "ReleaseList.h"
#include "ReleaseRecords.h"
#include "ReleaseSetup.h"
#include "ReleaseTable.h"

#include <7xAutoUpdateTools.h>

#include <cstdio>
#include <map>

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

ExitCode installAll(const ReleaseList& releases, const Settings& settings, const TransferSettings& transfer)
{
    Log(kPhase3Start, "Update cycle: installation");
    std::map<Outcome, int> outcomes;
    {
        const InstallationPhase phase;
        releases.forEach(
            [&](CRelease& release)
            {
                if (settings.hours)
                    permit(release, *settings.hours);
                ++outcomes[processRelease(release, settings, transfer)];
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
    const TransferSettings transfer;
    Log(kPhase1Start, "Update cycle: product list from %s", settings.url.c_str());
    phase1xml list(settings.url.c_str());
    const ExitCode fetched = fetchProductList(list, transfer);
    if (fetched != kDone)
        return fetched;

    ReleaseList releases;
    if (list.ParseXMLDocument(releases.get(), settings.certificateId.c_str()) != 1)
    {
        std::printf("The answer has no product list.\n");
        return kBadAnswer;
    }
    Log(kPhase1End, "Update cycle: %d releases", releases.count());
    std::printf("%d releases, list number %lu, country %s\n", releases.count(), list.GetModifCounter(),
                CRegAutoUpdate(true).GetCountryCode());
    if (releases.count() == 0)
    {
        std::printf("The server has nothing for this workstation.\n");
        return kDone;
    }
    std::printf("\n");
    printTable(releases);
    if (!saveRecords(releases, settings.dataFolder))
        return kRecordsNotSaved;
    return listOnly ? kDone : installAll(releases, settings, transfer);
}
} // namespace updatecycle
