#include "Decision.h"

#include "Action.h"

namespace updatecycle
{
namespace
{
std::string plain(const String& text) { return static_cast<const char*>(text); }

bool same(const std::string& left, const std::string& right) { return String(left.c_str()) == right.c_str(); }

/// What the registry says of a product; its getters share one buffer, so each text is taken at once.
struct InstalledProduct
{
    explicit InstalledProduct(const char* name)
    {
        CRegProduct product(name, true);
        version = product.GetVersion();
        fullVersion = version + "_" + product.GetLanguage();
        enabled = product.IsEnabled();
    }
    std::string version; ///< empty: not installed
    std::string fullVersion;
    bool enabled;
};

const CComponent* firstNecessary(const CRelease& release)
{
    const auto& components = release.GetComponentList();
    for (POSITION position = components.GetHeadPosition(); position != nullptr;)
        if (const CComponent* const component = components.GetNext(position); component->GetUpdateStatus() != 0)
            return component;
    return nullptr;
}

std::string installRule(const CRelease& release)
{
    const InstalledProduct installed(release.GetName());
    const std::string asked = release.GetFullVersion();
    if (installed.version.empty())
        return "not installed";
    if (!same(installed.fullVersion, asked))
        return "installed " + installed.fullVersion + ", asked " + asked + ": differs";
    if (const CComponent* const component = firstNecessary(release))
        return std::string("component ") + component->GetName() + ": " + ruleOf(*component, release.GetName());
    return "installed " + installed.fullVersion + " is what is asked for, with all its components";
}

std::string removeRule(const CRelease& release)
{
    const InstalledProduct installed(release.GetName());
    if (installed.version.empty())
        return "not installed";
    const bool isTheOne = same(installed.fullVersion, release.GetFullVersion());
    return "installed " + installed.fullVersion + (isTheOne ? " is the one to remove" : " is not the one to remove");
}

std::string hoursRule(const CRelease& release)
{
    return "outside the installation hours " + std::to_string(release.GetInstallationStartHour() % 24) + "-" +
           std::to_string(release.GetInstallationEndHour() % 24);
}

std::string dateRule(const CRelease& release)
{
    __int64 date = release.GetActivationDate();
    return "not active before " + plain(TimetToStr(&date)).substr(0, 16);
}

std::string ruleOf(const CRelease& release)
{
    switch (release.GetAction())
    {
    case kRemove:
        return removeRule(release);
    case kForceReinstall:
        return "to be installed again in any case";
    case kDisable:
        return InstalledProduct(release.GetName()).enabled ? "enabled, to be disabled" : "not enabled";
    default:
        return installRule(release);
    }
}
} // namespace

Decision decide(CRelease& release)
{
    if (release.IsUpdateNecessary() != 0)
        return {Decision::kNow, ruleOf(release)};
    if (release.IsActivationDateReached() == 0)
        return {Decision::kLater, dateRule(release)};
    if (release.IsPending())
        return {Decision::kLater, hoursRule(release) + " (" + ruleOf(release) + ")"};
    return {Decision::kNothing, ruleOf(release)};
}

std::string ruleOf(const CComponent& component, const char* product)
{
    CRegProductForComponent entry(component.GetName(), product, true, true);
    const std::string installed = entry.GetComponentVersion();
    const std::string language = entry.GetLanguage();
    const std::string asked = std::string(component.GetVersion()) + component.GetBuild();
    if (component.GetAction() == kRemove)
        return same(installed, asked) ? "installed " + installed + " is the one to remove"
                                      : asked + " is not installed";
    if (component.GetAction() == kDisable)
        return entry.IsEnabled() ? "enabled, to be disabled" : "not enabled";
    if (installed.empty())
        return "not installed";
    if (!same(installed, asked))
    {
        char version[260];
        char build[260];
        entry.GetBuildAndVersion(version, build);
        const bool onlyBuild = same(version, component.GetVersion());
        return (onlyBuild ? "component build changed: installed " : "component version changed: installed ") +
               installed + ", asked " + asked;
    }
    if (!same(language, component.GetLanguage()))
        return "language changed: installed " + language + ", asked " + component.GetLanguage();
    return entry.IsEnabled() ? "installed " + installed + " is what is asked for" : "installed, but disabled";
}
} // namespace updatecycle
