#ifndef AUTOOLS_TESTS_COMPANIONS_TRANSFERLIBRARY_H
#define AUTOOLS_TESTS_COMPANIONS_TRANSFERLIBRARY_H

#include "companions/filetransfer/FileTransfer.h"

#include <functional>
#include <string>

namespace auttest
{
/// The download library as its clients see it: loaded by name, entry points looked up.
struct TransferLibrary
{
    filetransfer::NewFileTransferFn newFileTransfer = nullptr;
    filetransfer::DownloadFn download = nullptr;
    filetransfer::DeleteFileTransferFn deleteFileTransfer = nullptr;
    filetransfer::NewConnectionParamsFn newConnectionParams = nullptr;
    filetransfer::DeleteConnectionParamsFn deleteConnectionParams = nullptr;

    /// Loaded once for the process; a missing entry point fails the test and stays null.
    static const TransferLibrary& get();
};

/// For what its WinInet leaves out, with the reason where it is used.
bool runsUnderWine();

/// What a transfer ended with.
struct Fetched
{
    int status = 0;
    std::string body;
    bool hasData = false;
    std::uint32_t httpStatus = 0;
    std::uint32_t systemError = 0;
    int steps = 0; ///< calls of Download, the last one included
};

using Adjust = std::function<void(filetransfer::ConnectionParams&)>;

/// Parameters for tests: no retries, short pauses, a time-out of 5 seconds; then as `adjust` changes them.
filetransfer::ConnectionParams testParams(const Adjust& adjust = nullptr);

/// Runs a whole transfer.
Fetched fetch(const std::string& url, const Adjust& adjust = nullptr, bool useProxy = false,
              const std::string& user = std::string(), const std::string& password = std::string());
} // namespace auttest

#endif
