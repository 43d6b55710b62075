#include "webconf/CConfig.h"

#include "registry/CRegConfig.h"
#include "webconf/ConfigReader.h"

#include <windows.h>

// The switches of the configuration document that are mirrored into the registry, where every process reads them.

namespace
{
struct MirroredFlag
{
    const char* element;
    const char* value;
    bool needsRestart; ///< a change takes effect only after a restart of the kernel
};

constexpr MirroredFlag kMirroredFlags[] = {{"HideIcon", "NoIcon", true},
                                           {"SilentMode", "SilentMode", true},
                                           {"SilentInstallNow", "SilentInstallNow", false},
                                           {"SilentReboot", "SilentReboot", false}};

/// Returns whether the stored flag was different.
bool mirrorFlag(CRegConfig& registry, const char* value, bool wanted)
{
    if (registry.GetFlag(value) == wanted)
        return false;
    registry.SetFlag(value, wanted);
    return true;
}

/// Returns whether the stored switches changed.
bool mirrorAdminMode(CRegConfig& registry, bool adminOnly)
{
    if (registry.IsAdminMode() == adminOnly)
        return false;
    registry.AdminMode(adminOnly);
    if (adminOnly)
        registry.SetFlag("NoService", false);
    return true;
}

/// Deliberately compares the negation of `NoService` and then writes the switch itself, as every client in the field
/// does.
bool mirrorServiceActivation(CRegConfig& registry, bool serviceActivation)
{
    if (registry.RunAsService() == serviceActivation)
        return false;
    registry.SetFlag("NoService", serviceActivation);
    return true;
}

void mirrorComponentsFolder(CRegConfig& registry, const char* folder)
{
    if (*folder == '\0')
        registry.DeleteValue("IntermediateServersPath");
    else
        registry.SetIntermediateServersPath(folder);
}

/// The primary language ID for a language name; no name stands for the user's own language.
unsigned long languageIdOf(const String& language)
{
    if (language.IsEmpty())
        return PRIMARYLANGID(LANGIDFROMLCID(::GetUserDefaultLCID()));
    if (language == "German")
        return LANG_GERMAN;
    if (language == "Spanish")
        return LANG_SPANISH;
    return LANG_ENGLISH;
}

bool mirrorLanguage(CRegConfig& registry, unsigned long languageId)
{
    const bool changed = registry.GetLanguageID() != languageId;
    registry.SetLanguageID(languageId);
    return changed;
}
} // namespace

bool CConfig::UpdateRegistryKeys(XmlNodePtr node)
{
    bool adminOnly = false;
    bool serviceActivation = false;
    bool hybridMode = false;
    aut::readConfigFlag(node.Get(), "AdminActivationOnly", adminOnly);
    aut::readConfigFlag(node.Get(), "ServiceActivation", serviceActivation);
    aut::readConfigFlag(node.Get(), "CIDHybridMode", hybridMode);

    CRegConfig registry(false);
    m_registryChanged |= mirrorAdminMode(registry, adminOnly);
    m_registryChanged |= mirrorServiceActivation(registry, serviceActivation);
    m_registryChanged |= mirrorFlag(registry, "CIDHybridMode", hybridMode);
    for (const MirroredFlag& flag : kMirroredFlags)
    {
        bool wanted = false;
        aut::readConfigFlag(node.Get(), flag.element, wanted);
        if (mirrorFlag(registry, flag.value, wanted) && flag.needsRestart)
            m_registryChanged = true;
    }

    char text[aut::kConfigTextSize];
    aut::readConfigText(node.Get(), "ComponentsDir", text);
    mirrorComponentsFolder(registry, text);
    aut::readConfigText(node.Get(), "Language", text);
    m_registryChanged |= mirrorLanguage(registry, languageIdOf(text));
    return true;
}
