#include "fileops/DirectoryPlace.h"

#include "fileops/FileState.h"
#include "platform/UniqueResource.h"

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <cwchar>
#include <optional>
#include <string>

namespace aut
{
namespace
{
UniqueFile openDirectory(const std::string& path)
{
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    return UniqueFile(
        ::CreateFileA(path.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

/// The system's own path to a directory, without links and in the disk's spelling. Wide: it may have characters that
/// the code page lacks.
std::wstring realPathOf(const UniqueFile& directory)
{
    std::wstring path(MAX_PATH, L'\0');
    DWORD length = ::GetFinalPathNameByHandleW(directory.get(), path.data(), static_cast<DWORD>(path.size()), 0);
    if (length > path.size())
    {
        path.resize(length);
        length = ::GetFinalPathNameByHandleW(directory.get(), path.data(), static_cast<DWORD>(path.size()), 0);
    }
    path.resize(length <= path.size() ? length : 0);
    return path;
}

/// What no two directories have in common as long as they exist.
struct Identity
{
    DWORD volume;
    std::uint64_t index;
};

std::optional<Identity> identityOf(const UniqueFile& directory)
{
    BY_HANDLE_FILE_INFORMATION information{};
    if (!directory || !::GetFileInformationByHandle(directory.get(), &information))
        return {};
    return Identity{information.dwVolumeSerialNumber,
                    std::uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow};
}

/// Cuts the last component off; the backslash before it stays, without which "C:" would be a current folder. False when
/// nothing is left to cut.
bool toParent(std::string& path)
{
    while (!path.empty() && path.back() == '\\')
        path.pop_back();
    const std::size_t last = path.rfind('\\');
    if (last == std::string::npos)
        return false;
    path.resize(last + 1);
    return true;
}

struct Place
{
    explicit Place(const char* directory) : path(directory)
    {
        if (!path.empty() && path.back() == ':')
            path += '\\';
        exists = pathExists(path.c_str());
        while (!pathExists(path.c_str()) && toParent(path))
        {
        }
        nearest = openDirectory(path);
        if (nearest)
            realPath = realPathOf(nearest);
    }

    std::string path; ///< of the directory or its nearest existing parent
    bool exists;
    UniqueFile nearest;
    std::wstring realPath; ///< empty when the system does not tell it
};

/// One path of a local disk can be compared with another; a share may be anything, a folder of this machine too.
bool isLocal(const std::wstring& realPath)
{
    constexpr wchar_t kLocal[] = L"\\\\?\\C:";
    return realPath.size() >= std::wcslen(kLocal) && realPath[5] == L':';
}

bool isPathWithin(const std::wstring& inner, const std::wstring& outer)
{
    const std::size_t length = outer.size();
    return inner.size() >= length && _wcsnicmp(inner.c_str(), outer.c_str(), length) == 0 &&
           (inner.size() == length || inner[length] == L'\\' || outer.back() == L'\\');
}

/// For comparing only.
std::wstring widened(const std::string& path) { return {path.begin(), path.end()}; }

/// Whether `inner` is `outer` or lies in it.
bool isWithin(const Place& inner, const Place& outer)
{
    if (!outer.exists)
        return false;
    if (isLocal(inner.realPath) && isLocal(outer.realPath))
        return isPathWithin(inner.realPath, outer.realPath);
    const auto sought = identityOf(outer.nearest);
    if (!sought)
        return isPathWithin(widened(inner.path), widened(outer.path));
    std::string at = inner.path;
    do
    {
        const auto found = identityOf(openDirectory(at));
        if (found && found->volume == sought->volume && found->index == sought->index)
            return true;
    } while (toParent(at));
    return false;
}
} // namespace

Placement placementOf(const char* source, const char* target)
{
    const Place from(source);
    const Place to(target);
    const bool isInside = isWithin(to, from);
    const bool isAround = isWithin(from, to);
    if (isInside && isAround)
        return Placement::Same;
    if (isInside)
        return Placement::Inside;
    return isAround ? Placement::Around : Placement::Apart;
}
} // namespace aut
