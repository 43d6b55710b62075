#include "environment/ControlCache.h"

#include "environment/ClientFolders.h"
#include "platform/EntryPoint.h"

#include <atomic>

namespace
{
std::atomic<bool> g_removalBlocked{false};
} // namespace

namespace aut
{
ControlCache::ControlCache()
    : m_library(LoadDLL("OCCACHE.DLL", nullptr)), m_findFirst(entryPoint<FindFirst>(m_library, "FindFirstControl")),
      m_findNext(entryPoint<FindNext>(m_library, "FindNextControl")),
      m_getInfo(entryPoint<GetInfo>(m_library, "GetControlInfo")),
      m_removeByName(entryPoint<RemoveByName>(m_library, "RemoveControlByName")),
      m_releaseHandle(entryPoint<ReleaseHandle>(m_library, "ReleaseControlHandle")),
      m_findClose(entryPoint<FindClose>(m_library, "FindControlClose"))
{
}

ControlCache::~ControlCache()
{
    if (m_walk != nullptr)
        m_findClose(m_walk);
    FreeDLL(m_library);
}

bool ControlCache::isLoaded() const
{
    return m_findFirst != nullptr && m_findNext != nullptr && m_getInfo != nullptr && m_removeByName != nullptr &&
           m_releaseHandle != nullptr && m_findClose != nullptr;
}

// The walk ends with ERROR_NO_MORE_ITEMS. It ends with any other failure too: nothing tells that one passes by.
HANDLE ControlCache::first()
{
    HANDLE control = nullptr;
    return m_findFirst(&m_walk, &control, nullptr) == ERROR_SUCCESS ? control : nullptr;
}

HANDLE ControlCache::next()
{
    HANDLE control = nullptr;
    return m_findNext(&m_walk, &control) == ERROR_SUCCESS ? control : nullptr;
}

void ControlCache::release(HANDLE control) { m_releaseHandle(control); }

bool ControlCache::read(HANDLE control, Info kind, Text& text)
{
    const bool isRead = m_getInfo(control, static_cast<UINT>(kind), nullptr, text, kTextChars) == ERROR_SUCCESS;
    text[kTextChars] = '\0';
    return isRead;
}

bool ControlCache::read(HANDLE control, Info kind, DWORD& number)
{
    return m_getInfo(control, static_cast<UINT>(kind), &number, nullptr, 0) == ERROR_SUCCESS;
}

HRESULT ControlCache::forceRemove(const char* file, const char* classId, const char* typeLibraryId,
                                  DWORD isDistributionUnit)
{
    return m_removeByName(file, classId, typeLibraryId, TRUE, isDistributionUnit);
}

bool isRemovalBlocked() noexcept { return g_removalBlocked; }

void setRemovalBlocked() noexcept { g_removalBlocked = true; }
} // namespace aut
