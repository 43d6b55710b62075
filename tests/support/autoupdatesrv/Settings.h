#ifndef AUTOOLS_TESTS_SUPPORT_AUTOUPDATESRV_SETTINGS_H
#define AUTOOLS_TESTS_SUPPORT_AUTOUPDATESRV_SETTINGS_H

#include <windows.h>

#include <string>

namespace autoupdatesrv
{
// What the server answers, read afresh at each call from HKEY_LOCAL_MACHINE "Software\Velmora\AutoUpdateSRV" (64-bit
// view). Missing values are 0 or "".
//
//     HWID          REG_DWORD   the hardware ID
//     CIDs          REG_SZ      the local list; a missing value is answered with no text at all
//     CreateStatus  REG_DWORD   HRESULT of creating the object, when it is a failure
//     HWIDStatus    REG_DWORD   HRESULT of KxGetHWIDForDeployment, when it is a failure
//     CIDsStatus    REG_DWORD   HRESULT of KxGetLocalCIDList, when it is a failure
//     DelayMs       REG_DWORD   how long each call takes
//     DieIn         REG_SZ      "HWID" or "CIDs": the process ends in that call; "start": it ends before it serves
//
// It counts the calls that reached it in the values HWIDCalls and CIDsCalls and writes its process id to Pid.
constexpr char kSettingsKey[] = "Software\\Velmora\\AutoUpdateSRV";
/// Ends the server at once.
constexpr char kEndEvent[] = "AutoUpdateSRV_End";

DWORD numberSetting(const char* name);
std::string textSetting(const char* name);
bool hasSetting(const char* name);
void writeNumber(const char* name, DWORD number);
} // namespace autoupdatesrv

#endif
