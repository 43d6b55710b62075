#ifndef AUTOOLS_ENVIRONMENT_CONTROLCACHE_H
#define AUTOOLS_ENVIRONMENT_CONTROLCACHE_H

#include <windows.h>

namespace aut
{
/// Windows' control cache "OCCACHE.DLL", loaded for as long as this lives, and one walk over its controls.
class ControlCache
{
public:
    static constexpr int kTextChars = 260;
    using Text = char[kTextChars + 1]; ///< one more than the interface may fill, which need not terminate it

    /// What can be asked of a control.
    enum class Info : unsigned int
    {
        File = 2,
        ClassId = 3,
        TypeLibraryId = 4,
        IsDistributionUnit = 9
    };

    ControlCache();
    ~ControlCache();
    ControlCache(const ControlCache&) = delete;
    ControlCache& operator=(const ControlCache&) = delete;

    /// False when the library or one of its functions is missing; nothing else may be called then.
    bool isLoaded() const;

    /// Start and go on with the walk. Null at its end; every other handle goes back by `release`.
    HANDLE first();
    HANDLE next();
    void release(HANDLE control);

    bool read(HANDLE control, Info kind, Text& text);
    bool read(HANDLE control, Info kind, DWORD& number);

    /// Removes it also when others share it.
    HRESULT forceRemove(const char* file, const char* classId, const char* typeLibraryId, DWORD isDistributionUnit);

private:
    using FindFirst = LONG(WINAPI*)(HANDLE* walk, HANDLE* control, const char* cacheFolder);
    using FindNext = LONG(WINAPI*)(HANDLE* walk, HANDLE* control);
    using GetInfo = LONG(WINAPI*)(HANDLE control, UINT kind, DWORD* number, char* text, int textChars);
    using RemoveByName = HRESULT(WINAPI*)(const char* file, const char* classId, const char* typeLibraryId, BOOL force,
                                          DWORD isDistributionUnit);
    using ReleaseHandle = BOOL(WINAPI*)(HANDLE control);
    using FindClose = LONG(WINAPI*)(HANDLE walk);

    HMODULE m_library;
    HANDLE m_walk = nullptr;
    FindFirst m_findFirst;
    FindNext m_findNext;
    GetInfo m_getInfo;
    RemoveByName m_removeByName;
    ReleaseHandle m_releaseHandle;
    FindClose m_findClose;
};

/// Whether a control could not be removed because it was in use; never reset while the process lives.
bool isRemovalBlocked() noexcept;
void setRemovalBlocked() noexcept;
} // namespace aut

#endif
