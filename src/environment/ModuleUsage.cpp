#include "environment/ModuleUsage.h"

#include "registry/CRegBase.h"
#include "registry/TypedValues.h"

namespace
{
/// One subkey for each shared module, named by its path, which is written with "/" because a key's name cannot hold
/// "\". The names of its values are the class IDs of those who use it, besides others.
class ModuleUsageKey : public CRegBase
{
public:
    ModuleUsageKey() : CRegBase("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\ModuleUsage", true) {}

    /// Opened below this key, not by its whole path: that would not hold what a module's path may be long.
    String firstClassId(const char* module)
    {
        CRegBase usage;
        RT_List<String, String&> values;
        if (usage.Open(m_key, module, KEY_READ))
            usage.GetValues(values);
        for (POSITION pos = values.GetHeadPosition(); pos != nullptr;)
        {
            const String& name = values.GetNext(pos);
            if (name.GetAt(0) == '{')
                return name;
        }
        return String();
    }
};
} // namespace

void GetModuleFiles(RT_List<String, String&>& list)
{
    ModuleUsageKey usage;
    RT_List<String, String&> modules;
    usage.GetSubKeys(modules);
    for (POSITION pos = modules.GetHeadPosition(); pos != nullptr;)
    {
        const String& module = modules.GetNext(pos);
        const String classId = usage.firstClassId(module);
        if (classId.IsEmpty())
            continue;
        const String fileName = module.Mid(module.ReverseFind('/') + 1); // the whole name when there is no "/"
        String entry;
        entry.Format("%s=%s", static_cast<const char*>(fileName), static_cast<const char*>(classId));
        if (!aut::appendTo(list, entry))
            return;
    }
}

String GetCLSIDFromFileName(RT_List<String, String&>& list, const char* fileName)
{
    for (POSITION pos = list.GetHeadPosition(); pos != nullptr;)
    {
        const POSITION current = pos;
        const String& entry = list.GetNext(pos);
        const int equalsAt = entry.Find('=');
        if (equalsAt >= 0 && entry.Left(equalsAt) == fileName)
        {
            const String classId = entry.Mid(equalsAt + 1);
            list.RemoveAt(current);
            return classId;
        }
    }
    return String();
}
