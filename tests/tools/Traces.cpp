#include "tests/tools/Traces.h"

#include "tests/catalogue/DecisionFixture.h"
#include "tests/support/LogFile.h"
#include "tests/support/TestFolder.h"

#include <algorithm>
#include <filesystem>

namespace auttest
{
namespace
{
void addTree(std::vector<std::string>& lines, const char* path)
{
    const Registry registry(HKEY_LOCAL_MACHINE, path);
    lines.push_back(std::string(path) + (registry.keyExists("") ? " is there" : " is missing"));
    if (!registry.keyExists(""))
        return;
    const std::vector<std::string> below = snapshot(registry);
    lines.insert(lines.end(), below.begin(), below.end());
}

void addFolder(std::vector<std::string>& lines, const std::string& folder)
{
    std::vector<std::string> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, error))
    {
        const std::string path = entry.path().string();
        std::string line = path + " " + std::to_string(entry.last_write_time(error).time_since_epoch().count());
        if (entry.is_regular_file(error))
            line += " " + std::to_string(entry.file_size(error)) + " " +
                    std::to_string(std::hash<std::string>()(readFile(path)));
        files.push_back(line);
    }
    std::sort(files.begin(), files.end());
    lines.insert(lines.end(), files.begin(), files.end());
}
} // namespace

std::string userFolder()
{
    const std::string log = LogFile::ownPath(); // ...\Velmora\Automatic Update Data\<file>
    std::string folder = log;
    for (int i = 0; i < 3; ++i)
        folder = folder.substr(0, folder.find_last_of('\\'));
    return folder;
}

Traces::Traces(const std::vector<std::string>& folders)
{
    for (const char* const path : {"Software\\Velmora", "Software\\Wow6432Node\\Velmora",
                                   "Software\\Microsoft\\Windows\\CurrentVersion\\SharedDLLs",
                                   "Software\\Microsoft\\Windows\\CurrentVersion\\RunServicesOnce",
                                   "System\\CurrentControlSet\\Control\\Session Manager"})
        addTree(m_lines, path);
    for (const std::string& folder : folders)
        addFolder(m_lines, folder);
}

std::string Traces::differenceTo(const Traces& other) const
{
    for (std::size_t i = 0; i < std::max(m_lines.size(), other.m_lines.size()); ++i)
    {
        const std::string before = i < m_lines.size() ? m_lines[i] : "(nothing)";
        const std::string after = i < other.m_lines.size() ? other.m_lines[i] : "(nothing)";
        if (before != after)
            return before + "\n -> " + after;
    }
    return "";
}
} // namespace auttest
