#include "catalogue/CComponent.h"

#include "fileops/RT_Dir.h"
#include "foundation/EventLog.h"
#include "platform/PlainName.h"
#include "registry/CRegComponent.h"

void CComponent::InsertLevelIntoRegistry()
{
    // The name comes with product lists: below another component it would look like a product that uses that one.
    if (!aut::isPlainName(m_name))
    {
        Log(2, "CComponent::InsertLevelIntoRegistry - component %s refused: no entry of its own", m_name);
        return;
    }
    CRegComponent component(m_name, false);
    RT_List<String, String&> removedDirs;
    component.InsertMostRecentLevel(m_fullVersion, removedDirs);
    for (POSITION at = removedDirs.GetHeadPosition(); at != nullptr;)
        RT_Dir(removedDirs.GetNext(at)).Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE);
}
