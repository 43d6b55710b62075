#include "foundation/LogFile.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace aut
{
namespace
{
constexpr DWORD kRetryEveryMs = 1;
constexpr std::size_t kTailBytes = 64; ///< enough for the closing tag and some blank lines behind it

/// The position is set apart: given with the reading or writing, it may cost a message to the system's server each.
bool seek(const UniqueFile& file, std::uint64_t offset)
{
    LARGE_INTEGER position{};
    position.QuadPart = static_cast<LONGLONG>(offset);
    return ::SetFilePointerEx(file.get(), position, nullptr, FILE_BEGIN) != FALSE;
}

bool isHeldByAnother(DWORD error) { return error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION; }
} // namespace

/// The end of the file and where the next event goes.
struct LogFile::Tail
{
    std::uint64_t start = 0; ///< offset of `bytes` in the file
    char bytes[kTailBytes] = {};
    std::size_t length = 0;
    std::uint64_t insertAt = 0;
    bool endsInLine = false; ///< the last line has no end of its own
};

bool LogFile::open(const char* path, unsigned int patienceMs)
{
    const ULONGLONG start = ::GetTickCount64();
    for (;;)
    {
        const DWORD error = tryOpen(path);
        if (!isHeldByAnother(error) || ::GetTickCount64() - start >= patienceMs)
            return error == ERROR_SUCCESS;
        ::Sleep(kRetryEveryMs);
    }
}

DWORD LogFile::tryOpen(const char* path)
{
    // Other writers are kept out; readers never, nor a process that moves the file aside as an archive. Opening or
    // creating in one step leaves no moment in which two processes could both find the file missing.
    m_file.reset(::CreateFileA(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                               OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!m_file)
        return ::GetLastError();
    LARGE_INTEGER bytes{};
    if (::GetFileSizeEx(m_file.get(), &bytes) == FALSE)
    {
        const DWORD error = ::GetLastError();
        close(); // taken for empty, a file would be overwritten
        return error;
    }
    m_size = static_cast<std::uint64_t>(bytes.QuadPart);
    return ERROR_SUCCESS;
}

bool LogFile::insert(std::string lines)
{
    // A file whose end cannot be read (another program holds a lock on those bytes, a network drive fails) must not get
    // a second closing tag behind it: the event is lost, the file stays whole.
    Tail tail;
    if (!readTail(tail))
        return false;
    if (tail.endsInLine)
        lines.insert(0, "\r\n");
    lines += kLogClosingTag;
    if (writeAt(tail.insertAt, lines.data(), lines.size()))
        return true;
    restore(tail);
    return false;
}

bool LogFile::readTail(Tail& tail) const
{
    tail.start = m_size - std::min<std::uint64_t>(m_size, kTailBytes);
    tail.insertAt = m_size;
    tail.length = static_cast<std::size_t>(m_size - tail.start);
    if (tail.length == 0)
        return true;
    DWORD read = 0;
    if (!seek(m_file, tail.start) ||
        ::ReadFile(m_file.get(), tail.bytes, static_cast<DWORD>(tail.length), &read, nullptr) == FALSE ||
        read != tail.length)
        return false;

    // Normally the tag is the last 18 bytes. A file that passed through an editor may end in other line ends. One that
    // does not end in the tag at all was cut off: the event then goes behind everything, on a line of its own,
    // because whatever stands there is someone's event and is never overwritten.
    const std::string_view bytes(tail.bytes, tail.length);
    const std::string_view tag(kLogClosingTag, std::strlen(kLogClosingTag) - 2);
    const std::size_t tagAt = bytes.rfind(tag);
    const bool endsInTag = tagAt != std::string_view::npos &&
                           bytes.find_first_not_of(" \t\r\n", tagAt + tag.size()) == std::string_view::npos;
    if (endsInTag)
        tail.insertAt = tail.start + tagAt;
    else
        tail.endsInLine = bytes.back() != '\n';
    return true;
}

bool LogFile::writeAt(std::uint64_t offset, const char* data, std::size_t length)
{
    DWORD written = 0;
    return seek(m_file, offset) &&
           ::WriteFile(m_file.get(), data, static_cast<DWORD>(length), &written, nullptr) != FALSE && written == length;
}

void LogFile::restore(const Tail& tail)
{
    // Overwriting what is already there needs no new room on the disk.
    if (tail.length > 0)
        writeAt(tail.start, tail.bytes, tail.length);
    if (seek(m_file, m_size))
        ::SetEndOfFile(m_file.get());
}
} // namespace aut
