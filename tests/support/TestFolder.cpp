#include "tests/support/TestFolder.h"

#include "platform/UniqueResource.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <fstream>
#include <sstream>
#include <vector>

namespace auttest
{
namespace
{
void makeFolders(const std::string& path)
{
    for (std::size_t at = path.find('\\', 3); at != std::string::npos; at = path.find('\\', at + 1))
        ::CreateDirectoryA(path.substr(0, at).c_str(), nullptr);
    ::CreateDirectoryA(path.c_str(), nullptr);
    EXPECT_TRUE(fileExists(path)) << "no folder " << path;
}

/// The names below a folder, gathered before anything is deleted, so that the search is not disturbed.
std::vector<std::string> childrenOf(const std::string& folder)
{
    std::vector<std::string> children;
    WIN32_FIND_DATAA found{};
    const aut::UniqueFind search(::FindFirstFileA((folder + "\\*").c_str(), &found));
    if (!search)
        return children;
    do
    {
        const std::string name = found.cFileName;
        if (name != "." && name != "..")
            children.push_back(folder + "\\" + name);
    } while (::FindNextFileA(search.get(), &found));
    return children;
}
} // namespace

TestFolder::TestFolder()
{
    static unsigned made = 0;
    m_path = tempPath() + "\\test folder " + std::to_string(::GetCurrentProcessId()) + "-" + std::to_string(++made);
    removeAll(m_path);
    makeFolders(m_path);
}

TestFolder::~TestFolder() { removeAll(m_path); }

std::string TestFolder::writeFile(std::string_view name, std::string_view bytes) const
{
    const std::string path = *this / name;
    makeFolders(path.substr(0, path.rfind('\\')));
    auttest::writeFile(path, bytes);
    return path;
}

std::string TestFolder::readFile(std::string_view name) const { return auttest::readFile(*this / name); }

bool TestFolder::exists(std::string_view name) const { return fileExists(*this / name); }

std::string TestFolder::makeFolder(std::string_view name) const
{
    const std::string path = *this / name;
    makeFolders(path);
    return path;
}

void writeFile(const std::string& path, std::string_view bytes)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    EXPECT_TRUE(file.good()) << "cannot write " << path;
}

std::string readFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << "cannot read " << path;
    std::ostringstream bytes;
    bytes << file.rdbuf(); // in large pieces
    return bytes.str();
}

bool fileExists(const std::string& path) { return ::GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

void removeAll(const std::string& path)
{
    const DWORD attributes = ::GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return;
    ::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
    {
        EXPECT_TRUE(::DeleteFileA(path.c_str())) << "cannot delete " << path << ", error " << ::GetLastError();
        return;
    }
    for (const std::string& child : childrenOf(path))
        removeAll(child);
    EXPECT_TRUE(::RemoveDirectoryA(path.c_str())) << "cannot delete " << path << ", error " << ::GetLastError();
}

std::string tempPath()
{
    char path[MAX_PATH + 1];
    const DWORD length = ::GetTempPathA(sizeof path, path);
    EXPECT_NE(0u, length);
    return {path, length > 0 ? length - 1 : 0};
}
} // namespace auttest
