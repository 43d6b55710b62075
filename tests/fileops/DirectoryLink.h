#ifndef AUTOOLS_TESTS_FILEOPS_DIRECTORYLINK_H
#define AUTOOLS_TESTS_FILEOPS_DIRECTORYLINK_H

#include <string>

namespace auttest
{
/// Makes `link` a link to the directory `target`, which exists: a junction, or under Wine the symbolic link that it
/// shows as one. Fails the running test when it cannot.
///
/// Wine's RemoveDirectory takes such a link for its target. Those of the tests hold a file and so survive it.
void makeLink(const std::string& link, const std::string& target);

/// Removes a link itself, as Windows does; false when it cannot.
bool removeLink(const std::string& link);

/// The path of something on C: as it is seen through another drive letter; "" where there is none.
std::string onAnotherDrive(const std::string& path);

/// The same as a path of a share, which begins with two backslashes and a name; "" where there is none.
std::string onAShare(const std::string& path);
} // namespace auttest

#endif
