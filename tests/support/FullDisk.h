#ifndef AUTOOLS_TESTS_SUPPORT_FULLDISK_H
#define AUTOOLS_TESTS_SUPPORT_FULLDISK_H

#include <string>

namespace auttest
{
/// While it lives, `name` in the folder is a file that opens for writing and has no room for a single byte.
class FullDiskFile
{
public:
    FullDiskFile(const std::string& folder, const std::string& name);
    FullDiskFile(const FullDiskFile&) = delete;
    FullDiskFile& operator=(const FullDiskFile&) = delete;
    ~FullDiskFile();

    /// False where there is no such file: under real Windows. The test has to be skipped then.
    bool isThere() const;

private:
    const std::string m_folder;
    const std::string m_name;
};
} // namespace auttest

#endif
