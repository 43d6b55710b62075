#include "fileops/ProgramSearch.h"

#include "platform/QueriedText.h"

#include <windows.h>

#include <algorithm>

namespace aut
{
namespace
{
bool isFile(const std::string& path)
{
    const DWORD attributes = ::GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

/// The program at this very path, with or without the extension it needs.
std::optional<std::string> programAt(const FullPath& path)
{
    if (!path.hasName())
        return std::nullopt;
    if (path.text.find('.', path.nameAt) == std::string::npos)
        for (const char* const extension : {".com", ".exe", ".bat", ".cmd"})
            if (isFile(path.text + extension))
                return path.text + extension;
    return isFile(path.text) ? std::optional<std::string>(path.text) : std::nullopt;
}

std::string searchPath()
{
    return queriedText<char>([](char* text, DWORD size) { return ::GetEnvironmentVariableA("PATH", text, size); });
}
} // namespace

FullPath fullPathOf(const std::string& path)
{
    FullPath full;
    full.text = queriedText<char>(
        [&](char* text, DWORD size)
        {
            // The system finds the name: in some code pages a backslash is the second half of a letter.
            char* name = nullptr;
            const DWORD length = ::GetFullPathNameA(path.c_str(), size, text, &name);
            full.nameAt = name != nullptr ? static_cast<std::size_t>(name - text) : length;
            return length;
        });
    return full;
}

std::optional<std::string> findProgram(const std::string& name)
{
    if (name.empty())
        return std::nullopt;
    std::optional<std::string> found = programAt(fullPathOf(name));
    if (found || name.find_first_of("\\/:") != std::string::npos)
        return found;

    const std::string folders = searchPath();
    for (std::size_t begin = 0; begin < folders.size() && !found;)
    {
        const std::size_t end = std::min(folders.find(';', begin), folders.size());
        std::string folder = folders.substr(begin, end - begin);
        folder.erase(std::remove(folder.begin(), folder.end(), '"'), folder.end()); // as some set-ups write them
        if (!folder.empty())
            found = programAt(fullPathOf(folder + "\\" + name));
        begin = end + 1;
    }
    return found;
}
} // namespace aut
