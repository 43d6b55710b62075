#include "fileops/RT_File.h"

#include "fileops/FileState.h"
#include "fileops/RT_Dir.h"
#include "foundation/EventLog.h"
#include "foundation/RT_RESULT.h"
#include "platform/KernelObjectSecurity.h"
#include "platform/UniqueResource.h"

#include <io.h>

#include <new>
#include <string>

namespace
{
constexpr unsigned int kReadSharedForReading = 0x20;
constexpr unsigned int kNotInheritable = 0x80;
constexpr int kMaxLineChars = 1024;

struct OpenRow
{
    unsigned int bits;
    DWORD mode;
    bool needsDirectory;
};

constexpr OpenRow kAccess[] = {
    {0, GENERIC_READ, false},
    {1, GENERIC_WRITE, true},
    {2, GENERIC_READ | GENERIC_WRITE, true},
};
// That sharing for writing creates the folder, too, is deliberate.
constexpr OpenRow kSharing[] = {
    {0x00, 0, false},
    {0x10, 0, false},
    {0x20, FILE_SHARE_READ, false},
    {0x30, FILE_SHARE_WRITE, true},
    {0x40, FILE_SHARE_READ | FILE_SHARE_WRITE, true},
};
constexpr OpenRow kCreation[] = {
    {0x0000, OPEN_EXISTING, false},
    {0x1000, CREATE_ALWAYS, true},
    {0x2000, OPEN_EXISTING, false},
    {0x3000, OPEN_ALWAYS, false},
};

template <std::size_t N> const OpenRow* findRow(const OpenRow (&rows)[N], unsigned int bits)
{
    for (const OpenRow& row : rows)
    {
        if (row.bits == bits)
            return &row;
    }
    return nullptr;
}
} // namespace

int RT_File::Open(unsigned int flags)
{
    Close();
    const OpenRow* const access = findRow(kAccess, flags & 0x3);
    const OpenRow* const sharing = findRow(kSharing, flags & 0x70);
    const OpenRow* const creation = findRow(kCreation, flags & 0x3000);
    if (access == nullptr || sharing == nullptr || creation == nullptr)
        return 0;

    if (access->needsDirectory || sharing->needsDirectory || creation->needsDirectory)
    {
        RT_Dir directory(m_path);
        if (!directory.IsExisting())
            directory.Create(); // when it fails, so does the opening
    }
    aut::OpenToEveryone security((flags & kNotInheritable) == 0);
    m_handle = ::CreateFileA(m_fullPath, access->mode, sharing->mode, security.get(), creation->mode,
                             FILE_ATTRIBUTE_NORMAL, nullptr);
    return aut::isOpen(m_handle) ? 1 : 0;
}

unsigned long RT_File::Read(void* buffer, int count)
{
    DWORD read = 0;
    if (!aut::isOpen(m_handle) || buffer == nullptr || count < 0)
        return 0;
    return ::ReadFile(m_handle, buffer, static_cast<DWORD>(count), &read, nullptr) ? read : 0;
}

bool RT_File::Write(void* data, int count)
{
    DWORD written = 0;
    if (!aut::isOpen(m_handle) || data == nullptr || count < 0)
        return false;
    return ::WriteFile(m_handle, data, static_cast<DWORD>(count), &written, nullptr) != FALSE;
}

bool RT_File::Write(const char* text)
{
    try
    {
        const String source(text);
        std::string converted;
        converted.reserve(2 * static_cast<std::size_t>(source.GetLength())); // room for nothing but line feeds
        for (const char* in = source; *in != '\0'; ++in)
        {
            if (*in == '\n')
                converted += '\r'; // also where one is already present
            converted += *in;
        }
        return Write(converted.data(), static_cast<int>(converted.size()));
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

int RT_File::ReadLine(char* buffer)
{
    if (buffer == nullptr)
        return 0;
    int length = 0;
    bool readAny = false;
    while (length < kMaxLineChars)
    {
        char c = '\0';
        if (Read(&c, 1) == 0)
            break;
        readAny = true;
        // A line that ends with both characters deliberately gives the line and then an empty one.
        if (c == '\0' || c == '\n' || c == '\r')
            break;
        buffer[length++] = c;
    }
    buffer[length] = '\0';
    return readAny ? 1 : 0;
}

unsigned long RT_File::Seek(unsigned long offset, unsigned long origin)
{
    if (!aut::isOpen(m_handle))
        return INVALID_SET_FILE_POINTER;
    return ::SetFilePointer(m_handle, static_cast<LONG>(offset), nullptr, origin);
}

unsigned long RT_File::SeekToEnd() { return aut::isOpen(m_handle) ? Seek(0, FILE_END) : 0; }

void RT_File::Flush()
{
    if (aut::isOpen(m_handle))
        ::FlushFileBuffers(m_handle);
}

void RT_File::Close()
{
    if (!aut::isOpen(m_handle))
        return;
    Flush();
    aut::UniqueFile(m_handle).reset();
    m_handle = nullptr;
}

unsigned long RT_File::GetLength()
{
    const bool opensItself = !aut::isOpen(m_handle);
    if (opensItself && !Open(kReadSharedForReading))
        return 0;
    BY_HANDLE_FILE_INFORMATION information{};
    const bool known = ::GetFileInformationByHandle(m_handle, &information) != FALSE;
    if (opensItself)
        Close();
    return known ? information.nFileSizeLow : 0;
}

bool RT_File::IsReadOnly()
{
    const DWORD attributes = ::GetFileAttributesA(m_fullPath);
    if (attributes == INVALID_FILE_ATTRIBUTES)
    {
        const long error = static_cast<long>(::GetLastError());
        result->Set(463, "File Not Found", "RT_File::IsReadOnly", "", "", error, m_fullPath);
        return false;
    }
    return (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

bool RT_File::RemoveReadOnlyAttribIfAny()
{
    if (!IsReadOnly())
        return true;
    if (::SetFileAttributesA(m_fullPath, FILE_ATTRIBUTE_NORMAL))
        return true;
    const long error = static_cast<long>(::GetLastError());
    result->Set(460, "Unable to set file attributes", "RT_File::RemoveReadOnlyAttribIfAny", "", "", error, m_fullPath);
    return false;
}

bool RT_File::IsFileLocked()
{
    // A missing file deliberately counts as locked.
    aut::OpenToEveryone security(true);
    const aut::UniqueFile trial(
        ::CreateFileA(m_fullPath, GENERIC_WRITE, 0, security.get(), OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return !trial;
}

bool RT_File::IsOverWriteable() { return RemoveReadOnlyAttribIfAny() && !IsFileLocked(); }

bool FlushFile(const char* path)
{
    if (path == nullptr || !aut::pathExists(path))
        return false;
    const aut::UniqueStdio file(std::fopen(path, "r+b"));
    if (file)
        ::_commit(::_fileno(file.get()));
    else
        Log(1, "RT_File::FlushFile : open failed (%s)", path);
    return true;
}
