#ifndef AUTOOLS_FILEOPS_PROGRAMSEARCH_H
#define AUTOOLS_FILEOPS_PROGRAMSEARCH_H

#include <cstddef>
#include <optional>
#include <string>

namespace aut
{
// These throw when memory runs out.

/// A full path, and where its last component begins (its end, when it names a folder).
struct FullPath
{
    std::string text;
    std::size_t nameAt = 0;

    bool hasName() const { return nameAt < text.size(); }
    std::string folder() const { return text.substr(0, nameAt); }
};
/// Counts a relative path from the current directory. Empty when the system makes no path of it.
FullPath fullPathOf(const std::string& path);

/// Finds the file that a program's name stands for and gives its full path. A name with a folder or drive is looked for
/// there only, a bare one in the current directory and then in the folders of PATH. A name without extension stands for
/// .com, .exe, .bat and .cmd, in this order, and then for itself.
std::optional<std::string> findProgram(const std::string& name);
} // namespace aut

#endif
