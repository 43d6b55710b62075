#ifndef AUTOOLS_SYSTEM_USERPROCESSES_H
#define AUTOOLS_SYSTEM_USERPROCESSES_H

#include "foundation/Export.h"

/// The common questions about processes and users, each answered with a `CProcessListManager` of its own.

/// Length of the full path of a module of that name in the process, 0 when it is not loaded. The path is copied only
/// when `size` exceeds its length; otherwise the buffer is zero-filled and the caller can retry with a larger one.
AUTOOLS_API unsigned long IsDllLoaded(unsigned long pid, const char* dllName, char* fullPath, unsigned long size);
/// The last argument is accepted and not used. The id buffer is not bounded.
AUTOOLS_API bool IsProcessRunning(const char* name, int* count, unsigned long** ids, bool unused);
/// domain\user of the process's owner into a buffer that must hold 521 bytes; false for a null buffer.
AUTOOLS_API bool GetUserNameFromPID(char* user, unsigned long pid);
/// Is an interactive user present. Makes `tries` checks with a pause of 2 seconds after each that failed; 0 checks
/// once without a pause.
AUTOOLS_API bool IsUserLogged(unsigned long tries);
/// Impersonates the process's owner on the calling thread, until the caller reverts. True for pid 0 and, deliberately,
/// for a process that cannot be opened. Closes the cached handles of the current-user and users hives.
AUTOOLS_API bool ImpersonateUserFromPID(unsigned long pid);
/// Chooses the logged-on user to impersonate (the configured `LogonName`, else the owner of the first shell) and
/// impersonates that user on the calling thread. True also when there is nobody to impersonate.
AUTOOLS_API bool ImpersonateUser();

#endif
