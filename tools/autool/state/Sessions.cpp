#include "common/Text.h"
#include "machine/Owners.h"
#include "state/State.h"

#include <windows.h>

#include <tlhelp32.h>
#include <wtsapi32.h>

#include <vector>

namespace autool
{
namespace
{
/// The terminal-services interface, asked for by name: the library's own wrapper logs when it is not there.
struct TerminalServices
{
    TerminalServices() : module(::LoadLibraryW(L"wtsapi32.dll"))
    {
        find(enumerate, "WTSEnumerateSessionsW");
        find(query, "WTSQuerySessionInformationW");
        find(release, "WTSFreeMemory");
    }
    template <typename Function> void find(Function& function, const char* name) const
    {
        if (module)
            function = reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(module.get(), name)));
    }
    bool isThere() const { return enumerate != nullptr && query != nullptr && release != nullptr; }
    std::string text(DWORD session, WTS_INFO_CLASS what) const
    {
        wchar_t* buffer = nullptr;
        DWORD size = 0;
        if (!query(WTS_CURRENT_SERVER_HANDLE, session, what, &buffer, &size) || buffer == nullptr)
            return std::string();
        const std::string found = fromWide(buffer);
        release(buffer);
        return found;
    }

    Module module;
    BOOL(WINAPI* enumerate)(HANDLE, DWORD, DWORD, PWTS_SESSION_INFOW*, DWORD*) = nullptr;
    BOOL(WINAPI* query)(HANDLE, DWORD, WTS_INFO_CLASS, LPWSTR*, DWORD*) = nullptr;
    void(WINAPI* release)(PVOID) = nullptr;
};

std::string stateName(int state)
{
    static const char* const kNames[] = {"active", "connected", "connecting", "shadowing", "disconnected",
                                         "idle",   "listening", "resetting",  "down",      "starting"};
    return state >= 0 && state < static_cast<int>(std::size(kNames)) ? kNames[state] : std::to_string(state);
}

/// domain\user; "" when the process may not be asked.
std::string ownerOf(DWORD process)
{
    const Handle opened(::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process));
    Handle token;
    if (!opened || !::OpenProcessToken(opened.get(), TOKEN_QUERY, token.put()))
        return std::string();
    DWORD size = 0;
    ::GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
    std::vector<BYTE> user(size);
    if (size == 0 || !::GetTokenInformation(token.get(), TokenUser, user.data(), size, &size))
        return std::string();
    wchar_t name[256] = L"";
    wchar_t domain[256] = L"";
    DWORD nameSize = 256;
    DWORD domainSize = 256;
    SID_NAME_USE use = SidTypeUnknown;
    if (!::LookupAccountSidW(nullptr, reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid, name, &nameSize, domain,
                             &domainSize, &use))
        return std::string();
    return fromWide(domain) + "\\" + fromWide(name);
}

Json shells()
{
    Json found = Json::array();
    const Handle snapshot(::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W process{};
    process.dwSize = sizeof process;
    for (BOOL more = snapshot ? ::Process32FirstW(snapshot.get(), &process) : FALSE; more != FALSE;
         more = ::Process32NextW(snapshot.get(), &process))
    {
        const bool isShell = ::_wcsicmp(process.szExeFile, L"explorer.exe") == 0;
        const bool isClient = ::_wcsicmp(process.szExeFile, L"AutoUpdate.exe") == 0 ||
                              ::_wcsicmp(process.szExeFile, L"ReloadAutoUpdate.exe") == 0;
        if (!isShell && !isClient)
            continue;
        DWORD session = 0;
        ::ProcessIdToSessionId(process.th32ProcessID, &session);
        found.push_back({{"program", fromWide(process.szExeFile)},
                         {"process", process.th32ProcessID},
                         {"session", session},
                         {"owner", ownerOf(process.th32ProcessID)}});
    }
    return found;
}
} // namespace

Json sessionState()
{
    constexpr DWORD kNoSession = 0xFFFFFFFF;
    Json state = Json::object();
    const DWORD console = ::WTSGetActiveConsoleSessionId();
    state["console"] = console == kNoSession ? Json(nullptr) : Json(console);
    state["sessions"] = Json::array();
    state["programs"] = shells();

    const TerminalServices services;
    PWTS_SESSION_INFOW sessions = nullptr;
    DWORD count = 0;
    if (!services.isThere() || !services.enumerate(WTS_CURRENT_SERVER_HANDLE, 0, 1, &sessions, &count))
    {
        state["note"] = "the terminal-services interface gives no sessions";
        return state;
    }
    for (DWORD i = 0; i < count; ++i)
    {
        const DWORD session = sessions[i].SessionId;
        const std::string user = services.text(session, WTSUserName);
        const std::string domain = services.text(session, WTSDomainName);
        state["sessions"].push_back({{"session", session},
                                     {"station", fromWide(sessions[i].pWinStationName)},
                                     {"state", stateName(static_cast<int>(sessions[i].State))},
                                     {"user", user.empty() ? user : domain + "\\" + user}});
    }
    services.release(sessions);
    return state;
}
} // namespace autool
