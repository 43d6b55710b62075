#include "plan/Decision.h"

#include "machine/Text.h"
#include "plan/ComponentList.h"

#include <algorithm>
#include <cstdlib>

namespace autool
{
namespace
{
constexpr int kInstallationPhase = 3;

const char* yesNo(bool yes) { return yes ? "yes" : "no"; }
std::string orNone(const std::string& text) { return text.empty() ? "none" : text; }

/// What the library sets as the component's status.
bool isNecessary(const AskedComponent& asked, const InstalledComponent& installed)
{
    const bool sameLevel = isSameText(asked.level(), installed.version);
    switch (asked.action)
    {
    case kInstall:
    case kForceReinstall:
        return !(sameLevel && installed.enabled && isSameText(asked.language, installed.language));
    case kRemove:
        return sameLevel;
    case kDisable:
        return installed.enabled;
    default:
        return false;
    }
}

std::string installRule(const AskedComponent& asked, const InstalledComponent& installed)
{
    if (installed.version.empty())
        return asked.level().empty() ? "installed without a version" : "not installed";
    if (!isSameText(asked.level(), installed.version))
        return "installed " + installed.version + ", asked " + orNone(asked.level());
    if (!isSameText(asked.language, installed.language))
        return "installed language " + orNone(installed.language) + ", asked " + orNone(asked.language);
    return installed.enabled ? "installed " + installed.version + " is what is asked for"
                             : "installed " + installed.version + " is what is asked for, but disabled";
}

std::string componentRule(const AskedComponent& asked, const InstalledComponent& installed)
{
    switch (asked.action)
    {
    case kInstall:
    case kForceReinstall:
        return installRule(asked, installed);
    case kRemove:
        if (installed.version.empty())
            return asked.level().empty() ? "its empty version is the one recorded" : "to be removed, but not installed";
        return isSameText(asked.level(), installed.version)
                   ? "installed " + installed.version + " is the one to remove"
                   : "installed " + installed.version + ", not " + orNone(asked.level()) + ", which is to be removed";
    case kDisable:
        return installed.enabled ? "enabled, to be disabled" : "to be disabled, but not enabled";
    default:
        return "an action that the client does not know";
    }
}

/// What the client does when the release as a whole goes ahead.
Verb componentVerb(const ComponentDecision& component, int releaseAction)
{
    const int action = component.asked.action;
    const bool installs = action == kInstall || action == kForceReinstall;
    if (installs && (releaseAction == kForceReinstall || (component.necessary && action == kForceReinstall)))
        return Verb::reinstall;
    if (!component.necessary)
        return Verb::nothing;
    return installs ? Verb::install : action == kRemove ? Verb::remove : Verb::disable;
}

class Decider
{
public:
    Decider(AskedRelease release, Installed& installed, const Conditions& conditions)
        : m_installed(installed), m_conditions(conditions)
    {
        m_decision.asked = std::move(release);
        m_decision.installed = installed.product(asked().name);
    }

    ReleaseDecision decide()
    {
        addValues();
        addNotes();
        if (asked().activationDate != 0 && asked().activationDate > m_conditions.serverTime)
            waitForDate();
        else
        {
            if (m_conditions.phase == kInstallationPhase)
                rearrange(m_decision.asked, m_installed);
            byAction();
            observeHours();
            observePreInstallation();
        }
        return std::move(m_decision);
    }

private:
    AskedRelease& asked() { return m_decision.asked; }
    void answer(bool necessary, Verb verb, std::string rule)
    {
        m_decision.necessary = necessary;
        m_decision.verb = necessary ? verb : Verb::nothing;
        m_decision.rule = std::move(rule);
    }

    void addValues()
    {
        const InstalledProduct& installed = m_decision.installed;
        m_decision.values = {
            {"action", actionName(asked().action)},
            {"asked", asked().fullVersion},
            {"installed", installed.version.empty() ? "" : installed.fullVersion()},
            {"enabled", yesNo(installed.enabled)},
            {"activation date", asked().activationDate == 0 ? "none" : timeText(asked().activationDate)},
            {"server time", timeText(m_conditions.serverTime)},
            {"installation hours", hoursText(asked().startHour, asked().endHour)},
            {"pre-install only", yesNo(asked().preInstallOnly)},
            {"no download", yesNo(asked().noDownload)},
        };
    }

    void addNotes()
    {
        if (asked().noDownload && asked().action != kRemove && asked().action != kDisable)
            m_decision.notes.emplace_back("no download: its files must be on this machine already");
        if (!asked().enabled && asked().action != kDisable)
            m_decision.notes.emplace_back("marked disabled, which the decision does not look at");
    }

    void waitForDate()
    {
        m_decision.verb = Verb::hold;
        m_decision.rule = "not active before " + timeText(asked().activationDate) + ", server time is " +
                          timeText(m_conditions.serverTime);
        for (const AskedComponent& component : asked().components)
            add(component, Verb::hold, "waits with its release, and is not looked at");
    }

    ComponentDecision& add(const AskedComponent& component, Verb verb, std::string rule)
    {
        ComponentDecision& decision = m_decision.components.emplace_back();
        decision.asked = component;
        decision.installed = m_installed.component(component.name, asked().name);
        decision.verb = verb;
        decision.rule = std::move(rule);
        decision.values = {{"action", actionName(component.action)},
                           {"asked", component.level()},
                           {"asked language", component.language},
                           {"installed", decision.installed.version},
                           {"installed language", decision.installed.language},
                           {"enabled", yesNo(decision.installed.enabled)},
                           {"shared", yesNo(component.shared)}};
        if (component.shared)
            decision.values.emplace_back("shared version", m_installed.component(component.name, "Shared").version);
        if (!component.replaces.empty())
        {
            decision.values.emplace_back("replaces", component.replaces);
            decision.rule +=
                "; products share this version, which is newer than the " + component.replaces + " that was asked for";
        }
        return decision;
    }

    /// The components as the client evaluates them; whether it must act on one.
    bool evaluateComponents()
    {
        for (const AskedComponent& component : asked().components)
        {
            const InstalledComponent installed = m_installed.component(component.name, asked().name);
            std::string rule = componentRule(component, installed);
            ComponentDecision& decision = add(component, Verb::nothing, std::move(rule));
            decision.necessary = isNecessary(component, installed);
            decision.verb = componentVerb(decision, asked().action);
            if (decision.verb == Verb::reinstall && !decision.necessary)
                decision.rule += ", but its release is installed again in any case";
        }
        return std::any_of(m_decision.components.begin(), m_decision.components.end(),
                           [](const ComponentDecision& component) { return component.necessary; });
    }

    void addComponents(Verb verb, const std::string& rule)
    {
        for (const AskedComponent& component : asked().components)
            add(component, verb, rule);
    }

    void byAction()
    {
        const InstalledProduct& installed = m_decision.installed;
        const bool isInstalled = !installed.version.empty();
        const bool isSame = isSameText(installed.fullVersion(), asked().fullVersion);
        switch (asked().action)
        {
        case kInstall:
            decideInstallation(evaluateComponents(), isInstalled, isSame);
            break;
        case kRemove:
            answer(isInstalled && isSame, Verb::remove, removeRule(isInstalled, isSame));
            addComponents(m_decision.verb, m_decision.necessary ? "goes with its product"
                                                                : "not looked at: nothing is done with its product");
            break;
        case kForceReinstall:
            evaluateComponents();
            answer(true, Verb::reinstall, "to be installed again, whatever is installed");
            break;
        case kDisable:
            answer(installed.enabled, Verb::disable,
                   installed.enabled ? "enabled, to be disabled" : "to be disabled, but not enabled");
            addComponents(Verb::nothing, "not looked at: the product is disabled as a whole");
            break;
        default:
            answer(false, Verb::nothing, actionName(asked().action) + " is one that the client does not know");
            addComponents(Verb::nothing, "not looked at");
            break;
        }
    }

    void decideInstallation(bool componentDiffers, bool isInstalled, bool isSame)
    {
        const std::string found = m_decision.installed.fullVersion();
        if (!isInstalled)
            answer(true, Verb::install, "not installed");
        else if (!isSame && asked().language.empty())
            answer(true, Verb::install,
                   "installed " + found + ", asked " + orNone(asked().fullVersion) +
                       ": without a language it never counts as installed");
        else if (!isSame)
            answer(true, Verb::install, "installed " + found + ", asked " + asked().fullVersion);
        else if (componentDiffers)
            answer(true, Verb::install, "installed " + found + " is what is asked for, but not all its components");
        else
            answer(false, Verb::install, "installed " + found + " is what is asked for, with its components");
    }

    std::string removeRule(bool isInstalled, bool isSame)
    {
        if (!isInstalled)
            return "to be removed, but not installed";
        const std::string found = "installed " + m_decision.installed.fullVersion();
        if (isSame)
            return found + " is the one to remove";
        return found + ", not " + orNone(asked().fullVersion) + ", which is to be removed" +
               (asked().language.empty() ? ": without a language it is never taken for an installed one" : "");
    }

    void holdComponents(const char* rule)
    {
        for (ComponentDecision& component : m_decision.components)
            if (component.verb != Verb::nothing)
            {
                component.verb = Verb::hold;
                component.rule += rule;
            }
    }

    void observeHours()
    {
        const bool installs = asked().action == kInstall || asked().action == kForceReinstall;
        const int start = asked().startHour;
        const int end = asked().endHour;
        if (!m_decision.necessary || !installs || isPermittedHour(m_conditions.hour, start, end))
            return;
        if (m_conditions.anyHour)
        {
            m_decision.notes.push_back("outside the installation hours " + hoursText(start, end) +
                                       ", which the setting BFU9K switches off");
            return;
        }
        const __int64 next = nextPermitted(m_conditions.time, start, end);
        const std::string nextText = next == 0 ? "never" : timeText(next);
        m_decision.necessary = false;
        m_decision.pending = true;
        m_decision.verb = Verb::hold;
        m_decision.rule =
            "installed only " + hoursText(start, end) + ", next " + nextText + " (" + m_decision.rule + ")";
        m_decision.values.emplace_back("next permitted", nextText);
        holdComponents(", waits for the installation hours");
    }

    /// The library says that such a release is to be acted on; what its programs do is bring the files.
    void observePreInstallation()
    {
        if (!asked().preInstallOnly || !m_decision.necessary ||
            (m_decision.verb != Verb::install && m_decision.verb != Verb::reinstall))
            return;
        m_decision.verb = Verb::hold;
        m_decision.rule = "pre-install only: its files are brought, nothing is installed yet (" + m_decision.rule + ")";
        holdComponents(", waits with its release");
    }

    Installed& m_installed;
    const Conditions& m_conditions;
    ReleaseDecision m_decision;
};
} // namespace

const char* verbName(Verb verb)
{
    static const char* const kNames[] = {"install", "reinstall", "remove", "disable", "hold", "nothing"};
    return kNames[static_cast<int>(verb)];
}

ReleaseDecision decide(AskedRelease release, Installed& installed, const Conditions& conditions)
{
    return Decider(std::move(release), installed, conditions).decide();
}
} // namespace autool
