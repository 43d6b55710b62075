#include "filetransfer/ChunkDecoder.h"
#include "filetransfer/HttpHead.h"
#include "filetransfer/Source.h"
#include "platform/UniqueResource.h"

#include <winsock2.h>
// winsock2.h comes before windows.h
#include "filetransfer/WinInet.h"

#include <ws2tcpip.h>

#include <algorithm>
#include <array>
#include <string>

namespace filetransfer
{
namespace
{
constexpr std::size_t kLongestHeadBytes = std::size_t{64} * 1024; // with all interim answers before it
constexpr std::uint32_t kHttpOk = 200;
constexpr std::uint32_t kHttpUnauthorized = 401;

struct SocketTraits
{
    using Type = SOCKET;
    static Type none() noexcept { return INVALID_SOCKET; }
    static void close(Type socket) noexcept { ::closesocket(socket); }
};
using UniqueSocket = aut::UniqueResource<SocketTraits>;

struct AddressListTraits
{
    using Type = addrinfo*;
    static Type none() noexcept { return nullptr; }
    static void close(Type list) noexcept { ::freeaddrinfo(list); }
};

enum class Wish
{
    read,
    write
};

/// False when nothing happened for so long, or when connecting failed.
bool waitFor(SOCKET socket, Wish wish, std::int32_t seconds) noexcept
{
    fd_set wished;
    fd_set failed;
    FD_ZERO(&wished);
    FD_ZERO(&failed);
    wished.fd_array[wished.fd_count++] = socket;
    failed.fd_array[failed.fd_count++] = socket;
    timeval limit{seconds, 0};
    fd_set* const readable = wish == Wish::read ? &wished : nullptr;
    fd_set* const writable = wish == Wish::write ? &wished : nullptr;
    return ::select(0, readable, writable, &failed, &limit) > 0 && wished.fd_count != 0;
}

/// Whether a connection at whose end we are was reset by the server. Not every system has recv() tell.
bool wasReset(SOCKET socket) noexcept
{
    WSAPOLLFD state{socket, POLLIN, 0};
    return ::WSAPoll(&state, 1, 0) > 0 && (state.revents & POLLERR) != 0;
}

/// One GET over a socket of this library's own, straight to the server. Only for bodies without a length: WinInet
/// reports their end and the loss of the connection alike, and a body that was cut off must not pass for whole.
class DirectHttpSource final : public Source
{
public:
    explicit DirectHttpSource(Request& request) : m_wanted(request) {}
    ~DirectHttpSource() override
    {
        m_socket.reset();
        if (m_started)
            ::WSACleanup();
    }

    Outcome open() override
    {
        WSADATA ignored;
        m_started = ::WSAStartup(MAKEWORD(2, 2), &ignored) == 0;
        Outcome outcome = ask(false);
        // A user's name and password go only to a server that asks for them.
        if (m_httpStatus == kHttpUnauthorized && m_asksBasic && !m_wanted.direct->user.empty())
            outcome = ask(true);
        return outcome;
    }

    Outcome read(char* into, std::uint32_t bytes, std::uint32_t& got) override
    {
        got = 0;
        while (got == 0 && !ended())
        {
            if (m_at == m_unread.size())
            {
                const Outcome outcome = receive();
                if (!outcome.good() || m_unread.empty())
                    return outcome;
            }
            got = take(into, bytes);
            if (m_decoder.broken())
                return internetError(ERROR_HTTP_INVALID_SERVER_RESPONSE);
        }
        m_received += got;
        return {};
    }

    Outcome confirmWhole(std::uint64_t) override
    {
        const bool whole = m_chunked ? m_decoder.complete() : m_received == m_announcedLength.value_or(m_received);
        return whole ? Outcome() : Outcome{kBodyCutOff, 0, true};
    }

private:
    bool ended() const noexcept { return m_chunked ? m_decoder.complete() : m_received == m_announcedLength; }

    Outcome ask(bool logOn)
    {
        m_unread = std::string_view();
        m_at = 0;
        Outcome outcome = connect();
        if (outcome.good())
            outcome = sendRequest(logOn);
        if (outcome.good())
            outcome = readHead();
        return outcome;
    }

    Outcome connect()
    {
        addrinfo hints{};
        hints.ai_socktype = SOCK_STREAM;
        aut::UniqueResource<AddressListTraits> addresses;
        if (::getaddrinfo(m_wanted.direct->hostName().c_str(), std::to_string(m_wanted.direct->port).c_str(), &hints,
                          addresses.put()) != 0)
            return internetError(ERROR_INTERNET_NAME_NOT_RESOLVED);
        for (const addrinfo* address = addresses.get(); address != nullptr; address = address->ai_next)
            if (connectTo(*address))
                return {};
        return internetError(ERROR_INTERNET_CANNOT_CONNECT);
    }

    bool connectTo(const addrinfo& address)
    {
        u_long nonBlocking = 1;
        m_socket.reset(::socket(address.ai_family, address.ai_socktype, address.ai_protocol));
        return m_socket && ::ioctlsocket(m_socket.get(), static_cast<long>(FIONBIO), &nonBlocking) == 0 &&
               (::connect(m_socket.get(), address.ai_addr, static_cast<int>(address.ai_addrlen)) == 0 ||
                (::WSAGetLastError() == WSAEWOULDBLOCK &&
                 waitFor(m_socket.get(), Wish::write, m_wanted.params.connectTimeOut)));
    }

    Outcome sendRequest(bool logOn)
    {
        const std::string request = directRequest(*m_wanted.direct, m_wanted.params.cacheDisabled != 0, logOn);
        std::string_view unsent = request;
        while (!unsent.empty())
        {
            if (!waitFor(m_socket.get(), Wish::write, m_wanted.params.timeOut))
                return internetError(ERROR_INTERNET_TIMEOUT);
            const int sent = ::send(m_socket.get(), unsent.data(), static_cast<int>(unsent.size()), 0);
            if (sent > 0)
                unsent.remove_prefix(static_cast<std::size_t>(sent));
            else if (::WSAGetLastError() != WSAEWOULDBLOCK)
                return internetError(ERROR_INTERNET_CONNECTION_RESET);
        }
        return {};
    }

    Outcome readHead()
    {
        std::string head;
        HttpHead parsed;
        for (std::size_t taken = 0; !endsHead(head); ++taken)
        {
            if (m_at == m_unread.size())
            {
                const Outcome outcome = receive();
                if (!outcome.good())
                    return outcome;
            }
            if (m_unread.empty() || taken == kLongestHeadBytes)
                return internetError(ERROR_HTTP_INVALID_SERVER_RESPONSE);
            head += m_unread[m_at++];
            if (endsHead(head) && parseHead(head, parsed) && parsed.status / 100 == 1)
            {
                head.clear(); // an interim answer comes before the real one
                parsed = HttpHead();
            }
        }
        if (parsed.status == 0)
            return internetError(ERROR_HTTP_INVALID_SERVER_RESPONSE);
        m_httpStatus = parsed.status;
        m_chunked = parsed.chunked;
        m_asksBasic = parsed.asksBasic;
        m_announcedLength = parsed.length;
        return parsed.status == kHttpOk ? Outcome()
                                        : Outcome{kHttpStatusBase + static_cast<int>(parsed.status), 0, false};
    }

    /// Refills `m_unread`; empty at the connection's end.
    Outcome receive()
    {
        m_at = 0;
        m_unread = std::string_view();
        for (;;)
        {
            if (!waitFor(m_socket.get(), Wish::read, m_wanted.params.timeOut))
                return internetError(ERROR_INTERNET_TIMEOUT);
            const int got = ::recv(m_socket.get(), m_buffer.data(), static_cast<int>(m_buffer.size()), 0);
            if (got == 0 && wasReset(m_socket.get()))
                return internetError(ERROR_INTERNET_CONNECTION_RESET);
            if (got >= 0)
            {
                m_unread = std::string_view(m_buffer.data(), static_cast<std::size_t>(got));
                return {};
            }
            if (::WSAGetLastError() != WSAEWOULDBLOCK)
                return internetError(ERROR_INTERNET_CONNECTION_RESET);
        }
    }

    /// Moves body bytes out of `m_unread`.
    std::uint32_t take(char* into, std::uint32_t bytes) noexcept
    {
        const std::string_view rest = m_unread.substr(m_at);
        if (m_chunked)
        {
            const ChunkDecoder::Step step = m_decoder.decode(rest.data(), rest.size(), into, bytes);
            m_at += step.used;
            return static_cast<std::uint32_t>(step.decoded);
        }
        const std::uint64_t wanted = m_announcedLength ? *m_announcedLength - m_received : rest.size();
        const auto moved = static_cast<std::size_t>(std::min<std::uint64_t>({wanted, bytes, rest.size()}));
        std::copy_n(rest.data(), moved, into);
        m_at += moved;
        return static_cast<std::uint32_t>(moved);
    }

    Request& m_wanted;
    bool m_started = false;
    UniqueSocket m_socket;
    std::array<char, 16384> m_buffer;
    std::string_view m_unread; // in m_buffer
    std::size_t m_at = 0;      // in m_unread
    bool m_chunked = false;
    bool m_asksBasic = false;
    ChunkDecoder m_decoder;
    std::uint64_t m_received = 0;
};
} // namespace

std::unique_ptr<Source> makeDirectHttpSource(Request& request) { return std::make_unique<DirectHttpSource>(request); }
} // namespace filetransfer
