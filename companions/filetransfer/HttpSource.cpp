#include "filetransfer/HttpHead.h"
#include "filetransfer/WinInet.h"

#include <string>

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

    /// Without a length the end of the connection is the end of the body.
    Outcome confirmWhole(std::uint64_t received) override
    {
        return received == m_announcedLength.value_or(received) ? Outcome() : Outcome{kBodyCutOff, 0, true};
    }

private:
    Outcome send()
    {
        static const char* const kAnyType[] = {"*/*", nullptr};
        DWORD flags = INTERNET_FLAG_NO_UI | INTERNET_FLAG_KEEP_CONNECTION; // some log-ons need the same connection
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
        DWORD status = 0;
        DWORD size = sizeof(status);
        if (!::HttpQueryInfoA(m_request.get(), HTTP_QUERY_STATUS_CODE | HTTP_QUERY_FLAG_NUMBER, &status, &size,
                              nullptr) ||
            status < 100 || status > 999)
            return internetError(ERROR_HTTP_INVALID_SERVER_RESPONSE);
        m_httpStatus = status;
        if (status != kHttpOk)
            return {kHttpStatusBase + static_cast<int>(status), 0, false};

        const std::string coding = header(HTTP_QUERY_TRANSFER_ENCODING);
        if (!coding.empty() && ::_stricmp(coding.c_str(), "identity") != 0)
            return askOtherwise();
        const std::string lengthText = header(HTTP_QUERY_CONTENT_LENGTH);
        std::uint64_t length = 0;
        if (!lengthText.empty() && !parseLength(lengthText, length))
            return internetError(ERROR_HTTP_INVALID_SERVER_RESPONSE);
        if (!lengthText.empty())
            m_announcedLength = length;
        else if (m_wanted.avoidChunks)
            return {kBodyCutOff, 0, true}; // asked for a body of known length, and still none
        return {};
    }

    /// WinInet reports the last chunk of a body and the loss of its connection alike, so that a body in chunks has to
    /// be fetched in another way: over a connection of this library's own where one leads straight to the server, else
    /// with HTTP/1.0, to which a server must not answer in chunks.
    Outcome askOtherwise()
    {
        Url url;
        if (!m_wanted.avoidChunks && leadsStraight() && parseUrl(finalUrl(), url) == 0 && url.scheme == Scheme::http)
        {
            url.user = m_wanted.url.user;
            url.password = m_wanted.url.password;
            m_wanted.direct = url;
        }
        else
            m_wanted.avoidChunks = true;
        return {kBodyCutOff, 0, true};
    }

    bool leadsStraight()
    {
        INTERNET_DIAGNOSTIC_SOCKET_INFO info{};
        DWORD size = sizeof(info);
        return !m_wanted.useProxy ||
               (::InternetQueryOptionA(m_request.get(), INTERNET_OPTION_DIAGNOSTIC_SOCKET_INFO, &info, &size) &&
                (info.Flags & (IDSI_FLAG_PROXY | IDSI_FLAG_SECURE)) == 0);
    }

    /// Where redirections led.
    std::string finalUrl()
    {
        DWORD size = 0;
        ::InternetQueryOptionA(m_request.get(), INTERNET_OPTION_URL, nullptr, &size);
        std::string url(size, '\0');
        const bool known = size != 0 && ::InternetQueryOptionA(m_request.get(), INTERNET_OPTION_URL, url.data(), &size);
        return known ? url.c_str() : std::string();
    }

    /// Empty for an absent header and for one that is longer than any length or coding.
    std::string header(DWORD which)
    {
        char text[64] = "";
        DWORD size = sizeof(text);
        return ::HttpQueryInfoA(m_request.get(), which, text, &size, nullptr) ? std::string(text) : std::string();
    }

    Request& m_wanted;
    UniqueInternet m_internet;
    UniqueInternet m_session;
    UniqueInternet m_request;
};
} // namespace

std::unique_ptr<Source> makeHttpSource(Request& request) { return std::make_unique<HttpSource>(request); }
} // namespace filetransfer
