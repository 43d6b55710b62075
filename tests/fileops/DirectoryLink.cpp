#include "tests/fileops/DirectoryLink.h"

#include "platform/UniqueResource.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>

namespace auttest
{
namespace
{
constexpr DWORD kLimitMs = 20'000;

/// Where the host of Wine keeps the file; "" on Windows itself.
std::string hostPath(const std::string& path)
{
    using ToHost = char*(__cdecl*)(const WCHAR*);
    const HMODULE kernel = ::GetModuleHandleA("kernel32.dll");
    const auto toHost =
        reinterpret_cast<ToHost>(reinterpret_cast<void (*)()>(::GetProcAddress(kernel, "wine_get_unix_file_name")));
    if (toHost == nullptr)
        return {};
    char* const text = toHost(std::wstring(path.begin(), path.end()).c_str());
    std::string host = text != nullptr ? text : "";
    ::HeapFree(::GetProcessHeap(), 0, text);
    // The link that stands for drive C: has a colon, which the library accepts in no path but behind a drive letter.
    const std::string link = "/dosdevices/c:/";
    const std::size_t at = host.find(link);
    return at == std::string::npos ? host : host.replace(at, link.size(), "/drive_c/");
}

bool run(std::string command)
{
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!::CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr,
                          &startup, &process))
        return false;
    const aut::UniqueHandle thread(process.hThread);
    const aut::UniqueHandle handle(process.hProcess);
    return !handle || ::WaitForSingleObject(handle.get(), kLimitMs) == WAIT_OBJECT_0;
}

/// A program of the host leaves no handle to wait on, only its effect.
bool becomes(const std::string& path, bool there)
{
    const ULONGLONG end = ::GetTickCount64() + kLimitMs;
    while ((::GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES) != there)
    {
        if (::GetTickCount64() > end)
            return false;
        ::Sleep(1);
    }
    return true;
}
} // namespace

void makeLink(const std::string& link, const std::string& target)
{
    const std::string hostTarget = hostPath(target);
    if (hostTarget.empty())
        run("cmd.exe /C mklink /J \"" + link + "\" \"" + target + "\"");
    else
        run(R"(\\?\unix\bin\ln -s ")" + hostTarget + "\" \"" + hostPath(link) + "\"");
    EXPECT_TRUE(becomes(link, true)) << "no link " << link;
}

bool removeLink(const std::string& link)
{
    const std::string host = hostPath(link);
    if (host.empty())
        return ::RemoveDirectoryA(link.c_str()) != FALSE;
    return run(R"(\\?\unix\bin\rm ")" + host + "\"") && becomes(link, false);
}

std::string onAnotherDrive(const std::string& path)
{
    std::string host = hostPath(path);
    std::replace(host.begin(), host.end(), '/', '\\');
    return host.empty() ? host : "Z:" + host;
}

std::string onAShare(const std::string& path)
{
    std::string host = hostPath(path);
    std::replace(host.begin(), host.end(), '/', '\\');
    return host.empty() ? host : R"(\\?\unix)" + host;
}
} // namespace auttest
