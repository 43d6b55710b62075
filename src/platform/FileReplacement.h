#ifndef AUTOOLS_PLATFORM_FILEREPLACEMENT_H
#define AUTOOLS_PLATFORM_FILEREPLACEMENT_H

#include <windows.h>

#include <cstddef>

namespace aut
{
/// Replaces a file whole or not at all: what is to come lies beside it under a temporary name until `commit`, and is
/// deleted when that never happens or fails. A process that is killed meanwhile leaves the temporary file, which has
/// its number in the name ("dat000001c4-0007.tmp", hexadecimal): the next replacement in the same folder deletes it.
///
/// Whatever gives false leaves GetLastError() set.
class FileReplacement
{
public:
    /// The file's folder must exist, and take files.
    explicit FileReplacement(const char* path);
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;
    ~FileReplacement();

    /// Where the new content is to be written; "" when there can be none.
    const char* temporary() const { return m_temporary; }
    /// Each writes it.
    bool write(const char* data, std::size_t size);
    bool copyFrom(const char* path);
    /// Brings it to the disk and then into the file's place. A read-only file is not replaced.
    bool commit();
    /// The second half of that alone.
    bool moveIntoPlace();

private:
    char m_path[MAX_PATH];
    char m_temporary[MAX_PATH];
};
} // namespace aut

#endif
