#include "explain/Tables.h"

namespace autool
{
namespace
{
constexpr char kPhase1[] = "the product list (phase 1)";
constexpr char kCidList[] = "the CID list for the hardware ID";
constexpr char kNoXml[] = "MSXML could not be created.";
constexpr char kComNeeded[] = "The calling thread must have initialised COM, and MSXML must be registered.";
constexpr char kOpenUrl[] =
    "Open the URL in a browser on this machine: mostly a proxy or a portal answered with a page.";
} // namespace

ExplanationRows productListLogRows()
{
    return {
        logText("Warning", "Phase1: Unable for Initialize DOM Document", kPhase1, kNoXml, kComNeeded),
        logText("Warning", "Phase1: Unable to create XML document from data", kPhase1,
                "What the server sent is not well-formed XML.", kOpenUrl),
        logText("Warning", "Phase1: New log", kPhase1, "Announces the parser's own words, in the next event."),
        logText("Warning", "Error code: %d, reason = %s, line = %d, linepos = %d", kPhase1,
                "The parser's own words: where and why the document is not well-formed."),
        logText("Warning", "Phase1: No data returned by the server", kPhase1,
                "The transfer failed or the body was empty.", "Look the transfer status in the result record up."),
        logText("Info", "Loading %s file", kPhase1, "The product list that was saved last is read."),
        logText("Warning", "Phase1: Unable to load XML document %s", kPhase1,
                "The saved product list is missing or not well-formed.", "Nothing: the next cycle fetches it again."),
        logText("Error", "phase1xml - name prefix %s refused: no product list of its own", kPhase1,
                "The certificate's name prefix would lead out of the data folder; its product list is not kept.",
                "The caller's name prefix must be a plain name."),
        logText("Info", "Certificate %s revoked or expired", kCidList,
                "The server refuses this certificate ID; it is not asked for again.",
                "Install a new certificate when the workstation should have one."),
        logText("Error", "GetXMLCIDListFromHWID: Unable for Initialize DOM Document", kCidList, kNoXml, kComNeeded),
        logText("Warning", "GetXMLCIDListFromHWID: No data returned by the server", kCidList,
                "The transfer failed or the body was empty.",
                "Look the transfer status in the result record up. The cached list is used meanwhile."),
        logText("Info (detail 4)", "GetXMLCIDListFromHWID: szData = %s", kCidList, "The server's answer as it came."),
        logText("Warning", "GetXMLCIDListFromHWID: Unable to create XML document from data", kCidList,
                "What the server sent is not well-formed XML.", kOpenUrl),
        logText("Error", "GetXMLCIDListFromHWID: node \"Data/CIDList/CID\" not found", kCidList,
                "The answer has no list.", "The server's operator must look: the hardware ID may be unknown to it."),
        logText("Info", "GetXMLCIDListFromHWID: adding MASTER CID = %s", kCidList, "The list's main certificate ID."),
        logText("Info", "GetXMLCIDListFromHWID: adding CID %s", kCidList, "A certificate ID of the list."),
        logText("Error", "phase1xml::ParseXMLDocument - product name %s refused: not recorded", kPhase1,
                "The name cannot be a file or a key of its own; the release is not recorded.",
                "The product list must be corrected on the server."),
        logText("Error", "phase1xml::ParseXMLDocument - product %s not recorded", kPhase1,
                "The release could not be written to file or registry.",
                "Look at the rights on the data folder and the free disk space."),
        logText("Info (detail 2)", "phase1xml::ParseXMLDocument - START", kPhase1, "The product list is being read."),
        logText("Warning", "phase1xml::ParseXMLDocument pDocRoot is NULL", kPhase1,
                "There is no document to read: fetching it failed before.", "Look at the events before this one."),
        logText("Info (detail 2)", "phase1xml::ParseXMLDocument - END", kPhase1, "The product list has been read."),
        logText("Error", "phase1xml::ParseXMLDocument - out of memory", kPhase1,
                "The list did not fit into the memory.", "Restart the client."),
        logText("Info (detail 2)", "phase1xml::GetCountry - START", kPhase1,
                "The country is being read from the list."),
        logText("Info (detail 2)", "phase1xml::GetCountry - END", kPhase1, "The country has been read."),
        logText("Warning", "phase1xml::IsNewConfiguration pDocRoot is NULL", kPhase1,
                "There is no document to look at: fetching it failed before.", "Look at the events before this one."),
        logText("Warning", "Get info for Certificate %s returned: \"%s\"", kPhase1,
                "The server refuses this certificate ID, with its reason.",
                "For \"revoked\" or \"expired\": install a new certificate. Else the server's operator must look."),
        logText("Info", "%s file saved", kPhase1, "The product list is a new one and was saved."),
    };
}
} // namespace autool
