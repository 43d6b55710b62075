#ifndef AUTOOLS_FILETRANSFER_SOURCE_H
#define AUTOOLS_FILETRANSFER_SOURCE_H

#include "filetransfer/FileTransfer.h"
#include "filetransfer/Url.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

namespace filetransfer
{
/// What one attempt ended with. `status` is 0 or what `Download` is to return; `mayPass` says that the same attempt may
/// succeed a moment later.
struct Outcome
{
    int status = 0;
    std::uint32_t systemError = 0;
    bool mayPass = false;

    bool good() const noexcept { return status == 0; }
};

/// Who logs on and how the system is to be used; shared by all attempts of a transfer.
struct Request
{
    Url url;
    ConnectionParams params;
    bool useProxy = true;
    /// The server as it is to be asked without WinInet; set once it has answered WinInet with a body without a length.
    std::optional<Url> direct;
    /// Set when that is not possible: ask for an answer that is not in chunks.
    bool avoidChunks = false;
};

/// One attempt at a body: opened once, read to its end, destroyed. Not thread-safe.
class Source
{
public:
    Source() = default;
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    virtual ~Source() = default;

    [[nodiscard]] virtual Outcome open() = 0;
    /// `got` starts at 0; still 0 with a good outcome is the end of what comes.
    [[nodiscard]] virtual Outcome read(char* into, std::uint32_t bytes, std::uint32_t& got) = 0;
    /// After the end: whether the `received` bytes are the whole body.
    [[nodiscard]] virtual Outcome confirmWhole(std::uint64_t received) = 0;

    /// The length that was announced, when one was.
    std::optional<std::uint64_t> announcedLength() const noexcept { return m_announcedLength; }
    std::uint32_t httpStatus() const noexcept { return m_httpStatus; }

protected:
    std::optional<std::uint64_t> m_announcedLength;
    std::uint32_t m_httpStatus = 0;
};

/// `request` is borrowed until the source is destroyed. Throws std::bad_alloc.
std::unique_ptr<Source> makeSource(Request& request);
std::unique_ptr<Source> makeHttpSource(Request& request);
std::unique_ptr<Source> makeDirectHttpSource(Request& request);
std::unique_ptr<Source> makeFtpSource(Request& request);
std::unique_ptr<Source> makeFileSource(Request& request);
} // namespace filetransfer

#endif
