#include "filetransfer/ConnectionProbe.h"

namespace filetransfer
{
namespace
{
/// Behind a TLS "close" message the end of the connection may be a moment away.
constexpr long kSecureGraceMicroseconds = 100 * 1000;

enum class Pending
{
    nothing,
    bytes,
    closed
};

Pending look(SOCKET socket, long waitMicroseconds) noexcept
{
    fd_set readable;
    FD_ZERO(&readable);
    readable.fd_array[readable.fd_count++] = socket;
    timeval wait{0, waitMicroseconds};
    if (::select(0, &readable, nullptr, nullptr, &wait) == 0)
        return Pending::nothing;
    char byte;
    return ::recv(socket, &byte, 1, MSG_PEEK) == 1 ? Pending::bytes : Pending::closed;
}
} // namespace

ConnectionProbe::~ConnectionProbe()
{
    if (m_socket != INVALID_SOCKET)
        ::closesocket(m_socket);
    if (m_started)
        ::WSACleanup();
}

void ConnectionProbe::attach(HINTERNET request) noexcept
{
    INTERNET_DIAGNOSTIC_SOCKET_INFO info{};
    DWORD size = sizeof(info);
    if (m_started || !::InternetQueryOptionA(request, INTERNET_OPTION_DIAGNOSTIC_SOCKET_INFO, &info, &size) ||
        info.Socket == 0 || info.Socket == INVALID_SOCKET)
        return;
    WSADATA ignored;
    m_started = ::WSAStartup(MAKEWORD(2, 2), &ignored) == 0;
    WSAPROTOCOL_INFOW shared{};
    if (!m_started || ::WSADuplicateSocketW(info.Socket, ::GetCurrentProcessId(), &shared) != 0)
        return;
    m_secure = (info.Flags & IDSI_FLAG_SECURE) != 0;
    m_socket = ::WSASocketW(FROM_PROTOCOL_INFO, FROM_PROTOCOL_INFO, FROM_PROTOCOL_INFO, &shared, 0, 0);
}

bool ConnectionProbe::stillStands() const noexcept
{
    if (m_socket == INVALID_SOCKET)
        return false;
    const Pending pending = look(m_socket, m_secure ? kSecureGraceMicroseconds : 0);
    // Unread bytes of a plain connection lie before its end, so the end was not what WinInet saw. Those of a TLS
    // connection may be the message that announces the end.
    return pending == Pending::nothing || (pending == Pending::bytes && !m_secure);
}

void ConnectionProbe::dropUnreadBytes() const noexcept
{
    if (m_socket != INVALID_SOCKET && !m_secure && look(m_socket, 0) == Pending::bytes)
        ::shutdown(m_socket, SD_BOTH);
}
} // namespace filetransfer
