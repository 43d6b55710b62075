#include "InstallationRecord.h"

#include <algorithm>

namespace updatecycle
{
namespace
{
void writeComponents(const std::string& product, const std::vector<std::string>& names)
{
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : ",") + name;
    CRegProduct(product.c_str(), false).SetComponentList(text.c_str());
}
} // namespace

InstalledComponent::InstalledComponent(const std::string& component, const std::string& product)
{
    CRegProductForComponent entry(component.c_str(), product.c_str(), true, true);
    version = entry.GetComponentVersion();
    language = entry.GetLanguage();
    folder = entry.GetPath();
    shared = entry.IsShared();
}

std::vector<std::string> recordedComponents(const std::string& product)
{
    // Not GetComponentList, which has room for 259 characters.
    String text;
    CRegProduct(product.c_str(), true).QueryValue("Components", text);
    std::vector<std::string> names;
    for (int i = 0; !text.ExtractSubString(',', i).IsEmpty(); ++i)
        names.emplace_back(static_cast<const char*>(text.ExtractSubString(',', i)));
    return names;
}

bool isRecorded(const std::string& component, const std::string& product)
{
    const std::vector<std::string> names = recordedComponents(product);
    return std::any_of(names.begin(), names.end(),
                       [&](const std::string& name) { return String(name.c_str()) == component.c_str(); });
}

void recordComponent(const CComponent& component, const std::string& product, const std::string& folder)
{
    CRegProductForComponent entry(component.GetName(), product.c_str(), false, true);
    entry.SetComponentVersion((std::string(component.GetVersion()) + component.GetBuild()).c_str());
    entry.SetLanguage(component.GetLanguage());
    entry.SetPath(folder.c_str());
    entry.Enable();
    recordUse(component.GetName(), product);
}

void recordUse(const std::string& component, const std::string& product)
{
    if (isRecorded(component, product))
        return;
    std::vector<std::string> names = recordedComponents(product);
    names.push_back(component);
    writeComponents(product, names);
}

bool forgetComponent(const std::string& component, const std::string& product)
{
    CRegProductForComponent entry(component.c_str(), product.c_str(), false, true);
    entry.UnShare(); // the common entry goes with its last product
    entry.DeleteKey();

    std::vector<std::string> names = recordedComponents(product);
    names.erase(std::remove(names.begin(), names.end(), component), names.end());
    writeComponents(product, names);

    CRegComponent all(component.c_str(), false);
    RT_List<String, String&> products;
    all.GetProductList(products);
    if (!products.IsEmpty())
        return false;
    all.DeleteKey();
    return true;
}

void recordProduct(const CRelease& release, const std::string& folder)
{
    CRegProduct product(release.GetName(), false);
    product.SetVersion((std::string(release.GetVersion()) + release.GetBuild()).c_str());
    product.SetLanguage(release.GetLanguage());
    product.SetActiveLanguage(release.GetLanguage());
    product.SetPath(folder.c_str());
    product.SetCertificateID(release.GetCertificateID());
    product.SetMarketingName(release.GetMarketingName());
    product.SetTechnicalName(release.GetTechnicalName());
    product.Enable();
}

void forgetProduct(const std::string& product) { CRegProduct(product.c_str(), false).DeleteKey(); }

unsigned long sharedCount(const char* path)
{
    unsigned long count = 0;
    CRegBase("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\SharedDLLs", true).QueryValue(path, count);
    return count;
}
} // namespace updatecycle
