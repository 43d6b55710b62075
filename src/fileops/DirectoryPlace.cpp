#include "fileops/DirectoryPlace.h"

#include "fileops/FileState.h"
#include "platform/UniqueResource.h"

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

namespace aut
{
namespace
{
/// What no two directories have in common, as long as they exist.
struct Identity
{
    DWORD volume;
    std::uint64_t index;
};

bool operator==(const Identity& left, const Identity& right)
{
    return left.volume == right.volume && left.index == right.index;
}

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

std::optional<Identity> identityOf(const UniqueFile& directory)
{
    BY_HANDLE_FILE_INFORMATION information{};
    if (!directory || !::GetFileInformationByHandle(directory.get(), &information))
        return {};
    return Identity{information.dwVolumeSerialNumber,
                    std::uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow};
}

UniqueFile openDirectory(const std::string& path)
{
    return UniqueFile(
        ::CreateFileA(path.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

UniqueFile openDirectory(const std::wstring& path)
{
    return UniqueFile(
        ::CreateFileW(path.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

/// The system's own path to a directory, without links. Wide: it may have characters that the code page lacks.
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

/// Cuts the last component off; the backslash before it stays, without which "C:" would be a current folder. False when
/// nothing is left to cut.
template <typename Text> bool toParent(Text& path)
{
    const auto backslash = static_cast<typename Text::value_type>('\\');
    while (!path.empty() && path.back() == backslash)
        path.pop_back();
    const std::size_t last = path.rfind(backslash);
    if (last == Text::npos)
        return false;
    path.resize(last + 1);
    return true;
}

/// The path of a drive alone names that drive's current folder unless it ends with a backslash.
std::string withRoot(const char* path)
{
    std::string text(path);
    if (!text.empty() && text.back() == ':')
        text += '\\';
    return text;
}

UniqueFile openNearest(const char* path)
{
    std::string at = withRoot(path);
    while (!pathExists(at.c_str()) && toParent(at))
    {
    }
    return openDirectory(at);
}

/// By the texts alone, for directories that the system lets nobody open.
bool isPathWithin(const char* inner, const char* outer)
{
    const std::size_t length = std::strlen(outer);
    return _strnicmp(inner, outer, length) == 0 && (inner[length] == '\0' || inner[length] == '\\');
}

/// Whether `inner` is `outer` or lies in it.
bool isWithin(const char* inner, const char* outer)
{
    if (isPathWithin(inner, outer))
        return true;
    const auto sought = identityOf(openDirectory(withRoot(outer)));
    if (!sought)
        return false;
    std::wstring at = realPathOf(openNearest(inner));
    if (at.empty())
        return false;
    do
    {
        const auto found = identityOf(openDirectory(at));
        if (found && *found == *sought)
            return true;
    } while (toParent(at));
    return false;
}
} // namespace

bool isSameDirectory(const char* one, const char* other)
{
    const auto identity = identityOf(openDirectory(withRoot(one)));
    const auto otherIdentity = identityOf(openDirectory(withRoot(other)));
    if (!identity || !otherIdentity)
        return _stricmp(one, other) == 0;
    return *identity == *otherIdentity;
}

bool directoriesOverlap(const char* one, const char* other) { return isWithin(one, other) || isWithin(other, one); }
} // namespace aut
