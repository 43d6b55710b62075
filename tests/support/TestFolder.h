#ifndef AUTOOLS_TESTS_SUPPORT_TESTFOLDER_H
#define AUTOOLS_TESTS_SUPPORT_TESTFOLDER_H

#include <string>
#include <string_view>

namespace auttest
{
/// A fresh folder under the temp path with a long name (no 8.3 form), deleted with all it holds at the end.
class TestFolder
{
public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    /// Without a backslash at the end.
    const std::string& path() const { return m_path; }
    /// The full path of `name` (may hold backslashes) in this folder; nothing is created.
    std::string operator/(std::string_view name) const { return m_path + "\\" + std::string(name); }

    /// Writes a file byte for byte, making missing folders, and returns its full path.
    std::string writeFile(std::string_view name, std::string_view bytes) const;
    std::string readFile(std::string_view name) const;
    bool exists(std::string_view name) const;
    /// Makes a folder and those above it, and returns its full path.
    std::string makeFolder(std::string_view name) const;

private:
    std::string m_path;
};

/// The same for any path. All of these fail the running test when they cannot do it.
void writeFile(const std::string& path, std::string_view bytes);
/// The file's bytes; "" (and a failed test) when it cannot be read.
std::string readFile(const std::string& path);
bool fileExists(const std::string& path);
/// Deletes a file or folder, read-only or not, with everything below it. One that is not there is fine.
void removeAll(const std::string& path);
/// The temp path, without a backslash at the end.
std::string tempPath();
} // namespace auttest

#endif
