#include "webconf/TransferWorker.h"

#include "environment/ClientFolders.h"
#include "filetransfer/FileTransfer.h"
#include "foundation/EventLog.h"

#include <windows.h>

#include <cstring>
#include <new>
#include <type_traits>

namespace aut
{
namespace
{
namespace ft = filetransfer;

constexpr int kNoTransferObject = 251;

struct LoadedLibrary
{
    explicit LoadedLibrary(HMODULE loaded) : module(loaded) {}
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;
    ~LoadedLibrary() { FreeDLL(module); }

    template <typename Function> Function entry(const char* name) const
    {
        // by way of void*, because compilers warn about casts between unlike function types
        return reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
    }

    const HMODULE module;
};

struct EntryPoints
{
    explicit EntryPoints(const LoadedLibrary& library)
        : newTransfer(library.entry<ft::NewFileTransferFn>("NewFileTransfer")),
          deleteTransfer(library.entry<ft::DeleteFileTransferFn>("DeleteFileTransfer")),
          newParams(library.entry<ft::NewConnectionParamsFn>("NewConnectionParams")),
          deleteParams(library.entry<ft::DeleteConnectionParamsFn>("DeleteConnectionParams")),
          download(library.entry<ft::DownloadFn>("Download"))
    {
    }
    bool complete() const { return newTransfer && deleteTransfer && newParams && deleteParams && download; }

    ft::NewFileTransferFn newTransfer;
    ft::DeleteFileTransferFn deleteTransfer;
    ft::NewConnectionParamsFn newParams;
    ft::DeleteConnectionParamsFn deleteParams;
    ft::DownloadFn download;
};

/// What fits "0x%x": the low 32 bits of an address. They say what the line is for, which address is missing.
template <typename Pointer> unsigned shown(Pointer pointer)
{
    return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(pointer));
}

void logAddresses(const EntryPoints& entries, const TransferBlock* block)
{
    Log(0, "newFileDownload = 0x%x", shown(entries.newTransfer));
    Log(0, "deleteFileDownload = 0x%x", shown(entries.deleteTransfer));
    Log(0, "newConnectionParams = 0x%x", shown(entries.newParams));
    Log(0, "deleteConnectionParams = 0x%x", shown(entries.deleteParams));
    Log(0, "fileDownload = 0x%x", shown(entries.download));
    Log(0, "mydata = 0x%x", shown(block));
}

using OwnedParams = std::unique_ptr<ft::ConnectionParams, ft::DeleteConnectionParamsFn>;
using OwnedTransfer = std::unique_ptr<ft::FileTransfer, ft::DeleteFileTransferFn>;

/// None for a block without settings.
OwnedParams makeParams(const EntryPoints& entries, const TransferBlock& block)
{
    OwnedParams params(block.settings ? entries.newParams() : nullptr, entries.deleteParams);
    if (params == nullptr)
        return params;
    params->packetSize = block.settings->packetSize;
    params->maximumPacketSize = 65535;
    params->packetPauseMs = 0;
    params->maximumLength = 0;
    params->connectionRetries = block.settings->connectionRetries;
    params->timeOut = block.settings->timeOut;
    params->cacheDisabled = block.settings->cacheDisabled ? 1 : 0;
    return params;
}

void keepBody(TransferBlock& block, const ft::FileTransfer& transfer)
{
    const auto length = static_cast<std::size_t>(transfer.length);
    if (transfer.data == nullptr || length == 0)
        return;
    block.body.reset(new (std::nothrow) char[length + 1]);
    if (block.body == nullptr)
        return;
    std::memcpy(block.body.get(), transfer.data, length);
    block.body[length] = '\0';
    block.length = length;
}

int transferWith(const EntryPoints& entries, TransferBlock& block)
{
    const OwnedParams params = makeParams(entries, block);
    int creation = 0;
    const OwnedTransfer transfer(entries.newTransfer(block.url.c_str(), "", "", params.get(), true, &creation),
                                 entries.deleteTransfer);
    if (transfer == nullptr)
    {
        Log(2, "GetDataFromStreamFct: failed to create file download object");
        return kNoTransferObject;
    }
    int step = ft::kRunning;
    while (step == ft::kRunning)
        step = entries.download(transfer.get());
    if (step != ft::kFinished)
        return step;
    keepBody(block, *transfer);
    return 0;
}
} // namespace

int runTransfer(TransferBlock* block)
{
    const LoadedLibrary library(LoadDLL(ft::kLibraryName, nullptr));
    if (library.module == nullptr)
    {
        Log(2, "GetDataFromStreamFct: unable to load %s", ft::kLibraryName);
        return 0;
    }
    const EntryPoints entries(library);
    if (!entries.complete() || block == nullptr)
    {
        logAddresses(entries, block);
        Log(2, "GetDataFromStreamFct: Bad parameters, unable to download");
        return 0;
    }
    return transferWith(entries, *block);
}
} // namespace aut
