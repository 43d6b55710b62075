#include "environment/ClientFolders.h"

#include "foundation/RT_RESULT.h"
#include "foundation/WholeText.h"
#include "platform/BoundedText.h"
#include "platform/UniqueResource.h"
#include "registry/CRegAutoUpdate.h"
#include "registry/CRegDataCaching.h"

#include <shlobj.h>

#include <cstddef>
#include <cstring>

namespace
{
constexpr char kUserDataFolder[] = "\\Velmora\\Automatic Update Data";
constexpr char kIniFile[] = "\\7xAutoUpdate.ini";
constexpr int kNotEnoughDiskSpace = 459;

/// The application-data folder of the process's own account, whomever the calling thread impersonates.
bool userDataFolder(char (&folder)[MAX_PATH])
{
    using GetFolderPath = HRESULT(WINAPI*)(HWND, int, HANDLE, DWORD, char*);
    const aut::UniqueModule shell(::LoadLibraryA("shell32.dll"));
    if (!shell)
        return false;
    const FARPROC found = ::GetProcAddress(shell.get(), "SHGetFolderPathA");
    if (found == nullptr)
        return false;
    aut::UniqueHandle token;
    if (::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY | TOKEN_IMPERSONATE, token.put()) == FALSE)
        return false;
    const auto getFolderPath = reinterpret_cast<GetFolderPath>(reinterpret_cast<void*>(found));
    return getFolderPath(nullptr, CSIDL_APPDATA, token.get(), SHGFP_TYPE_CURRENT, folder) == S_OK;
}
} // namespace

void GetAUDataPath(String& path, int perUser)
{
    char folder[MAX_PATH] = "";
    if (perUser != 0 && userDataFolder(folder))
    {
        const char* const start = folder + std::strspn(folder, "\\");
        for (std::size_t end = std::strlen(folder); end > 0 && folder[end - 1] == '\\'; --end)
            folder[end - 1] = '\0';
        path = aut::wholeText({start, kUserDataFolder});
        return;
    }
    path = CRegAutoUpdate(true).GetDataPath();
}

bool IsEnoughDiskSpace(const char* path, unsigned long bytesNeeded)
{
    if (aut::isEmpty(path))
        return true; // no drive, so its free space cannot be read
    const char root[] = {*path, ':', '\\', '\0'};
    ULARGE_INTEGER available{};
    if (::GetDiskFreeSpaceExA(root, &available, nullptr, nullptr) == FALSE || available.QuadPart >= bytesNeeded)
        return true;
    char megabytes[16];
    aut::formatText(megabytes, sizeof megabytes, "%lu", bytesNeeded >> 20);
    result->Set(kNotEnoughDiskSpace, "Not enough disk space", "IsEnoughDiskSpace", megabytes, "MBytes needed", root);
    return false;
}

unsigned int Get7xAutoUpdateIniFile(char* buffer, unsigned int size)
{
    if (buffer == nullptr || size == 0)
        return 0;
    *buffer = '\0';
    constexpr unsigned int kReserved = sizeof kIniFile; // the name and one byte
    if (size <= kReserved)
        return 0;
    const UINT length = ::GetWindowsDirectoryA(buffer, size - kReserved);
    if (length == 0 || length >= size - kReserved) // the latter is the size that would have been needed
    {
        *buffer = '\0';
        return 0;
    }
    aut::appendText(buffer, size, kIniFile);
    return static_cast<unsigned int>(std::strlen(buffer));
}

void GetDataFilePath(char* folder, char* fileName, const char* host, const char* certificateId, const char* product,
                     const char* component)
{
    if (folder != nullptr && !aut::formatText(folder, MAX_PATH, "%s\\%s\\%s", CRegAutoUpdate(true).GetDataPath(),
                                              aut::orEmpty(product), aut::orEmpty(host)))
        *folder = '\0';
    if (fileName != nullptr)
    {
        const CRegDataCaching entry(host, certificateId, product, component, true);
        const char* const name = entry.GetEntryName();
        const bool isNamed = *name != '\0' || (aut::isEmpty(certificateId) && aut::isEmpty(component));
        if (!isNamed || !aut::formatText(fileName, MAX_PATH, "%s.dat", name))
            *fileName = '\0';
    }
}
