#include "productlist/ProductListFile.h"

#include "registry/CRegAutoUpdate.h"

namespace aut
{
String productListFile(const String& namePrefix)
{
    CRegAutoUpdate client(true);
    String path;
    if (client.IsLocalInstall())
    {
        path.Format("%s\\localProductList.xml", client.GetDataPath());
        return path;
    }
    String prefix;
    if (!namePrefix.IsEmpty())
        prefix.Format("%s_", static_cast<const char*>(namePrefix));
    path.Format("%s\\%sproductList.xml", client.GetDataPath(), static_cast<const char*>(prefix));
    return path;
}
} // namespace aut
