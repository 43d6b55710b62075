#include "ReleaseRecords.h"

#include <cstdio>
#include <fstream>

namespace updatecycle
{
namespace
{
/// The name comes from the server: it must stay one file of our folder.
bool isFileName(const std::string& name)
{
    return !name.empty() && name.find_first_of("\\/:*?\"<>|") == std::string::npos;
}

/// "local_" marks the releases of no certificate.
std::string fileName(const CRelease& release)
{
    const bool local = *release.GetCertificateID() == '\0';
    return (local ? "local_" : "") + std::string(release.GetName()) + ".lst";
}

bool save(CRelease& release, const std::string& path)
{
    std::ofstream file(path, std::ios::trunc);
    if (!file || release.Serialize(file) == 0)
        return false;
    file.close();
    return !file.fail();
}
} // namespace

bool saveRecords(const ReleaseList& releases, const std::string& folder)
{
    bool allSaved = true;
    releases.forEach(
        [&](CRelease& release)
        {
            const std::string path = folder + "\\" + fileName(release);
            const bool allowed = isFileName(release.GetName());
            const bool saved = allowed && save(release, path);
            allSaved = allSaved && saved;
            if (saved)
            {
                Log(0, "%s file saved", path.c_str());
                std::printf("  %s\n", path.c_str());
                return;
            }
            const char* const reason = allowed ? "cannot be written" : "refused: its name is no file name";
            Log(2, "Release record %s: %s", release.GetName(), reason);
            std::printf("  %s: %s\n", release.GetName(), reason);
        });
    return allSaved;
}
} // namespace updatecycle
