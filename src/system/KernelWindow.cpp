#include "foundation/NumberScan.h"
#include "platform/BoundedText.h"
#include "registry/CRegAutoUpdate.h"
#include "system/KernelControl.h"
#include "system/KernelNames.h"

#include <cstring>

namespace
{
/// Room for a registry text with words in front of it.
using Title = char[300];
using Version = char[260];

/// "major.minor", separator and build of a full version: 3.3.302 of 3.3.302.1_beta. Numbers that the version does not
/// have read as 0, and one that ends behind minor has neither separator nor build.
void shortenVersion(const char* fullVersion, Version& out)
{
    Version version;
    aut::copyText(version, fullVersion);
    if (char* const suffix = std::strrchr(version, '_'))
        *suffix = '\0';

    int major = 0;
    int minor = 0;
    int separator = 0;
    int build = 0;
    const char* at = version;
    // scanf's "%d.%d%c%d.%d", which stops at the first part that does not read; the last number is not used.
    static_cast<void>(aut::scanNumber(at, major) && aut::scanLiteral(at, '.') && aut::scanNumber(at, minor) &&
                      aut::scanCharacter(at, separator) && aut::scanNumber(at, build));
    aut::formatText(out, sizeof out, "%d.%d%c%d", major, minor, separator, build);
}

/// False when nothing is known to title the window with.
bool makeTitle(Title& title)
{
    CRegAutoUpdate settings(true);
    const char* const name = settings.GetMarketingName();
    if (*name != '\0')
    {
        aut::formatText(title, sizeof title, "Velmora %s", name);
        return true;
    }
    const char* const fullVersion = settings.GetKernelVersion();
    if (*fullVersion == '\0')
        return false;
    Version version;
    shortenVersion(fullVersion, version);
    aut::formatText(title, sizeof title, "%s %s", aut::kKernelName, version);
    return true;
}
} // namespace

HWND FindAUWindow()
{
    Title title;
    if (!makeTitle(title))
        return nullptr;
    const HWND window = ::FindWindowA(nullptr, title);
    return window != nullptr ? window : ::FindWindowA(nullptr, aut::kKernelName);
}
