#include "catalogue/CRelease.h"

#include "catalogue/Actions.h"
#include "catalogue/ComponentDecision.h"
#include "catalogue/ComponentList.h"
#include "catalogue/InstallationHours.h"
#include "foundation/EventLog.h"
#include "foundation/TimeText.h"
#include "registry/CRegConfig.h"
#include "registry/CRegProduct.h"

#include <ctime>

namespace
{
/// Lets installations go on at any hour.
constexpr char kAnyHourFlag[] = "BFU9K";

int localHour()
{
    const __time64_t now = ::_time64(nullptr);
    std::tm local{};
    ::_localtime64_s(&local, &now);
    return local.tm_hour;
}

/// Sets the update status of every component; 1 when the workstation must act on one of them.
int evaluateComponents(const CRelease& release)
{
    int necessary = 0;
    const auto& components = release.GetComponentList();
    for (POSITION at = components.GetHeadPosition(); at != nullptr;)
        necessary |= IsComponentUpdateNecessary(components.GetNext(at), &release);
    return necessary;
}

/// Whether the release is what is installed in this version. The registry's text is deliberately always formed with
/// "_": a release without a language is never taken for an installed one.
bool isSameRelease(const CRelease& release, const String& version, CRegProduct& product)
{
    String installed;
    installed.Format("%s_%s", static_cast<const char*>(version), product.GetLanguage());
    return installed == release.GetFullVersion();
}
} // namespace

int CRelease::IsActivationDateReached()
{
    return m_activationDate == 0 || m_activationDate <= LocalTimeToWebConfTime(0) ? 1 : 0;
}

int CRelease::IsUpdateNecessary()
{
    // Read only: to decide must not make a product look known.
    CRegConfig config(true);
    CRegProduct product(m_name, true);
    m_updateNecessary = 0;
    if (IsActivationDateReached() == 0)
        return 0;

    const String version(product.GetVersion()); // a copy: the language is read through the same buffer
    UpdateComponentList(m_components, m_name);
    m_componentCount = m_components.GetCount();
    switch (m_action)
    {
    case aut::kInstall:
        m_updateNecessary = evaluateComponents(*this);
        if (version.IsEmpty() || !isSameRelease(*this, version, product))
            m_updateNecessary = 1;
        break;
    case aut::kRemove: // only the installed release itself is removed
        m_updateNecessary = !version.IsEmpty() && isSameRelease(*this, version, product) ? 1 : 0;
        break;
    case aut::kForceReinstall:
        m_updateNecessary = 1;
        evaluateComponents(*this); // for their update statuses
        break;
    case aut::kDisable:
        m_updateNecessary = product.IsEnabled() ? 1 : 0;
        break;
    default:
        break;
    }

    const bool installs = m_action == aut::kInstall || m_action == aut::kForceReinstall;
    if (m_updateNecessary == 1 && installs && !config.GetFlag(kAnyHourFlag) &&
        !aut::isPermittedHour(localHour(), m_installationStartHour, m_installationEndHour))
    {
        m_updateNecessary = 0;
        m_pending = true;
        Log(1, "Installation authorized only during %d and %d o'clock - Pending",
            m_installationStartHour % aut::kHoursOfDay, m_installationEndHour % aut::kHoursOfDay);
    }
    return m_updateNecessary;
}
