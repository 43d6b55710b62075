#include "platform/FileReplacement.h"

#include "platform/BoundedText.h"
#include "platform/UniqueResource.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace aut
{
namespace
{
constexpr char kPrefix[] = "dat";
constexpr std::size_t kNameSize = 32;
std::atomic<unsigned int> g_number{0}; ///< of the replacements of this process

/// A process that may not be opened is there all the same.
bool isRunning(DWORD processId)
{
    const UniqueHandle process(::OpenProcess(SYNCHRONIZE, FALSE, processId));
    if (!process)
        return ::GetLastError() != ERROR_INVALID_PARAMETER;
    return ::WaitForSingleObject(process.get(), 0) == WAIT_TIMEOUT;
}

/// False when it does not fit.
bool formatName(char* name, std::size_t size, unsigned long processId, unsigned int number)
{
    return formatText(name, size, "%s%08lx-%04x.tmp", kPrefix, processId, number & 0xFFFF);
}

/// The process that makes a temporary file of this name; 0 when it is no name of ours. Other programs' files may lie in
/// the same folder: all of the name must be as we make it.
DWORD writerOf(const char* name)
{
    char* end = nullptr;
    const unsigned long processId = std::strtoul(name + sizeof kPrefix - 1, &end, 16);
    char expected[kNameSize];
    const bool isOurs = *end == '-' &&
                        formatName(expected, sizeof expected, processId,
                                   static_cast<unsigned int>(std::strtoul(end + 1, nullptr, 16))) &&
                        ::_stricmp(name, expected) == 0;
    return isOurs ? processId : 0;
}

/// Deletes what processes that were killed have left in the folder.
void removeLeftovers(const std::string& folder)
{
    WIN32_FIND_DATAA found{};
    const UniqueFind search(::FindFirstFileA((folder + kPrefix + "*-*.tmp").c_str(), &found));
    for (bool more = static_cast<bool>(search); more; more = ::FindNextFileA(search.get(), &found) != FALSE)
    {
        const DWORD writer = writerOf(found.cFileName);
        if (writer == 0 || isRunning(writer))
            continue;
        const std::string path = folder + found.cFileName;
        ::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_NORMAL); // it may be the copy of a read-only file
        ::DeleteFileA(path.c_str());
    }
}

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
    if (folder.empty())
    {
        ::SetLastError(ERROR_PATH_NOT_FOUND);
        return;
    }
    removeLeftovers(folder);
    char name[kNameSize] = "";
    formatName(name, sizeof name, ::GetCurrentProcessId(), ++g_number);
    if (!formatText(m_temporary, sizeof m_temporary, "%s%s", folder.c_str(), name))
    {
        m_temporary[0] = '\0';
        ::SetLastError(ERROR_FILENAME_EXCED_RANGE);
    }
    else if (!openForWriting(m_temporary, CREATE_ALWAYS))
        m_temporary[0] = '\0';
}

FileReplacement::~FileReplacement()
{
    if (m_temporary[0] == '\0')
        return;
    const DWORD saved = ::GetLastError();
    if (isReadOnly(m_temporary))
        ::SetFileAttributesA(m_temporary, FILE_ATTRIBUTE_NORMAL);
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
    return moveIntoPlace();
}

bool FileReplacement::moveIntoPlace()
{
    if (!::MoveFileExA(m_temporary, m_path, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return false;
    m_temporary[0] = '\0';
    return true;
}
} // namespace aut
