#include "system/OSClassification.h"

namespace aut
{
namespace
{
using OS = COperatingSystem::OS;

OS classifyNT(DWORD major, DWORD minor)
{
    if (major < 5)
        return OS::OS_WINNT4;
    if (major == 5)
        return minor == 0 ? OS::OS_WIN2000 : OS::OS_WINXP;
    if (major == 6 && minor == 0)
        return OS::OS_WINVISTA;
    return major == 6 && minor == 1 ? OS::OS_WIN7 : OS::OS_UNKNOWN;
}

/// `revision` is the letter that these systems put behind a blank in their service-pack text.
OS classify9x(DWORD minor, char revision)
{
    switch (minor)
    {
    case 0:
        if (revision == 'A')
            return OS::OS_WIN95_A;
        if (revision == 'B')
            return OS::OS_WIN95_B;
        return revision == 'C' ? OS::OS_WIN95_C : OS::OS_WIN95;
    case 10:
        return revision == 'A' || revision == 'B' ? OS::OS_WIN98_SE : OS::OS_WIN98;
    case 90:
        return OS::OS_WINME;
    default:
        return OS::OS_UNKNOWN;
    }
}
} // namespace

COperatingSystem::OS classifyOS(const OSVERSIONINFOA& version) noexcept
{
    if (version.dwPlatformId == VER_PLATFORM_WIN32_NT)
        return classifyNT(version.dwMajorVersion, version.dwMinorVersion);
    if (version.dwPlatformId == VER_PLATFORM_WIN32_WINDOWS && version.dwMajorVersion == 4)
    {
        const char* const text = version.szCSDVersion;
        return classify9x(version.dwMinorVersion, text[0] != '\0' ? text[1] : '\0');
    }
    return OS::OS_UNKNOWN;
}
} // namespace aut
