#include "check/Check.h"
#include "common/Text.h"
#include "machine/Client.h"
#include "machine/Owners.h"
#include "machine/Xml.h"

#include <windows.h>

#include <cstdio>

namespace autool
{
namespace
{
struct Library
{
    const char* code;
    const char* file;
    const char* use;
    Verdict whenMissing;
    bool isClients; ///< looked for in the client's folders
    std::vector<const char*> functions;
};

const std::vector<Library>& libraries()
{
    static const std::vector<Library> kLibraries = {
        {"LIB-FILETRANSFER",
         "7xFileTransfer.dll",
         "nothing can be downloaded",
         Verdict::fail,
         true,
         {"NewFileTransfer", "Download", "DeleteFileTransfer", "NewConnectionParams", "DeleteConnectionParams"}},
        {"LIB-MAPFILE",
         "MapFile.dll",
         "components' map files cannot be read",
         Verdict::warn,
         true,
         {"MapFileLoad", "MapFileRelease", "MapFileGetParam", "MapFileCheck", "MapFileItemGetDestinationPath"}},
        {"LIB-PSAPI",
         "PSAPI.DLL",
         "processes cannot be found",
         Verdict::fail,
         false,
         {"EnumProcesses", "EnumProcessModules", "GetModuleFileNameExA", "GetModuleBaseNameA"}},
        {"LIB-USERENV",
         "Userenv.dll",
         "no program can be started as the user",
         Verdict::warn,
         false,
         {"CreateEnvironmentBlock", "DestroyEnvironmentBlock"}},
        {"LIB-WTSAPI32",
         "WtsApi32.dll",
         "terminal sessions are not told apart",
         Verdict::warn,
         false,
         {"WTSQuerySessionInformationA", "WTSFreeMemory", "WTSSendMessageA"}},
        {"LIB-VERSION",
         "Version.dll",
         "versions of files cannot be compared",
         Verdict::fail,
         false,
         {"GetFileVersionInfoSizeA", "GetFileVersionInfoA", "VerQueryValueA"}},
    };
    return kLibraries;
}

/// As the client loads its libraries, except that the current folder is never searched.
Module load(const Library& library, const ClientFolders& folders, DWORD& error)
{
    const auto from = [&](const std::string& folder)
    {
        Module module(
            ::LoadLibraryExW(toWide(folder + "\\" + library.file).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
        // A file that is there and does not load says more than one that is missing elsewhere.
        if (const DWORD last = ::GetLastError(); !module && (error == 0 || last != ERROR_MOD_NOT_FOUND))
            error = last;
        return module;
    };
    Module module;
    if (library.isClients && !folders.path.empty())
        module = from(folders.path);
    if (!module)
    {
        module = Module(::LoadLibraryExW(toWide(library.file).c_str(), nullptr,
                                         LOAD_LIBRARY_SEARCH_APPLICATION_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32));
        if (!module && error == 0)
            error = ::GetLastError();
    }
    if (!module && library.isClients && !folders.kernel.empty())
        module = from(folders.kernel);
    return module;
}

std::string pathOf(const Module& module)
{
    wchar_t path[MAX_PATH] = L"";
    ::GetModuleFileNameW(module.get(), path, MAX_PATH);
    return fromWide(path);
}

void check(CheckList& list, const Library& library, const ClientFolders& folders)
{
    list.begin(std::string("Loading ") + library.file);
    DWORD error = 0;
    const Module module = load(library, folders, error);
    if (!module)
    {
        list.add(library.code, library.whenMissing,
                 std::string(library.file) + " cannot be loaded, so " + library.use + ": " + systemError(error) + ".");
        return;
    }
    for (const char* const function : library.functions)
        if (::GetProcAddress(module.get(), function) == nullptr)
        {
            list.add(library.code, library.whenMissing,
                     pathOf(module) + " has no function " + function + ", so " + library.use + ".");
            return;
        }
    list.add(library.code, Verdict::pass, pathOf(module) + " loads.");
}

void checkXml(CheckList& list)
{
    list.begin("Creating an XML document");
    XmlDocument document;
    const HRESULT status = createXml(document);
    if (SUCCEEDED(status) && document != nullptr)
    {
        list.add("XML", Verdict::pass, "The system's XML parser (MSXML) is there.");
        return;
    }
    char number[16];
    std::snprintf(number, sizeof number, "0x%08lx", static_cast<unsigned long>(status));
    list.add("XML", Verdict::fail,
             std::string("The system's XML parser (MSXML) cannot be created (") + number + "): no answer can be read.");
}
} // namespace

void checkLibraries(CheckList& list)
{
    checkXml(list);
    const ClientFolders folders = readClientFolders();
    for (const Library& library : libraries())
        if (folders.isPresent || !library.isClients)
            check(list, library, folders);
}
} // namespace autool
