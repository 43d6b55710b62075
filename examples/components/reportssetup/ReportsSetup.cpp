// ReportsSetup.exe: an installer as a product may bring its own. It understands the client's switches /AU_INSTALL and
// /AU_REMOVE, asks nothing, chooses the product's folder and says in the registry where that is.
//
// Exit codes: 0 done, 1 failed, 2 called with anything else.

#include <windows.h>

#include <cstdlib>
#include <fstream>
#include <string>

namespace
{
constexpr char kKey[] = "Software\\Velmora\\Reports";

std::string productFolder()
{
    const char* const programs = std::getenv("ProgramFiles");
    return std::string(programs != nullptr ? programs : "C:\\Program Files") + "\\Velmora Reports";
}

bool install()
{
    const std::string folder = productFolder();
    if (!::CreateDirectoryA(folder.c_str(), nullptr) && ::GetLastError() != ERROR_ALREADY_EXISTS)
        return false;
    std::ofstream file(folder + "\\reports.txt", std::ios::trunc);
    file << "Reports 2.4.3\n";
    file.close();
    return !file.fail() && ::RegSetKeyValueA(HKEY_LOCAL_MACHINE, kKey, "InstallDir", REG_SZ, folder.c_str(),
                                             static_cast<DWORD>(folder.size() + 1)) == ERROR_SUCCESS;
}

bool remove()
{
    const std::string folder = productFolder();
    const bool fileGone = ::DeleteFileA((folder + "\\reports.txt").c_str()) || ::GetLastError() == ERROR_FILE_NOT_FOUND;
    const LSTATUS key = ::RegDeleteTreeA(HKEY_LOCAL_MACHINE, kKey);
    ::RemoveDirectoryA(folder.c_str()); // it stays while others have something there
    return fileGone && (key == ERROR_SUCCESS || key == ERROR_FILE_NOT_FOUND);
}
} // namespace

int main(int argc, char** argv)
{
    const std::string wish = argc == 2 ? argv[1] : "";
    if (wish == "/AU_INSTALL")
        return install() ? 0 : 1;
    if (wish == "/AU_REMOVE")
        return remove() ? 0 : 1;
    return 2;
}
