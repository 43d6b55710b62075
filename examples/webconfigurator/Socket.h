#ifndef AUTOOLS_WEBCONFIGURATOR_SOCKET_H
#define AUTOOLS_WEBCONFIGURATOR_SOCKET_H

#include <chrono>
#include <string>
#include <string_view>
#include <winsock2.h>

namespace webconf_sample
{
/// Raised once, when a server ends; ends every wait of the sockets that know it, on any thread. (Shutting a socket down
/// from another thread does not end a blocked call on every system.)
class StopSignal
{
public:
    /// Throws std::runtime_error.
    StopSignal();
    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;
    ~StopSignal();

    void raise() const noexcept;
    bool raised() const noexcept;
    /// True when the whole time passed, false when the signal was raised.
    bool wait(std::chrono::milliseconds time) const noexcept;
    /// Readable once the signal was raised.
    SOCKET socket() const noexcept { return m_socket; }

private:
    SOCKET m_socket; // a datagram socket that sends to itself
};

/// One TCP socket that the servers of this folder and of the tests use. Move-only; closes itself. Calls wait until they
/// are done, the peer is gone or the signal was raised; a signal that was given is borrowed.
class Socket
{
public:
    Socket() noexcept = default;
    Socket(Socket&& other) noexcept;
    Socket& operator=(Socket&& other) noexcept;
    ~Socket() { close(); }

    /// Listens on 127.0.0.1 only. `port` 0 takes a free one. Throws std::runtime_error.
    static Socket listen(unsigned short port, const StopSignal* stop = nullptr, int backlog = SOMAXCONN);
    /// To 127.0.0.1. Throws std::runtime_error.
    static Socket connect(unsigned short port, const StopSignal* stop = nullptr);

    /// An empty socket once the signal was raised.
    Socket accept() const noexcept;
    unsigned short port() const noexcept;

    /// False when the peer no longer takes bytes.
    bool send(std::string_view bytes) const noexcept;
    /// What came, at most `size` bytes; empty at the end and on failure.
    std::string receive(std::size_t size) const;
    /// Discards what comes until the peer closes.
    void drain() const noexcept;

    /// Announces the end and waits for the peer's, so that bytes it has not read yet do not turn the end into a reset.
    void closeGently() noexcept;
    /// Closes with a reset instead of an orderly end.
    void reset() noexcept;
    void close() noexcept;

    explicit operator bool() const noexcept { return m_socket != INVALID_SOCKET; }

private:
    Socket(SOCKET owned, const StopSignal* stop) noexcept;

    enum class Wish
    {
        read,
        write
    };
    bool waitFor(Wish wish) const noexcept;

    SOCKET m_socket = INVALID_SOCKET;
    const StopSignal* m_stop = nullptr;
};
} // namespace webconf_sample

#endif
