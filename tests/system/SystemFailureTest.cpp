// What the library asks of the system exactly, and what it does when the system refuses what it never refuses here.
#include "foundation/EventLog.h"
#include "system/CAUEvent.h"
#include "system/CInterruptionEvent.h"
#include "system/COperatingSystem.h"
#include "system/CProcessListManager.h"
#include "system/SharedMemory.h"
#include "system/UserProcesses.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogFile.h"
#include "tests/system/Processes.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

using namespace auttest;
using Events = std::vector<LogEvent>;

// Private members, by the layout.
template <> struct aut::LayoutOf<struct EntryPointAccess>
{
    using Create = int(__stdcall*)(void**, HANDLE, int);
    using Destroy = int(__stdcall*)(void*);

    static bool nothingLoaded(const CProcessListManager& manager)
    {
        return manager.m_initialised == 0 && manager.m_processStatus == nullptr && manager.m_userEnvironment == nullptr;
    }
    static std::string nameOf(const SharedMemory& memory) { return memory.m_name; }
    static HANDLE threadOf(const CInterruptionEvent& event) { return event.m_thread; }
    static void requestStop(CInterruptionEvent& event) { event.m_stopRequest = 1; }
    static void useEnvironment(CProcessListManager& manager, Create create, Destroy destroy)
    {
        manager.m_createEnvironmentBlock = create;
        manager.m_destroyEnvironmentBlock = destroy;
    }
};
using Access = aut::LayoutOf<struct EntryPointAccess>;

namespace
{
/// One shell runs, and every detail is logged.
class SystemFailureTest : public ::testing::Test
{
protected:
    SystemFailureTest()
    {
        endAllShells();
        m_shell = std::make_unique<Child>(m_shells.start());
        logDetails(5);
        m_log.mark();
        s_calls = 0;
    }
    ~SystemFailureTest() override
    {
        ::RevertToSelf();
        logDetails(0);
    }
    void logDetails(DWORD level) const
    {
        m_registry.write("Config", "TestEnv", level);
        for (int call = 0; call < 10; ++call)
            Log(0xFFFF0000, "never written");
    }
    int run(const char* commandLine) { return m_manager.RunUserProcess(ownUser().c_str(), commandLine); }

    ClientRegistry m_registry;
    IdleProcesses m_shells{"Explorer.exe"};
    std::unique_ptr<Child> m_shell;
    CProcessListManager m_manager;
    LogFile m_log;

    static inline int s_calls = 0;
};
} // namespace

TEST_F(SystemFailureTest, AMissingEntryPointUnloadsBothModules)
{
    using Resolve = FARPROC WINAPI(HMODULE, const char*);
    static const char* missing = nullptr;
    Resolve* const resolve = [](HMODULE module, const char* name) -> FARPROC
    { return std::strcmp(name, missing) == 0 ? nullptr : ::GetProcAddress(module, name); };
    for (const char* const name : {"EnumProcesses", "EnumProcessModules", "GetModuleFileNameExA", "GetModuleBaseNameA",
                                   "CreateEnvironmentBlock", "DestroyEnvironmentBlock"})
    {
        CProcessListManager manager;
        missing = name;
        {
            const ImportPatch patch("GetProcAddress", resolve);
            EXPECT_EQ(0, manager.GetProcessIdList()) << name;
            EXPECT_TRUE(Access::nothingLoaded(manager)) << name;
        }
        EXPECT_EQ(1, manager.GetProcessIdList()) << "the next try starts anew";
    }
}

TEST_F(SystemFailureTest, ProcessesAreOpenedToQueryAndToReadWithAnInheritableHandle)
{
    using Open = HANDLE WINAPI(DWORD, BOOL, DWORD);
    Open* const open = [](DWORD access, BOOL inheritable, DWORD pid) -> HANDLE
    {
        ++s_calls;
        EXPECT_EQ(DWORD{PROCESS_QUERY_INFORMATION | PROCESS_VM_READ}, access);
        EXPECT_TRUE(inheritable);
        return ::OpenProcess(access, inheritable, pid);
    };
    const ImportPatch patch("OpenProcess", open);
    String text;
    String dll = "explorer.exe";
    EXPECT_EQ(1, m_manager.GetProcessNameFromPID(m_shell->pid(), text));
    EXPECT_EQ(1, m_manager.IsDllLoadedByProcess(m_shell->pid(), dll, text));
    EXPECT_EQ(2, s_calls);
}

TEST_F(SystemFailureTest, AnOwnerIsReadOnlyAfterTheSizeWasAskedFor)
{
    using Query = BOOL WINAPI(HANDLE, TOKEN_INFORMATION_CLASS, void*, DWORD, DWORD*);
    Query* const otherError = [](HANDLE token, TOKEN_INFORMATION_CLASS kind, void* data, DWORD room,
                                 DWORD* size) -> BOOL
    {
        const BOOL read = ::GetTokenInformation(token, kind, data, room, size);
        if (data == nullptr)
            ::SetLastError(ERROR_ACCESS_DENIED); // the size is right, its error is not
        return read;
    };
    Query* const noError = [](HANDLE, TOKEN_INFORMATION_CLASS, void*, DWORD, DWORD* size) -> BOOL
    {
        *size = 0;
        return TRUE;
    };
    for (Query* const query : {otherError, noError})
    {
        const ImportPatch patch("GetTokenInformation", query);
        String user = "left over";
        EXPECT_EQ(0, CProcessListManager::GetUserNameFromPID(m_shell->pid(), user));
        EXPECT_TRUE(user.IsEmpty());
    }
}

TEST_F(SystemFailureTest, AnAccountThatCannotBeLookedUpHasNoName)
{
    using LookUp = BOOL WINAPI(const char*, PSID, char*, DWORD*, char*, DWORD*, SID_NAME_USE*);
    LookUp* const fail = [](const char*, PSID, char*, DWORD* nameSize, char*, DWORD* domainSize, SID_NAME_USE*) -> BOOL
    {
        EXPECT_EQ(260U, *nameSize);
        EXPECT_EQ(260U, *domainSize);
        return FALSE;
    };
    const ImportPatch patch("LookupAccountSidA", fail);
    String user = "left over";
    EXPECT_EQ(0, CProcessListManager::GetUserNameFromPID(m_shell->pid(), user));
    EXPECT_TRUE(user.IsEmpty());
}

namespace
{
/// Notes the rights that the library opens processes and their tokens with.
class OpeningRights
{
public:
    OpeningRights() : m_openProcess("OpenProcess", openProcess), m_openToken("OpenProcessToken", openToken)
    {
        s_process.clear();
        s_token.clear();
    }
    static const std::vector<DWORD>& ofProcesses() { return s_process; }
    static const std::vector<DWORD>& ofTokens() { return s_token; }

private:
    static HANDLE WINAPI openProcess(DWORD access, BOOL inheritable, DWORD pid)
    {
        s_process.push_back(access);
        return ::OpenProcess(access, inheritable, pid);
    }
    static BOOL WINAPI openToken(HANDLE process, DWORD access, HANDLE* token)
    {
        s_token.push_back(access);
        return ::OpenProcessToken(process, access, token);
    }
    static inline std::vector<DWORD> s_process;
    static inline std::vector<DWORD> s_token;
    const ImportPatch m_openProcess;
    const ImportPatch m_openToken;
};
} // namespace

TEST_F(SystemFailureTest, AProcessIsImpersonatedWithTheRightsThatTakesAndNoMore)
{
    const OpeningRights rights;
    EXPECT_TRUE(ImpersonateUserFromPID(m_shell->pid()));
    EXPECT_EQ((std::vector<DWORD>{0x0400}), rights.ofProcesses()); // query information
    EXPECT_EQ((std::vector<DWORD>{0x000E}), rights.ofTokens());    // duplicate, impersonate, query
}

TEST_F(SystemFailureTest, AShellIsOpenedWithTheRightsThatStartingItsUsersProcessTakes)
{
    const OpeningRights rights;
    EXPECT_EQ(0, run("no such program.exe"));
    ASSERT_GE(rights.ofProcesses().size(), 2U);      // the search for the shell opens it first
    EXPECT_EQ(0x0400U, rights.ofProcesses().back()); // query information
    ASSERT_GE(rights.ofTokens().size(), 2U);
    EXPECT_EQ(0x000BU, rights.ofTokens().back()); // assign primary, duplicate, query
}

TEST_F(SystemFailureTest, ExistingEventsAreOpenedWithFullAccess)
{
    using Open = HANDLE WINAPI(DWORD, BOOL, const char*);
    Open* const open = [](DWORD access, BOOL inheritable, const char* name) -> HANDLE
    {
        ++s_calls;
        EXPECT_EQ(0x1F0003U, access);
        return ::OpenEventA(access, inheritable, name);
    };
    CAUEvent existing;
    ASSERT_EQ(1, existing.Create("SystemFailureTest existing"));
    const ImportPatch patch("OpenEventA", open);
    CAUEvent event;
    EXPECT_EQ(1, event.Create("SystemFailureTest existing"));
    EXPECT_EQ(1, s_calls);
    CInterruptionEvent interruption;
    String name = "SystemFailureTest interruption";
    EXPECT_EQ(1, interruption.Create(name));
    EXPECT_EQ(2, s_calls);
}

TEST_F(SystemFailureTest, ABlockOfSharedMemoryIsOpenedForWritingAndMappedForBoth)
{
    using Open = HANDLE WINAPI(DWORD, BOOL, const char*);
    using Map = void* WINAPI(HANDLE, DWORD, DWORD, DWORD, SIZE_T);
    Open* const open = [](DWORD access, BOOL inheritable, const char* name) -> HANDLE
    {
        ++s_calls;
        EXPECT_EQ(DWORD{FILE_MAP_WRITE}, access);
        EXPECT_TRUE(inheritable);
        return ::OpenFileMappingA(access, inheritable, name);
    };
    Map* const map = [](HANDLE mapping, DWORD access, DWORD offsetHigh, DWORD offsetLow, SIZE_T size) -> void*
    {
        ++s_calls;
        EXPECT_EQ(DWORD{FILE_MAP_READ | FILE_MAP_WRITE}, access);
        EXPECT_EQ(0U, offsetHigh);
        EXPECT_EQ(0U, offsetLow);
        EXPECT_EQ(0U, size); // the whole of it
        return ::MapViewOfFile(mapping, access, offsetHigh, offsetLow, size);
    };
    SharedMemory owner("SystemFailureTest memory");
    const ImportPatch mapping("MapViewOfFile", map);
    EXPECT_NE(nullptr, owner.Create(64));
    EXPECT_EQ(1, s_calls);
    const ImportPatch opening("OpenFileMappingA", open);
    SharedMemory other("SystemFailureTest memory");
    EXPECT_NE(nullptr, other.Open());
    EXPECT_EQ(3, s_calls);
    other.Close();
    owner.Close();
}

TEST_F(SystemFailureTest, AnEventThatAnotherProcessMakesMeanwhileIsShared)
{
    using Open = HANDLE WINAPI(DWORD, BOOL, const char*);
    Open* const tooEarly = [](DWORD, BOOL, const char*) -> HANDLE
    {
        ::SetLastError(ERROR_FILE_NOT_FOUND); // it is made right after this
        return nullptr;
    };
    CAUEvent first;
    CInterruptionEvent firstInterruption;
    String name = "SystemFailureTest interruption";
    ASSERT_EQ(1, first.Create("SystemFailureTest meanwhile"));
    ASSERT_EQ(1, firstInterruption.Create(name));
    const ImportPatch patch("OpenEventA", tooEarly);
    CAUEvent second;
    ASSERT_EQ(1, second.Create("SystemFailureTest meanwhile"));
    EXPECT_EQ(1, second.SignalEvent());
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(first.GetHandle(), 0));
    CInterruptionEvent secondInterruption;
    ASSERT_EQ(1, secondInterruption.Create(name));
    EXPECT_EQ(1, secondInterruption.RaiseIT());
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(firstInterruption.GetEventHandle(), 0));
}

TEST_F(SystemFailureTest, ABlockThatCannotBeMappedLeavesNoHandle)
{
    using Map = void* WINAPI(HANDLE, DWORD, DWORD, DWORD, SIZE_T);
    Map* const fail = [](HANDLE, DWORD, DWORD, DWORD, SIZE_T) -> void* { return nullptr; };
    SharedMemory owner("SystemFailureTest unmapped");
    ASSERT_NE(nullptr, owner.Create(64));
    const ImportPatch patch("MapViewOfFile", fail);
    const std::size_t before = openHandles();
    SharedMemory created("SystemFailureTest unmapped");
    EXPECT_EQ(nullptr, created.Create(64));
    created.Close();
    SharedMemory opened("SystemFailureTest unmapped");
    EXPECT_EQ(nullptr, opened.Open()) << "without a view nothing would ever release the handle";
    EXPECT_EQ(before, openHandles());
    owner.Close();
}

TEST_F(SystemFailureTest, SharedMemoryAsksForTheSystemOnceInAProcess)
{
    using Ask = BOOL WINAPI(OSVERSIONINFOA*);
    Ask* const fail = [](OSVERSIONINFOA*) -> BOOL
    {
        ++s_calls;
        return FALSE;
    };
    const std::string before = Access::nameOf(SharedMemory("b"));
    {
        const ImportPatch patch("GetVersionExA", fail);
        COperatingSystem::FreeInstance(); // the next question reaches the system
        EXPECT_EQ(before, Access::nameOf(SharedMemory("b")));
        EXPECT_EQ(0, s_calls);
        CAUEvent event; // asks each time
        EXPECT_EQ(1, event.Create("SystemFailureTest unknown system"));
        EXPECT_STREQ("SystemFailureTest unknown system", event.GetName(1));
        EXPECT_NE(0, s_calls);
        EXPECT_EQ(before, Access::nameOf(SharedMemory("b")));
    }
    COperatingSystem::FreeInstance();
    EXPECT_EQ("Local\\b", before);
}

TEST_F(SystemFailureTest, AnImpersonationThatFailsIsLogged)
{
    using Impersonate = BOOL WINAPI(HANDLE);
    Impersonate* const fail = [](HANDLE) -> BOOL { return FALSE; };
    logDetails(0); // a warning needs none
    m_log.mark();
    const ImportPatch patch("ImpersonateLoggedOnUser", fail);
    const std::size_t before = openHandles();
    EXPECT_FALSE(ImpersonateUserFromPID(m_shell->pid()));
    EXPECT_EQ(before, openHandles());
    EXPECT_EQ((Events{{"Warning", "ImpersonateUserFromPID: ImpersonateLoggedOnUser FAILED"}}), m_log.events());
}

TEST_F(SystemFailureTest, AnImpersonationClosesTheHivesOfTheUsers)
{
    using CloseKey = LONG WINAPI(HKEY);
    static std::vector<HKEY> closed;
    closed.clear();
    CloseKey* const note = [](HKEY key) -> LONG
    {
        if (impersonating())
            closed.push_back(key);
        return ::RegCloseKey(key);
    };
    logDetails(0); // so that the log closes no key meanwhile
    const ImportPatch patch("RegCloseKey", note);
    EXPECT_TRUE(ImpersonateUserFromPID(m_shell->pid()));
    ASSERT_GE(closed.size(), 2U);
    EXPECT_EQ((std::vector<HKEY>{HKEY_CURRENT_USER, HKEY_USERS}), (std::vector<HKEY>{closed.end() - 2, closed.end()}));
}

TEST_F(SystemFailureTest, AShellThatCannotBeOpenedIsLogged)
{
    using Open = HANDLE WINAPI(DWORD, BOOL, DWORD);
    Open* const failAfterTheSearch = [](DWORD access, BOOL inheritable, DWORD pid) -> HANDLE
    {
        if (access == PROCESS_QUERY_INFORMATION && ++s_calls == 2) // the first asks for the owner
        {
            ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
            return nullptr;
        }
        return ::OpenProcess(access, inheritable, pid);
    };
    const ImportPatch patch("OpenProcess", failAfterTheSearch);
    EXPECT_EQ(0, run("never.exe"));
    EXPECT_EQ((Events{{"Warning", "Error 8 : Failed to access Explorer process handle for user " + ownUser()}}),
              m_log.events());
}

TEST_F(SystemFailureTest, ATokenThatCannotBeDuplicatedStartsNothing)
{
    using Duplicate =
        BOOL WINAPI(HANDLE, DWORD, SECURITY_ATTRIBUTES*, SECURITY_IMPERSONATION_LEVEL, TOKEN_TYPE, HANDLE*);
    Duplicate* const fail = [](HANDLE, DWORD access, SECURITY_ATTRIBUTES* attributes,
                               SECURITY_IMPERSONATION_LEVEL level, TOKEN_TYPE type, HANDLE*) -> BOOL
    {
        EXPECT_EQ(DWORD{MAXIMUM_ALLOWED}, access);
        EXPECT_EQ(nullptr, attributes);
        EXPECT_EQ(SecurityIdentification, level);
        EXPECT_EQ(TokenPrimary, type);
        return FALSE;
    };
    const ImportPatch patch("DuplicateTokenEx", fail);
    EXPECT_EQ(0, run("never.exe"));
    EXPECT_EQ((Events{{"Info", "Trying to run never.exe"},
                      {"Warning", "Error 6 : Failed to create GUI process for user " + ownUser()}}),
              m_log.events());
}

namespace
{
struct Creation
{
    std::string commandLine;
    bool onlyCommandLine = false;
    BOOL inherit = TRUE;
    DWORD flags = 0;
    const void* environment = nullptr;
    std::string desktop;
};
Creation g_creation;

BOOL WINAPI noteCreation(HANDLE, const char* application, char* commandLine, SECURITY_ATTRIBUTES* process,
                         SECURITY_ATTRIBUTES* thread, BOOL inherit, DWORD flags, void* environment, const char* folder,
                         STARTUPINFOA* startup, PROCESS_INFORMATION*)
{
    g_creation.onlyCommandLine = application == nullptr && process == nullptr && thread == nullptr && folder == nullptr;
    g_creation.commandLine = commandLine;
    commandLine[0] = '*'; // must be a copy that may be written to
    g_creation.inherit = inherit;
    g_creation.flags = flags;
    g_creation.environment = environment;
    g_creation.desktop = startup->lpDesktop != nullptr ? startup->lpDesktop : "(null)";
    ::SetLastError(ERROR_FILE_NOT_FOUND);
    return FALSE;
}

char g_block[] = "x";
int __stdcall createBlock(void** block, HANDLE token, int inherit)
{
    EXPECT_NE(nullptr, token);
    EXPECT_EQ(0, inherit);
    *block = g_block;
    return 1;
}
int __stdcall createNoBlock(void** block, HANDLE, int)
{
    *block = g_block; // not valid on failure
    return 0;
}
int g_destroyed = 0;
int __stdcall destroyBlock(void* block)
{
    EXPECT_EQ(g_block, block);
    ++g_destroyed;
    return 1;
}
} // namespace

TEST_F(SystemFailureTest, AUserProcessIsCreatedFromItsCommandLineAlone)
{
    ASSERT_EQ(1, m_manager.GetProcessIdList());
    Access::useEnvironment(m_manager, createBlock, destroyBlock);
    g_destroyed = 0;
    const ImportPatch patch("CreateProcessAsUserA", noteCreation);
    const char commandLine[] = "program argument";
    EXPECT_EQ(0, run(commandLine));
    EXPECT_STREQ("program argument", commandLine);
    EXPECT_EQ("program argument", g_creation.commandLine);
    EXPECT_TRUE(g_creation.onlyCommandLine);
    EXPECT_FALSE(g_creation.inherit);
    EXPECT_EQ("", g_creation.desktop);
    EXPECT_EQ(DWORD{CREATE_NEW_CONSOLE | NORMAL_PRIORITY_CLASS | CREATE_UNICODE_ENVIRONMENT}, g_creation.flags);
    EXPECT_EQ(g_block, g_creation.environment);
    EXPECT_EQ(1, g_destroyed) << "also when the process was not created";
}

TEST_F(SystemFailureTest, WithoutAnEnvironmentBlockAUserProcessHasTheDefaultEnvironment)
{
    ASSERT_EQ(1, m_manager.GetProcessIdList());
    Access::useEnvironment(m_manager, createNoBlock, destroyBlock);
    g_destroyed = 0;
    const ImportPatch patch("CreateProcessAsUserA", noteCreation);
    EXPECT_EQ(0, run("program"));
    EXPECT_EQ(DWORD{CREATE_NEW_CONSOLE | NORMAL_PRIORITY_CLASS}, g_creation.flags);
    EXPECT_EQ(nullptr, g_creation.environment);
    EXPECT_EQ(0, g_destroyed);
}

TEST_F(SystemFailureTest, AThreadThatCannotBeCreatedIsReported)
{
    using CreateThreadFunction =
        HANDLE WINAPI(SECURITY_ATTRIBUTES*, SIZE_T, LPTHREAD_START_ROUTINE, void*, DWORD, DWORD*);
    CreateThreadFunction* const fail = [](SECURITY_ATTRIBUTES*, SIZE_T, LPTHREAD_START_ROUTINE, void*, DWORD,
                                          DWORD*) -> HANDLE { return nullptr; };
    String name = "SystemFailureTest";
    CInterruptionEvent event;
    ASSERT_EQ(1, event.Create(name));
    {
        const ImportPatch patch("CreateThread", fail);
        EXPECT_EQ(0, event.StartPooling());
    }
    EXPECT_EQ(1, event.StopPooling());
    EXPECT_EQ(1, event.StartPooling()) << "the next try can succeed";
}

TEST_F(SystemFailureTest, ASignalBetweenTheLastWaitAndTheRequestToStopIsSeen)
{
    using Wait = DWORD WINAPI(HANDLE, DWORD);
    static CInterruptionEvent* watched = nullptr;
    // The wait times out; before its thread goes on, the owner raises the event and asks it to stop.
    Wait* const timeOutFirst = [](HANDLE object, DWORD timeoutMs) -> DWORD
    {
        if (object != watched->GetEventHandle() || s_calls++ > 0)
            return ::WaitForSingleObject(object, timeoutMs);
        EXPECT_EQ(100U, timeoutMs);
        watched->RaiseIT();
        Access::requestStop(*watched);
        return WAIT_TIMEOUT;
    };
    String name = "SystemFailureTest last signal";
    CInterruptionEvent event;
    ASSERT_EQ(1, event.Create(name));
    watched = &event;
    const ImportPatch patch("WaitForSingleObject", timeOutFirst);
    ASSERT_EQ(1, event.StartPooling());
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(Access::threadOf(event), 30000));
    EXPECT_EQ(1, event.StopPooling());
    EXPECT_EQ(1, event.IsITRaised());
}

TEST_F(SystemFailureTest, LookingForAUserChecksAndSleepsOnceForEachTry)
{
    using Resolve = FARPROC WINAPI(HMODULE, const char*);
    using SleepFunction = void WINAPI(DWORD);
    static std::vector<std::string> steps;
    using Enumerate = int __stdcall(unsigned long*, unsigned long, unsigned long*);
    Enumerate* const onlyIdle = [](unsigned long* ids, unsigned long room, unsigned long* bytes) -> int
    {
        *bytes = sizeof *ids;
        ids[0] = 0;
        if (room > *bytes) // a list without room to spare is only read again
            steps.push_back("check");
        return 1;
    };
    static const auto enumerate = reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(onlyIdle));
    Resolve* const resolve = [](HMODULE module, const char* name) -> FARPROC
    { return std::strcmp(name, "EnumProcesses") == 0 ? enumerate : ::GetProcAddress(module, name); };
    SleepFunction* const sleep = [](DWORD pauseMs) { steps.push_back(std::to_string(pauseMs)); };
    const ImportPatch enumeration("GetProcAddress", resolve);
    const ImportPatch sleeping("Sleep", sleep);

    steps.clear();
    EXPECT_FALSE(IsUserLogged(0));
    EXPECT_EQ((std::vector<std::string>{"check"}), steps);
    steps.clear();
    EXPECT_FALSE(IsUserLogged(1));
    EXPECT_EQ((std::vector<std::string>{"check", "2000"}), steps);
    steps.clear();
    m_log.mark();
    EXPECT_FALSE(IsUserLogged(3));
    EXPECT_EQ((std::vector<std::string>{"check", "2000", "check", "2000", "check", "2000"}), steps);
    EXPECT_EQ((Events{{"Info", "Try 1 : Explorer Not Found"},
                      {"Info", "Try 2 : Explorer Not Found"},
                      {"Info", "Try 3 : Explorer Not Found"}}),
              m_log.events());
}

TEST_F(SystemFailureTest, AUserWhoLogsOnBetweenTwoTriesIsFound)
{
    using SleepFunction = void WINAPI(DWORD);
    m_shell->end();
    static std::unique_ptr<Child> late;
    static const IdleProcesses* shells = nullptr;
    shells = &m_shells;
    SleepFunction* const logOn = [](DWORD)
    {
        if (++s_calls == 2)
            late = std::make_unique<Child>(shells->start());
    };
    const ImportPatch sleeping("Sleep", logOn);
    EXPECT_TRUE(IsUserLogged(5));
    late.reset();
    EXPECT_EQ((Events{{"Info", "Try 1 : Explorer Not Found"}, {"Info", "Try 2 : Explorer Not Found"}}), m_log.events());
}
