#include "filetransfer/FileTransfer.h"
#include "filetransfer/Transfer.h"

#include <cstring>
#include <new>

#define FILETRANSFER_API extern "C" __declspec(dllexport)

using filetransfer::ConnectionParams;
using filetransfer::FileTransfer;
using filetransfer::Transfer;

namespace
{
constexpr std::size_t kLongestUrlChars = 65535;
constexpr std::size_t kLongestNameChars = 256;

/// False when `text` is longer than allowed; null is empty.
bool bounded(const char* text, std::size_t longest, std::string_view& view) noexcept
{
    const std::size_t length = text != nullptr ? ::strnlen(text, longest + 1) : 0;
    view = length != 0 ? std::string_view(text, length) : std::string_view();
    return length <= longest;
}

/// What an exception that reached the boundary is told as.
int currentExceptionStatus() noexcept
{
    try
    {
        throw;
    }
    catch (const std::bad_alloc&)
    {
        return filetransfer::kOutOfMemory;
    }
    catch (...)
    {
        return filetransfer::kInternalError;
    }
}
} // namespace

FILETRANSFER_API ConnectionParams* NewConnectionParams() { return new (std::nothrow) ConnectionParams; }

FILETRANSFER_API void DeleteConnectionParams(ConnectionParams* params) { delete params; }

FILETRANSFER_API FileTransfer* NewFileTransfer(const char* url, const char* user, const char* password,
                                               const ConnectionParams* params, bool useProxy, int* status)
{
    int ignored = 0;
    int& outcome = status != nullptr ? *status : ignored;
    try
    {
        std::string_view urlText;
        std::string_view userText;
        std::string_view passwordText;
        const bool usable = url != nullptr && bounded(url, kLongestUrlChars, urlText) &&
                            bounded(user, kLongestNameChars, userText) &&
                            bounded(password, kLongestNameChars, passwordText);
        outcome = usable ? 0 : filetransfer::kBadArgument;
        return usable ? new Transfer(urlText, userText, passwordText, params, useProxy) : nullptr;
    }
    catch (...)
    {
        outcome = currentExceptionStatus();
        return nullptr;
    }
}

FILETRANSFER_API int Download(FileTransfer* transfer)
{
    if (transfer == nullptr)
        return filetransfer::kBadArgument;
    Transfer& running = *static_cast<Transfer*>(transfer);
    try
    {
        return running.step();
    }
    catch (...)
    {
        return running.fail({currentExceptionStatus(), 0, false});
    }
}

FILETRANSFER_API void DeleteFileTransfer(FileTransfer* transfer) { delete static_cast<Transfer*>(transfer); }

// The entry points are looked up by name, so nothing but this holds them to the types that clients cast to.
static_assert(std::is_same_v<decltype(&NewConnectionParams), filetransfer::NewConnectionParamsFn>);
static_assert(std::is_same_v<decltype(&DeleteConnectionParams), filetransfer::DeleteConnectionParamsFn>);
static_assert(std::is_same_v<decltype(&NewFileTransfer), filetransfer::NewFileTransferFn>);
static_assert(std::is_same_v<decltype(&Download), filetransfer::DownloadFn>);
static_assert(std::is_same_v<decltype(&DeleteFileTransfer), filetransfer::DeleteFileTransferFn>);
