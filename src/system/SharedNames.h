#ifndef AUTOOLS_SYSTEM_SHAREDNAMES_H
#define AUTOOLS_SYSTEM_SHAREDNAMES_H

#include "registry/CRegConfig.h"
#include "system/OsFamily.h"

namespace aut
{
/// What the names of objects shared with the client's other programs begin with: a service works in another session
/// than its users, programs of one user do not. The system's class is asked for once; the flag is read every time,
/// because the service can be installed while a process runs.
inline const char* sharedNamePrefix()
{
    static const bool sessionNames = hasSessionNames(osValue());
    if (!sessionNames)
        return "";
    return CRegConfig(true).GetFlag("ServiceInstalled") ? "Global\\" : "Local\\";
}
} // namespace aut

#endif
