#ifndef AUTOOLS_FILETRANSFER_CONNECTIONPROBE_H
#define AUTOOLS_FILETRANSFER_CONNECTIONPROBE_H

#include <winsock2.h>

#include <windows.h>
#include <wininet.h>

namespace filetransfer
{
/// A second handle to the connection under an HTTP request, to tell the end of a body from the loss of its connection:
/// WinInet reports both as "no more bytes" when the body is chunked. A body whose end was reported while the connection
/// still stands has had its last chunk, since nothing else could have told WinInet.
class ConnectionProbe
{
public:
    ConnectionProbe() noexcept = default;
    ConnectionProbe(const ConnectionProbe&) = delete;
    ConnectionProbe& operator=(const ConnectionProbe&) = delete;
    ~ConnectionProbe();

    /// Finds the connection of a request that has been answered. Without one (an answer from the cache, a system that
    /// does not tell) the probe stays empty.
    void attach(HINTERNET request) noexcept;
    /// True only if the server has certainly not closed the connection.
    [[nodiscard]] bool stillStands() const noexcept;
    /// Ends the connection when more bytes came than the answer announced, so that they cannot be taken for the answer
    /// to the next request on it.
    void dropUnreadBytes() const noexcept;

private:
    bool m_started = false;
    bool m_secure = false;
    SOCKET m_socket = INVALID_SOCKET;
};
} // namespace filetransfer

#endif
