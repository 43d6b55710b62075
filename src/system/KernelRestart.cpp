#include "fileops/RT_File.h"
#include "foundation/EventLog.h"
#include "platform/UniqueResource.h"
#include "registry/CRegAutoUpdate.h"
#include "system/COperatingSystem.h"
#include "system/KernelControl.h"

#include <new>
#include <string>

namespace
{
/// The kernel takes the program beside itself; on a 64-bit system everybody else takes the one made for that.
std::string reloadProgram(const std::string& kernelFolder, bool calledByKernel)
{
    const bool x64 = !calledByKernel && COperatingSystem::GetInstance()->IsOSx64() != 0;
    return kernelFolder + (x64 ? "\\x64\\" : "\\") + "ReloadAutoUpdate.exe";
}

/// A path that is too long for the system's own buffers counts as missing, and so does one without drive or server:
/// what it names would depend on this process's current directory.
bool exists(const std::string& path) { return path.size() < MAX_PATH && RT_File(path.c_str()).IsFileExisting(nullptr); }

/// Starts the command line and leaves it alone. The program is named besides, so that nothing else can be taken for it.
bool start(const std::string& program, std::string commandLine, const std::string& folder)
{
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    if (!::CreateProcessA(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, folder.c_str(),
                          &startup, &started))
        return false;
    aut::UniqueHandle{started.hThread}.reset();
    aut::UniqueHandle{started.hProcess}.reset();
    return true;
}
} // namespace

bool RestartService(bool calledByKernel)
try
{
    const std::string folder = static_cast<const char*>(CRegAutoUpdate(true).GetKernelPath());
    const std::string program = reloadProgram(folder, calledByKernel);
    if (!exists(program))
    {
        Log(2, "%s does not exist.", program.c_str());
        return false;
    }
    const char* const arguments = calledByKernel ? " Called by Automatic Update" : " Restart AU";
    Log(0, "Restart the service");
    if (!start(program, "\"" + program + "\"" + arguments, folder))
    {
        Log(2, "Can not execute %s, err:%d", program.c_str(), static_cast<int>(::GetLastError()));
        return false;
    }
    return true;
}
catch (const std::bad_alloc&)
{
    return false;
}
