#include "explain/Tables.h"

namespace autool
{
namespace
{
constexpr char kFreeFile[] =
    "Look at the system error in the record: 5 means rights, 32 that a program holds the file, 112 a full "
    "disk. Close the program or correct the rights; the next cycle tries again.";
constexpr char kComNeeded[] =
    "The calling thread must have initialised COM, and MSXML must be registered (regsvr32 msxml3.dll).";
} // namespace

ExplanationRows statusCodeRows()
{
    return {
        statusCode(18, "Config already updating", "DataCaching::TransmitRequestToWebConf",
                   "Another request for the same configuration is under way, or was killed and left its mark behind. "
                   "The object is "
                   "the product.",
                   "Wait for the other request. When no client process runs, delete the mark below "
                   "Config\\Cache\\UpdatingConfigs "
                   "(docs/configuration-cache.md)."),
        statusCode(104, "GetDataConfiguration - Web Configurator not available",
                   "DataCaching::TransmitRequestToWebConf",
                   "No answer that can be used: the server was not reached (then the code is the transfer status "
                   "instead of 104), "
                   "answered with an error, or something else on the way answered. The object is the URL.",
                   "Open the URL in a browser on this machine; look at proxy and server settings. Cached data is used "
                   "meanwhile."),
        statusCode(301, "Empty CID list", "GetCIDListFromHWID, GetLocalCIDList",
                   "No certificate ID: from the hardware ID (normal without a local server) or, with GetLocalCIDList, "
                   "none at all.",
                   "Only GetLocalCIDList is a fault: install a certificate of the maker in the store MY, of the "
                   "machine or of the user."),
        statusCode(459, "Not enough disk space", "IsEnoughDiskSpace",
                   "The drive (the object) has less free room than needed; argument 1 is the need in megabytes.",
                   "Free disk space."),
        statusCode(460, "Unable to set file attributes", "RT_File::RemoveReadOnlyAttribIfAny",
                   "A read-only attribute could not be cleared, so that the file cannot be replaced.", kFreeFile),
        statusCode(462, "CopyTo", "RT_File::CopyFile",
                   "A file could not be copied to a place where none was; argument 1 is the target.",
                   "The record has no system error: look whether the target's folder exists and can be written, and "
                   "whether the disk is full."),
        statusCode(
            462, "Error during temporary file copy", "RT_File::CopyFileAtNextReboot",
            "No name was free for the file that waits for the next start of Windows in the root of the target's drive.",
            "Restart Windows, so that waiting files go to their places, and delete stale *_0.tmp to *_9.tmp there."),
        statusCode(462, "Error during file copy", "RT_File::CopyFileAtNextReboot",
                   "The target is in use, and its new contents could not be written to the file that waits for the "
                   "next start.",
                   kFreeFile),
        statusCode(
            463, "File Not Found", "RT_File::IsReadOnly", "The attributes of the file could not be read.",
            "Look at the system error in the record: 2 and 3 mean that it is not there, 5 that rights are missing."),
        statusCode(463, "Source File does not exist", "RT_File::CopyTo, RT_File::MoveTo",
                   "There is nothing to copy or to move.",
                   "The delivery is incomplete: let the client download the component again."),
        statusCode(463, "Regsvr32 does not exist", "LaunchRegSvr32", "The system's registration tool is missing.",
                   "Repair Windows (sfc /scannow), or allow the tool where a policy blocks it."),
        statusCode(465, "Unable to move file", "RT_File::MoveTo, RT_File::OverWriteFileAtNextReboot",
                   "The move, or its registration for the next start of Windows, failed; argument 1 is the target.",
                   kFreeFile),
        statusCode(465, "MoveFileEx", "RT_File::MoveTo", "The target could not be replaced although nobody uses it.",
                   kFreeFile),
        statusCode(465, "MoveFileEx (2)", "RT_File::MoveTo",
                   "The target is in use, and the caller wanted it replaced now.",
                   "Close the program that uses it, and start the cycle again."),
        statusCode(465, "Error during file move", "RT_File::CopyFileAtNextReboot",
                   "The replacement at the next start of Windows could not be registered.",
                   "Registering needs administrator rights; look at the system error in the record."),
        statusCode(466, "Unable to remove file", "RT_File::Remove", "The file stays.", kFreeFile),
        statusCode(466, "Unable to remove file (2)", "RT_File::Remove",
                   "The file is in use and stays. The function deliberately reports success; only this record tells.",
                   "Close the program that uses it, and remove it again."),
        statusCode(470, "Registration failed", "RT_File::Register",
                   "A COM server was not registered. The object ends with the last exit code, in hexadecimal.",
                   "Look that exit code up (autool explain FFFFFFEB); mostly a DLL that the server needs is missing."),
        statusCode(471, "UnRegistration failed", "RT_File::UnRegister", "The tool or the program gave an exit code.",
                   "Often harmless: the server was not registered. Run regsvr32 /u on the file to see the reason."),
        statusCode(472, "GetFileCRC failed", "RT_File::GetChecksum",
                   "The file could not be read to its end while summing.",
                   "A program holds the file without sharing, or the disk is damaged."),
        statusCode(
            477, "Execution failed", "RT_File::Execute",
            "An installer gave an exit code other than 0, or could not be started. The object is its command line.",
            "Run the command line by hand. 99 asks for a restart and counts as a failure deliberately."),
        statusCode(500, "Unable to create XML document from data",
                   "phase1xml::GetXMLDoc, phase1xml::GetXMLCIDListFromHWID", "What came is not well-formed XML.",
                   "Open the URL in a browser: mostly a proxy or a portal answered with a page."),
        statusCode(500, "Unable to create XML document from file", "phase1xml::GetPreviousXMLDoc",
                   "The saved product list is missing or not well-formed.",
                   "Nothing: the next cycle fetches it again."),
        statusCode(500, "pDOM->loadXML", "DataCaching::TransmitRequestToWebConf",
                   "The answer to a configuration request is no XML.",
                   "Open the URL in a browser: mostly a proxy or a portal answered with a page."),
        statusCode(551, "InitializeDOMDocument", "CreateInstance", "MSXML could not be created.", kComNeeded),
        statusCode(551, "DOM initialization failed", "phase1xml::GetXMLDoc, phase1xml::GetXMLCIDListFromHWID",
                   "MSXML could not be created.", kComNeeded),
        statusCode(554, "GetXMLDoc", "pDoc->GetvalidateOnParse",
                   "The document does not validate while parsing and had an error.",
                   "The MSXML that answers is not the system's own: register the system's again."),
        statusCode(953, "Request not allowed", "DataCaching::GetData",
                   "The product (the object) is not installed or not enabled, so its configuration is not asked for.",
                   "Enable the product, or ask after its installation."),
    };
}
} // namespace autool
