#include "catalogue/ComponentList.h"

#include "catalogue/Actions.h"
#include "foundation/EventLog.h"
#include "foundation/VersionText.h"
#include "platform/BoundedText.h"
#include "platform/PlainName.h"
#include "registry/CRegComponent.h"
#include "registry/CRegInProgress.h"
#include "registry/CRegProductForComponent.h"
#include "registry/TypedValues.h"

#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace
{
using ComponentList = RT_List<CComponent*, CComponent*>;

/// The phase of the client in which lists are rearranged.
constexpr int kInstallationPhase = 3;
constexpr char kKernel[] = "Kernel";
constexpr int kTextSize = 260;

bool isSame(const char* left, const char* right) { return ::_stricmp(left, right) == 0; }

/// What a substitute owns: the component in whose place it stands.
class ReplacedComponent : public CComponentAttachment
{
public:
    void take(CComponent* component) noexcept { m_component.reset(component); }

private:
    std::unique_ptr<CComponent> m_component;
};

/// A component in the version that all products share.
class Substitute : public CComponent
{
public:
    Substitute(const CComponent& original, const char* version, const char* build, const char* language,
               const char* sourceLocation)
        : CComponent(0, original.GetName(), version, build, language, original.GetAction(), sourceLocation)
    {
        SetShared(1);
    }

    /// Makes room for the component to be replaced; null when memory runs out.
    ReplacedComponent* makeHold() noexcept
    {
        auto* const hold = new (std::nothrow) ReplacedComponent;
        m_attachment = hold;
        return hold;
    }
};

/// Null when its texts do not fit or memory runs out.
std::unique_ptr<Substitute> makeSubstitute(const CComponent& original, CRegProductForComponent& common)
{
    const String commonVersion(common.GetComponentVersion());
    const String language(common.GetLanguage());
    char version[kTextSize];
    char build[kTextSize];
    common.GetBuildAndVersion(version, build);

    String location;
    location.Format("%s/%s_%s", original.GetName(), static_cast<const char*>(commonVersion),
                    static_cast<const char*>(language));
    if (location.GetLength() >= kTextSize)
    {
        Log(2, "UpdateComponentList - component %s: the source location of its shared version is too long",
            original.GetName());
        return nullptr;
    }
    return std::unique_ptr<Substitute>(new (std::nothrow) Substitute(original, version, build, language, location));
}

/// Puts the substitute at the tail and lets it own the component at `position`, which leaves the list. Until all
/// memory is there nothing is held or moved, so a failure leaves the list as it was.
void replace(ComponentList& list, POSITION position, CComponent* component, std::unique_ptr<Substitute> substitute)
{
    ReplacedComponent* const hold = substitute->makeHold();
    if (hold == nullptr)
        return;
    try
    {
        list.AddTail(substitute.get());
    }
    catch (const std::bad_alloc&)
    {
        return;
    }
    static_cast<void>(substitute.release()); // the list's from now on
    list.RemoveAt(position);
    hold->take(component);
}

/// How many of the products have a version of the component.
int countUsers(const char* component, const RT_List<String, String&>& products)
{
    int users = 0;
    for (POSITION at = products.GetHeadPosition(); at != nullptr;)
    {
        CRegProductForComponent entry(component, products.GetNext(at), true, true);
        if (!aut::isEmpty(entry.GetComponentVersion()))
            ++users;
    }
    return users;
}

/// Whether the shared version is the one to act on. `entry` is that of the product whose list this is.
bool isSubstituted(const CComponent& component, const char* sharedVersion, int users, CRegProductForComponent& entry)
{
    switch (component.GetAction())
    {
    case aut::kInstall:
    case aut::kForceReinstall:
    {
        String level;
        level.Format("%s%s", component.GetVersion(), component.GetBuild());
        return IsVersionNewer(level, sharedVersion);
    }
    case aut::kRemove: // the last one removes what is there, whatever it asked for
        return users == 1 && !aut::isEmpty(entry.GetComponentVersion());
    default:
        return false;
    }
}

void updateComponent(ComponentList& list, POSITION position, CComponent* component, const char* product)
{
    const char* const name = component->GetName();
    CRegProductForComponent entry(name, product, true, true);
    if (component->IsShared() == 0)
    {
        if (entry.IsShared())
            entry.UnShare();
        return;
    }
    if (!entry.IsShared())
        entry.Share();

    RT_List<String, String&> products;
    if (!CRegComponent(name, true).GetProductList(products))
        return;
    const int users = countUsers(name, products);
    if (users == 0)
        return;
    CRegProductForComponent common(name, aut::kSharedEntry, true, true);
    const String sharedVersion(common.GetComponentVersion());
    if (sharedVersion.IsEmpty() || !isSubstituted(*component, sharedVersion, users, entry))
        return;

    std::unique_ptr<Substitute> substitute = makeSubstitute(*component, common);
    // An equal one, be it the component itself, does as well.
    if (substitute != nullptr && !IsComponentInList(list, substitute.get()))
        replace(list, position, component, std::move(substitute));
}

/// Both names come with product lists, and entries are going to be written: they must be the component's own.
bool hasEntry(const char* component, const char* product)
{
    const bool ownEntry = *component != '\0' && aut::isPlainName(component) && *product != '\0' &&
                          aut::isPlainName(product) && !isSame(product, aut::kSharedEntry);
    if (!ownEntry)
        Log(2, "UpdateComponentList - component %s of product %s refused: no entry of its own", component, product);
    return ownEntry;
}
} // namespace

bool IsComponentInList(const RT_List<CComponent*, CComponent*>& list, const CComponent* component)
{
    if (component == nullptr)
        return false;
    for (POSITION at = list.GetHeadPosition(); at != nullptr;)
    {
        const CComponent* const other = list.GetNext(at);
        if (other != nullptr && isSame(other->GetName(), component->GetName()) &&
            isSame(other->GetVersion(), component->GetVersion()) && isSame(other->GetBuild(), component->GetBuild()) &&
            isSame(other->GetLanguage(), component->GetLanguage()))
            return true;
    }
    return false;
}

bool UpdateComponentList(RT_List<CComponent*, CComponent*>& list, const char* product)
{
    if (CRegInProgress(true).GetPhase() != kInstallationPhase || product == nullptr)
        return false;
    // Counted first: substitutes come to stand behind these and are deliberately not visited.
    int remaining = list.GetCount();
    for (POSITION next = list.GetHeadPosition(); next != nullptr && remaining > 0; --remaining)
    {
        const POSITION position = next;
        CComponent* const component = list.GetNext(next);
        if (component == nullptr)
            continue;
        if (isSame(component->GetName(), kKernel))
        {
            list.RemoveAt(position);
            delete component;
        }
        else if (hasEntry(component->GetName(), product))
            updateComponent(list, position, component, product);
    }
    return true;
}
