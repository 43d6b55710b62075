#include "tests/companions/TransferLibrary.h"

#include <windows.h>

#include <cstring>
#include <gtest/gtest.h>

namespace auttest
{
namespace
{
template <typename Fn> void lookUp(HMODULE library, const char* name, Fn& entry)
{
    const FARPROC address = ::GetProcAddress(library, name);
    EXPECT_NE(nullptr, address) << name;
    std::memcpy(&entry, &address, sizeof(entry));
}
} // namespace

const TransferLibrary& TransferLibrary::get()
{
    static const TransferLibrary loaded = []
    {
        TransferLibrary entries;
        const HMODULE library = ::LoadLibraryA("7xFileTransfer.dll");
        EXPECT_NE(nullptr, library) << "error " << ::GetLastError();
        lookUp(library, "NewFileTransfer", entries.newFileTransfer);
        lookUp(library, "Download", entries.download);
        lookUp(library, "DeleteFileTransfer", entries.deleteFileTransfer);
        lookUp(library, "NewConnectionParams", entries.newConnectionParams);
        lookUp(library, "DeleteConnectionParams", entries.deleteConnectionParams);
        return entries;
    }();
    return loaded;
}

bool runsUnderWine() { return ::GetProcAddress(::GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr; }

filetransfer::ConnectionParams testParams(const Adjust& adjust)
{
    filetransfer::ConnectionParams params;
    params.connectionRetries = 0;
    params.retryPauseMs = 20;
    params.timeOut = 5;
    if (adjust)
        adjust(params);
    return params;
}

Fetched fetch(const std::string& url, const Adjust& adjust, bool useProxy, const std::string& user,
              const std::string& password)
{
    const TransferLibrary& library = TransferLibrary::get();
    const filetransfer::ConnectionParams params = testParams(adjust);
    Fetched fetched;
    int status = -1;
    filetransfer::FileTransfer* const transfer =
        library.newFileTransfer(url.c_str(), user.c_str(), password.c_str(), &params, useProxy, &status);
    EXPECT_NE(nullptr, transfer) << "status " << status;
    if (transfer == nullptr)
        return fetched;
    do
    {
        EXPECT_EQ(nullptr, transfer->data) << "data before the end";
        EXPECT_EQ(0u, transfer->length);
        fetched.status = library.download(transfer);
        ++fetched.steps;
    } while (fetched.status == 2);
    fetched.hasData = transfer->data != nullptr;
    if (fetched.hasData)
    {
        EXPECT_EQ('\0', transfer->data[transfer->length]);
        fetched.body.assign(transfer->data, transfer->length);
    }
    fetched.httpStatus = transfer->httpStatus;
    fetched.systemError = transfer->systemError;
    EXPECT_EQ(fetched.status, library.download(transfer)) << "a transfer that has ended stays ended";
    library.deleteFileTransfer(transfer);
    return fetched;
}
} // namespace auttest
