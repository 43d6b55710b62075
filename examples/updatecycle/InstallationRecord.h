#ifndef AUTOOLS_UPDATECYCLE_INSTALLATIONRECORD_H
#define AUTOOLS_UPDATECYCLE_INSTALLATIONRECORD_H

#include <7xAutoUpdateTools.h>

#include <string>
#include <vector>

namespace updatecycle
{
// What the registry says is installed. The library's decisions compare product lists with it, so it is written only
// once something is really in place: what failed half way stays unrecorded and is tried again.

/// A component as it is recorded for a product; the version is empty when it is not.
struct InstalledComponent
{
    InstalledComponent(const std::string& component, const std::string& product);
    std::string version; ///< with its build
    std::string language;
    std::string folder;
    bool shared;
    std::string fullVersion() const { return language.empty() ? version : version + "_" + language; }
};

/// The product's components in the order in which they were installed.
std::vector<std::string> recordedComponents(const std::string& product);
bool isRecorded(const std::string& component, const std::string& product);

void recordComponent(const CComponent& component, const std::string& product, const std::string& folder);
/// Only the product's mark that it has the component.
void recordUse(const std::string& component, const std::string& product);
/// Takes the product's entry away. True when no product is left that has the component.
bool forgetComponent(const std::string& component, const std::string& product);

void recordProduct(const CRelease& release, const std::string& folder);
void forgetProduct(const std::string& product);

/// How many products use a file by the shared-file count of Windows.
unsigned long sharedCount(const char* path);
} // namespace updatecycle

#endif
