#include "platform/FileReplacement.h"

#include "platform/BoundedText.h"
#include "platform/UniqueResource.h"

#include <string>
#include <string_view>

namespace aut
{
namespace
{
UniqueFile openForWriting(const char* path, DWORD disposition)
{
    return UniqueFile(::CreateFileA(path, GENERIC_WRITE, 0, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool isReadOnly(const char* path)
{
    const DWORD attributes = ::GetFileAttributesA(path);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}
} // namespace

FileReplacement::FileReplacement(const char* path) : m_path{}, m_temporary{}
{
    if (!copyText(m_path, path))
    {
        ::SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return;
    }
    const std::string folder(m_path, std::string_view(m_path).find_last_of('\\') + 1);
    if (::GetTempFileNameA(folder.c_str(), "dat", 0, m_temporary) == 0)
        m_temporary[0] = '\0';
}

FileReplacement::~FileReplacement()
{
    if (m_temporary[0] == '\0')
        return;
    const DWORD saved = ::GetLastError();
    ::DeleteFileA(m_temporary);
    ::SetLastError(saved);
}

bool FileReplacement::write(const char* data, std::size_t size)
{
    const UniqueFile file = openForWriting(m_temporary, CREATE_ALWAYS);
    const DWORD count = static_cast<DWORD>(size);
    DWORD written = 0;
    return file && ::WriteFile(file.get(), data, count, &written, nullptr) && written == count;
}

bool FileReplacement::copyFrom(const char* path)
{
    return ::CopyFileA(path, m_temporary, FALSE) && ::SetFileAttributesA(m_temporary, FILE_ATTRIBUTE_NORMAL);
}

bool FileReplacement::commit()
{
    UniqueFile file = openForWriting(m_temporary, OPEN_EXISTING);
    if (!file || !::FlushFileBuffers(file.get()))
        return false;
    file.reset();
    // The move refuses it too, but not on every system.
    if (isReadOnly(m_path))
    {
        ::SetLastError(ERROR_ACCESS_DENIED);
        return false;
    }
    if (!::MoveFileExA(m_temporary, m_path, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return false;
    m_temporary[0] = '\0';
    return true;
}
} // namespace aut
