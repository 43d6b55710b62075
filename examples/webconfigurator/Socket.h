#ifndef AUTOOLS_WEBCONFIGURATOR_SOCKET_H
#define AUTOOLS_WEBCONFIGURATOR_SOCKET_H

#include <string>
#include <string_view>
#include <winsock2.h>

namespace webconf_sample
{
/// One TCP socket that the servers of this folder and of the tests use. Move-only; closes itself. Everything blocks;
/// shutDown() from another thread ends what blocks.
class Socket
{
public:
    Socket() noexcept = default;
    explicit Socket(SOCKET owned) noexcept : m_socket(owned) {}
    Socket(Socket&& other) noexcept : m_socket(other.release()) {}
    Socket& operator=(Socket&& other) noexcept;
    ~Socket() { close(); }

    /// Listens on 127.0.0.1 only. `port` 0 takes a free one. Throws std::runtime_error.
    static Socket listen(unsigned short port, int backlog = SOMAXCONN);
    /// Throws std::runtime_error.
    static Socket connect(const std::string& host, unsigned short port);

    /// An empty socket once the listener was shut down.
    Socket accept() const noexcept;
    unsigned short port() const noexcept;

    /// False when the peer no longer takes bytes.
    bool send(std::string_view bytes) const noexcept;
    /// What came, at most `size` bytes; empty at the end and on failure.
    std::string receive(std::size_t size) const;
    /// Discards what comes until the peer closes or the socket is shut down.
    void drain() const noexcept;

    void shutDown() const noexcept;
    /// Announces the end and waits a moment for the peer's, so that its unread bytes do not turn the end into a reset.
    void closeGently() noexcept;
    /// Closes with a reset instead of an orderly end.
    void reset() noexcept;
    void close() noexcept;

    SOCKET get() const noexcept { return m_socket; }
    explicit operator bool() const noexcept { return m_socket != INVALID_SOCKET; }

private:
    SOCKET release() noexcept;

    SOCKET m_socket = INVALID_SOCKET;
};

/// Keeps Winsock up.
class Winsock
{
public:
    /// Throws std::runtime_error.
    Winsock();
    Winsock(const Winsock&) = delete;
    Winsock& operator=(const Winsock&) = delete;
    ~Winsock();
};
} // namespace webconf_sample

#endif
