#include <winsock2.h>
// winsock2.h comes before windows.h
#include "filetransfer/WinInet.h"

#include <algorithm>
#include <utility>

namespace filetransfer
{
namespace
{
/// What another attempt cannot change: certificates, log-on, addresses.
constexpr DWORD kLasting[] = {
    ERROR_INTERNET_EXTENDED_ERROR,          ERROR_INTERNET_INVALID_URL,         ERROR_INTERNET_UNRECOGNIZED_SCHEME,
    ERROR_INTERNET_INCORRECT_USER_NAME,     ERROR_INTERNET_INCORRECT_PASSWORD,  ERROR_INTERNET_LOGIN_FAILURE,
    ERROR_INTERNET_SEC_CERT_DATE_INVALID,   ERROR_INTERNET_SEC_CERT_CN_INVALID, ERROR_INTERNET_INVALID_CA,
    ERROR_INTERNET_CLIENT_AUTH_CERT_NEEDED, ERROR_INTERNET_SEC_CERT_ERRORS,     ERROR_INTERNET_SEC_INVALID_CERT,
    ERROR_INTERNET_SEC_CERT_REVOKED,        ERROR_HTTP_REDIRECT_FAILED,
};
constexpr std::pair<DWORD, DWORD> kOfWinsock[] = {
    {WSAETIMEDOUT, ERROR_INTERNET_TIMEOUT},
    {WSAECONNREFUSED, ERROR_INTERNET_CANNOT_CONNECT},
    {WSAECONNABORTED, ERROR_INTERNET_CONNECTION_ABORTED},
    {WSAECONNRESET, ERROR_INTERNET_CONNECTION_RESET},
};
constexpr DWORD kSecondMs = 1000;
} // namespace

Outcome internetError(DWORD code) noexcept
{
    // Some failures come as Winsock's codes; one cause has one status.
    for (const auto& [socketCode, internetCode] : kOfWinsock)
        if (code == socketCode)
            code = internetCode;
    const bool ofWinInet = code > INTERNET_ERROR_BASE && code < INTERNET_ERROR_BASE + 1000;
    const int status = ofWinInet ? static_cast<int>(code) : kSystemErrorBase + static_cast<int>(code & 0xffff);
    const bool lasting = std::find(std::begin(kLasting), std::end(kLasting), code) != std::end(kLasting);
    return {status, code, !lasting};
}

Outcome lastInternetError() noexcept { return internetError(::GetLastError()); }

void setTimeOuts(HINTERNET handle, const ConnectionParams& params) noexcept
{
    DWORD connectMs = static_cast<DWORD>(params.connectTimeOut) * kSecondMs;
    DWORD transferMs = static_cast<DWORD>(params.timeOut) * kSecondMs;
    DWORD connectAttempts = 1; // this library counts the retries itself
    // An option that a protocol does not know is refused, and the system's own value stays.
    ::InternetSetOptionA(handle, INTERNET_OPTION_CONNECT_TIMEOUT, &connectMs, sizeof(connectMs));
    ::InternetSetOptionA(handle, INTERNET_OPTION_CONNECT_RETRIES, &connectAttempts, sizeof(connectAttempts));
    constexpr DWORD kTransferOptions[] = {INTERNET_OPTION_SEND_TIMEOUT, INTERNET_OPTION_RECEIVE_TIMEOUT,
                                          INTERNET_OPTION_DATA_SEND_TIMEOUT, INTERNET_OPTION_DATA_RECEIVE_TIMEOUT};
    for (const DWORD option : kTransferOptions)
        ::InternetSetOptionA(handle, option, &transferMs, sizeof(transferMs));
}

Outcome openInternet(const Request& request, UniqueInternet& internet)
{
    const DWORD access = request.useProxy ? INTERNET_OPEN_TYPE_PRECONFIG : INTERNET_OPEN_TYPE_DIRECT;
    internet.reset(::InternetOpenA("7xFileTransfer/" FILETRANSFER_VERSION, access, nullptr, nullptr, 0));
    if (!internet)
        return lastInternetError();
    setTimeOuts(internet.get(), request.params);
    return {};
}

Outcome openSession(HINTERNET internet, const Url& url, DWORD service, UniqueInternet& session)
{
    const bool anonymous = url.user.empty();
    const DWORD flags = service == INTERNET_SERVICE_FTP ? INTERNET_FLAG_PASSIVE : 0;
    session.reset(::InternetConnectA(internet, url.host.c_str(), url.port, anonymous ? nullptr : url.user.c_str(),
                                     anonymous ? nullptr : url.password.c_str(), service, flags, 0));
    return session ? Outcome() : lastInternetError();
}

Outcome readInternet(HINTERNET handle, char* into, std::uint32_t bytes, std::uint32_t& got) noexcept
{
    DWORD read = 0;
    if (!::InternetReadFile(handle, into, bytes, &read))
        return lastInternetError();
    got = std::min<DWORD>(read, bytes);
    return {};
}
} // namespace filetransfer
