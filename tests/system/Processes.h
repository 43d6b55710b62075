#ifndef AUTOOLS_TESTS_SYSTEM_PROCESSES_H
#define AUTOOLS_TESTS_SYSTEM_PROCESSES_H

#include "platform/UniqueResource.h"
#include "tests/support/OpenHandles.h"
#include "tests/support/TestFolder.h"

#include <string>
#include <vector>

namespace auttest
{
/// A process that a test started. It is ended with the object.
class Child
{
public:
    /// Fails the running test when the process cannot be started. `output` becomes its standard output.
    explicit Child(std::string commandLine, HANDLE output = nullptr);
    Child(Child&&) = default;
    Child& operator=(Child&&) = default;
    ~Child() { end(); }

    unsigned long pid() const { return m_pid; }
    HANDLE handle() const { return m_process.get(); }
    /// Waits for its own end; the exit status.
    DWORD wait() const;
    void end();

private:
    aut::UniqueHandle m_process;
    unsigned long m_pid = 0;
};

/// Where the test programs are, without a backslash at the end.
std::string programFolder();

/// What `system_helper.exe` printed.
struct HelperRun
{
    DWORD status = ~0UL;
    std::vector<std::string> lines;
};
/// Runs it, or another helper from the same folder, and waits for its end.
HelperRun runHelper(const std::string& arguments, const std::string& program = "system_helper.exe");
/// Any program, by its full path, in the same way.
HelperRun runProgram(const std::string& program, const std::string& arguments);
/// Quoted path of the program, to start it by other means.
std::string helperProgram();

/// Lets the helper see another Windows version ("win98", "nt40", ...) while this lives. This is a setting of the
/// emulator, by program name.
class HelperWindowsVersion
{
public:
    explicit HelperWindowsVersion(const char* version, const std::string& program = "system_helper.exe");
    ~HelperWindowsVersion();
    HelperWindowsVersion(const HelperWindowsVersion&) = delete;
    HelperWindowsVersion& operator=(const HelperWindowsVersion&) = delete;

private:
    std::string m_settings;
};
/// Keeps the helper from loading a system library while this lives.
class HelperWithoutLibrary
{
public:
    explicit HelperWithoutLibrary(const char* library);
    ~HelperWithoutLibrary();
};

/// Idle processes under a name of the test's choice, from a folder of their own. Outlives its children.
class IdleProcesses
{
public:
    explicit IdleProcesses(const std::string& name);
    /// Waits until it runs: a process that has just been created cannot be asked for its modules.
    Child start() const;
    Child startWithoutWaiting() const { return Child("\"" + m_program + "\""); }
    const std::string& program() const { return m_program; }

private:
    TestFolder m_folder;
    std::string m_program;
};

/// domain\user of this process, as Windows tells it.
std::string ownUser();
/// Ends every process called explorer.exe of this Windows session, so that nobody counts as logged on.
void endAllShells();

/// Takes every right but `allowed` away from everyone (this process included): on a process, thread or token handle
/// that has WRITE_DAC.
void allowOnly(HANDLE object, DWORD allowed);
/// The process's token, with every right.
aut::UniqueHandle tokenOf(HANDLE process);
/// Whether the calling thread impersonates somebody.
bool impersonating();

/// Is the object open to everyone: a present, null access list.
bool hasNullAccessList(HANDLE object);
bool isInheritable(HANDLE object);
} // namespace auttest

#endif
