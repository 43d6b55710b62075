#ifndef AUTOOLS_TESTS_ENVIRONMENT_OCCACHE_CONTROLCACHEHOST_H
#define AUTOOLS_TESTS_ENVIRONMENT_OCCACHE_CONTROLCACHEHOST_H

#include <windows.h>

namespace auttest
{
/// What the stand-in for OCCACHE.DLL asks the running test for. The two share no C++ runtime: nothing that owns memory
/// is passed between them.
class ControlCacheHost
{
public:
    virtual LONG findFirst(HANDLE* walk, HANDLE* control, const char* cacheFolder) = 0;
    virtual LONG findNext(HANDLE* walk, HANDLE* control) = 0;
    virtual LONG getInfo(HANDLE control, UINT kind, DWORD* number, char* text, int textChars) = 0;
    virtual HRESULT removeByName(const char* file, const char* classId, const char* typeLibraryId, BOOL force,
                                 DWORD isDistributionUnit) = 0;
    virtual BOOL releaseHandle(HANDLE control) = 0;
    virtual LONG findClose(HANDLE walk) = 0;

protected:
    ~ControlCacheHost() = default;
};

/// The stand-in's own entry point "useControlCacheHost".
using UseControlCacheHost = void (*)(ControlCacheHost*);
} // namespace auttest

#endif
