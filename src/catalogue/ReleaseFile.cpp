#include "catalogue/ReleaseFile.h"

#include "foundation/EventLog.h"
#include "platform/PlainName.h"
#include "registry/CRegAutoUpdate.h"

#include <windows.h>

namespace aut
{
bool isReleaseName(const char* name) { return *name != '\0' && isPlainName(name); }

String releaseFile(const char* name, bool local)
{
    CRegAutoUpdate client(true);
    const char* const folder = client.GetDataPath();
    // Without a data folder the path would be one at the root of whatever drive is current.
    if (!isReleaseName(name) || *folder == '\0')
        return String();
    String path;
    path.Format("%s\\%s%s.lst", folder, local ? "local_" : "", name);
    return path.GetLength() < MAX_PATH && !isDevice(path) ? path : String();
}

void deleteReleaseFile(const char* name, bool local)
{
    const String path = releaseFile(name, local);
    if (path.IsEmpty() || ::DeleteFileA(path))
        return;
    const DWORD error = ::GetLastError();
    if (error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND)
        Log(2, "Release file %s not deleted: error %lu", static_cast<const char*>(path), error);
}
} // namespace aut
