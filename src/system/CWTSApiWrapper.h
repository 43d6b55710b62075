#ifndef AUTOOLS_SYSTEM_CWTSAPIWRAPPER_H
#define AUTOOLS_SYSTEM_CWTSAPIWRAPPER_H

#include "foundation/Export.h"
#include "foundation/String.h"

#include <windows.h>

/// The terminal-services interface of this machine, loaded at run time so that the library also loads where there is
/// none. A member that needs it tries to load it again while that has failed; each failure is logged.
///
/// One instance for the process. Members may be called from several threads at once, but not while `FreeInstance`
/// runs.
class AUTOOLS_API CWTSApiWrapper
{
public:
    /// Made and initialised on first use; null only when memory runs out.
    static CWTSApiWrapper* GetInstance();
    /// Destroys the instance and unloads what it loaded. The next `GetInstance` makes another one.
    static void FreeInstance();

    /// The session attached to the physical console; 0xFFFFFFFF when there is none or the system has no console
    /// session, which is logged. Does not need the terminal-services interface.
    unsigned long GetWTSActiveConsoleSessionId();
    /// `domain\user` of the account logged on in that session; empty when nobody is or it cannot be told.
    String GetWTSAccountFromSessionId(unsigned long session);
    /// Shows a message box with the warning icon in that session without waiting for the answer. The result is the
    /// system's: non-zero when the box was sent, 0 also when the interface cannot be loaded.
    int SendWTSWarningMessage(unsigned long session, String title, String message);
    /// 1 when a remote client is attached to this process's session, else 0.
    int IsWTSSession();

private:
    template <typename T> friend struct aut::LayoutOf;

    CWTSApiWrapper();
    virtual ~CWTSApiWrapper();
    CWTSApiWrapper(const CWTSApiWrapper&) = delete;
    CWTSApiWrapper& operator=(const CWTSApiWrapper&) = delete;
    int Init();

    HMODULE m_terminalServices;
    HMODULE m_kernel;
    unsigned long(__stdcall* m_getActiveConsoleSessionId)();
    int(__stdcall* m_querySessionInformation)(HANDLE, unsigned long, int, char**, unsigned long*);
    void(__stdcall* m_freeMemory)(void*);
    int(__stdcall* m_sendMessage)(HANDLE, unsigned long, char*, unsigned long, char*, unsigned long, unsigned long,
                                  unsigned long, unsigned long*, int);
    int m_initialised;
};

/// Always false, deliberately: this version does not tell farms from other terminal servers.
AUTOOLS_API bool IsCitrixEnvironment();

#endif
