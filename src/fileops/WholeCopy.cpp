#include "fileops/WholeCopy.h"

#include "platform/FileReplacement.h"
#include "platform/UniqueResource.h"

#include <new>

namespace aut
{
namespace
{
/// A read-only file cannot be: nor could it be later, under its own name.
void flush(const char* path)
{
    const UniqueFile file(
        ::CreateFileA(path, GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file)
        ::FlushFileBuffers(file.get());
}
} // namespace

FileStamp::FileStamp(const char* path) { ::GetFileAttributesExA(path, GetFileExInfoStandard, &data); }

bool FileStamp::operator==(const FileStamp& other) const
{
    return data.nFileSizeHigh == other.data.nFileSizeHigh && data.nFileSizeLow == other.data.nFileSizeLow &&
           ::CompareFileTime(&data.ftLastWriteTime, &other.data.ftLastWriteTime) == 0;
}

bool copyWhole(const char* source, const char* target, const FileStamp& before)
{
    if (::CopyFileA(source, target, FALSE))
        return true;
    const DWORD error = ::GetLastError();
    if (!(FileStamp(target) == before))
        ::DeleteFileA(target);
    ::SetLastError(error);
    return false;
}

bool copyAside(const char* source, const char* target, const FileStamp& before)
try
{
    FileReplacement aside(target);
    if (*aside.temporary() == '\0')
        return copyWhole(source, target, before);
    ::DeleteFileA(aside.temporary()); // copied onto an existing file, some systems leave the attributes behind
    if (!::CopyFileA(source, aside.temporary(), FALSE))
        return false;
    flush(aside.temporary());
    return aside.moveIntoPlace() || copyWhole(source, target, before);
}
catch (const std::bad_alloc&)
{
    ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return false;
}
} // namespace aut
