#ifndef AUTOOLS_SYSTEM_KERNELCONTROL_H
#define AUTOOLS_SYSTEM_KERNELCONTROL_H

#include "foundation/Export.h"

#include <windows.h>

/// Finding, stopping and restarting the update kernel (process "AutoUpdate.exe", service "Velmora Automatic Update").
/// Nothing is recorded in `result`.

/// Is the kernel running? One of the first generation (a version of "1." or lower, or none) is recognised by its
/// process, and with `excludeSelf` one process is subtracted; later ones by the mutex that they own, whoever asks.
AUTOOLS_API bool IsAURunning(bool excludeSelf);
/// Is the kernel's message server running? It is recognised by the mutex that it owns.
AUTOOLS_API bool IsMsgServerRunning();
/// Asks the kernel to stop, as a service too where there are services, and kills it when it does not. True when it does
/// not run any more (for a killed one see `KillAU`). A service that has accepted the control gets 180 tenths of its
/// wait hint, 3 to 30 minutes; then the kernel gets 30 seconds.
AUTOOLS_API bool StopAU();
/// Terminates the kernel's processes, at most as many as there may be users. Whether the last termination attempted
/// succeeded; true when there was none, because none runs or none can be opened.
AUTOOLS_API bool KillAU();
/// Starts the reload program from the kernel's folder, and tells it whether the kernel itself asks for the restart.
/// False when there is no such program (a path of 260 characters or more is refused) or it cannot be started.
AUTOOLS_API bool RestartService(bool calledByKernel);
/// The kernel's main window, titled with the marketing name or the kernel's version, else with the plain product name;
/// null when there is none. Without a marketing name and a kernel version none is looked for.
AUTOOLS_API HWND FindAUWindow();

#endif
