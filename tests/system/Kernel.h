#ifndef AUTOOLS_TESTS_SYSTEM_KERNEL_H
#define AUTOOLS_TESTS_SYSTEM_KERNEL_H

#include "tests/support/TestFolder.h"
#include "tests/system/Processes.h"

#include <string>

namespace auttest
{
constexpr char kKernelMutex[] = "Global\\Velmora Automatic Update";

/// Stand-ins for the update kernel: real programs called "AutoUpdate.exe" in a folder of their own. Outlives them.
class KernelProgram
{
public:
    explicit KernelProgram(const std::string& name = "AutoUpdate.exe");
    /// A kernel with these settings (see its source); returns when it owns what it is to own.
    Child start(const std::string& arguments = {}) const;
    const std::string& path() const { return m_path; }

private:
    TestFolder m_folder;
    std::string m_path;
};

/// The kernel as the running service "Velmora Automatic Update", until the object ends.
class KernelService
{
public:
    KernelService(const KernelProgram& program, const std::string& arguments);
    ~KernelService();
    KernelService(const KernelService&) = delete;
    KernelService& operator=(const KernelService&) = delete;

    DWORD state() const;

private:
    aut::UniqueHandle m_process;
};

/// A mutex of the test's own while it lives.
class OwnMutex
{
public:
    explicit OwnMutex(const char* name);
    HANDLE handle() const { return m_mutex.get(); }

private:
    aut::UniqueHandle m_mutex;
};
} // namespace auttest

#endif
