#ifndef AUTOOLS_TESTS_CATALOGUE_DECISIONFIXTURE_H
#define AUTOOLS_TESTS_CATALOGUE_DECISIONFIXTURE_H

#include "tests/catalogue/Attachment.h"
#include "tests/support/ClientRegistry.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

namespace auttest
{
/// A component as those see it that derive from it.
class ComponentProbe : public CComponent
{
public:
    using CComponent::CComponent;
    using CComponent::m_attachment;
    using CComponent::m_mapFile;
};

/// What the registry knows of an installed component.
struct Entry
{
    const char* version = "";
    const char* language = "";
    bool enabled = true;
    const char* path = "";
};

inline std::string entryKey(const std::string& component, const std::string& product)
{
    return "Components\\" + component + "\\" + product;
}

inline void writeEntry(const Registry& registry, const std::string& key, const Entry& entry)
{
    registry.write(key, "ComponentVersion", entry.version);
    registry.write(key, "Language", entry.language);
    registry.write(key, "Path", entry.path);
    registry.write(key, "Enable", entry.enabled ? 1u : 0u);
}

/// Products share the component; its data is in the common entry.
inline void writeShared(const Registry& registry, const std::string& component, const Entry& entry,
                        const std::vector<std::string>& products)
{
    writeEntry(registry, entryKey(component, "Shared"), entry);
    registry.write(entryKey(component, "Shared"), "Shared", 1u);
    for (const std::string& product : products)
        registry.write(entryKey(component, product), "Shared", 1u);
}

/// A key with all that it holds, to see that nothing in it has changed.
inline std::vector<std::string> snapshot(const Registry& registry, const std::string& key = {})
{
    std::vector<std::string> lines = {key};
    for (const std::string& name : registry.valueNames(key))
    {
        std::ostringstream line;
        const auto value = registry.readRaw(key, name.c_str());
        line << key << " : " << name << " = " << value->type << " " << std::quoted(value->bytes);
        lines.push_back(line.str());
    }
    for (const std::string& name : registry.subkeys(key))
    {
        const std::vector<std::string> below = snapshot(registry, key.empty() ? name : key + "\\" + name);
        lines.insert(lines.end(), below.begin(), below.end());
    }
    return lines;
}
} // namespace auttest

#endif
