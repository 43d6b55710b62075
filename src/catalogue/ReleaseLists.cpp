#include "catalogue/ReleaseLists.h"

#include "catalogue/CertificateRecords.h"
#include "catalogue/ReleaseFile.h"
#include "foundation/EventLog.h"

#include <exception>
#include <fstream>

namespace
{
bool isLocal(const CRelease& release) { return *release.GetCertificateID() == '\0'; }

bool refuse(const CRelease& release, const char* reason)
{
    Log(2, "SaveConfigFile: release %s %s", release.GetName(), reason);
    return false;
}
} // namespace

bool SaveConfigFile(CRelease* release)
try
{
    if (release == nullptr)
        return false;
    const String path = aut::releaseFile(release->GetName(), isLocal(*release));
    if (path.IsEmpty())
        return refuse(*release, "has no usable file name");
    std::ofstream file(path);
    if (!file.is_open())
        return refuse(*release, "not saved: its file cannot be opened");

    // Flushed before the release is noted: only then is it known that the disk took the whole record.
    if (release->Serialize(file) == 0 || !file.flush())
        return refuse(*release, "not saved: its file cannot be written");

    const bool recorded = isLocal(*release) ? aut::recordLocalRelease(*release)
                                            : aut::recordDelivery(*release, release->GetCertificateID());
    if (!recorded)
        Log(2, "SaveConfigFile: release %s saved, but not noted in the registry", release->GetName());
    return true;
}
catch (const std::exception&)
{
    Log(2, "SaveConfigFile: out of memory");
    return false;
}

POSITION FindCIDinReleaseList(RT_List<CRelease*, CRelease*>* list, const String& certificateId)
{
    if (list == nullptr)
        return nullptr;
    for (POSITION next = list->GetHeadPosition(); next != nullptr;)
    {
        const POSITION at = next;
        const CRelease* const release = list->GetNext(next);
        if (release != nullptr && certificateId == release->GetCertificateID())
            return at;
    }
    return nullptr;
}

int FreeReleaseList(RT_List<CRelease*, CRelease*>*& list)
{
    if (list == nullptr)
        return 1;
    while (!list->IsEmpty())
        delete list->RemoveHead();
    delete list;
    list = nullptr;
    return 1;
}
