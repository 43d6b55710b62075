// What the library looks up while it is loaded: the name of its process, the folder of the log, and the detail level.

#include <windows.h>

#include <psapi.h>
#include <shlobj.h>

#include <cstring>

namespace
{
template <typename Function> Function entry(HMODULE library, const char* name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(library, name)));
}

void nameOfProcess()
{
    const HMODULE status = ::LoadLibraryA("PSAPI.DLL");
    const HMODULE environment = ::LoadLibraryA("Userenv.dll");
    const auto enumModules = entry<BOOL(WINAPI*)(HANDLE, HMODULE*, DWORD, DWORD*)>(status, "EnumProcessModules");
    const auto fileName = entry<DWORD(WINAPI*)(HANDLE, HMODULE, char*, DWORD)>(status, "GetModuleFileNameExA");
    const HANDLE process = ::OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, TRUE, ::GetCurrentProcessId());
    HMODULE modules[100];
    DWORD bytes = 0;
    char name[MAX_PATH];
    enumModules(process, modules, sizeof modules, &bytes);
    fileName(process, modules[0], name, MAX_PATH);
    ::CloseHandle(process);
    ::FreeLibrary(environment);
    ::FreeLibrary(status);
}

void folderOfLog()
{
    const HMODULE shell = ::LoadLibraryA("shell32.dll");
    const auto getFolder = entry<HRESULT(WINAPI*)(HWND, int, HANDLE, DWORD, char*)>(shell, "SHGetFolderPathA");
    HANDLE token = nullptr;
    ::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY | TOKEN_IMPERSONATE, &token);
    char folder[2 * MAX_PATH];
    if (getFolder(nullptr, CSIDL_APPDATA, token, SHGFP_TYPE_CURRENT, folder) == S_OK)
    {
        std::strcat(folder, "\\Velmora\\Automatic Update Data");
        ::GetFileAttributesA(folder);
    }
    ::CloseHandle(token);
    ::FreeLibrary(shell);
}

void detailLevel()
{
    HKEY key = nullptr;
    if (::RegOpenKeyExA(HKEY_LOCAL_MACHINE, "Software\\Velmora\\7xAutoUpdate\\Config", 0, KEY_READ | KEY_WOW64_64KEY,
                        &key) != ERROR_SUCCESS)
        return;
    DWORD level = 0;
    DWORD size = sizeof level;
    ::RegQueryValueExA(key, "TestEnv", nullptr, nullptr, reinterpret_cast<BYTE*>(&level), &size);
    ::RegCloseKey(key);
}
} // namespace

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*)
{
    if (reason == DLL_PROCESS_ATTACH)
    {
        nameOfProcess();
        folderOfLog();
        detailLevel();
    }
    return TRUE;
}
