#include "system/UserLimit.h"

#include "foundation/EventLog.h"
#include "registry/CRegCitrix.h"
#include "system/KernelNames.h"
#include "system/ProcessSearch.h"

namespace aut
{
namespace
{
constexpr unsigned long kCitrixDetail = 0x50000;
} // namespace

unsigned long maximumOfUsers(CProcessListManager& manager, const char* name)
{
    unsigned long maximum = CRegCitrix(true).GetUserNumber();
    if (maximum == 0)
    {
        // The limit is the kernel's, whichever processes it is applied to.
        Log(kCitrixDetail, "--- Citrix Limitation --- : MaxUsers not defined in Registry Keys ! Not limited for %s",
            kKernelProcess);
        int running = 0;
        manager.IsProcessRunning(name, &running, nullptr);
        maximum = static_cast<unsigned long>(running);
    }
    Log(kCitrixDetail, "--- Citrix Limitation --- : Nb max of user connected in the same time = %d",
        static_cast<int>(maximum));
    return maximum;
}

std::vector<unsigned long> runningProcesses(CProcessListManager& manager, const char* name, unsigned long maximum)
{
    std::vector<unsigned long> ids;
    if (maximum == 0)
        return ids;
    ProcessSearch::forEach(manager, name, nullptr,
                           [&ids, maximum](unsigned long pid)
                           {
                               ids.push_back(pid);
                               return ids.size() < maximum;
                           });
    return ids;
}
} // namespace aut
