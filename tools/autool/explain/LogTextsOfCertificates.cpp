#include "explain/Tables.h"

namespace autool
{
namespace
{
constexpr char kHardware[] = "certificate IDs of the hardware ID";
constexpr char kServer[] = "certificate IDs of the local server";
constexpr char kStores[] = "certificate IDs of the certificate stores";
constexpr char kList[] = "the list of certificate IDs";
constexpr char kNormalWithout[] = "Nothing on a machine without that server; else register AutoUpdateSRV again.";
} // namespace

ExplanationRows certificateLogRows()
{
    return {
        logText("Info", "Test HWID = %d", kHardware, "The hardware ID is the one set for tests."),
        logText("Info", "KxGetHWIDForDeployment returned HWID = %d", kHardware,
                "What the local server says; 0 is none."),
        logText("Info", "associated CID = %s", kHardware, "A certificate ID that belongs to the hardware ID."),
        logText("Info", "Getting CID associated with HWID %d", kHardware, "The Web Configurator is asked for them."),
        logText("Warning", "(GetCIDListFromHWID) No Web Server set", kHardware, "The settings name no server.",
                "Set the server in the client's settings."),
        logText("Info (detail 2)", "(GetCIDListFromHWID) URL = %s", kHardware, "What is asked for."),
        logText("Warning", "Getting CID associated with HWID in cache", kHardware,
                "The server gave no list: the one kept from earlier is used.", "Look at the events before this one."),
        logText("Info", "Call to GetCIDListFromHWID(%d)", kHardware, "Begins; 0 is this machine's own hardware ID."),
        logText("Warning", "GetCIDListFromHWID: 'AutoUpdateSRV.dll' is not registered", kHardware,
                "The local COM server cannot be created.", kNormalWithout),
        logText("Info", "CID List from HWID : %s", kHardware, "The certificate IDs found."),
        logText("Error", "CCIDListManager::InitManager : CIDs List creation failed", kList, "Not enough memory.",
                "Restart the client."),
        logText("Info", "nb of valid Velmora Certificates: %d", kList,
                "So many certificate IDs were found in all sources."),
        logText("Warning", "No valid Velmora Certificate found", kList, "No source gave one: nothing can be asked for.",
                "Install a certificate of the maker in the store MY, of the machine or of the user."),
        logText("Info", "Hybrid Mode - Looking for CID added after migration", kList,
                "The certificate stores are searched too."),
        logText("Info", "HWID not available - Getting Local CID", kList,
                "The certificate stores are searched. Written whether or not there was a hardware ID."),
        logText("Info", "CIDs List corrected with local CIDs: %s", kList, "The list so far."),
        logText("Warning", "testCID %s configured but not valid", kList,
                "The certificate ID set for tests is not among this machine's: nothing is asked for.",
                "Correct or remove the setting TestCID."),
        logText("Warning", "DeploymentCID %s configured but not valid", kList,
                "The certificate ID set for deployment is not among this machine's: nothing is asked for.",
                "Correct or remove the setting DeploymentCID."),
        logText("Info", "CID %s revoked or expired", kList,
                "The certificate ID is left out: the server refused it before.",
                "Install a new certificate when the workstation should have one."),
        logText("Info", "Call to GetCIDListFromHWID()", kServer, "Begins."),
        logText("Warning", "GetLarkspurCIDs: 'AutoUpdateSRV.dll' is not registered", kServer,
                "The local COM server cannot be created.", kNormalWithout),
        logText("Warning", "GetCIDListFromHWID: FAILED to retrive local CID List", kServer,
                "The local COM server gave an error.", "Restart its service; look into its log."),
        logText("Info", "GetCIDListFromHWID: local CID List = %s", kServer, "What the local COM server says."),
        logText("Error", "CCIDListManager::GetLocalCIDList - List not initialized", kStores,
                "Asked before the list was made.", "A fault of the calling program: report it."),
        logText("Warning", "Unable to open certificate store [LocalMachine = %d]", kStores,
                "The store MY of the machine (1) or the user (0) cannot be opened.",
                "Look at the rights of the account; repair the user's profile."),
        logText("Info", "Physical CID added = %s", kStores, "A certificate in the store gave this certificate ID."),
    };
}
} // namespace autool
