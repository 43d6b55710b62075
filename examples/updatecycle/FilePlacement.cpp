#include "FilePlacement.h"

#include "Steps.h"

#include <utility>

namespace updatecycle
{
namespace
{
constexpr int kClientInstaller = 8; // understands /AU_INSTALL and /AU_REMOVE

bool say(bool done, const char* what, RT_File& file)
{
    componentStep(done ? what : "failed", done ? std::string(file.GetFullPath()) : lastFailure());
    return done;
}

/// Whether the library put something off to the next start of Windows since this object was made.
class PutOff
{
public:
    PutOff() : m_before(std::exchange(bRebootNeeded, false)) {}
    ~PutOff() { bRebootNeeded = bRebootNeeded || m_before; }
    PutOff(const PutOff&) = delete;
    PutOff& operator=(const PutOff&) = delete;
    bool happened() const { return bRebootNeeded; }

private:
    const bool m_before;
};

bool place(const Description& description, RT_File& source, const std::string& folder, WHEN when)
{
    const PutOff putOff;
    const bool copied = source.CopyTo(folder.c_str(), when);
    RT_File target(folder.c_str(), source.GetFileName());
    if (copied && putOff.happened())
    {
        componentStep("reboot", std::string(target.GetFullPath()) + " is in use, replaced when Windows starts next");
        return true; // a server that is in use is registered, and its new file registers the same
    }
    return say(copied, "copied", target) &&
           (description.type != Description::kServer || say(target.Register(), "registered", target));
}

bool takeAway(const Description& description, RT_File& file)
{
    if (!file.IsFileExisting(nullptr))
        return true;
    if (description.type == Description::kServer && !say(file.UnRegister(), "unregistered", file))
        return false;
    const PutOff putOff;
    const bool removed = file.Remove(OVERWRITE_AT_REBOOT);
    if (removed && putOff.happened())
        componentStep("reboot", std::string(file.GetFullPath()) + " is in use, removed when Windows starts next");
    else
        say(removed, "removed", file);
    return removed;
}
} // namespace

bool placeFiles(const Description& description, const std::string& level, const std::string& folder, WHEN when)
{
    if (description.type == Description::kInstaller)
    {
        RT_File installer(level.c_str(), description.files.front().c_str());
        return say(installer.Execute(kClientInstaller, true), "executed", installer);
    }
    for (const std::string& name : description.files)
    {
        RT_File source(level.c_str(), name.c_str());
        if (!place(description, source, folder, when))
            return false;
    }
    return true;
}

bool takeFilesAway(const Description& description, const std::string& folder)
{
    if (description.type == Description::kInstaller)
    {
        RT_File installer(folder.c_str(), description.files.front().c_str());
        return say(installer.Execute(kClientInstaller, false), "executed", installer);
    }
    for (const std::string& name : description.files)
    {
        RT_File file(folder.c_str(), name.c_str());
        if (!takeAway(description, file))
            return false;
    }
    return true;
}
} // namespace updatecycle
