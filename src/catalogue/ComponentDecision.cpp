#include "catalogue/ComponentDecision.h"

#include "catalogue/Actions.h"
#include "catalogue/CRelease.h"
#include "registry/CRegProductForComponent.h"

namespace
{
bool isNecessary(const CComponent& component, CRegProductForComponent& installed)
{
    String level;
    level.Format("%s%s", component.GetVersion(), component.GetBuild());
    switch (component.GetAction())
    {
    case aut::kInstall:
    case aut::kForceReinstall:
        return !(level == installed.GetComponentVersion() && installed.IsEnabled() &&
                 String(component.GetLanguage()) == installed.GetLanguage());
    case aut::kRemove:
        return level == installed.GetComponentVersion();
    case aut::kDisable:
        return installed.IsEnabled();
    default:
        return false;
    }
}
} // namespace

int IsComponentUpdateNecessary(CComponent* component, const CRelease* release)
{
    if (release == nullptr)
        return 1;
    if (component == nullptr)
        return 0; // nothing to act on
    // To decide must not leave entries behind: they count as users of the component.
    CRegProductForComponent installed(component->GetName(), release->GetName(), true, true);
    component->SetUpdateStatus(isNecessary(*component, installed) ? 1 : 0);
    return component->GetUpdateStatus();
}
