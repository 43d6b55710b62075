#ifndef AUTOOLS_TESTS_FOUNDATION_CHILDPROGRAM_H
#define AUTOOLS_TESTS_FOUNDATION_CHILDPROGRAM_H

#include "platform/UniqueResource.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace auttest
{
/// The folder of the test programs, where also the library lies; without a backslash at the end.
inline std::string programFolder()
{
    char path[MAX_PATH] = "";
    ::GetModuleFileNameA(nullptr, path, sizeof path);
    const std::string program = path;
    return program.substr(0, program.rfind('\\'));
}

/// A copy of log_program.exe under another name in `folder`: what a process is called decides where it logs.
inline std::string logProgramAs(const TestFolder& folder, const std::string& name)
{
    const std::string copy = folder / name;
    EXPECT_TRUE(::CopyFileA((programFolder() + "\\log_program.exe").c_str(), copy.c_str(), FALSE)) << ::GetLastError();
    return copy;
}

/// A started program. Its current folder is that of the tests, so that it finds the library. Ended with the object.
class ChildProgram
{
public:
    ChildProgram(const std::string& program, const std::string& arguments)
    {
        std::string commandLine = '"' + program + "\" " + arguments;
        STARTUPINFOA startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION started{};
        EXPECT_TRUE(::CreateProcessA(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                     programFolder().c_str(), &startup, &started))
            << commandLine << ", error " << ::GetLastError();
        m_process.reset(started.hProcess);
        aut::UniqueHandle(started.hThread).reset();
    }
    ChildProgram(ChildProgram&&) = default;
    ChildProgram& operator=(ChildProgram&&) = delete;
    ~ChildProgram()
    {
        if (m_process && ::WaitForSingleObject(m_process.get(), 0) == WAIT_TIMEOUT)
            kill();
    }

    /// The exit code; 999 when it does not end in time.
    DWORD wait(DWORD limitMs = 60000) const
    {
        DWORD code = 999;
        if (!m_process || ::WaitForSingleObject(m_process.get(), limitMs) != WAIT_OBJECT_0)
            return 999;
        ::GetExitCodeProcess(m_process.get(), &code);
        return code;
    }
    void kill()
    {
        ::TerminateProcess(m_process.get(), 77);
        ::WaitForSingleObject(m_process.get(), 60000);
    }

private:
    aut::UniqueHandle m_process;
};

inline DWORD runProgram(const std::string& program, const std::string& arguments)
{
    return ChildProgram(program, arguments).wait();
}
} // namespace auttest

#endif
