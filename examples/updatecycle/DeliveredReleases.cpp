#include "DeliveredReleases.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace updatecycle
{
namespace
{
const char kLocal[] = "local_"; ///< begins the name of a local release's record file

std::string recordFile(const std::string& dataFolder, const std::string& name)
{
    std::string path = dataFolder;
    return path.append("\\").append(name).append(".lst");
}

/// Drops the record files of all releases but the local ones. The library drops only those that the registry notes, and
/// a release that was withdrawn is not noted any more.
void dropRecordFiles(const std::string& dataFolder)
{
    std::error_code error;
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(dataFolder, error))
        if (entry.path().extension() == ".lst" && entry.path().filename().string().rfind(kLocal, 0) != 0)
            files.push_back(entry.path());
    for (const std::filesystem::path& file : files)
        std::filesystem::remove(file, error);
}
} // namespace

void loadDelivered(ReleaseList& releases, const std::string& dataFolder)
{
    RT_List<String, String&> names;
    CRegBase("Software\\Velmora\\7xAutoUpdate\\Data", "WebConf", true).GetSubKeys(names);
    for (POSITION position = names.GetHeadPosition(); position != nullptr;)
    {
        const std::string name = static_cast<const char*>(names.GetNext(position));
        std::ifstream file(recordFile(dataFolder, name));
        auto release = std::make_unique<CRelease>();
        if (!file || release->Serialize(file) != 1)
            std::printf("%s was delivered, but its record cannot be read.\n", name.c_str());
        else if (!IsCIDRevoked(release->GetCertificateID())) // a cycle may have ended before it was withdrawn
            releases.add(std::move(release));
    }
}

bool saveDelivered(const ReleaseList& releases, const std::vector<std::string>& certificateIds,
                   const std::string& dataFolder)
{
    // This drops the other certificate IDs' record files, too; all that is still to be processed is saved again.
    for (const std::string& certificateId : certificateIds)
        DeletePreviousRegistryEntries(certificateId.c_str());
    dropRecordFiles(dataFolder);

    bool allSaved = true;
    std::printf("\nRelease records%s\n", releases.count() == 0 ? ": none" : "");
    releases.forEach(
        [&](CRelease& release)
        {
            const std::string prefix = *release.GetCertificateID() == '\0' ? kLocal : "";
            const bool saved = SaveConfigFile(&release);
            allSaved = allSaved && saved;
            if (saved)
                std::printf("  %s\n", recordFile(dataFolder, prefix + release.GetName()).c_str());
            else
                std::printf("  %s: cannot be saved\n", release.GetName());
        });
    return allSaved;
}
} // namespace updatecycle
