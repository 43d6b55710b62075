#include "explain/Tables.h"

namespace autool
{
namespace
{
constexpr char kCitrix[] = "the limit of users (terminal servers)";
constexpr char kRestart[] = "RestartService";
constexpr char kSessions[] = "terminal sessions";
constexpr char kCancel[] = "the user's cancel event";
constexpr char kUserProcess[] = "starting a process as the user";
constexpr char kImpersonation[] = "acting as the logged-on user";
constexpr char kGoesOn[] =
    "Nothing: the client goes on as the service's account; network places of the user may be out of reach.";
constexpr char kServiceRights[] =
    "The service must run as LocalSystem; a security program may protect the user's process.";
} // namespace

ExplanationRows systemLogRows()
{
    return {
        logText("Info (detail 5)",
                "--- Citrix Limitation --- : MaxUsers not defined in Registry Keys ! Not limited for %s", kCitrix,
                "No limit is set."),
        logText("Info (detail 5)", "--- Citrix Limitation --- : Nb max of user connected in the same time = %d",
                kCitrix, "So many users are served at once."),
        logText("Error", "%s does not exist.", kRestart, "The restart tool is missing: the service stays as it is.",
                "Reinstall the client; look at the value CompPath."),
        logText("Info", "Restart the service", kRestart, "The restart tool is about to be started."),
        logText("Error", "Can not execute %s, err:%d", kRestart,
                "The restart tool could not be started, with the system's error.", "Look the system error up."),
        logText("Error", "CWTSApiWrapper %s load FAILED", kSessions, "A system library could not be loaded.",
                "Repair Windows (sfc /scannow)."),
        logText("Warning", "WTSGetActiveSessionId procedure not found", kSessions,
                "This Windows cannot tell the console's session (before XP)."),
        logText("Error", "CWTSApiWrapper API init FAILED", kSessions, "A function is missing in WtsApi32.dll.",
                "Repair Windows (sfc /scannow)."),
        logText("Warning", "WTSGetActiveSessionId procedure not initialized", kSessions,
                "The console's session was asked for on a Windows that cannot tell it."),
        logText("Error", "WTSQuerySessionInfo [UserName] failed for session ID %d, error code 0x%x", kSessions,
                "The session's user is not known, with the system's error.",
                "Look the system error up; the session may just have ended."),
        logText("Warning", "WTSQuerySessionInfo [DomainName] failed, error code 0x%x", kSessions,
                "The session's domain is not known, with the system's error.",
                "Look the system error up; the session may just have ended."),
        logText("Error", "Cancel Update unavailable", kCancel,
                "The user cannot cancel this update: there is no event to wait for."),
        logText("Error", "Wait for Cancel failed: 0x%x error code for (0x%x thread)", kCancel,
                "The wait failed; it is tried again. The code is always 0xffffffff."),
        logText("Warning", "Error %lu : Failed to access Explorer process handle for user %s", kUserProcess,
                "The user's shell cannot be opened, with the system's error.", kServiceRights),
        logText("Warning", "Error %lu : Failed to access Explorer process Token for user %s", kUserProcess,
                "The user's shell does not give its token, with the system's error.", kServiceRights),
        logText("Warning", "Unable to find Explorer process running for user %s", kUserProcess,
                "The user is not logged on, or has another shell.",
                "Nothing: the process is started when the user logs on."),
        logText("Info", "Trying to run %s", kUserProcess, "The command line that is about to be started."),
        logText("Warning", "Error %lu : Failed to create GUI process for user %s", kUserProcess,
                "The process was not started, with the system's error.",
                "Look the system error up: 2 and 3 mean that the program is missing."),
        logText("Info", "Process 0x%x created for user %s", kUserProcess,
                "It was started; the number is its process id."),
        logText("Warning", "No custom user to impersonate", kImpersonation, "The owner of the shell cannot be named.",
                kGoesOn),
        logText("Info (detail 2)", "Trying to Impersonate default User %s", kImpersonation,
                "The owner of the first shell is taken."),
        logText("Warning", "Process token access failed", kImpersonation, "The shell's process cannot be opened.",
                kGoesOn),
        logText("Warning", "ImpersonateUserFromPID: OpenProcessToken FAILED", kImpersonation,
                "The shell does not give its token.", kServiceRights),
        logText("Warning", "ImpersonateUserFromPID: ImpersonateLoggedOnUser FAILED", kImpersonation, "Windows refused.",
                kServiceRights),
        logText("Info (detail 2)", "ImpersonateUserFromPID: SUCCESS", kImpersonation,
                "The thread acts as the user now."),
        logText("Info (detail 2)", "ImpersonateUser not necessary", kImpersonation,
                "Below the NT family there is one user."),
        logText("Warning", "No explorer processfound for impersonation", kImpersonation, "Nobody is logged on.",
                kGoesOn),
        logText("Info (detail 2)", "User %s Impersonated", kImpersonation, "The thread acts as this user now."),
        logText("Info", "Try %u : Explorer Not Found", "waiting for the user's shell",
                "Nobody is logged on yet; it is looked for again."),
    };
}
} // namespace autool
