#include "filetransfer/Source.h"
#include "platform/UniqueResource.h"

#include <windows.h>

#include <algorithm>

namespace filetransfer
{
namespace
{
/// Failures of a file share or of a neighbour that holds the file for a moment.
constexpr DWORD kPassing[] = {ERROR_SHARING_VIOLATION, ERROR_LOCK_VIOLATION, ERROR_BAD_NETPATH,   ERROR_NETWORK_BUSY,
                              ERROR_NETNAME_DELETED,   ERROR_SEM_TIMEOUT,    ERROR_UNEXP_NET_ERR, ERROR_REM_NOT_LIST};

Outcome systemError(DWORD code) noexcept
{
    const bool passing = std::find(std::begin(kPassing), std::end(kPassing), code) != std::end(kPassing);
    return {kSystemErrorBase + static_cast<int>(code & 0xffff), code, passing};
}

class FileSource final : public Source
{
public:
    explicit FileSource(Request& request) : m_wanted(request) {}

    Outcome open() override
    {
        // Were the name that of a pipe, its server would learn who asks, but could not act in the caller's name.
        constexpr DWORD flags = FILE_FLAG_SEQUENTIAL_SCAN | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;
        m_file.reset(::CreateFileA(m_wanted.url.object.c_str(), GENERIC_READ,
                                   FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                   flags, nullptr));
        if (!m_file)
            return systemError(::GetLastError());
        if (::GetFileType(m_file.get()) != FILE_TYPE_DISK)
            return systemError(ERROR_BAD_FILE_TYPE); // "CON", "NUL", a pipe
        LARGE_INTEGER size{};
        if (!::GetFileSizeEx(m_file.get(), &size))
            return systemError(::GetLastError());
        m_announcedLength = static_cast<std::uint64_t>(size.QuadPart);
        return {};
    }

    Outcome read(char* into, std::uint32_t bytes, std::uint32_t& got) override
    {
        DWORD read = 0;
        if (!::ReadFile(m_file.get(), into, bytes, &read, nullptr))
            return systemError(::GetLastError());
        got = read;
        return {};
    }

    /// A file that grew meanwhile was read to its new end.
    Outcome confirmWhole(std::uint64_t received) override
    {
        return received < m_announcedLength.value_or(0) ? Outcome{kBodyCutOff, 0, true} : Outcome();
    }

private:
    Request& m_wanted;
    aut::UniqueFile m_file;
};
} // namespace

std::unique_ptr<Source> makeFileSource(Request& request) { return std::make_unique<FileSource>(request); }

std::unique_ptr<Source> makeSource(Request& request)
{
    switch (request.url.scheme)
    {
    case Scheme::file:
        return makeFileSource(request);
    case Scheme::ftp:
        return makeFtpSource(request);
    case Scheme::http:
    case Scheme::https:
        break;
    }
    return request.direct ? makeDirectHttpSource(request) : makeHttpSource(request);
}
} // namespace filetransfer
