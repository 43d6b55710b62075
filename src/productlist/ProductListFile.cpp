#include "productlist/ProductListFile.h"

#include "foundation/EventLog.h"
#include "platform/PlainName.h"
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
    // It may be made of what a server sent. There is no list outside of the data folder, to read or to overwrite.
    if (!isPlainName(namePrefix))
    {
        Log(2, "phase1xml - name prefix %s refused: no product list of its own", static_cast<const char*>(namePrefix));
        return path;
    }
    path.Format("%s\\%s%sproductList.xml", client.GetDataPath(), static_cast<const char*>(namePrefix),
                namePrefix.IsEmpty() ? "" : "_");
    return path;
}
} // namespace aut
