#include "ReleaseRecords.h"

#include <cstdio>

namespace updatecycle
{
bool saveRecords(const ReleaseList& releases, const std::string& dataFolder)
{
    bool allSaved = true;
    std::printf("\nRelease records\n");
    releases.forEach(
        [&](CRelease& release)
        {
            const bool saved = SaveConfigFile(&release);
            allSaved = allSaved && saved;
            const char* const prefix = *release.GetCertificateID() == '\0' ? "local_" : "";
            if (saved)
                std::printf("  %s\\%s%s.lst\n", dataFolder.c_str(), prefix, release.GetName());
            else
                std::printf("  %s: cannot be saved\n", release.GetName());
        });
    return allSaved;
}
} // namespace updatecycle
