#ifndef AUTOOLS_SYSTEM_CPROCESSLISTMANAGER_H
#define AUTOOLS_SYSTEM_CPROCESSLISTMANAGER_H

#include "foundation/Export.h"
#include "foundation/String.h"

#include <windows.h>

namespace aut
{
struct ProcessSearch;
} // namespace aut

/// Lists processes, their modules and owners, and starts programs as a logged-on user, recognised by that user's
/// "Explorer.exe". Loads PSAPI.DLL and Userenv.dll on first use and keeps them until destroyed.
///
/// Names compare without regard to case. Results are 1 and 0. Copies deliberately share buffers and modules; use
/// objects as locals. Not thread-safe.
class AUTOOLS_API CProcessListManager
{
public:
    CProcessListManager();
    CProcessListManager(const CProcessListManager& other) = default;
    CProcessListManager& operator=(const CProcessListManager& other) = default;
    virtual ~CProcessListManager();

    /// Fills the id list with all processes.
    int GetProcessIdList();
    /// The file name of the process's main module.
    int GetProcessNameFromPID(unsigned long pid, String& name);
    /// Counts the processes of that name and stores their ids in the caller's buffer when `ids` is given; the buffer
    /// is not bounded.
    int IsProcessRunning(const char* name, int* count, unsigned long** ids);
    /// `domain\user` of the process's owner.
    static int GetUserNameFromPID(unsigned long pid, String& user);
    /// Is a module of that file name loaded in the process; its full path in long form.
    int IsDllLoadedByProcess(unsigned long pid, String& dllName, String& fullPath);
    /// Like IsProcessRunning, for the processes of one user (`domain\user`).
    int IsUserProcessRunning(const char* user, const char* name, int* count, unsigned long** ids);
    /// Starts a command line on the user's desktop with the user's environment.
    int RunUserProcess(const char* user, const char* commandLine);

private:
    template <typename T> friend struct aut::LayoutOf;
    friend struct aut::ProcessSearch;

    int Init();

    int m_capacity;
    unsigned long m_bytesReturned;
    unsigned long* m_ids;
    int m_initialised;
    HMODULE m_processStatus;
    HMODULE m_userEnvironment;
    int(__stdcall* m_enumProcesses)(unsigned long*, unsigned long, unsigned long*);
    int(__stdcall* m_enumProcessModules)(HANDLE, HMODULE*, unsigned long, unsigned long*);
    unsigned long(__stdcall* m_getModuleFileName)(HANDLE, HMODULE, char*, unsigned long);
    unsigned long(__stdcall* m_getModuleBaseName)(HANDLE, HMODULE, char*, unsigned long);
    int(__stdcall* m_createEnvironmentBlock)(void**, HANDLE, int);
    int(__stdcall* m_destroyEnvironmentBlock)(void*);
};

#endif
