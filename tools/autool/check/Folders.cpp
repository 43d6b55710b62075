#include "check/Check.h"
#include "common/Text.h"
#include "machine/Client.h"
#include "machine/Owners.h"

#include <windows.h>

#include <set>

namespace autool
{
namespace
{
/// Puts a folder's times back when it goes: a file that comes and goes changes them.
class FolderTimes
{
public:
    explicit FolderTimes(const std::wstring& folder)
        : m_folder(::CreateFileW(folder.c_str(), FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                 FILE_FLAG_BACKUP_SEMANTICS, nullptr)),
          m_known(m_folder && ::GetFileTime(m_folder.get(), nullptr, nullptr, &m_written))
    {
    }
    ~FolderTimes()
    {
        if (m_known)
            ::SetFileTime(m_folder.get(), nullptr, nullptr, &m_written);
    }
    FolderTimes(const FolderTimes&) = delete;
    FolderTimes& operator=(const FolderTimes&) = delete;

private:
    Handle m_folder;
    FILETIME m_written{};
    bool m_known;
};

void checkFolder(CheckList& list, const char* code, const char* valueName, const std::string& folder, Verdict whenBad)
{
    list.begin("Looking at " + folder);
    const std::string name = std::string("The folder of \"") + valueName + "\"";
    std::string why;
    if (folder.empty())
        list.add(code, whenBad, name + " is not set.");
    else if (!isFolder(folder))
        list.add(code, whenBad, name + " does not exist: " + folder + ".");
    else if (!isWritable(folder, why))
        list.add(code, whenBad, "No files can be written to " + folder + " (" + valueName + "): " + why + ".");
    else
        list.add(code, Verdict::pass, folder + " (" + valueName + ") is there and writable.");
}

void checkSpace(CheckList& list, const std::set<std::string>& folders)
{
    constexpr unsigned __int64 kMegabyte = 1024 * 1024;
    constexpr unsigned __int64 kEnough = 500 * kMegabyte;
    constexpr unsigned __int64 kTooLittle = 50 * kMegabyte;
    std::set<std::string> drives;
    for (const std::string& folder : folders)
        if (folder.size() > 1 && folder[1] == ':')
            drives.insert(lowerCase(folder.substr(0, 2)));
    for (const std::string& drive : drives)
    {
        ULARGE_INTEGER available{};
        if (!::GetDiskFreeSpaceExW(toWide(drive + "\\").c_str(), &available, nullptr, nullptr))
        {
            list.add("DISK", Verdict::warn,
                     "The free space of drive " + drive + " cannot be read: " + systemError(::GetLastError()) + ".");
            continue;
        }
        const unsigned __int64 free = available.QuadPart;
        const Verdict verdict = free < kTooLittle ? Verdict::fail : free < kEnough ? Verdict::warn : Verdict::pass;
        list.add("DISK", verdict,
                 "Drive " + drive + " has " + sizeText(free) + " free" +
                     (verdict == Verdict::pass ? "." : ", which is little for an update."));
    }
    if (drives.empty())
        list.add("DISK", Verdict::warn, "No folder of the client is set, so there is no drive to look at.");
}
} // namespace

bool isWritable(const std::string& folder, std::string& why)
{
    const std::wstring path = toWide(folder);
    const FolderTimes times(path);
    const std::wstring file = path + L"\\autool-" + std::to_wstring(::GetCurrentProcessId()) + L"-" +
                              std::to_wstring(::GetTickCount64()) + L".tmp";
    // Gone with its handle, whatever becomes of this process.
    const Handle made(::CreateFileW(file.c_str(), GENERIC_WRITE | DELETE, FILE_SHARE_DELETE, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (!made)
        why = systemError(::GetLastError());
    return static_cast<bool>(made);
}

void checkFolders(CheckList& list)
{
    const ClientFolders folders = readClientFolders();
    if (!folders.isPresent)
        return;
    checkFolder(list, "PATH-CLIENT", "Path", folders.path, Verdict::fail);
    checkFolder(list, "PATH-DATA", "DataPath", folders.data, Verdict::fail);
    checkFolder(list, "PATH-DOWNLOAD", "DownloadPath", folders.download, Verdict::warn);
    checkFolder(list, "PATH-COMPONENTS", "CompPath", folders.components, Verdict::warn);
    checkSpace(list, {folders.path, folders.data, folders.download, folders.components});
}
} // namespace autool
