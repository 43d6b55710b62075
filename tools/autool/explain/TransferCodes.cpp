#include "explain/Tables.h"

namespace autool
{
namespace
{
constexpr char kWorker[] = "GetDataFromStream";
constexpr char kLibrary[] = "the download library";

constexpr Explanation transfer(long long first, long long last, const char* text, const char* reporter,
                               const char* meaning, const char* advice)
{
    return {Kind::Transfer, first, last, "", text, reporter, meaning, advice};
}
} // namespace

ExplanationRows transferRows()
{
    return {
        transfer(0, 0, "finished", kWorker,
                 "The transfer finished (an empty body gives 0 and no data), or the download library could not be "
                 "loaded: then the log "
                 "says so.",
                 ""),
        transfer(102, 102, "status unreadable", kWorker,
                 "The worker thread could not be started or its status not be read.",
                 "The machine is short of memory or threads: restart the client."),
        transfer(251, 251, "no transfer object", kWorker, "The download library made no transfer object.",
                 "Install 7xFileTransfer.dll in the version that belongs to this library."),
        transfer(1003, 1003, "time-out", kWorker, "Nothing came in ten minutes; the worker was terminated.",
                 "The server or a proxy keeps the connection open without answering: look at both."),
        transfer(12001, 12999, "WinInet error", kLibrary,
                 "WinInet's own code: 12002 time-out, 12007 unknown host, 12029 no connection, 12045 unknown "
                 "certificate authority.",
                 "Open the URL in a browser on this machine, as the account of the service; look at proxy, DNS and "
                 "firewall."),
        transfer(13100, 13599, "HTTP status", kLibrary,
                 "The server answered with the HTTP status that is this number less 13000: 13404 is \"not found\", "
                 "13407 \"proxy asks "
                 "for a password\".",
                 "4xx: look at the server's address, folder and proxy settings. 5xx: the server's operator must look."),
        transfer(14001, 14001, "bad argument", kLibrary, "The request was malformed.",
                 "Look at the server's address in the settings."),
        transfer(14002, 14002, "unsupported scheme", kLibrary,
                 "The URL begins with something else than http, https, ftp or file.",
                 "Correct the server's address in the settings."),
        transfer(14003, 14003, "out of memory", kLibrary, "The body did not fit into the memory.",
                 "Restart the client."),
        transfer(14004, 14004, "body too long", kLibrary, "The server sent more than the request allows.",
                 "Mostly something else than the server answered: open the URL in a browser."),
        transfer(14005, 14005, "body cut off", kLibrary, "The connection ended before all that was announced had come.",
                 "The next cycle tries again; if it stays, look at proxies and virus scanners on the way."),
        transfer(14006, 14006, "internal error", kLibrary, "A fault within the download library.",
                 "Report it with the log."),
        transfer(100001, 165535, "system error", kLibrary,
                 "Any other error of Windows: this number less 100000. 100002 is \"file not found\".",
                 "Look the system error up: autool explain with the number less 100000."),
    };
}
} // namespace autool
