#ifndef AUTOOLS_SYSTEM_OSFAMILY_H
#define AUTOOLS_SYSTEM_OSFAMILY_H

#include "system/COperatingSystem.h"

namespace aut
{
/// The system's class. Unknown systems, which deliberately include every NT version above 6.1, are 0 and therefore
/// below every limit.
inline COperatingSystem::OS osValue()
{
    String version;
    String servicePack;
    return COperatingSystem::GetInstance()->GetOSValue(version, servicePack);
}

/// Processes have owners, so that there is somebody to find and to impersonate.
inline bool isNtFamily(COperatingSystem::OS value) { return value >= COperatingSystem::OS_WINNT4; }

/// Kernel-object names may begin with "Global\" or "Local\".
inline bool hasSessionNames(COperatingSystem::OS value) { return value >= COperatingSystem::OS_WIN2000; }
} // namespace aut

#endif
