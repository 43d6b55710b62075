#include "webconfigurator/Socket.h"

#include <ws2tcpip.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace webconf_sample
{
namespace
{
constexpr std::size_t kLargestSendBytes = 64 * 1024;
constexpr DWORD kGentleCloseMs = 2000;

[[noreturn]] void fail(const char* what)
{
    throw std::runtime_error(std::string(what) + " failed with " + std::to_string(::WSAGetLastError()));
}

sockaddr_in addressOf(const char* host, unsigned short port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = ::htons(port);
    address.sin_addr.s_addr = ::inet_addr(host);
    return address;
}
} // namespace

Winsock::Winsock()
{
    WSADATA ignored;
    if (::WSAStartup(MAKEWORD(2, 2), &ignored) != 0)
        throw std::runtime_error("Winsock is not available");
}

Winsock::~Winsock() { ::WSACleanup(); }

Socket& Socket::operator=(Socket&& other) noexcept
{
    if (this != &other)
    {
        close();
        m_socket = other.release();
    }
    return *this;
}

SOCKET Socket::release() noexcept { return std::exchange(m_socket, INVALID_SOCKET); }

Socket Socket::listen(unsigned short port, int backlog)
{
    Socket listener(::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
    if (!listener)
        fail("socket");
    // Nobody else may take the port over, and a port that is in use is an error.
    const BOOL alone = TRUE;
    ::setsockopt(listener.get(), SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&alone), sizeof(alone));
    const sockaddr_in address = addressOf("127.0.0.1", port);
    if (::bind(listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
        fail("bind");
    if (::listen(listener.get(), backlog) != 0)
        fail("listen");
    return listener;
}

Socket Socket::connect(const std::string& host, unsigned short port)
{
    Socket connection(::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP));
    const sockaddr_in address = addressOf(host.c_str(), port);
    if (!connection || ::connect(connection.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
        fail("connect");
    return connection;
}

Socket Socket::accept() const noexcept { return Socket(::accept(m_socket, nullptr, nullptr)); }

unsigned short Socket::port() const noexcept
{
    sockaddr_in address{};
    int size = sizeof(address);
    return ::getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &size) == 0 ? ::ntohs(address.sin_port)
                                                                                      : static_cast<unsigned short>(0);
}

bool Socket::send(std::string_view bytes) const noexcept
{
    while (!bytes.empty())
    {
        const auto part = static_cast<int>(std::min(bytes.size(), kLargestSendBytes));
        const int sent = ::send(m_socket, bytes.data(), part, 0);
        if (sent <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

std::string Socket::receive(std::size_t size) const
{
    std::string bytes(size, '\0');
    const int got = ::recv(m_socket, bytes.data(), static_cast<int>(size), 0);
    bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return bytes;
}

void Socket::drain() const noexcept
{
    char ignored[4096];
    while (::recv(m_socket, ignored, sizeof(ignored), 0) > 0)
    {
    }
}

void Socket::shutDown() const noexcept
{
    if (m_socket != INVALID_SOCKET)
        ::shutdown(m_socket, SD_BOTH);
}

void Socket::closeGently() noexcept
{
    if (m_socket == INVALID_SOCKET)
        return;
    ::setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<const char*>(&kGentleCloseMs),
                 sizeof(kGentleCloseMs));
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
        ::closesocket(release());
}
} // namespace webconf_sample
