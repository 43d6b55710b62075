#include "system/CProcessListManager.h"

#include "platform/BoundedText.h"
#include "platform/Layout.h"
#include "platform/UniqueResource.h"
#include "system/ProcessSearch.h"

#include <cstring>
#include <new>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<CProcessListManager>
{
    static_assert(offsetof(CProcessListManager, m_capacity) == 8);
    static_assert(offsetof(CProcessListManager, m_bytesReturned) == 12);
    static_assert(offsetof(CProcessListManager, m_ids) == 16);
    static_assert(offsetof(CProcessListManager, m_initialised) == 24);
    static_assert(offsetof(CProcessListManager, m_processStatus) == 32);
    static_assert(offsetof(CProcessListManager, m_userEnvironment) == 40);
    static_assert(offsetof(CProcessListManager, m_enumProcesses) == 48);
    static_assert(offsetof(CProcessListManager, m_enumProcessModules) == 56);
    static_assert(offsetof(CProcessListManager, m_getModuleFileName) == 64);
    static_assert(offsetof(CProcessListManager, m_getModuleBaseName) == 72);
    static_assert(offsetof(CProcessListManager, m_createEnvironmentBlock) == 80);
    static_assert(offsetof(CProcessListManager, m_destroyEnvironmentBlock) == 88);
    static_assert(sizeof(CProcessListManager) == 96);
};
AUT_LAYOUT_END

namespace
{
constexpr int kFirstCapacity = 50;
constexpr int kCapacityStep = 10;
constexpr unsigned long kMainModulePathChars = 260;
constexpr unsigned long kModulePathChars = 512;
constexpr std::size_t kModulesForName = 100;
constexpr std::size_t kModulesForSearch = 200;

template <typename Function> bool resolve(HMODULE module, const char* name, Function*& entryPoint)
{
    // By way of a plain function pointer, which every compiler accepts as "I know what I am converting".
    entryPoint = reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(::GetProcAddress(module, name)));
    return entryPoint != nullptr;
}

void unload(HMODULE& module)
{
    aut::UniqueModule{module}.reset();
    module = nullptr;
}

aut::UniqueHandle openToRead(unsigned long pid)
{
    return aut::UniqueHandle{::OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, TRUE, pid)};
}

const char* fileNameOf(const char* path)
{
    const char* const backslash = std::strrchr(path, '\\');
    return backslash != nullptr ? backslash + 1 : path;
}

/// Counts and stores into the caller's buffer, whose size is not known here.
int collect(CProcessListManager& manager, const char* name, const char* user, int* count, unsigned long** ids)
{
    if (count == nullptr)
        return 0;
    *count = 0;
    aut::ProcessSearch::forEach(manager, name, user,
                                [count, ids](unsigned long pid)
                                {
                                    if (ids != nullptr && *ids != nullptr)
                                        (*ids)[*count] = pid;
                                    ++*count;
                                    return true;
                                });
    return *count != 0 ? 1 : 0;
}
} // namespace

CProcessListManager::CProcessListManager()
    : m_capacity(kFirstCapacity), m_bytesReturned(0), m_ids(nullptr), m_initialised(0), m_processStatus(nullptr),
      m_userEnvironment(nullptr), m_enumProcesses(nullptr), m_enumProcessModules(nullptr), m_getModuleFileName(nullptr),
      m_getModuleBaseName(nullptr), m_createEnvironmentBlock(nullptr), m_destroyEnvironmentBlock(nullptr)
{
}

CProcessListManager::~CProcessListManager()
{
    delete[] m_ids;
    unload(m_processStatus);
    unload(m_userEnvironment);
}

int CProcessListManager::Init()
{
    if (m_initialised != 0)
        return 1;
    if (m_processStatus == nullptr)
        m_processStatus = ::LoadLibraryA("PSAPI.DLL");
    if (m_userEnvironment == nullptr)
        m_userEnvironment = ::LoadLibraryA("Userenv.dll");
    if (m_userEnvironment == nullptr || m_processStatus == nullptr)
        return 0;

    if (resolve(m_processStatus, "EnumProcesses", m_enumProcesses) &&
        resolve(m_processStatus, "EnumProcessModules", m_enumProcessModules) &&
        resolve(m_processStatus, "GetModuleFileNameExA", m_getModuleFileName) &&
        resolve(m_processStatus, "GetModuleBaseNameA", m_getModuleBaseName) &&
        resolve(m_userEnvironment, "CreateEnvironmentBlock", m_createEnvironmentBlock) &&
        resolve(m_userEnvironment, "DestroyEnvironmentBlock", m_destroyEnvironmentBlock))
    {
        m_initialised = 1;
        return 1;
    }
    unload(m_processStatus);
    unload(m_userEnvironment);
    return 0;
}

int CProcessListManager::GetProcessIdList()
{
    if (!Init())
        return 0;
    for (;; m_capacity += kCapacityStep)
    {
        delete[] m_ids;
        m_ids = new (std::nothrow) unsigned long[static_cast<std::size_t>(m_capacity)];
        if (m_ids == nullptr)
            return 0;

        const unsigned long size = static_cast<unsigned long>(m_capacity) * sizeof *m_ids;
        if (!m_enumProcesses(m_ids, size, &m_bytesReturned))
        {
            delete[] m_ids;
            m_ids = nullptr;
            return 0;
        }
        // A buffer filled to its end may have been too small: only room left over proves that the list is whole.
        if (m_bytesReturned < size)
        {
            m_capacity = static_cast<int>(m_bytesReturned / sizeof *m_ids);
            return 1;
        }
    }
}

int CProcessListManager::GetProcessNameFromPID(unsigned long pid, String& name)
{
    name.Empty();
    if (!Init() || pid == 0)
        return 0;
    const aut::UniqueHandle process = openToRead(pid);
    if (!process)
        return 0;

    HMODULE modules[kModulesForName];
    unsigned long bytes = 0;
    if (!m_enumProcessModules(process.get(), modules, sizeof modules, &bytes) || bytes < sizeof(HMODULE))
        return 0;

    char path[kMainModulePathChars + 1] = ""; // older systems cut a long path without terminating it
    if (m_getModuleFileName(process.get(), modules[0], path, kMainModulePathChars) == 0)
        return 0;
    name = fileNameOf(path);
    return 1;
}

int CProcessListManager::IsProcessRunning(const char* name, int* count, unsigned long** ids)
{
    return collect(*this, name, nullptr, count, ids);
}

int CProcessListManager::IsUserProcessRunning(const char* user, const char* name, int* count, unsigned long** ids)
{
    return collect(*this, name, aut::orEmpty(user), count, ids);
}

int CProcessListManager::IsDllLoadedByProcess(unsigned long pid, String& dllName, String& fullPath)
{
    if (!Init() || pid == 0)
        return 0;
    const aut::UniqueHandle process = openToRead(pid);
    if (!process)
        return 0;

    HMODULE modules[kModulesForSearch];
    unsigned long bytes = 0;
    if (!m_enumProcessModules(process.get(), modules, sizeof modules, &bytes) || bytes > sizeof modules)
        return 0;

    for (std::size_t i = 0; i < bytes / sizeof(HMODULE); ++i)
    {
        char path[kModulePathChars + 1] = "";
        if (m_getModuleFileName(process.get(), modules[i], path, kModulePathChars) == 0)
            continue;
        char longPath[kModulePathChars];
        const unsigned long length = ::GetLongPathNameA(path, longPath, kModulePathChars);
        const char* const found = length > 0 && length < kModulePathChars ? longPath : path;
        if (dllName == fileNameOf(found))
        {
            fullPath = found;
            return 1;
        }
    }
    return 0;
}
