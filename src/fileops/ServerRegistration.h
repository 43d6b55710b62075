#ifndef AUTOOLS_FILEOPS_SERVERREGISTRATION_H
#define AUTOOLS_FILEOPS_SERVERREGISTRATION_H

namespace aut
{
// The ways to register a COM server (or to unregister it). 0 is success in all of them. They throw when memory runs
// out.

/// What `LaunchRegSvr32` returns when there is no tool: seven digits, deliberately not -1.
constexpr int kToolMissing = 0xFFFFFFF;

/// Runs the system's registration tool for a library and gives its exit code. A missing tool is recorded in `result`.
int LaunchRegSvr32(const char* path, bool registering);

/// Has a program register itself and gives its exit code.
int selfRegistration(const char* path, bool registering);

/// Loads a library into this process and has it register itself. -21: it cannot be loaded; -22: it has no entry point;
/// -23: the call failed. The thread is in a COM apartment meanwhile, as it is in the tool: a single-threaded one, or
/// that of the caller.
///
/// A library that crashes takes this process with it: exceptions of the system cannot be caught with every compiler,
/// and to go on with a heap that it may have damaged would be worse.
int registerInProcess(const char* path);

/// Whether this exit code of the tool tells that it crashed, together with the library in it.
bool isCrash(int exitCode);
} // namespace aut

#endif
