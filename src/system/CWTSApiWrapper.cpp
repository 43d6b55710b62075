#include "system/CWTSApiWrapper.h"

#include "foundation/EventLog.h"
#include "platform/EntryPoint.h"
#include "platform/Layout.h"
#include "platform/UniqueResource.h"

#include <wtsapi32.h>

#include <new>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<CWTSApiWrapper>
{
    static_assert(offsetof(CWTSApiWrapper, m_terminalServices) == 8);
    static_assert(offsetof(CWTSApiWrapper, m_kernel) == 16);
    static_assert(offsetof(CWTSApiWrapper, m_getActiveConsoleSessionId) == 24);
    static_assert(offsetof(CWTSApiWrapper, m_querySessionInformation) == 32);
    static_assert(offsetof(CWTSApiWrapper, m_freeMemory) == 40);
    static_assert(offsetof(CWTSApiWrapper, m_sendMessage) == 48);
    static_assert(offsetof(CWTSApiWrapper, m_initialised) == 56);
    static_assert(sizeof(CWTSApiWrapper) == 64);
};
AUT_LAYOUT_END

namespace
{
constexpr unsigned long kNoConsoleSession = 0xFFFFFFFF;
constexpr unsigned long kWarningIcon = 0x30;
constexpr unsigned long kNoTimeout = 0;

SRWLOCK g_instanceLock = SRWLOCK_INIT;
CWTSApiWrapper* g_instance = nullptr; ///< raw, because nothing unloads libraries while the process ends
SRWLOCK g_memberLock = SRWLOCK_INIT;  ///< guards the instance's members until it is initialised

class Locked
{
public:
    explicit Locked(SRWLOCK& lock) : m_lock(lock) { ::AcquireSRWLockExclusive(&m_lock); }
    ~Locked() { ::ReleaseSRWLockExclusive(&m_lock); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;

private:
    SRWLOCK& m_lock;
};

/// Keeps what an earlier try has loaded, so that the handle stands for one load.
bool load(HMODULE& module, const char* name)
{
    if (module == nullptr)
        module = ::LoadLibraryA(name);
    if (module == nullptr)
        Log(2, "CWTSApiWrapper %s load FAILED", name);
    return module != nullptr;
}

template <typename Function> bool resolve(HMODULE module, const char* name, Function& function)
{
    function = aut::entryPoint<Function>(module, name);
    return function != nullptr;
}

/// One answer about a session of the local server, in a buffer of the interface's own.
template <typename Query, typename Free> class SessionText
{
public:
    SessionText(Query query, Free freeMemory, unsigned long session, WTS_INFO_CLASS kind) : m_free(freeMemory)
    {
        unsigned long bytes = 0;
        m_isKnown = query(WTS_CURRENT_SERVER_HANDLE, session, kind, &m_text, &bytes) != FALSE;
        if (!m_isKnown)
            m_text = nullptr; // whatever a failed query leaves there is no buffer
    }
    ~SessionText()
    {
        if (m_text != nullptr)
            m_free(m_text);
    }
    SessionText(const SessionText&) = delete;
    SessionText& operator=(const SessionText&) = delete;

    /// False when the query failed; GetLastError() is then the query's.
    bool isKnown() const { return m_isKnown; }
    bool isEmpty() const { return m_text == nullptr || *m_text == '\0'; }
    const char* get() const { return isEmpty() ? "" : m_text; }

private:
    Free m_free;
    char* m_text = nullptr;
    bool m_isKnown = false;
};
} // namespace

CWTSApiWrapper* CWTSApiWrapper::GetInstance()
{
    const Locked lock(g_instanceLock);
    if (g_instance == nullptr)
    {
        g_instance = new (std::nothrow) CWTSApiWrapper;
        if (g_instance != nullptr)
            g_instance->Init(); // the console's session can be asked for at once, which itself does not initialise
    }
    return g_instance;
}

void CWTSApiWrapper::FreeInstance()
{
    const Locked lock(g_instanceLock);
    delete g_instance;
    g_instance = nullptr;
}

CWTSApiWrapper::CWTSApiWrapper()
    : m_terminalServices(nullptr), m_kernel(nullptr), m_getActiveConsoleSessionId(nullptr),
      m_querySessionInformation(nullptr), m_freeMemory(nullptr), m_sendMessage(nullptr), m_initialised(0)
{
}

CWTSApiWrapper::~CWTSApiWrapper()
{
    aut::UniqueModule{m_terminalServices}.reset();
    aut::UniqueModule{m_kernel}.reset();
}

int CWTSApiWrapper::Init()
{
    const Locked lock(g_memberLock);
    if (m_initialised != 0)
        return 1;

    load(m_kernel, "Kernel32.dll");
    if (!resolve(m_kernel, "WTSGetActiveConsoleSessionId", m_getActiveConsoleSessionId))
        Log(1, "WTSGetActiveSessionId procedure not found"); // sessions other than the console's can still be asked for

    if (!load(m_terminalServices, "WtsApi32.dll"))
        return 0;
    if (!resolve(m_terminalServices, "WTSQuerySessionInformationA", m_querySessionInformation) ||
        !resolve(m_terminalServices, "WTSFreeMemory", m_freeMemory) ||
        !resolve(m_terminalServices, "WTSSendMessageA", m_sendMessage))
    {
        Log(2, "CWTSApiWrapper API init FAILED");
        return 0;
    }
    m_initialised = 1;
    return 1;
}

unsigned long CWTSApiWrapper::GetWTSActiveConsoleSessionId()
{
    ::AcquireSRWLockShared(&g_memberLock); // another thread may be trying to initialise once more
    const auto activeConsoleSessionId = m_getActiveConsoleSessionId;
    ::ReleaseSRWLockShared(&g_memberLock);
    if (activeConsoleSessionId == nullptr)
    {
        Log(1, "WTSGetActiveSessionId procedure not initialized");
        return kNoConsoleSession;
    }
    return activeConsoleSessionId();
}

String CWTSApiWrapper::GetWTSAccountFromSessionId(unsigned long session)
{
    String account;
    if (Init() == 0)
        return account;
    const SessionText user(m_querySessionInformation, m_freeMemory, session, WTSUserName);
    if (!user.isKnown())
    {
        const DWORD error = ::GetLastError();
        Log(2, "WTSQuerySessionInfo [UserName] failed for session ID %d, error code 0x%x", static_cast<int>(session),
            static_cast<unsigned>(error));
        return account;
    }
    if (user.isEmpty())
        return account; // nobody is logged on

    const SessionText domain(m_querySessionInformation, m_freeMemory, session, WTSDomainName);
    if (!domain.isKnown())
    {
        const DWORD error = ::GetLastError();
        Log(1, "WTSQuerySessionInfo [DomainName] failed, error code 0x%x", static_cast<unsigned>(error));
    }
    if (!domain.isEmpty())
        account.Format("%s\\%s", domain.get(), user.get());
    return account;
}

int CWTSApiWrapper::SendWTSWarningMessage(unsigned long session, String title, String message)
{
    if (Init() == 0)
        return 0;
    // The interface takes writable texts, though it only reads them. An empty one is "", never null.
    auto* const titleText = const_cast<char*>(static_cast<const char*>(title));
    auto* const messageText = const_cast<char*>(static_cast<const char*>(message));
    unsigned long answer = 0;
    return m_sendMessage(WTS_CURRENT_SERVER_HANDLE, session, titleText, static_cast<unsigned long>(title.GetLength()),
                         messageText, static_cast<unsigned long>(message.GetLength()), kWarningIcon, kNoTimeout,
                         &answer, FALSE);
}

int CWTSApiWrapper::IsWTSSession()
{
    if (Init() == 0)
        return 0;
    const SessionText client(m_querySessionInformation, m_freeMemory, WTS_CURRENT_SESSION, WTSClientName);
    return client.isEmpty() ? 0 : 1;
}

bool IsCitrixEnvironment() { return false; }
