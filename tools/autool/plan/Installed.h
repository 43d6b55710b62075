#ifndef AUTOOL_PLAN_INSTALLED_H
#define AUTOOL_PLAN_INSTALLED_H

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace autool
{
/// What the registry records of one product.
struct InstalledProduct
{
    std::string version; ///< empty: not installed
    std::string language;
    bool enabled = false;

    /// As the library compares it: always joined with "_".
    std::string fullVersion() const { return version + "_" + language; }
};

/// What the registry records of one component for one product, or for all that share it.
struct InstalledComponent
{
    std::string version; ///< empty: not installed
    std::string language;
    std::string path;
    bool enabled = false;
    bool shared = false; ///< the data is in the common entry
};

/// What the registry records as installed, read when it is asked for, and never written.
///
/// Deciding in the installation phase moves entries between a product and the common entry of its component, and later
/// decisions see that. Those moves happen here in memory, by the same rules. All texts are in the ANSI code page.
class Installed
{
public:
    InstalledProduct product(const std::string& name) const;

    /// The entry that counts: the common one when the product shares the component.
    InstalledComponent component(const std::string& component, const std::string& product);
    /// The products that have an entry; nothing when there are none to be read.
    std::optional<std::vector<std::string>> productsOf(const std::string& component);

    /// What `CRegProductForComponent::Share` and `UnShare` would do.
    void share(const std::string& component, const std::string& product);
    void unshare(const std::string& component, const std::string& product);

private:
    InstalledComponent& own(const std::string& component, const std::string& product);

    std::map<std::string, InstalledComponent> m_entries; ///< by key below "Components", in lower case
    std::map<std::string, std::optional<std::vector<std::string>>> m_products;
};
} // namespace autool

#endif
