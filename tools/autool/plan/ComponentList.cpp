#include "plan/ComponentList.h"

#include "machine/Text.h"

#include <7xAutoUpdateTools.h>

#include <algorithm>
#include <optional>

namespace autool
{
namespace
{
constexpr char kKernel[] = "Kernel";
constexpr char kShared[] = "Shared";
constexpr std::size_t kTextSize = 260;

bool isPlainName(const std::string& name)
{
    return name.find_first_of("\\/:") == std::string::npos && name.find_first_not_of(". ") != std::string::npos;
}

/// Both names come with product lists; the client writes entries only where they are the component's own.
bool hasEntry(const std::string& component, const std::string& product)
{
    return isPlainName(component) && isPlainName(product) && !isSameText(product, kShared);
}

/// In front of the first A, B or P of either case the version, from there on the build.
std::size_t versionLength(const std::string& text) { return std::min(text.find_first_of("ABPabp"), text.size()); }

bool isSubstituted(const AskedComponent& component, const InstalledComponent& common, int users,
                   const InstalledComponent& entry)
{
    switch (component.action)
    {
    case kInstall:
    case kForceReinstall:
        return IsVersionNewer(component.level().c_str(), common.version.c_str());
    case kRemove: // the last one removes what is there, whatever it asked for
        return users == 1 && !entry.version.empty();
    default:
        return false;
    }
}

/// Nothing when its location does not fit the client's record.
std::optional<AskedComponent> substituteFor(const AskedComponent& original, const InstalledComponent& common)
{
    AskedComponent substitute;
    substitute.location = original.name + "/" + common.version + "_" + common.language;
    if (substitute.location.size() >= kTextSize)
        return std::nullopt;
    const std::size_t length = versionLength(common.version);
    substitute.name = original.name;
    substitute.version = common.version.substr(0, length);
    substitute.build = common.version.substr(length);
    substitute.language = common.language;
    substitute.action = original.action;
    substitute.shared = true;
    substitute.replaces = original.fullVersion;
    substitute.fullVersion = AutoUpdateObject(0, substitute.name.c_str(), substitute.version.c_str(),
                                              substitute.build.c_str(), substitute.language.c_str(), 0)
                                 .GetFullVersion();
    return substitute;
}

bool isSameComponent(const AskedComponent& left, const AskedComponent& right)
{
    return isSameText(left.name, right.name) && isSameText(left.version, right.version) &&
           isSameText(left.build, right.build) && isSameText(left.language, right.language);
}

/// What takes the component's place, if anything does.
std::optional<AskedComponent> update(const AskedComponent& component, const std::string& product, Installed& installed)
{
    const bool isShared = installed.component(component.name, product).shared;
    if (!component.shared)
    {
        if (isShared)
            installed.unshare(component.name, product);
        return std::nullopt;
    }
    if (!isShared)
        installed.share(component.name, product);

    const auto products = installed.productsOf(component.name);
    if (!products)
        return std::nullopt;
    const auto users = std::count_if(products->begin(), products->end(),
                                     [&](const std::string& user)
                                     { return !installed.component(component.name, user).version.empty(); });
    const InstalledComponent common = installed.component(component.name, kShared);
    if (users == 0 || common.version.empty() ||
        !isSubstituted(component, common, static_cast<int>(users), installed.component(component.name, product)))
        return std::nullopt;
    return substituteFor(component, common);
}
} // namespace

void rearrange(AskedRelease& release, Installed& installed)
{
    // Substitutes come to stand behind those that were there at first, and are not visited.
    std::size_t remaining = release.components.size();
    for (std::size_t at = 0; remaining > 0; --remaining)
    {
        std::vector<AskedComponent>& list = release.components;
        const auto position = list.begin() + static_cast<std::ptrdiff_t>(at);
        if (isSameText(position->name, kKernel))
        {
            list.erase(position);
            continue;
        }
        std::optional<AskedComponent> substitute;
        if (hasEntry(position->name, release.name))
            substitute = update(*position, release.name, installed);
        const auto isEqual = [&](const AskedComponent& other) { return isSameComponent(other, *substitute); };
        // An equal one, be it the component itself, does as well.
        if (!substitute || std::any_of(list.begin(), list.end(), isEqual))
        {
            ++at;
            continue;
        }
        list.erase(position);
        list.push_back(*substitute);
    }
}
} // namespace autool
