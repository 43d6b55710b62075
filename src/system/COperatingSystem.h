#ifndef AUTOOLS_SYSTEM_COPERATINGSYSTEM_H
#define AUTOOLS_SYSTEM_COPERATINGSYSTEM_H

#include "foundation/Export.h"
#include "foundation/String.h"

#include <windows.h>

/// Classifies the Windows version once into a small number that the rest of the library compares: 8 or more means the
/// NT family, 9 or more that kernel-object names have session prefixes.
///
/// NT versions above 6.1 deliberately classify as 0, so such systems take the older family's paths everywhere. The
/// version is what the system tells this process, which depends on the program's manifest.
/// The singleton is created without a lock on first use.
class AUTOOLS_API COperatingSystem
{
public:
    enum OS
    {
        OS_UNKNOWN = 0,
        OS_WIN95 = 1,
        OS_WIN95_A = 2,
        OS_WIN95_B = 3,
        OS_WIN95_C = 4,
        OS_WIN98 = 5,
        OS_WIN98_SE = 6,
        OS_WINME = 7,
        OS_WINNT4 = 8,
        OS_WIN2000 = 9,
        OS_WINXP = 10,
        OS_WINVISTA = 11,
        OS_WIN7 = 12
    };

    static COperatingSystem* GetInstance();
    static void FreeInstance();

    /// The class of this system; also its "major.minor" and its service-pack text, both empty when it is unknown.
    OS GetOSValue(String& version, String& servicePack);
    String OSValueToString(OS value);
    /// 1 on a 64-bit system of the NT family.
    int IsOSx64();

private:
    template <typename T> friend struct aut::LayoutOf;

    COperatingSystem();
    virtual ~COperatingSystem();
    COperatingSystem(const COperatingSystem&) = delete;
    COperatingSystem& operator=(const COperatingSystem&) = delete;
    int Init();

    int m_value;
    OSVERSIONINFOA m_version;
    SYSTEM_INFO m_system;
    int m_initialised;
};

#endif
