#include "check/UserProxy.h"

#include "common/Text.h"
#include "machine/RegistryReader.h"

#include <windows.h>

#include <wininet.h>

#include <vector>

namespace autool
{
UserProxy readUserProxy()
{
    UserProxy settings;
    DWORD size = 0;
    ::InternetQueryOptionA(nullptr, INTERNET_OPTION_PROXY, nullptr, &size);
    std::vector<char> buffer(size + sizeof(INTERNET_PROXY_INFO));
    size = static_cast<DWORD>(buffer.size());
    if (::InternetQueryOptionA(nullptr, INTERNET_OPTION_PROXY, buffer.data(), &size))
    {
        const auto* const info = reinterpret_cast<const INTERNET_PROXY_INFO*>(buffer.data());
        const auto text = [](const char* systemText)
        { return systemText != nullptr ? toWide(fromSystem(systemText)) : std::wstring(); };
        if (info->dwAccessType == INTERNET_OPEN_TYPE_PROXY)
        {
            settings.proxy = text(info->lpszProxy);
            settings.bypass = text(info->lpszProxyBypass);
        }
    }
    if (const auto script = readValue(
            HKEY_CURRENT_USER, L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings", L"AutoConfigURL"))
        settings.script = script->text();
    return settings;
}
} // namespace autool
