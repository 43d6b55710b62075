#include "foundation/EventLog.h"
#include "platform/BoundedText.h"
#include "platform/UniqueResource.h"
#include "system/CProcessListManager.h"
#include "system/ProcessSearch.h"

#include <new>
#include <string>

namespace
{
/// The user's environment variables as a block of the user-environment module, which also frees it. Without one the
/// child gets the default environment.
class EnvironmentBlock
{
public:
    using Create = int(__stdcall*)(void**, HANDLE, int);
    using Destroy = int(__stdcall*)(void*);

    EnvironmentBlock(Create create, Destroy destroy, HANDLE token) : m_destroy(destroy)
    {
        if (!create(&m_block, token, FALSE))
            m_block = nullptr;
    }
    EnvironmentBlock(const EnvironmentBlock&) = delete;
    EnvironmentBlock& operator=(const EnvironmentBlock&) = delete;
    ~EnvironmentBlock()
    {
        if (m_block != nullptr)
            m_destroy(m_block);
    }
    void* get() const { return m_block; }

private:
    Destroy m_destroy;
    void* m_block = nullptr;
};

/// The access token of the user's shell. Logs what failed.
aut::UniqueHandle openShellToken(unsigned long shellPid, const char* user)
{
    aut::UniqueHandle token;
    const aut::UniqueHandle process{::OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, shellPid)};
    if (!process)
    {
        Log(1, "Error %lu : Failed to access Explorer process handle for user %s", ::GetLastError(), user);
        return token;
    }
    if (!::OpenProcessToken(process.get(), TOKEN_ASSIGN_PRIMARY | TOKEN_DUPLICATE | TOKEN_QUERY, token.put()))
        Log(1, "Error %lu : Failed to access Explorer process Token for user %s", ::GetLastError(), user);
    return token;
}

aut::UniqueHandle duplicateAsPrimary(HANDLE shellToken)
{
    aut::UniqueHandle token;
    ::DuplicateTokenEx(shellToken, MAXIMUM_ALLOWED, nullptr, SecurityIdentification, TokenPrimary, token.put());
    return token;
}

/// Starts the command line on the interactive desktop. `environment` may be null. Returns the system's error code.
DWORD startAsUser(HANDLE token, void* environment, const char* commandLine, DWORD& pid)
{
    if (token == nullptr)
        return ERROR_INVALID_HANDLE; // never start a user's program as the account of this process

    std::string writableCommandLine = commandLine;
    char desktop[] = "";
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    startup.lpDesktop = desktop;
    const DWORD unicodeFlag = environment != nullptr ? CREATE_UNICODE_ENVIRONMENT : 0;

    PROCESS_INFORMATION started{};
    if (!::CreateProcessAsUserA(token, nullptr, writableCommandLine.data(), nullptr, nullptr, FALSE,
                                CREATE_NEW_CONSOLE | NORMAL_PRIORITY_CLASS | unicodeFlag, environment, nullptr,
                                &startup, &started))
        return ::GetLastError();
    aut::UniqueHandle{started.hThread}.reset();
    aut::UniqueHandle{started.hProcess}.reset();
    pid = started.dwProcessId;
    return ERROR_SUCCESS;
}
} // namespace

int CProcessListManager::RunUserProcess(const char* user, const char* commandLine)
try
{
    if (!Init())
        return 0;
    user = aut::orEmpty(user);
    commandLine = aut::orEmpty(commandLine);

    unsigned long shellPid = 0;
    aut::ProcessSearch::forEach(*this, aut::kShellName, user,
                                [&shellPid](unsigned long pid)
                                {
                                    shellPid = pid;
                                    return false; // the first shell of the user will do
                                });
    if (shellPid == 0)
    {
        Log(1, "Unable to find Explorer process running for user %s", user);
        return 0;
    }
    const aut::UniqueHandle shellToken = openShellToken(shellPid, user);
    if (!shellToken)
        return 0;
    const aut::UniqueHandle token = duplicateAsPrimary(shellToken.get());
    const EnvironmentBlock environment{m_createEnvironmentBlock, m_destroyEnvironmentBlock, token.get()};

    Log(0, "Trying to run %s", commandLine);
    DWORD pid = 0;
    const DWORD error = startAsUser(token.get(), environment.get(), commandLine, pid);
    if (error != ERROR_SUCCESS)
    {
        Log(1, "Error %lu : Failed to create GUI process for user %s", error, user);
        return 0;
    }
    Log(0, "Process 0x%x created for user %s", static_cast<unsigned>(pid), user);
    return 1;
}
catch (const std::bad_alloc&)
{
    return 0;
}
