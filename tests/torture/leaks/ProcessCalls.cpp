#include "7xAutoUpdateTools.h"
#include "tests/torture/leaks/Calls.h"
#include "tests/torture/leaks/ClientInstallation.h"

#include <windows.h>

#include <memory>
#include <string>

namespace torture
{
namespace
{
void addProcesses(Calls& calls)
{
    calls.push_back({"CProcessListManager's questions",
                     []
                     {
                         CProcessListManager processes;
                         processes.GetProcessIdList();
                         String text;
                         String dll("kernel32.dll");
                         const DWORD self = ::GetCurrentProcessId();
                         processes.GetProcessNameFromPID(self, text);
                         processes.GetProcessNameFromPID(0xFFFFFFF0, text);
                         processes.IsDllLoadedByProcess(self, dll, text);
                         CProcessListManager::GetUserNameFromPID(self, text);
                         CProcessListManager::GetUserNameFromPID(0xFFFFFFF0, text);
                         int count = 0;
                         processes.IsProcessRunning("no such program.exe", &count, nullptr);
                         processes.IsUserProcessRunning("host\\nobody", "explorer.exe", &count, nullptr);
                     },
                     Cost::heavy});
    calls.push_back({"RunUserProcess of nobody",
                     []
                     {
                         CProcessListManager processes;
                         processes.RunUserProcess("host\\nobody", "C:\\windows\\system32\\winver.exe");
                     },
                     Cost::heavy});
    calls.push_back({"IsDllLoaded, GetUserNameFromPID, IsUserLogged",
                     []
                     {
                         char text[MAX_PATH] = "";
                         IsDllLoaded(::GetCurrentProcessId(), "kernel32.dll", text, sizeof text);
                         GetUserNameFromPID(text, ::GetCurrentProcessId());
                         GetUserNameFromPID(text, 0);
                         IsUserLogged(0);
                     },
                     Cost::heavy});
    Call impersonate{"ImpersonateUserFromPID, ImpersonateUser",
                     []
                     {
                         ImpersonateUserFromPID(::GetCurrentProcessId());
                         ::RevertToSelf();
                         ImpersonateUser();
                         ::RevertToSelf();
                     },
                     Cost::heavy};
    calls.push_back(impersonate);
    calls.push_back({"ImpersonateUserFromPID that fails", [] { ImpersonateUserFromPID(0xFFFFFFF0); }});
    calls.push_back({"the kernel's state",
                     []
                     {
                         IsAURunning(false);
                         IsMsgServerRunning();
                         FindAUWindow();
                         StopAU();
                         KillAU();
                         RestartService(true);
                     },
                     Cost::heavy});
    calls.push_back({"COperatingSystem, CWTSApiWrapper, IsCitrixEnvironment", []
                     {
                         String version;
                         String servicePack;
                         COperatingSystem::GetInstance()->GetOSValue(version, servicePack);
                         COperatingSystem::FreeInstance();
                         CWTSApiWrapper::GetInstance()->IsWTSSession();
                         CWTSApiWrapper::GetInstance()->GetWTSAccountFromSessionId(1);
                         CWTSApiWrapper::FreeInstance();
                         IsCitrixEnvironment();
                     }});
}

void addSignals(Calls& calls)
{
    const std::string name = "torture_" + std::to_string(::GetCurrentProcessId());
    calls.push_back({"CAUEvent", [=]
                     {
                         CAUEvent event;
                         event.Create(name.c_str());
                         CAUEvent other;
                         other.Create(name.c_str());
                         other.SignalEvent();
                         event.Create("");
                     }});
    calls.push_back({"CInterruptionEvent with its thread",
                     [=]
                     {
                         String text(name.c_str());
                         CInterruptionEvent event;
                         event.Create(text);
                         event.StartPooling();
                         event.RaiseIT();
                         event.StopPooling();
                         String none("");
                         event.Create(none);
                     },
                     Cost::heavy});
    calls.push_back({"SharedMemory::Create, Close", [=]
                     {
                         SharedMemory memory(name.c_str());
                         memory.Create(64);
                         memory.Close();
                         memory.Open(); // there is none
                         memory.Close();
                     }});
    // Its mapping lives as long as the process, like the handles that are kept.
    const auto block = std::make_shared<SharedMemory>((name + "_open").c_str());
    block->Create(64);
    Call open{"SharedMemory::Open, whose handle is not stored", [=]
              {
                  static_cast<void>(block);
                  SharedMemory memory((name + "_open").c_str());
                  memory.Open();
                  memory.Close();
              }};
    open.handles = 1;
    calls.push_back(open);
}

void addPrograms(Calls& calls, const ClientInstallation& client)
{
    const std::string text = client.folder() / "files\\a.txt";
    calls.push_back({"ExecCommand, waiting, and of what is missing",
                     []
                     {
                         char command[] = "C:\\windows\\system32\\regsvr32.exe /s";
                         ExecCommand(command, true);
                         char missing[] = "\"C:\\no such folder\\no such program.exe\" a";
                         ExecCommand(missing, true);
                         char nothing[] = "  ";
                         ExecCommand(nothing, true);
                     },
                     Cost::heavy});
    calls.push_back({"RT_File::Register, UnRegister, Execute that fail",
                     [=]
                     {
                         RT_File file(text.c_str());
                         file.Register();
                         file.UnRegister();
                         file.Execute(8, true);
                     },
                     Cost::heavy});
    calls.push_back({"MSIEvaluatePath",
                     []
                     {
                         MSIEvaluatePath(
                             "{11111111-1111-1111-1111-111111111111}{22222222-2222-2222-2222-222222222222}");
                         MSIEvaluatePath("nonsense");
                     },
                     Cost::heavy});
}
} // namespace

void addProcessCalls(Calls& calls, const ClientInstallation& client)
{
    addProcesses(calls);
    addSignals(calls);
    addPrograms(calls, client);
}
} // namespace torture
