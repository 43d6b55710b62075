#ifndef AUTOOLS_FILETRANSFER_FILETRANSFER_H
#define AUTOOLS_FILETRANSFER_FILETRANSFER_H

#include <cstddef>
#include <cstdint>
#include <type_traits>

/// The boundary of the download library "7xFileTransfer.dll", for both of its sides. A client loads the library by
/// name and looks the entry points up; it never links against it.
///
/// One transfer fetches one http, https, ftp or file URL into memory, one packet a call:
///
///     int status = 0;
///     FileTransfer* transfer = newFileTransfer(url, "", "", params, true, &status);
///     while ((status = download(transfer)) == filetransfer::kRunning) {}
///     if (status == filetransfer::kFinished)  // transfer->data, transfer->length
///     deleteFileTransfer(transfer);
///
/// A transfer belongs to one thread at a time; any number of transfers may run beside each other. No entry point
/// throws, and none holds a lock of this library across a call into the system, so that the thread of a transfer can be
/// terminated at any point: what is lost is that transfer's memory and connection.
namespace filetransfer
{
inline constexpr char kLibraryName[] = "7xFileTransfer.dll";

/// How a transfer is carried out. Allocated by `NewConnectionParams`, which fills in the defaults given here; read
/// once, by `NewFileTransfer`. The layout is part of the interface.
struct ConnectionParams
{
    std::int32_t packetSize = 8192;         ///< bytes that one call of Download reads at most; 0 or less: the default
    std::int32_t maximumPacketSize = 65535; ///< upper bound of packetSize; 0 or less: the default
    std::int32_t packetPauseMs = 0;         ///< pause after each packet, to leave bandwidth to others; at most 10,000
    std::int32_t maximumLength = 0;         ///< longest body in bytes; 0 or less, or more than kMaximumLength: that
    std::int32_t connectionRetries = 2;     ///< attempts after the first one; below 0 is 0, above 100 is 100
    std::int32_t retryPauseMs = 200;        ///< pause before each of them; at most 10,000
    std::int32_t timeOut = 30;              ///< seconds without a byte after which an attempt ends; 0 or less: the
                                            ///< default; at most 600
    std::int32_t connectTimeOut = 0;        ///< seconds that connecting may take; 0 or less: as timeOut
    std::int32_t reserved32 = 0;
    std::int32_t reserved36 = 0;
    std::int8_t cacheDisabled = 1; ///< other than 0: always ask the server and keep no copy; 0: the user's web cache
                                   ///< may answer, after asking the server whether its copy is current
    std::int8_t reserved41[7] = {};
};
static_assert(std::is_standard_layout_v<ConnectionParams> && sizeof(ConnectionParams) == 48);
static_assert(offsetof(ConnectionParams, packetSize) == 0);
static_assert(offsetof(ConnectionParams, maximumPacketSize) == 4);
static_assert(offsetof(ConnectionParams, packetPauseMs) == 8);
static_assert(offsetof(ConnectionParams, maximumLength) == 12);
static_assert(offsetof(ConnectionParams, connectionRetries) == 16);
static_assert(offsetof(ConnectionParams, retryPauseMs) == 20);
static_assert(offsetof(ConnectionParams, timeOut) == 24);
static_assert(offsetof(ConnectionParams, connectTimeOut) == 28);
static_assert(offsetof(ConnectionParams, cacheDisabled) == 40);

/// The part of a transfer object that a client may read. Allocated by `NewFileTransfer`; the library's own state
/// follows it.
struct FileTransfer
{
    const char* data;          ///< null until Download has returned kFinished; then the body, followed by one zero
                               ///< byte. Owned by the transfer, valid until DeleteFileTransfer. Not null for no bytes.
    std::uint64_t length;      ///< bytes of the body without that zero byte; 0 until finished
    std::uint32_t httpStatus;  ///< status code of the last answer, 0 when there was none (or for ftp and file)
    std::uint32_t systemError; ///< Windows' or WinInet's code behind the last error status, 0 when there was none
};
static_assert(std::is_standard_layout_v<FileTransfer> && sizeof(FileTransfer) == 24);
static_assert(offsetof(FileTransfer, data) == 0);
static_assert(offsetof(FileTransfer, length) == 8);

/// Longest body that a transfer keeps: 512 MB.
inline constexpr std::int32_t kMaximumLength = 512 * 1024 * 1024;

// What `Download` returns. WinInet's own codes (12001 to 12999, such as 12002 time-out, 12007 name not resolved,
// 12029 no connection, 12045 unknown certificate authority) are passed on as they are.
inline constexpr int kFinished = 1;
inline constexpr int kRunning = 2;
/// Plus the status code of an HTTP answer other than 200: 13404 is "not found". Up to ten redirections are followed, to
/// http and https only and never from https to http; one more gives 12156.
inline constexpr int kHttpStatusBase = 13000;
inline constexpr int kBadArgument = 14001;       ///< a null transfer or URL, or a text that is too long
inline constexpr int kUnsupportedScheme = 14002; ///< neither http, https, ftp nor file
inline constexpr int kOutOfMemory = 14003;
inline constexpr int kBodyTooLong = 14004; ///< longer than ConnectionParams::maximumLength
/// The connection ended before the body did. (Only HTTP's oldest form of answer, with neither length nor chunks, cannot
/// tell: there the orderly end of the connection is the end of the body.)
inline constexpr int kBodyCutOff = 14005;
inline constexpr int kInternalError = 14006;
/// Plus Windows' code of any other failure: 100002 is "file not found".
inline constexpr int kSystemErrorBase = 100000;

extern "C"
{
    /// "NewConnectionParams": a record with the defaults, or null without memory.
    using NewConnectionParamsFn = ConnectionParams* (*)();
    /// "DeleteConnectionParams": releases it; null is ignored. Transfers made with it keep their own copy.
    using DeleteConnectionParamsFn = void (*)(ConnectionParams*);
    /// "NewFileTransfer": a transfer that has not begun, or null without memory or for arguments out of bounds. What is
    /// wrong inside the URL is the status that Download gives.
    /// @param url       At most 65,535 characters. `user:password@` in it is honoured when `user` is empty. Blanks and
    ///                  other characters that a request line cannot carry are escaped, an existing "%" stays.
    /// @param user      Who to log on as where the server asks; null or empty: nobody. At most 256 characters.
    /// @param password  That user's password; null is empty. At most 256 characters.
    /// @param params    Null: the defaults.
    /// @param useProxy  True: through the proxy that the user's Internet Settings name; false: straight to the server.
    /// @param status    Receives 0, or the error status behind a null return. May be null.
    using NewFileTransferFn = FileTransfer* (*)(const char* url, const char* user, const char* password,
                                                const ConnectionParams* params, bool useProxy, int* status);
    /// "Download": one step. kRunning: call again; kFinished: the body is there; anything else is an error status and
    /// never 0. After the end it keeps returning the same value.
    using DownloadFn = int (*)(FileTransfer*);
    /// "DeleteFileTransfer": ends the transfer, running or not, and releases it with its data; null is ignored.
    using DeleteFileTransferFn = void (*)(FileTransfer*);
}
} // namespace filetransfer

#endif
