#ifndef AUTOOLS_REGISTRY_CREGCOMPONENT_H
#define AUTOOLS_REGISTRY_CREGCOMPONENT_H

#include "registry/CRegBase.h"

/// Key "Software\Velmora\7xAutoUpdate\Components" or one component below it: which products use it and which of its
/// levels (versions) are kept on disk, newest first.
class AUTOOLS_API CRegComponent : public CRegBase
{
public:
    explicit CRegComponent(bool readOnly);
    /// A null or empty name opens the root.
    CRegComponent(const char* component, bool readOnly);

    /// How many levels are kept; stored on the root key. 0 when missing.
    unsigned long GetMaxLevels();
    void SetMaxLevels(unsigned long n);

    /// The names of all components, whichever component this object is opened on.
    bool GetComponentList(RT_List<String, String&>& list);
    /// The products that have an entry under this component, "Shared" left out; false on the root object.
    bool GetProductList(RT_List<String, String&>& list);

    /// Reads the levels, separated by "," or ";"; false on the root object. A text above 259 characters reads as none.
    bool GetMostRecentLevels(RT_List<String, String&>& list);
    /// Writes the first levels up to the maximum (20 when none is set) and those beyond it that a product still uses;
    /// appends the folder of every dropped level to `removedDirs`, for the caller to delete. A dropped level that is no
    /// plain name has no folder of its own, and without a component path no level has one: that is logged instead. A
    /// level listed twice is not dropped where it is kept. Does nothing on the root object, or when the products cannot
    /// be read.
    void SetMostRecentLevels(RT_List<String, String&>& levels, RT_List<String, String&>& removedDirs);
    /// Puts `level` first. An empty one is ignored.
    void InsertMostRecentLevel(const char* level, RT_List<String, String&>& removedDirs);

protected:
    bool DeleteMostRecentLevelFromList(RT_List<String, String&>& list, const char* level);

private:
    /// The levels that the component's products use; false when that cannot be found out.
    bool GetUsedLevels(RT_List<String, String&>& used);

    String m_component;
};

#endif
