// Asks about the kernel from another process: on another Windows version, or as "AutoUpdate.exe" itself.
#include "system/KernelControl.h"

#include <cstdio>
#include <cstring>

int main(int argc, char** argv)
{
    const char* const command = argc > 1 ? argv[1] : "";
    if (std::strcmp(command, "running") == 0)
        std::printf("kernel: %d\nother kernel: %d\nserver: %d\n", IsAURunning(false), IsAURunning(true),
                    IsMsgServerRunning());
    else if (std::strcmp(command, "stop") == 0)
        std::printf("%d\n", StopAU());
    else if (std::strcmp(command, "kill") == 0)
        std::printf("%d\n", KillAU());
    else if (std::strcmp(command, "restart") == 0)
        std::printf("%d\n", RestartService(false));
    else
        return 2;
    return 0;
}
