#include "machine/Client.h"
#include "check/Check.h"
#include "common/Text.h"
#include "machine/Owners.h"
#include "machine/RegistryReader.h"

#include <windows.h>

namespace autool
{
namespace
{
/// Asks for the right and closes again: nothing is written.
void checkRights(CheckList& list)
{
    list.begin("Looking at rights");
    for (const wchar_t* const below : {L"", L"\\Config", L"\\Products", L"\\Components"})
    {
        const std::wstring path = std::wstring(kClientTree) + below;
        Key key;
        const LSTATUS status =
            ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ | KEY_WRITE | KEY_WOW64_64KEY, key.put());
        if (status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND)
            continue;
        list.add("RIGHTS", Verdict::warn,
                 "This user may not write HKLM\\" + fromWide(path) + ", " + systemError(static_cast<DWORD>(status)) +
                     ": run as an administrator to see what the service sees.");
        return;
    }
    list.add("RIGHTS", Verdict::pass, "This user may write the client's registry keys.");
}
} // namespace

void checkClient(CheckList& list)
{
    if (!readClientFolders().isPresent)
    {
        list.add("CLIENT", Verdict::fail,
                 "This machine has no client that can be read: the key HKLM\\" + fromWide(kClientTree) +
                     " is missing.");
        return;
    }
    const auto version = readValue(HKEY_LOCAL_MACHINE, kClientTree, L"Current_AutoUpdate_Version");
    const std::string text = version ? shortened(fromWide(version->text()), 40) : std::string();
    list.add("CLIENT", Verdict::pass,
             text.empty() ? "The client is there, without a version." : "The client is there: " + text + ".");
    checkRights(list);
}
} // namespace autool
