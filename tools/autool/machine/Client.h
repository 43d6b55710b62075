#ifndef AUTOOL_MACHINE_CLIENT_H
#define AUTOOL_MACHINE_CLIENT_H

#include <windows.h>

#include <string>
#include <vector>

namespace autool
{
/// Where the client says that it lives; all texts in UTF-8, "" for what is not set.
struct ClientFolders
{
    bool isPresent = false; ///< the client's registry key can be read
    std::string path;
    std::string data;
    std::string download;
    std::string components;
    std::string maker;   ///< of the maker's products
    std::string kernel;  ///< of the client's own component; "" unless all its parts are set
    std::string userLog; ///< of the log of programs that run as this user
};
ClientFolders readClientFolders();

/// Whether `path` is `folder` or lies below it; never for a drive's root or an empty folder.
bool isBelow(const std::wstring& path, const std::wstring& folder);
/// Without "\" at the end; "" for a drive's root.
std::wstring properFolder(std::wstring folder);

struct FileEntry
{
    std::string name; ///< relative to the folder that was asked for
    unsigned __int64 size = 0;
    __int64 written = 0; ///< seconds since 1970
};
/// The files of a folder by name whose name matches (`*` and `?`); with those of its folders when `deep`. Links to
/// other folders are not followed.
std::vector<FileEntry> filesOf(const std::string& folder, const std::string& pattern, bool deep = false);
bool isFile(const std::string& path);
bool isFolder(const std::string& path);

/// Seconds since 1970.
__int64 secondsOf(const FILETIME& time);
/// "Access is denied. (5)"
std::string systemError(unsigned long error);
/// "3 days", "4 min"; "in 2 h" for what lies ahead.
std::string ageText(__int64 seconds);
/// "512 bytes", "1.5 MB".
std::string sizeText(unsigned __int64 bytes);
} // namespace autool

#endif
