#include "filetransfer/HttpHead.h"
#include "filetransfer/WinInet.h"

#include <algorithm>
#include <string>

namespace filetransfer
{
namespace
{
constexpr std::uint32_t kHttpOk = 200;
constexpr int kMostRedirections = 10;

bool isRedirection(std::uint32_t status) noexcept
{
    return (status >= 301 && status <= 303) || status == 307 || status == 308;
}

class HttpSource final : public Source
{
public:
    explicit HttpSource(Request& request) : m_wanted(request), m_url(request.url) {}

    Outcome open() override
    {
        Outcome outcome = openInternet(m_wanted, m_internet);
        // Redirections are followed here: not every WinInet stops following, and none of them knows which credentials
        // may go where.
        for (int hops = 0; outcome.good(); ++hops)
        {
            outcome = ask();
            if (!outcome.good() || !m_redirected)
                break;
            if (hops == kMostRedirections || !redirect())
                return internetError(ERROR_HTTP_REDIRECT_FAILED);
        }
        return outcome;
    }

    /// Stops at the announced length: what a server sends beyond it is no part of the body, whether WinInet gives it
    /// or not.
    Outcome read(char* into, std::uint32_t bytes, std::uint32_t& got) override
    {
        const std::uint64_t left = m_announcedLength.value_or(UINT64_MAX) - m_received;
        const auto wanted = static_cast<std::uint32_t>(std::min<std::uint64_t>(bytes, left));
        const Outcome outcome = wanted != 0 ? readInternet(m_request.get(), into, wanted, got) : Outcome();
        m_received += got;
        return outcome;
    }

    /// Without a length the end of the connection is the end of the body, as HTTP has it.
    Outcome confirmWhole(std::uint64_t received) override
    {
        return received == m_announcedLength.value_or(received) ? Outcome() : Outcome{kBodyCutOff, 0, true};
    }

private:
    Outcome ask()
    {
        m_request.reset();
        m_redirected = false;
        Outcome outcome = openSession(m_internet.get(), m_url, INTERNET_SERVICE_HTTP, m_session);
        if (outcome.good())
            outcome = send();
        if (outcome.good())
            outcome = readHead();
        return outcome;
    }

    Outcome send()
    {
        static const char* const kAnyType[] = {"*/*", nullptr};
        // Some log-ons need the connection that they began on.
        DWORD flags = INTERNET_FLAG_NO_UI | INTERNET_FLAG_NO_AUTO_REDIRECT | INTERNET_FLAG_KEEP_CONNECTION;
        flags |= m_wanted.params.cacheDisabled != 0
                     ? INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE | INTERNET_FLAG_PRAGMA_NOCACHE
                     : INTERNET_FLAG_RESYNCHRONIZE;
        if (m_url.scheme == Scheme::https)
            flags |= INTERNET_FLAG_SECURE;
        m_request.reset(::HttpOpenRequestA(m_session.get(), "GET", m_url.object.c_str(),
                                           m_wanted.avoidChunks ? "HTTP/1.0" : nullptr, nullptr,
                                           const_cast<LPCSTR*>(kAnyType), flags, 0));
        if (!m_request)
            return lastInternetError();
        setTimeOuts(m_request.get(), m_wanted.params);
        return ::HttpSendRequestA(m_request.get(), nullptr, 0, nullptr, 0) ? Outcome() : lastInternetError();
    }

    /// Goes on at the answer's Location. Only to http and https, and from https only to https; a user goes along only
    /// to the same server.
    bool redirect()
    {
        const std::string location = header(HTTP_QUERY_LOCATION);
        DWORD size = static_cast<DWORD>(m_url.text().size() + location.size()) * 3 + 16; // room for escapes
        std::string combined(size, '\0');
        Url next;
        if (!::InternetCombineUrlA(m_url.text().c_str(), location.c_str(), combined.data(), &size, ICU_NO_ENCODE) ||
            parseUrl(combined.c_str(), next) != 0 || (next.scheme != Scheme::https && next.scheme != m_url.scheme))
            return false;
        const bool sameServer = next.scheme == m_url.scheme && next.port == m_url.port &&
                                ::_stricmp(next.host.c_str(), m_url.host.c_str()) == 0;
        if (sameServer && next.user.empty())
        {
            next.user = m_url.user;
            next.password = m_url.password;
        }
        m_url = next;
        return true;
    }

    Outcome readHead()
    {
        DWORD status = 0;
        DWORD size = sizeof(status);
        if (!::HttpQueryInfoA(m_request.get(), HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &status, &size,
                              nullptr) ||
            status < 100 || status > 999)
            return internetError(ERROR_HTTP_INVALID_SERVER_RESPONSE);
        m_httpStatus = status;
        m_redirected = isRedirection(status) && !header(HTTP_QUERY_LOCATION).empty();
        if (m_redirected)
            return {};
        if (status != kHttpOk)
            return {kHttpStatusBase + static_cast<int>(status), 0, false};

        const std::string coding = header(HTTP_QUERY_TRANSFER_ENCODING);
        const bool chunked = !coding.empty() && ::_stricmp(coding.c_str(), "identity") != 0;
        if (chunked || !hasHeaders())
            return askOtherwise();
        const std::string lengthText = header(HTTP_QUERY_CONTENT_LENGTH);
        std::uint64_t length = 0;
        if (!lengthText.empty() && !parseLength(lengthText, length))
            return internetError(ERROR_HTTP_INVALID_SERVER_RESPONSE);
        if (!lengthText.empty())
            m_announcedLength = length;
        else if (m_wanted.avoidChunks)
            return {kBodyCutOff, 0, true}; // asked for a body of known length, and still none
        else if (leadsStraight())
            return askOtherwise(); // where the end of the connection ends the body, a reset must not
        return {};
    }

    /// WinInet reports the last chunk of a body, the end of its connection and the loss of it alike, and it makes a
    /// good answer out of what is none (without headers, then). A body without a length has to be fetched in another
    /// way: over a connection of this library's own where one leads straight to the server, else with HTTP/1.0, to
    /// which a server must not answer in chunks.
    Outcome askOtherwise()
    {
        if (!m_wanted.avoidChunks && leadsStraight())
            m_wanted.direct = m_url;
        else
            m_wanted.avoidChunks = true;
        return {kBodyCutOff, 0, true};
    }

    bool leadsStraight()
    {
        INTERNET_DIAGNOSTIC_SOCKET_INFO info{};
        DWORD size = sizeof(info);
        return m_url.scheme == Scheme::http &&
               (!m_wanted.useProxy ||
                (::InternetQueryOptionA(m_request.get(), INTERNET_OPTION_DIAGNOSTIC_SOCKET_INFO, &info, &size) &&
                 (info.Flags & IDSI_FLAG_PROXY) == 0));
    }

    bool hasHeaders()
    {
        const std::string head = header(HTTP_QUERY_RAW_HEADERS_CRLF);
        return head.find(':', head.find("\r\n")) != std::string::npos;
    }

    /// Empty for an absent header.
    std::string header(DWORD which)
    {
        DWORD size = 0;
        ::HttpQueryInfoA(m_request.get(), which, nullptr, &size, nullptr);
        std::string text(size, '\0');
        const bool there = size != 0 && ::HttpQueryInfoA(m_request.get(), which, text.data(), &size, nullptr);
        return there ? text.c_str() : std::string();
    }

    Request& m_wanted;
    Url m_url; // where redirections have led
    bool m_redirected = false;
    std::uint64_t m_received = 0;
    UniqueInternet m_internet;
    UniqueInternet m_session;
    UniqueInternet m_request;
};
} // namespace

std::unique_ptr<Source> makeHttpSource(Request& request) { return std::make_unique<HttpSource>(request); }
} // namespace filetransfer
