#include "explain/Tables.h"

namespace autool
{
namespace
{
constexpr char kRequest[] = "a configuration request";
constexpr char kTransfer[] = "the transfer";
constexpr char kLoading[] = "loading the configuration (AUKernelData.xml)";
constexpr char kProxy[] = "proxy detection";
constexpr char kNoXml[] = "MSXML could not be created.";
constexpr char kComNeeded[] = "The calling thread must have initialised COM, and MSXML must be registered.";
constexpr char kOpenUrl[] =
    "Open the URL in a browser on this machine: mostly a proxy or a portal answered with a page.";
constexpr char kWrongLibrary[] = "Install 7xFileTransfer.dll in the version that belongs to this library.";
constexpr char kServerSide[] = "The configuration must be corrected on the server; the default is used meanwhile.";
constexpr char kRightsOrDisk[] = "Look at the rights on the data folder and the free disk space.";
constexpr char kAddress[] =
    "Written only when an entry point is missing: the address of one of them, 0x0 for a missing one.";
} // namespace

ExplanationRows configurationLogRows()
{
    return {
        logText("Warning",
                "TransmitRequestToWebConf: Config already updating. Error Code = %d. Host=%s, CID=%s, Product=%s",
                kRequest, "Another request for the same is under way, or was killed and left its mark.",
                "See status code 18: wait, or delete the mark when no client process runs."),
        logText("Info (detail 2)",
                "Set ConfigUpdating registry key for Product=%s, CID=%s to prohibit concurrent config update", kRequest,
                "The request's mark is set."),
        logText("Info (detail 2)", "Delete ConfigUpdating registry key for Product=%s, CID=%s", kRequest,
                "The request's mark is removed. An error when the request itself broke off."),
        logText("Warning",
                "GetDataConfiguration: Web Configurator not available. Use Local Configuration. Error Code = %d. "
                "Message=%s",
                kRequest, "The server could not be reached, and nothing is in the cache yet.",
                "Look the code up among the transfer codes."),
        logText("Error", "%s - [%d], Web Configurator not available. %s. Message=%s", kRequest,
                "No usable answer; the code is 104 or the transfer status. A warning, with \"Use Local Data\", when "
                "there is no cached answer either: "
                "the two notes stand the wrong way round, deliberately.",
                "Look the code up; open the URL in a browser on this machine."),
        logText("Error", "Exception occured in DataCaching::TransmitRequestToWebConf()", kRequest,
                "The request broke off; its mark was removed.",
                "The next cycle tries again; if it repeats, report it with the log."),
        logText("Info", "newFileDownload = 0x%x", kTransfer, kAddress),
        logText("Info", "deleteFileDownload = 0x%x", kTransfer, kAddress),
        logText("Info", "newConnectionParams = 0x%x", kTransfer, kAddress),
        logText("Info", "deleteConnectionParams = 0x%x", kTransfer, kAddress),
        logText("Info", "fileDownload = 0x%x", kTransfer, kAddress),
        logText("Info", "mydata = 0x%x", kTransfer, kAddress),
        logText("Error", "GetDataFromStreamFct: failed to create file download object", kTransfer,
                "The download library made no transfer object (status 251).", kWrongLibrary),
        logText("Error", "GetDataFromStreamFct: unable to load %s", kTransfer,
                "The download library is missing: nothing can be fetched.", kWrongLibrary),
        logText("Error", "GetDataFromStreamFct: Bad parameters, unable to download", kTransfer,
                "The download library lacks an entry point: the events before say which.", kWrongLibrary),
        logText("Warning", "WinInet not responding. Automatic Update is going to restart.", kTransfer,
                "Nothing came in ten minutes (status 1003); the worker was terminated.",
                "Look at server and proxy: one keeps connections open without answering."),
        logText("Warning", "Load configuration: No Authorized Download Server Types specified", kLoading,
                "The list of server types is empty or missing.", kServerSide),
        logText("Warning", "The proxy %s is too long: %u characters.", kProxy,
                "Whole entries were left out at the end, so that 259 characters remain.",
                "Shorten the list in the Internet settings."),
        logText("Warning", "No Proxy settings to query.", kProxy,
                "WinInet has no proxy settings: a direct connection is used."),
        logText("Error", "DetectProxySettings Memory Failure", kProxy, "Not enough memory.", "Restart the client."),
        logText("Warning", "Unable to detect Proxy settings.", kProxy,
                "WinInet did not give them: a direct connection is tried.",
                "Set the proxy in the client's network settings."),
        logText("Warning", "%s Web Configurator returned an error", kRequest,
                "The server refuses this certificate ID (AccessMissing); the refusal is kept.",
                "The server's operator must allow the product for this certificate."),
        logText("Warning", "Configuration not valid: %s", kRequest, "The server answered with an error, in its words.",
                "The server's operator must look."),
        logText("Warning", "Corrupted AU kernel configuration, keep old configuration", kRequest,
                "The answer has no configuration node.", "The server's operator must look."),
        logText("Info", "%s New Data. TimeStamp = %s", kRequest, "A new configuration came and is cached."),
        logText("Warning", "Unable to initialize DOM Document and to check AU Validity", kRequest, kNoXml, kComNeeded),
        logText("Warning", "TransmitRequestToWebConf: Unable to create XML document from data", kRequest,
                "The answer is no XML (status 500).", kOpenUrl),
        logText("Warning", "Response from Web Configurator not valid (special provider or proxies authentication ?",
                kRequest, "XML came, but not from the Web Configurator.", kOpenUrl),
        logText("Info", "%s Data not changed", kRequest, "The cached configuration is still right."),
        logText("Warning", "IsAUValidForWebServer: Unable to create XML document from data", "the cached answer",
                "The cache file is empty or damaged.", "Nothing: the next request brings it again."),
        logText("Warning", "IsAUValidForWebServer: %s", "the cached answer",
                "The cached answer is the server's refusal, in its words.",
                "The server's operator must allow the product for this certificate."),
        logText("Warning", "Unable to initialize DOM Document and to Extract Xml Node", "DataExchange::ExtractXmlNode",
                kNoXml, kComNeeded),
        logText("Warning", "ExtractXmlNode: Unable to create XML document from data", "DataExchange::ExtractXmlNode",
                "The text is not well-formed XML."),
        logText("Warning", "ExtractXmlNode: Unable to found XPath in XML document", "DataExchange::ExtractXmlNode",
                "The document lacks the node that was asked for."),
        logText("Warning", "Load Configuration: No XML value for %s", kLoading,
                "The setting is missing; its default is used.", kServerSide),
        logText("Warning", "Load Configuration: unexpected data values, %s > %s. Use default values", kLoading,
                "A lower bound is above its upper one.", kServerSide),
        logText("Error", "Unable to create the data cache directory: %s", kRequest, "The answer cannot be kept.",
                kRightsOrDisk),
        logText("Error", "Unable to write the data cache file: %s", kRequest, "The answer cannot be kept.",
                kRightsOrDisk),
        logText("Error", "Unable to load configuration data from : %s", kLoading,
                "The configuration is missing or not well-formed: the last known values stay.",
                "Let the client fetch it again; look at the rights on the data folder."),
        logText("Error", "Load Configuration: no 'AutomaticUpdate' tag in the XML file : %s", kLoading,
                "The document is another one.", "The configuration must be corrected on the server."),
        logText("Error", "CConfig::LoadDataFile() - Failed to instanciate MSXML::DOMDocument", kLoading, kNoXml,
                kComNeeded),
        logText("Warning", "Failed to load file: %s", kLoading, "The file is missing or not well-formed."),
        logText("Info", "%s configuration file loaded", kLoading, "The configuration was read."),
        logText("Info", "New AU Data saved in %s file", "the client's own configuration",
                "A new configuration is in place."),
        logText("Error", "Unable to save new AU Data in %s", "the client's own configuration",
                "The old configuration stays; the new one is fetched again.", kRightsOrDisk),
        logText("Warning", "AU Data: No data returned by Web Conf because of no ID deployments",
                "the client's own configuration", "No certificate ID of this machine got a configuration.",
                "When the events before tell of a server that was not reached: see to that. Else the server's operator "
                "must deploy one."),
        logText("Warning", "DataCaching : Error during CIDs list manager initialization",
                "the client's own configuration", "No certificate ID was found.",
                "Install a certificate of the maker in the store MY."),
    };
}
} // namespace autool
