#include "filetransfer/ConnectionProbe.h"
// winsock2.h comes before windows.h
#include "filetransfer/WinInet.h"

#include <charconv>
#include <cstring>

namespace filetransfer
{
namespace
{
constexpr std::uint32_t kHttpOk = 200;

class HttpSource final : public Source
{
public:
    explicit HttpSource(Request& request) : m_wanted(request) {}

    Outcome open() override
    {
        Outcome outcome = openInternet(m_wanted, m_internet);
        if (outcome.good())
            outcome = openSession(m_internet.get(), m_wanted, INTERNET_SERVICE_HTTP, m_session);
        if (outcome.good())
            outcome = send();
        if (outcome.good())
            outcome = readHead();
        return outcome;
    }

    Outcome read(char* into, std::uint32_t bytes, std::uint32_t& got) override
    {
        return readInternet(m_request.get(), into, bytes, got);
    }

    Outcome confirmWhole(std::uint64_t received) override
    {
        if (m_chunked)
            return confirmLastChunk();
        if (m_announcedLength && received != *m_announcedLength)
            return {kBodyCutOff, 0, true};
        if (m_announcedLength)
            m_connection.dropUnreadBytes();
        return {}; // without a length the end of the connection is the end of the body
    }

private:
    Outcome send()
    {
        static const char* const kAnyType[] = {"*/*", nullptr};
        DWORD flags = INTERNET_FLAG_NO_UI | INTERNET_FLAG_KEEP_CONNECTION;
        flags |= m_wanted.params.cacheDisabled != 0
                     ? INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE | INTERNET_FLAG_PRAGMA_NOCACHE
                     : INTERNET_FLAG_RESYNCHRONIZE;
        if (m_wanted.url.scheme == Scheme::https)
            flags |= INTERNET_FLAG_SECURE;
        m_request.reset(::HttpOpenRequestA(m_session.get(), "GET", m_wanted.url.object.c_str(),
                                           m_wanted.avoidChunks ? "HTTP/1.0" : nullptr, nullptr,
                                           const_cast<LPCSTR*>(kAnyType), flags, 0));
        if (!m_request)
            return lastInternetError();
        setTimeOuts(m_request.get(), m_wanted.params);
        return ::HttpSendRequestA(m_request.get(), nullptr, 0, nullptr, 0) ? Outcome() : lastInternetError();
    }

    Outcome readHead()
    {
        constexpr Outcome malformed{ERROR_HTTP_INVALID_SERVER_RESPONSE, ERROR_HTTP_INVALID_SERVER_RESPONSE, true};
        DWORD status = 0;
        DWORD size = sizeof(status);
        if (!::HttpQueryInfoA(m_request.get(), HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &status, &size,
                              nullptr) ||
            status < 100 || status > 999)
            return malformed;
        m_httpStatus = status;
        if (status != kHttpOk)
            return {kHttpStatusBase + static_cast<int>(status), 0, false};

        m_connection.attach(m_request.get());
        char text[64];
        m_chunked = header(HTTP_QUERY_TRANSFER_ENCODING, text) && ::_stricmp(text, "identity") != 0;
        if (m_chunked || !header(HTTP_QUERY_CONTENT_LENGTH, text))
            return {};
        std::uint64_t length = 0;
        const char* const end = text + std::strlen(text);
        const auto [last, error] = std::from_chars(text, end, length);
        if (error != std::errc() || last != end)
            return malformed;
        m_announcedLength = length;
        return {};
    }

    /// False for an absent header and for one that does not fit, which no length or coding needs.
    template <std::size_t Size> bool header(DWORD which, char (&text)[Size])
    {
        DWORD size = Size;
        return ::HttpQueryInfoA(m_request.get(), which, text, &size, nullptr) && text[0] != '\0';
    }

    Outcome confirmLastChunk()
    {
        if (m_connection.stillStands() || fromCache())
            return {};
        // The server closes its connections, or this one was lost: the body's length has to be known otherwise.
        m_wanted.avoidChunks = true;
        return {kBodyCutOff, 0, true};
    }

    bool fromCache()
    {
        DWORD flags = 0;
        DWORD size = sizeof(flags);
        return ::InternetQueryOptionA(m_request.get(), INTERNET_OPTION_REQUEST_FLAGS, &flags, &size) &&
               (flags & INTERNET_REQFLAG_FROM_CACHE) != 0;
    }

    Request& m_wanted;
    UniqueInternet m_internet;
    UniqueInternet m_session;
    UniqueInternet m_request;
    ConnectionProbe m_connection;
    bool m_chunked = false;
};
} // namespace

std::unique_ptr<Source> makeHttpSource(Request& request) { return std::make_unique<HttpSource>(request); }
} // namespace filetransfer
