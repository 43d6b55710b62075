#include "catalogue/CComponent.h"

#include "fileops/RT_Dir.h"
#include "registry/CRegComponent.h"

void CComponent::InsertLevelIntoRegistry()
{
    CRegComponent component(m_name, false);
    RT_List<String, String&> removedDirs;
    component.InsertMostRecentLevel(m_fullVersion, removedDirs);
    for (POSITION at = removedDirs.GetHeadPosition(); at != nullptr;)
        RT_Dir(removedDirs.GetNext(at)).Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE);
}
