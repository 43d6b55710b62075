#include "tests/support/FullDisk.h"

#include "platform/UniqueResource.h"

#include <windows.h>

namespace auttest
{
namespace
{
/// Runs a program of the host, which Wine starts in the host's folder for `folder`.
bool runOnHost(const char* program, std::string command, const std::string& folder)
{
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    if (::CreateProcessA(program, command.data(), nullptr, nullptr, FALSE, 0, nullptr, folder.c_str(), &startup,
                         &started) == FALSE)
        return false;
    aut::UniqueHandle(started.hProcess).reset();
    aut::UniqueHandle(started.hThread).reset();
    return true;
}

/// There is nothing to wait on: the host's programs are no processes of Windows.
template <typename Condition> void waitUntil(Condition condition)
{
    for (int i = 0; i < 1000 && !condition(); ++i)
        ::Sleep(10);
}
} // namespace

FullDiskFile::FullDiskFile(const std::string& folder, const std::string& name) : m_folder(folder), m_name(name)
{
    // The host's device that is always full.
    if (runOnHost("Z:\\bin\\ln", "ln -s /dev/full \"" + m_name + "\"", m_folder))
        waitUntil([this] { return isThere(); });
}

FullDiskFile::~FullDiskFile()
{
    // Never through Windows, which could follow the link: it is the host's own device.
    if (isThere() && runOnHost("Z:\\bin\\rm", "rm \"" + m_name + "\"", m_folder))
        waitUntil([this] { return !isThere(); });
}

bool FullDiskFile::isThere() const
{
    const std::string path = m_folder + "\\" + m_name;
    return aut::UniqueFile(::CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                         OPEN_EXISTING, 0, nullptr))
               .get() != INVALID_HANDLE_VALUE;
}
} // namespace auttest
