#include "registry/CRegComponent.h"

#include "foundation/EventLog.h"
#include "foundation/WholeText.h"
#include "platform/BoundedText.h"
#include "platform/PlainName.h"
#include "registry/CRegAutoUpdate.h"
#include "registry/CRegProductForComponent.h"
#include "registry/TypedValues.h"

#include <cstring>

namespace
{
constexpr char kMaxLevels[] = "Max_Levels";
constexpr char kMostRecentLevels[] = "Most_Recent_levels";
constexpr unsigned long kDefaultMaxLevels = 20;

/// What a product uses of a component, as a level: version, or version and language. False when memory runs out: half a
/// level would not keep the folder of the whole one.
bool levelOf(CRegProductForComponent& entry, String& level)
{
    char version[260];
    aut::copyText(version, entry.GetComponentVersion());
    const char* const language = entry.GetLanguage();
    level = aut::wholeText({version, *language != '\0' ? "_" : "", language});
    return !level.IsEmpty() || (*version == '\0' && *language == '\0');
}

/// False when memory runs out.
bool join(const RT_List<String, String&>& levels, String& text)
{
    int length = 0;
    text.Empty();
    for (POSITION pos = levels.GetHeadPosition(); pos != nullptr;)
    {
        const String& level = levels.GetNext(pos);
        length += level.GetLength() + (length > 0 ? 1 : 0);
        text += text.IsEmpty() ? "" : ",";
        text += level;
    }
    return text.GetLength() == length;
}

/// Both names come with product lists, and the folder they name is going to be deleted: it must lie in ours.
bool hasFolder(const String& component, const String& level)
{
    if (!level.IsEmpty() && aut::isFolderName(component) && aut::isFolderName(level))
        return true;
    Log(2, "CRegComponent::SetMostRecentLevels - level %s of component %s refused: no folder of its own",
        static_cast<const char*>(level), static_cast<const char*>(component));
    return false;
}
} // namespace

CRegComponent::CRegComponent(bool readOnly) : CRegComponent(nullptr, readOnly) {}

CRegComponent::CRegComponent(const char* component, bool readOnly)
    : CRegBase(aut::entryPath(aut::kComponentsKey, component), readOnly), m_component(component)
{
}

unsigned long CRegComponent::GetMaxLevels()
{
    return m_component.IsEmpty() ? aut::readNumber(*this, kMaxLevels) : CRegComponent(false).GetMaxLevels();
}

void CRegComponent::SetMaxLevels(unsigned long n)
{
    if (m_component.IsEmpty())
        SetValue(kMaxLevels, n);
    else
        CRegComponent(false).SetMaxLevels(n);
}

bool CRegComponent::GetComponentList(RT_List<String, String&>& list)
{
    return m_component.IsEmpty() ? GetSubKeys(list) : CRegComponent(false).GetSubKeys(list);
}

bool CRegComponent::GetProductList(RT_List<String, String&>& list)
{
    if (m_component.IsEmpty() || !GetSubKeys(list))
        return false;
    aut::removeFrom(list, aut::kSharedEntry);
    return true;
}

bool CRegComponent::GetMostRecentLevels(RT_List<String, String&>& list)
{
    if (m_component.IsEmpty())
        return false;
    const String text(aut::readText(*this, m_value, kMostRecentLevels));
    list.RemoveAll();
    for (const char* rest = text; *rest != '\0';)
    {
        const int length = static_cast<int>(std::strcspn(rest, ",;"));
        const String level = String(rest).Left(length);
        if (level.GetLength() != length || (length > 0 && !aut::appendTo(list, level)))
            return false;
        rest += rest[length] != '\0' ? length + 1 : length;
    }
    return true;
}

void CRegComponent::SetMostRecentLevels(RT_List<String, String&>& levels, RT_List<String, String&>& removedDirs)
{
    RT_List<String, String&> used;
    if (m_component.IsEmpty() || !GetUsedLevels(used))
        return;
    unsigned long max = GetMaxLevels();
    if (max < 1)
        max = kDefaultMaxLevels;

    RT_List<String, String&> kept;
    RT_List<String, String&> dropped;
    unsigned long number = 0;
    for (POSITION pos = levels.GetHeadPosition(); pos != nullptr;)
    {
        const String& level = levels.GetNext(pos);
        RT_List<String, String&>* goesTo = nullptr;
        if (number++ < max || aut::contains(used, level))
            goesTo = &kept;
        else if (!aut::contains(kept, level) && hasFolder(m_component, level)) // a kept level's folder is still needed
            goesTo = &dropped;
        if (goesTo != nullptr && !aut::appendTo(*goesTo, level))
            return; // before anything is written: what is not listed any more would never be deleted
    }
    String text;
    if (!join(kept, text) || !SetValue(kMostRecentLevels, text))
    {
        // What the registry goes on listing must stay on disk.
        Log(2, "CRegComponent::SetMostRecentLevels - levels of component %s not recorded",
            static_cast<const char*>(m_component));
        return;
    }
    if (dropped.IsEmpty())
        return;

    CRegAutoUpdate autoUpdate(true);
    const char* const components = autoUpdate.GetComponentPath();
    if (aut::isEmpty(components))
    {
        // Without it the paths would name folders at the root of whatever drive is the current one.
        Log(2, "CRegComponent::SetMostRecentLevels - the component path is not set: dropped levels of %s stay on disk",
            static_cast<const char*>(m_component));
        return;
    }
    for (POSITION pos = dropped.GetHeadPosition(); pos != nullptr;)
    {
        // The caller deletes what it gets: without its last piece, the folder of all levels.
        const String& level = dropped.GetNext(pos);
        const String folder = aut::wholeText({components, "\\", m_component, "\\", level});
        if (folder.IsEmpty() || !aut::appendTo(removedDirs, folder))
            Log(2, "CRegComponent::SetMostRecentLevels - no memory: dropped level %s of %s stays on disk",
                static_cast<const char*>(level), static_cast<const char*>(m_component));
    }
}

void CRegComponent::InsertMostRecentLevel(const char* level, RT_List<String, String&>& removedDirs)
{
    RT_List<String, String&> levels;
    if (aut::isEmpty(level) || !GetMostRecentLevels(levels))
        return;
    const bool wasThere = DeleteMostRecentLevelFromList(levels, level);
    if (wasThere && levels.IsEmpty())
        return; // it is the only one already
    if (aut::prependTo(levels, level))
        SetMostRecentLevels(levels, removedDirs);
}

bool CRegComponent::DeleteMostRecentLevelFromList(RT_List<String, String&>& list, const char* level)
{
    return aut::removeFrom(list, level);
}

bool CRegComponent::GetUsedLevels(RT_List<String, String&>& used)
{
    // A key that does not exist yet has no products; of one that cannot be read nothing is known.
    RT_List<String, String&> products;
    if (!GetProductList(products) && m_key != nullptr)
        return false;
    for (POSITION pos = products.GetHeadPosition(); pos != nullptr;)
    {
        CRegProductForComponent entry(m_component, products.GetNext(pos), true, true);
        String level;
        if (!levelOf(entry, level) || !aut::appendTo(used, level))
            return false;
    }
    return true;
}
