#include "explain/Tables.h"

namespace autool
{
namespace
{
constexpr char kRegister[] = "the registry's record of components";
constexpr char kRelease[] = "releases";
constexpr char kComponent[] = "components";
constexpr char kBadName[] = "The product list must be corrected on the server.";
constexpr char kRightsOrDisk[] = "Look at the rights on the data folder and the free disk space.";
} // namespace

ExplanationRows catalogueLogRows()
{
    return {
        logText("Error", "CRegComponent::SetMostRecentLevels - level %s of component %s refused: no folder of its own",
                kRegister, "The level's name would lead out of the component's folder.", kBadName),
        logText("Error",
                "CRegComponent::SetMostRecentLevels - the component path is not set: dropped levels of %s stay on disk",
                kRegister, "Old levels are forgotten, but their folders stay.",
                "Set the value CompPath; delete the folders by hand."),
        logText("Error", "CRegComponent::SetMostRecentLevels - no memory: dropped level %s of %s stays on disk",
                kRegister, "There was no memory for the path of a level's folder, which nothing names any more.",
                "Delete the folder of that level below the component's."),
        logText("Error", "CRegComponent::SetMostRecentLevels - levels of component %s not recorded", kRegister,
                "The registry did not take the list of the component's levels.",
                "Look at the rights on the client's registry key."),
        logText("Error", "CRegProductForComponent::%s - entry of component %s for product %s not wholly written",
                kRegister, "The registry did not take every value of the entry.",
                "Look at the rights on the client's registry key."),
        logText("Error", "CRelease::Serialize(iStream) FAILED: bad stream size", kRelease,
                "A release file (.lst) is cut off or no such file.",
                "Delete the file: the next cycle fetches the release again."),
        logText("Info (detail 2)", "CRelease::Serialize(iStream) SUCCESS : old stream parsed", kRelease,
                "A release file of the older form was read."),
        logText("Info (detail 2)", "CRelease::Serialize(iStream) SUCCESS : stream parsed", kRelease,
                "A release file was read."),
        logText("Error", "CRelease::Serialize(iStream) FAILED: bad component", kRelease,
                "A component in a release file (.lst) cannot be read.",
                "Delete the file: the next cycle fetches the release again."),
        logText("Error", "SaveConfigFile: release %s %s", kRelease,
                "The release was not saved, with the reason: it is not installed in this cycle.", kRightsOrDisk),
        logText("Error", "SaveConfigFile: release %s saved, but not noted in the registry", kRelease,
                "The file is there; the client does not know of it.",
                "Look at the rights on the client's registry key."),
        logText("Error", "SaveConfigFile: out of memory", kRelease, "The release was not saved.",
                "Restart the client."),
        logText("Error", "CComponent::InsertLevelIntoRegistry - component %s refused: no entry of its own", kComponent,
                "The name cannot be a key of its own.", kBadName),
        logText("Info (detail 3)", "CRelease::DeleteComponentList - START", kRelease,
                "The components of a release are let go."),
        logText("Info (detail 3)", "CRelease::DeleteComponentList - %d components", kRelease, "So many of them."),
        logText("Info (detail 3)", "CRelease::DeleteComponentList - END", kRelease, "They are gone."),
        logText("Error", "UpdateComponentList - component %s: the source location of its shared version is too long",
                kComponent, "The newer shared version cannot be fetched from where it lies; the delivered one is kept.",
                kBadName),
        logText("Error", "UpdateComponentList - component %s of product %s refused: no entry of its own", kComponent,
                "The name cannot be a key of its own; the component is left out.", kBadName),
        logText("Error", "CComponent - component %s %s refused: no folder of its own", kComponent,
                "Name or version would lead out of the folder of components.", kBadName),
        logText("Warning", "Installation authorized only during %d and %d o'clock - Pending", kRelease,
                "An update is due and waits for its hours.", "Nothing: leave the machine on during these hours."),
        logText("Error", "Release file %s not deleted: error %lu", kRelease,
                "The file of a withdrawn release stays, with the system's error.",
                "Look the system error up; delete the file by hand."),
        logText("Error", "Certificate %s of product %s not recorded", "the record of certificates",
                "The registry did not take the entry.", "Look at the rights on the client's registry key."),
        logText("Error", "Certificate %s is revoked: not recorded", "the record of certificates",
                "The server revoked it, but the registry did not take the note: it is asked for again.",
                "Look at the rights on the client's registry key."),
        logText("Info (detail 2)", "DeletePreviousRegistryEntries - START", "the record of certificates",
                "Entries of the last list are being removed."),
        logText("Info (detail 2)", "DeletePreviousRegistryEntries - END", "the record of certificates",
                "They have been removed."),
        logText("Error", "UpdateCertificatesForInstalledProduct: release name %s refused", "the record of certificates",
                "The name cannot be a key of its own.", kBadName),
    };
}
} // namespace autool
