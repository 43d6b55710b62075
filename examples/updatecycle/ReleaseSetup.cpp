#include "ReleaseSetup.h"

#include "Action.h"
#include "ComponentSetup.h"
#include "Decision.h"
#include "Description.h"
#include "InstallationRecord.h"
#include "Steps.h"

#include <cstdio>
#include <string>
#include <vector>

namespace updatecycle
{
namespace
{
/// Where the product lives: where it was installed, or where products of the maker go.
std::string folderOf(const std::string& product)
{
    std::string recorded = CRegProduct(product.c_str(), true).GetPath();
    if (!recorded.empty())
        return recorded;
    const std::string expression = "%VelmoraPath%\\" + product + ";%ProgramFilesDir%\\Velmora\\" + product;
    return static_cast<const char*>(RT_PathExpression("", expression.c_str(), "").Evaluate());
}

/// One component of a release that is installed or only brought in advance, and what is to be done with it.
class ComponentJob
{
public:
    ComponentJob(CComponent& component, const CRelease& release) : m_component(component), m_product(release.GetName())
    {
        m_forced = release.GetAction() == kForceReinstall || component.GetAction() == kForceReinstall;
        m_installs = component.GetAction() == kInstall || component.GetAction() == kForceReinstall;
        m_now = component.GetUpdateStatus() != 0 || (m_forced && m_installs);
    }

    void announce() const
    {
        std::printf("  %s %s: %s%s\n", m_component.GetName(), m_component.GetFullVersion(),
                    actionWord(m_component.GetAction()), m_component.IsShared() != 0 ? ", shared" : "");
        const bool onlyForced = m_now && m_component.GetUpdateStatus() == 0;
        componentStep("decided",
                      (m_now ? "now: " : "nothing to do: ") +
                          (onlyForced ? "to be installed again in any case" : ruleOf(m_component, m_product.c_str())));
    }
    bool bring(const ComponentSetup& setup) const { return !m_installs || !m_now || setup.bring(m_component); }
    bool carryOut(const ComponentSetup& setup) const
    {
        if (m_installs && m_now)
            return setup.install(m_component, m_forced ? WHEN_ALWAYS : WHEN_DIFFERENT);
        if (m_installs)
            return isRecorded(m_component.GetName(), m_product) || setup.join(m_component);
        if (m_now && m_component.GetAction() == kRemove)
            return setup.remove(m_component.GetName());
        if (m_now)
            setup.disable(m_component);
        return true;
    }

private:
    CComponent& m_component;
    const std::string m_product;
    bool m_forced;
    bool m_installs;
    bool m_now;
};

/// In the order of the list, which later components may rely on; the first failure ends it.
Outcome install(const CRelease& release, const Settings& settings, const ClientConfiguration& configuration)
{
    const std::string folder = folderOf(release.GetName());
    const bool onlyBring = release.IsPreInstallOnly() != 0;
    const ComponentSetup setup(release.GetName(), folder, release.IsNoDownload() == 0, settings, configuration);
    const auto& components = release.GetComponentList();
    for (POSITION position = components.GetHeadPosition(); position != nullptr;)
    {
        const ComponentJob job(*components.GetNext(position), release);
        job.announce();
        if (!(onlyBring ? job.bring(setup) : job.carryOut(setup)))
            return Outcome::failed;
    }
    if (onlyBring)
    {
        releaseStep("waits", "pre-install only: its files are there, nothing is installed");
        return Outcome::later;
    }
    recordProduct(release, folder);
    releaseStep("recorded", std::string(release.GetName()) + " " + release.GetFullVersion());
    return Outcome::done;
}

/// What was installed goes, the last component first, whatever the list says of components now.
Outcome remove(const CRelease& release, const Settings& settings, const ClientConfiguration& configuration)
{
    const std::string product = release.GetName();
    const std::string folder = folderOf(product);
    const ComponentSetup setup(product, folder, true, settings, configuration);
    const std::vector<std::string> components = recordedComponents(product);
    for (auto component = components.rbegin(); component != components.rend(); ++component)
    {
        std::printf("  %s: remove\n", component->c_str());
        if (!setup.remove(*component))
            return Outcome::failed;
    }
    removeWhenEmpty(folder);
    forgetProduct(product);
    releaseStep("forgotten", product + " " + release.GetFullVersion());
    return Outcome::done;
}

Outcome carryOut(CRelease& release, const Settings& settings, const ClientConfiguration& configuration)
{
    switch (release.GetAction())
    {
    case kRemove:
        return remove(release, settings, configuration);
    case kDisable:
        CRegProduct(release.GetName(), false).Disable();
        releaseStep("disabled", release.GetName());
        return Outcome::done;
    default:
        return install(release, settings, configuration);
    }
}

Outcome decideAndCarryOut(CRelease& release, const Settings& settings, const ClientConfiguration& configuration)
{
    const Decision decision = decide(release);
    static const char* const kAnswers[] = {"now: ", "later: ", "nothing to do: "};
    releaseStep("decided", kAnswers[decision.answer] + decision.rule);
    if (decision.answer == Decision::kLater)
        return Outcome::later;
    if (decision.answer == Decision::kNothing)
        return Outcome::nothingToDo;
    return carryOut(release, settings, configuration);
}
} // namespace

Outcome processRelease(CRelease& release, const Settings& settings, const ClientConfiguration& configuration)
{
    std::printf("\n%s %s: %s\n", release.GetName(), release.GetFullVersion(), actionWord(release.GetAction()));
    if (!isPlainName(release.GetName()))
    {
        releaseStep("failed", "its name is no folder name");
        return Outcome::failed;
    }
    const Outcome outcome = decideAndCarryOut(release, settings, configuration);
    if (outcome == Outcome::done || outcome == Outcome::nothingToDo)
    {
        const bool installed = *CRegProduct(release.GetName(), true).GetVersion() != '\0';
        UpdateCertificatesForInstalledProduct(&release, installed);
    }
    if (outcome == Outcome::failed)
    {
        releaseStep("failed", "nothing is recorded of it; the next cycle tries again");
        Log(2, "Update cycle: %s %s failed, the next cycle tries again", release.GetName(), release.GetFullVersion());
    }
    return outcome;
}
} // namespace updatecycle
