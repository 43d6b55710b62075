#include "webconf/Network.h"

#include "foundation/EventLog.h"
#include "platform/BoundedText.h"
#include "platform/UniqueResource.h"
#include "webconf/CConfig.h"
#include "webconf/Transfer.h"
#include "webconf/TransferWorker.h"

#include <process.h>
#include <windows.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

namespace
{
constexpr DWORD kPatienceMs = 600000;
constexpr DWORD kStatusTimeOut = 1003;
constexpr DWORD kStatusUnreadable = 102;

using SharedBlock = std::shared_ptr<aut::TransferBlock>;

SharedBlock makeBlock(const char* url, const CConfig* config)
{
    auto block = std::make_shared<aut::TransferBlock>();
    block->url = aut::orEmpty(url);
    if (config != nullptr)
        block->settings = {config->PacketSize, config->ConnectionRetries, config->TimeOut, config->CacheDisabled};
    return block;
}

unsigned __stdcall workerThread(void* argument)
{
    // The worker owns the block too. When it is terminated its share is never given back: the block is lost on purpose,
    // because nobody can tell what still writes into it.
    const std::unique_ptr<SharedBlock> block(static_cast<SharedBlock*>(argument));
    try
    {
        return static_cast<unsigned>(aut::runTransfer(block->get()));
    }
    catch (const std::bad_alloc&)
    {
        return 0; // no data
    }
}

aut::UniqueHandle startWorker(const SharedBlock& block)
{
    auto share = std::make_unique<SharedBlock>(block);
    const std::uintptr_t handle = ::_beginthreadex(nullptr, 0, workerThread, share.get(), 0, nullptr);
    aut::UniqueHandle thread(reinterpret_cast<HANDLE>(handle)); // NOLINT(performance-no-int-to-ptr): the runtime's way
    if (thread)
        (void)share.release();
    return thread;
}

/// Waits for the worker; its exit code is the status.
DWORD waitFor(const aut::UniqueHandle& thread, DWORD patienceMs)
{
    if (!thread)
        return kStatusUnreadable;
    if (::WaitForSingleObject(thread.get(), patienceMs) == WAIT_TIMEOUT)
    {
        Log(1, "WinInet not responding. Automatic Update is going to restart.");
        ::TerminateThread(thread.get(), kStatusTimeOut);
        return kStatusTimeOut;
    }
    DWORD status = 0;
    return ::GetExitCodeThread(thread.get(), &status) ? status : kStatusUnreadable;
}

bool copyBody(const aut::TransferBlock& block, String& data)
{
    if (block.length == 0 || block.length >= INT_MAX)
        return false;
    const int length = static_cast<int>(block.length);
    char* const buffer = data.GetBufferSetLength(length);
    if (buffer == nullptr)
        return false;
    std::memcpy(buffer, block.body.get(), block.length);
    data.ReleaseBuffer(length);
    return true;
}
} // namespace

int aut::fetchWithin(DWORD patienceMs, const char* url, int* status, const CConfig* config, String& data)
try
{
    const SharedBlock block = makeBlock(url, config);
    const DWORD code = waitFor(startWorker(block), patienceMs);
    if (status != nullptr)
        *status = static_cast<int>(code);
    return code == 0 && copyBody(*block, data) ? 1 : 0;
}
catch (const std::bad_alloc&)
{
    if (status != nullptr)
        *status = static_cast<int>(kStatusUnreadable);
    return 0;
}

int GetDataFromStream(const char* url, int* status, const CConfig* config, String& data)
{
    return aut::fetchWithin(kPatienceMs, url, status, config, data);
}
