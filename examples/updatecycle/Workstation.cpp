#include "Workstation.h"

#include "Progress.h"
#include "Steps.h"

#include <cstdio>
#include <filesystem>

namespace updatecycle
{
void Workstation::identify(const std::string& server)
{
    bool answered = false;
    std::printf("\n");
    {
        const Progress progress("Asking for the client's own configuration");
        answered = GetAUData(server.c_str());
    }
    const std::string file = static_cast<const char*>(CConfig().GetConfigDataFile());
    std::error_code error;
    if (answered)
        releaseStep("configured", file + " is as the server wants it");
    else if (std::filesystem::exists(file, error))
        releaseStep("kept", "the server gave no configuration: " + file + " is used as it was");
    else
        releaseStep("none", "the server gave no configuration, and there is none from before");
}

std::vector<std::string> Workstation::certificateIds()
{
    std::vector<std::string> ids;
    for (m_certificateIds.InitCIDLoop(); m_certificateIds.IsEndOfTheListReached() == 0;)
        ids.emplace_back(static_cast<const char*>(m_certificateIds.GetNextCID()));
    return ids;
}
} // namespace updatecycle
