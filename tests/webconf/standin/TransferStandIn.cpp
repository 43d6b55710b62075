// Stands in for the download library "7xFileTransfer.dll" where a test needs what the real one does not do on request:
// stalling, refusing, lying. What it does is read from the URL:
//
//   null        no transfer object
//   stall       Download never returns
//   status=N    the transfer fails with that status
//   steps=N     Download says N times that it is still running
//   zero        finished without a byte
//   lie         finished with a length but no data
//   nul         the body holds a NUL
//   echo        the body tells what the transfer was made with
//   otherwise   the body is "body of " and the URL
//
// The environment variable AUTTEST_TRANSFER_PARAMS receives the parameters of each transfer, or "none". When the
// library is unloaded, AUTTEST_TRANSFERS_LEFT receives how many transfers and parameter records were not released.

#include "filetransfer/FileTransfer.h"

#include <windows.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <string>

namespace
{
namespace ft = filetransfer;

std::atomic<int> g_alive{0};

struct Transfer : ft::FileTransfer
{
    std::string url;
    std::string body;
    int runningSteps = 0;
};

bool asked(const std::string& url, const char* what) { return url.find(what) != std::string::npos; }

int numberBehind(const std::string& url, const char* key)
{
    const std::size_t at = url.find(key);
    return at == std::string::npos ? 0 : std::atoi(url.c_str() + at + std::strlen(key));
}

std::string hex(const void* data, std::size_t size)
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < size; ++i)
    {
        const unsigned byte = static_cast<const unsigned char*>(data)[i];
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0xF];
    }
    return text;
}

std::string textOf(const ft::ConnectionParams* params)
{
    return params != nullptr ? hex(params, sizeof *params) : "none";
}

std::string bodyFor(const std::string& url, const char* user, const char* password, const ft::ConnectionParams* params,
                    bool flag)
{
    if (asked(url, "nul"))
        return std::string("a\0b", 3);
    if (!asked(url, "echo"))
        return "body of " + url;
    return "user=[" + std::string(user) + "] password=[" + password + "] flag=" + (flag ? "1" : "0") +
           " params=" + textOf(params);
}
} // namespace

extern "C"
{
    __declspec(dllexport) ft::ConnectionParams* NewConnectionParams()
    {
        auto* const params = new ft::ConnectionParams;
        std::memset(static_cast<void*>(params), 0xEE, sizeof *params);
        ++g_alive;
        return params;
    }

    __declspec(dllexport) void DeleteConnectionParams(ft::ConnectionParams* params)
    {
        delete params;
        --g_alive;
    }

    __declspec(dllexport) ft::FileTransfer* NewFileTransfer(const char* url, const char* user, const char* password,
                                                            const ft::ConnectionParams* params, bool flag, int* status)
    {
        *status = 0;
        ::SetEnvironmentVariableA("AUTTEST_TRANSFER_PARAMS", textOf(params).c_str());
        if (asked(url, "null"))
            return nullptr;
        auto* const transfer = new Transfer{{}, url, bodyFor(url, user, password, params, flag), 0};
        transfer->runningSteps = numberBehind(url, "steps=");
        ++g_alive;
        return transfer;
    }

#if !defined(AUTTEST_WITHOUT_DOWNLOAD)
    __declspec(dllexport) int Download(ft::FileTransfer* base)
    {
        auto* const transfer = static_cast<Transfer*>(base);
        if (asked(transfer->url, "stall"))
            ::Sleep(INFINITE);
        if (asked(transfer->url, "status="))
            return numberBehind(transfer->url, "status=");
        if (transfer->runningSteps-- > 0)
            return ft::kRunning;
        const bool empty = asked(transfer->url, "zero");
        transfer->data = asked(transfer->url, "lie") ? nullptr : transfer->body.data();
        transfer->length = empty ? 0 : transfer->body.size();
        return ft::kFinished;
    }
#endif

    __declspec(dllexport) void DeleteFileTransfer(ft::FileTransfer* transfer)
    {
        delete static_cast<Transfer*>(transfer);
        --g_alive;
    }
}

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_DETACH)
        ::SetEnvironmentVariableA("AUTTEST_TRANSFERS_LEFT", std::to_string(g_alive.load()).c_str());
    return TRUE;
}
