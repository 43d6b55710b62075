#include "tests/support/LocalServer.h"

#include "platform/UniqueResource.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdlib>

namespace auttest
{
namespace
{
constexpr char kClassKey[] = "Software\\Classes\\CLSID\\{22269CFE-9C4A-11D5-A83D-000102A7C938}";

std::string program()
{
    char path[MAX_PATH] = "";
    ::GetModuleFileNameA(nullptr, path, MAX_PATH);
    const std::string own(path);
    return own.substr(0, own.find_last_of('\\')) + "\\autoupdatesrv.exe";
}

/// Its exit status.
DWORD run(const char* option)
{
    std::string commandLine = "\"" + program() + "\" " + option;
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    if (!::CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                          &started))
        return ~0UL;
    const aut::UniqueHandle process(started.hProcess);
    const aut::UniqueHandle thread(started.hThread);
    ::WaitForSingleObject(process.get(), INFINITE);
    DWORD status = ~0UL;
    ::GetExitCodeProcess(process.get(), &status);
    return status;
}
} // namespace

LocalServer::LocalServer() : m_settings(HKEY_LOCAL_MACHINE, "Software\\Velmora\\AutoUpdateSRV")
{
    // Its process id stays: the process may have been started by an earlier test.
    for (const std::string& name : m_settings.valueNames(""))
    {
        if (name != "Pid")
            m_settings.removeValue("", name.c_str());
    }
    EXPECT_EQ(0UL, run("-RegServer"));
}

LocalServer::~LocalServer() { unregister(); }

unsigned long LocalServer::calls(const char* what) const
{
    return m_settings.readNumber("", (std::string(what) + "Calls").c_str()).value_or(0);
}

void LocalServer::end() const
{
    const DWORD pid = m_settings.readNumber("", "Pid").value_or(0);
    const aut::UniqueHandle process(pid == 0 ? nullptr : ::OpenProcess(SYNCHRONIZE, FALSE, pid));
    const aut::UniqueHandle told(::OpenEventA(EVENT_MODIFY_STATE, FALSE, "AutoUpdateSRV_End"));
    if (!process || !told)
        return;
    ::SetEvent(told.get());
    ::WaitForSingleObject(process.get(), INFINITE);
    m_settings.removeValue("", "Pid");
}

void LocalServer::unregister() const { EXPECT_EQ(0UL, run("-UnregServer")); }

void LocalServer::registerAs(const std::string& commandLine) const
{
    Registry(HKEY_LOCAL_MACHINE, kClassKey).write("LocalServer32", nullptr, commandLine);
}
} // namespace auttest
