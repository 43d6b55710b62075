#include "system/COperatingSystem.h"

#include "platform/BoundedText.h"
#include "platform/Layout.h"
#include "system/OSClassification.h"

#include <atomic>
#include <new>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<COperatingSystem>
{
    static_assert(offsetof(COperatingSystem, m_value) == 8);
    static_assert(offsetof(COperatingSystem, m_version) == 12);
    static_assert(offsetof(COperatingSystem, m_system) == 160);
    static_assert(offsetof(COperatingSystem, m_initialised) == 208);
    static_assert(sizeof(COperatingSystem) == 216);
};
AUT_LAYOUT_END

namespace
{
std::atomic<COperatingSystem*> g_instance{nullptr};

// The texts of the last successful classification. They outlive the instance and are shared by all callers.
SRWLOCK g_lock = SRWLOCK_INIT; ///< guards the texts and the instance's members
char g_versionText[64] = "";
char g_servicePackText[128] = "";

class Locked
{
public:
    Locked() { ::AcquireSRWLockExclusive(&g_lock); }
    ~Locked() { ::ReleaseSRWLockExclusive(&g_lock); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;
};

void queryNativeSystem(SYSTEM_INFO& system)
{
    using Query = void(WINAPI*)(SYSTEM_INFO*);
    // Looked up, not imported: the oldest systems lack it, and there the plain query says the same.
    const HMODULE kernel = ::GetModuleHandleA("kernel32.dll");
    const FARPROC found = kernel != nullptr ? ::GetProcAddress(kernel, "GetNativeSystemInfo") : nullptr;
    if (found != nullptr)
        reinterpret_cast<Query>(reinterpret_cast<void*>(found))(&system);
    else
        ::GetSystemInfo(&system);
}
} // namespace

COperatingSystem* COperatingSystem::GetInstance()
{
    COperatingSystem* current = g_instance.load(std::memory_order_acquire);
    if (current != nullptr)
        return current;
    // Two threads that come here at once both make one; the first to put it in place wins.
    auto* const made = new (std::nothrow) COperatingSystem;
    if (g_instance.compare_exchange_strong(current, made, std::memory_order_acq_rel))
        return made;
    delete made;
    return current;
}

void COperatingSystem::FreeInstance() { delete g_instance.exchange(nullptr, std::memory_order_acq_rel); }

COperatingSystem::COperatingSystem() : m_value(OS_UNKNOWN), m_version{}, m_system{}, m_initialised(0) {}

COperatingSystem::~COperatingSystem() = default;

int COperatingSystem::Init()
{
    if (m_initialised != 0)
        return m_initialised;
    queryNativeSystem(m_system);
    m_version.dwOSVersionInfoSize = sizeof m_version;
#if defined(_MSC_VER)
#pragma warning(suppress : 4996) // the version as this program's manifest lets it be seen is exactly what is wanted
#endif
    m_initialised = ::GetVersionExA(&m_version) != FALSE ? 1 : 0;
    return m_initialised;
}

COperatingSystem::OS COperatingSystem::GetOSValue(String& version, String& servicePack)
{
    const Locked lock;
    if (Init() != 0 && m_value == OS_UNKNOWN)
    {
        m_value = aut::classifyOS(m_version);
        const bool known = m_value != OS_UNKNOWN;
        g_versionText[0] = '\0';
        if (known)
        {
            aut::formatText(g_versionText, sizeof g_versionText, "%u.%u",
                            static_cast<unsigned>(m_version.dwMajorVersion),
                            static_cast<unsigned>(m_version.dwMinorVersion));
        }
        aut::copyText(g_servicePackText, known ? m_version.szCSDVersion : "");
    }
    version = g_versionText;
    servicePack = g_servicePackText;
    return static_cast<OS>(m_value);
}

String COperatingSystem::OSValueToString(OS value)
{
    static const char* const kNames[] = {"UNKNOWN",    "WIN95",         "Windows 95 A", "Windows 95 B", "Windows 95 C",
                                         "Windows 98", "Windows 98 SE", "Windows Me",   "Windows NT 4", "Windows 2000",
                                         "Windows XP", "Windows VISTA", "Windows 7"};
    const auto index = static_cast<int>(value);
    if (index < 0 || index >= static_cast<int>(sizeof kNames / sizeof *kNames))
        return "UnSupported OS";
    return kNames[index];
}

int COperatingSystem::IsOSx64()
{
    const Locked lock;
    return Init() != 0 && m_version.dwPlatformId == VER_PLATFORM_WIN32_NT &&
                   m_system.wProcessorArchitecture == PROCESSOR_ARCHITECTURE_AMD64
               ? 1
               : 0;
}
