#include "check/Check.h"
#include "common/Text.h"
#include "machine/Client.h"
#include "machine/Owners.h"

#include <windows.h>

namespace autool
{
namespace
{
constexpr unsigned __int64 kMaxLogBytes = 512'000;

/// Whether the file could be renamed or deleted now; asks for the right and closes again.
bool canBeMoved(const std::string& path, std::string& why)
{
    const std::wstring wide = toWide(path);
    if ((::GetFileAttributesW(wide.c_str()) & FILE_ATTRIBUTE_READONLY) != 0)
    {
        why = "it is read-only";
        return false;
    }
    const Handle file(::CreateFileW(wide.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, 0,
                                    nullptr));
    if (!file)
        why = systemError(::GetLastError());
    return static_cast<bool>(file);
}

void checkLog(CheckList& list, const std::string& code, const std::string& whose, const std::string& folder)
{
    list.begin("Looking at the log of " + folder);
    const std::string log = folder + "\\7xAutoupdateLog.xml";
    std::string why;
    if (folder.empty())
    {
        list.add(code, Verdict::fail, "The log of " + whose + " has no folder, so nothing is logged.");
        return;
    }
    if (!isFolder(folder))
    {
        list.add(code, Verdict::warn, "The log folder of " + whose + " does not exist yet: " + folder + ".");
        return;
    }
    if (!isWritable(folder, why))
    {
        list.add(code, Verdict::fail,
                 "The log of " + whose + " cannot be rotated, nothing can be written to " + folder + ": " + why + ".");
        return;
    }
    for (const FileEntry& file : filesOf(folder, "7xAutoupdateLog*.xml"))
        if (const std::string path = folder + "\\" + file.name; !canBeMoved(path, why))
        {
            list.add(code, Verdict::fail,
                     "The log of " + whose + " cannot be rotated because of " + path + ": " + why + ".");
            return;
        }
    for (const FileEntry& file : filesOf(folder, "7xAutoupdateLog.xml"))
        if (file.size > kMaxLogBytes)
        {
            list.add(code, Verdict::warn,
                     log + " has " + sizeText(file.size) + ": it should have been rotated at 512,000 bytes.");
            return;
        }
    list.add(code, Verdict::pass, "The log of " + whose + " can be written and rotated in " + folder + ".");
}
} // namespace

void checkLogs(CheckList& list)
{
    const ClientFolders folders = readClientFolders();
    if (folders.isPresent)
        checkLog(list, "LOG-SERVICE", "the service", folders.data);
    checkLog(list, "LOG-USER", "this user's programs", folders.userLog);
}
} // namespace autool
