#ifndef AUTOOLS_TORTURE_FAULTS_INJECTOR_H
#define AUTOOLS_TORTURE_FAULTS_INJECTOR_H

#include <windows.h>

#include <string>

/// Counts the calls of this process that change something on the disk or in the registry, and lets one of them end the
/// process or fail.
///
/// All of Win32, the C runtime, its streams and MSXML reach the system through a dozen calls of ntdll. They are caught
/// there, in the import tables of every module: a copy of a file is thus not one call but its steps. What is counted:
/// opening a file for writing, creating or deleting it (folders too), writing, renaming, setting its size, time or
/// attributes, flushing it; creating, deleting and flushing keys, setting and deleting values. The event log's own file
/// can be left out, so that a failure can be read there.
namespace faults
{
enum class Effect
{
    None,      ///< only counts
    DieBefore, ///< the process ends before the call
    DieAfter,
    Denied, ///< the call fails: no right to it, disk full, in use
    Full,
    Shared,
    Short ///< a write takes only half of its bytes, and succeeds; other calls are not touched
};

/// The exit status of a process that died is this plus progress().
constexpr DWORD kDied = 1000;

/// Puts the hooks into all modules that are loaded. More often than once is fine.
void install();
/// From now on, the call number `at` (from 1 on) meets the effect. `withLog` counts those on the log file too.
void arm(Effect effect, int at, bool withLog);
/// No effect any more.
/// @return how many calls were counted
int disarm();
/// Whether the call was reached and met its effect, and which one it was.
bool wasHit();
std::string hitCall();

/// How many steps the job has finished; set by the job.
extern volatile long g_progress;
} // namespace faults

#endif
