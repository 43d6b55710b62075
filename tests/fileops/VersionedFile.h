#ifndef AUTOOLS_TESTS_FILEOPS_VERSIONEDFILE_H
#define AUTOOLS_TESTS_FILEOPS_VERSIONEDFILE_H

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace auttest
{
using Version = std::array<unsigned short, 4>;

/// What goes into a version resource. The strings stand in one table, under the first translation.
struct VersionResource
{
    Version file{};
    Version product{};
    /// Language and code page; without any there is no translation table.
    std::vector<std::pair<unsigned short, unsigned short>> translations{{0x0409, 1200}};
    std::vector<std::pair<std::wstring, std::wstring>> strings;
    bool cutTranslation = false; ///< the table holds half an entry
    bool fixedRecord = true;
};

/// Copies a real library without a version resource to `path`.
void writeBlankLibrary(const std::string& path);
/// The same, and gives it the resource.
void writeLibrary(const std::string& path, const VersionResource& resource);
void writeLibrary(const std::string& path, const Version& version);
/// A library whose resource the resource compiler made: file version 3.3.302.1, product version 4.0.1.2.
std::string compiledLibrary();

} // namespace auttest

#endif
