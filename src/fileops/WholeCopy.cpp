#include "fileops/WholeCopy.h"

namespace aut
{
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
} // namespace aut
