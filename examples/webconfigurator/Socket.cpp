#include "webconfigurator/Socket.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace webconf_sample
{
namespace
{
constexpr std::size_t kLargestSendBytes = std::size_t{64} * 1024;

[[noreturn]] void fail(const char* what)
{
    throw std::runtime_error(std::string(what) + " failed with " + std::to_string(::WSAGetLastError()));
}

/// Winsock stays up from the first socket to the end of the process.
SOCKET newSocket(int type)
{
    static const int failure = []
    {
        WSADATA ignored;
        return ::WSAStartup(MAKEWORD(2, 2), &ignored);
    }();
    if (failure != 0)
        throw std::runtime_error("Winsock is not available");
    return ::socket(AF_INET, type, 0);
}

/// A loopback address as the socket calls take it.
struct Address
{
    explicit Address(unsigned short port = 0) noexcept
    {
        value.sin_family = AF_INET;
        value.sin_port = ::htons(port);
        value.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
    }
    sockaddr* get() noexcept { return reinterpret_cast<sockaddr*>(&value); }

    sockaddr_in value{};
    int size = sizeof(value);
};

/// FD_SET's own loop does not survive every compiler's warnings.
void add(fd_set& set, SOCKET socket) noexcept { set.fd_array[set.fd_count++] = socket; }
bool contains(fd_set& set, SOCKET socket) noexcept
{
    return std::find(set.fd_array, set.fd_array + set.fd_count, socket) != set.fd_array + set.fd_count;
}
} // namespace

StopSignal::StopSignal() : m_socket(newSocket(SOCK_DGRAM))
{
    Address address;
    if (m_socket == INVALID_SOCKET || ::bind(m_socket, address.get(), address.size) != 0 ||
        ::getsockname(m_socket, address.get(), &address.size) != 0 ||
        ::connect(m_socket, address.get(), address.size) != 0)
        fail("the stop signal");
}

StopSignal::~StopSignal() { ::closesocket(m_socket); }

void StopSignal::raise() const noexcept { ::send(m_socket, "x", 1, 0); }

bool StopSignal::raised() const noexcept { return !wait(std::chrono::milliseconds(0)); }

bool StopSignal::wait(std::chrono::milliseconds time) const noexcept
{
    fd_set readable;
    FD_ZERO(&readable);
    add(readable, m_socket);
    timeval limit{static_cast<long>(time.count() / 1000), static_cast<long>(time.count() % 1000 * 1000)};
    return ::select(0, &readable, nullptr, nullptr, &limit) == 0;
}

Socket::Socket(SOCKET owned, const StopSignal* stop) noexcept : m_socket(owned), m_stop(stop)
{
    if (m_socket == INVALID_SOCKET)
        return;
    u_long nonBlocking = 1;
    ::ioctlsocket(m_socket, static_cast<long>(FIONBIO), &nonBlocking);
    const BOOL atOnce = TRUE; // head and body are sent apart, and the body must not wait for the head's acknowledgement
    ::setsockopt(m_socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&atOnce), sizeof(atOnce));
}

Socket::Socket(Socket&& other) noexcept : m_socket(std::exchange(other.m_socket, INVALID_SOCKET)), m_stop(other.m_stop)
{
}

Socket& Socket::operator=(Socket&& other) noexcept
{
    if (this != &other)
    {
        close();
        m_socket = std::exchange(other.m_socket, INVALID_SOCKET);
        m_stop = other.m_stop;
    }
    return *this;
}

Socket Socket::listen(unsigned short port, const StopSignal* stop, int backlog)
{
    Socket listener(newSocket(SOCK_STREAM), stop);
    if (!listener)
        fail("socket");
    // Nobody else may take the port over, and a port that is in use is an error.
    const BOOL alone = TRUE;
    ::setsockopt(listener.m_socket, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&alone),
                 sizeof(alone));
    Address address(port);
    if (::bind(listener.m_socket, address.get(), address.size) != 0)
        fail("bind");
    if (::listen(listener.m_socket, backlog) != 0)
        fail("listen");
    return listener;
}

Socket Socket::connect(unsigned short port, const StopSignal* stop)
{
    Address address(port);
    const SOCKET socket = newSocket(SOCK_STREAM);
    if (socket == INVALID_SOCKET)
        fail("socket");
    const bool connected = ::connect(socket, address.get(), address.size) == 0;
    Socket connection(socket, stop);
    if (!connected)
        fail("connect");
    return connection;
}

bool Socket::waitFor(Wish wish) const noexcept
{
    fd_set readable;
    fd_set writable;
    FD_ZERO(&readable);
    FD_ZERO(&writable);
    add(wish == Wish::read ? readable : writable, m_socket);
    if (m_stop != nullptr)
        add(readable, m_stop->socket());
    return ::select(0, &readable, &writable, nullptr, nullptr) > 0 &&
           (m_stop == nullptr || !contains(readable, m_stop->socket()));
}

Socket Socket::accept() const noexcept
{
    return waitFor(Wish::read) ? Socket(::accept(m_socket, nullptr, nullptr), m_stop) : Socket();
}

unsigned short Socket::port() const noexcept
{
    Address address;
    return ::getsockname(m_socket, address.get(), &address.size) == 0 ? ::ntohs(address.value.sin_port)
                                                                      : static_cast<unsigned short>(0);
}

bool Socket::send(std::string_view bytes) const noexcept
{
    while (!bytes.empty())
    {
        if (!waitFor(Wish::write))
            return false;
        const auto part = static_cast<int>(std::min(bytes.size(), kLargestSendBytes));
        const int sent = ::send(m_socket, bytes.data(), part, 0);
        if (sent > 0)
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        else if (::WSAGetLastError() != WSAEWOULDBLOCK)
            return false;
    }
    return true;
}

std::string Socket::receive(std::size_t size) const
{
    std::string bytes(size, '\0');
    const int got = waitFor(Wish::read) ? ::recv(m_socket, bytes.data(), static_cast<int>(size), 0) : 0;
    bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return bytes;
}

void Socket::drain() const noexcept
{
    char ignored[4096];
    while (waitFor(Wish::read) && ::recv(m_socket, ignored, sizeof(ignored), 0) > 0)
    {
    }
}

void Socket::closeGently() noexcept
{
    if (m_socket == INVALID_SOCKET)
        return;
    ::shutdown(m_socket, SD_SEND);
    drain();
    close();
}

void Socket::reset() noexcept
{
    const linger atOnce{1, 0};
    ::setsockopt(m_socket, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&atOnce), sizeof(atOnce));
    close();
}

void Socket::close() noexcept
{
    if (m_socket != INVALID_SOCKET)
        ::closesocket(std::exchange(m_socket, INVALID_SOCKET));
}
} // namespace webconf_sample
