#include "plan/Installed.h"

#include "machine/Text.h"

#include <7xAutoUpdateTools.h>

#include <algorithm>

namespace autool
{
namespace
{
constexpr char kShared[] = "Shared"; ///< the entry that all products sharing a component have in common
constexpr char kComponents[] = "Software\\Velmora\\7xAutoUpdate\\Components";

/// Longer paths are refused by the registry classes: such a key is neither read nor made.
bool canBeKey(const std::string& component, const std::string& product)
{
    constexpr std::size_t kMaxPath = 259;
    return sizeof kComponents + component.size() + 1 + product.size() <= kMaxPath;
}

bool contains(const std::vector<std::string>& names, const std::string& name)
{
    return std::any_of(names.begin(), names.end(), [&](const std::string& other) { return isSameText(other, name); });
}

/// What goes along when an entry moves: an empty text leaves the other entry's own.
void moveData(const InstalledComponent& from, InstalledComponent& to)
{
    const auto take = [](const std::string& text, std::string& target)
    {
        if (!text.empty())
            target = text;
    };
    take(from.path, to.path);
    take(from.language, to.language);
    take(from.version, to.version);
    to.enabled = to.enabled || from.enabled;
}
} // namespace

InstalledProduct Installed::product(const std::string& name) const
{
    CRegProduct key(name.c_str(), true);
    InstalledProduct found; // each text at once: the getters share one buffer
    found.version = key.GetVersion();
    found.language = key.GetLanguage();
    found.enabled = key.IsEnabled();
    return found;
}

InstalledComponent& Installed::own(const std::string& component, const std::string& product)
{
    const std::string key = loweredSystem(component + "\\" + product);
    if (const auto known = m_entries.find(key); known != m_entries.end())
        return known->second;
    CRegProductForComponent entry(component.c_str(), product.c_str(), true, false);
    InstalledComponent& read = m_entries[key];
    read.version = entry.GetComponentVersion();
    read.language = entry.GetLanguage();
    read.path = entry.GetPath();
    read.enabled = entry.IsEnabled();
    read.shared = entry.IsShared();
    return read;
}

InstalledComponent Installed::component(const std::string& component, const std::string& product)
{
    const InstalledComponent entry = own(component, product);
    if (!entry.shared)
        return entry;
    InstalledComponent common = own(component, kShared);
    common.shared = true;
    common.enabled = common.enabled && !product.empty();
    return common;
}

std::optional<std::vector<std::string>> Installed::productsOf(const std::string& component)
{
    const std::string key = loweredSystem(component);
    if (const auto known = m_products.find(key); known != m_products.end())
        return known->second;
    std::optional<std::vector<std::string>>& products = m_products[key];
    RT_List<String, String&> names;
    if (!CRegComponent(component.c_str(), true).GetProductList(names))
        return products;
    products.emplace();
    for (POSITION at = names.GetHeadPosition(); at != nullptr;)
        products->emplace_back(static_cast<const char*>(names.GetNext(at)));
    return products;
}

void Installed::share(const std::string& component, const std::string& product)
{
    if (!canBeKey(component, product))
        return;
    InstalledComponent& entry = own(component, product);
    productsOf(component);
    std::optional<std::vector<std::string>>& known = m_products[loweredSystem(component)];
    if (!known)
        known.emplace();
    if (!contains(*known, product))
        known->push_back(product); // opening the entry for writing makes it

    const std::vector<std::string>& products = *known;
    if (products.size() == 1)
    {
        const InstalledComponent data = entry;
        entry.path.clear();
        entry.shared = true;
        if (!canBeKey(component, kShared))
            return;
        InstalledComponent& common = own(component, kShared);
        common.shared = true;
        moveData(data, common);
        return;
    }
    const std::string path = entry.path;
    const auto sharesIt = [&](const std::string& name)
    {
        const InstalledComponent other = this->component(component, name);
        return !isSameText(name, product) && other.shared && !path.empty() && isSameText(path, other.path);
    };
    if (entry.version.empty() || std::any_of(products.begin(), products.end(), sharesIt))
        own(component, product).shared = true;
}

void Installed::unshare(const std::string& component, const std::string& product)
{
    if (!canBeKey(component, kShared))
        return;
    const InstalledComponent data = own(component, kShared);
    const std::optional<std::vector<std::string>> products = productsOf(component);
    if (!products || products->empty())
        return;
    if (products->size() == 1) // the last product takes the common entry with it
        own(component, kShared) = InstalledComponent();
    InstalledComponent& entry = own(component, product);
    entry.shared = false;
    moveData(data, entry);
}
} // namespace autool
