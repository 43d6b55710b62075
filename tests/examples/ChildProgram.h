#ifndef AUTOOLS_TESTS_EXAMPLES_CHILDPROGRAM_H
#define AUTOOLS_TESTS_EXAMPLES_CHILDPROGRAM_H

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

namespace auttest
{
/// A program beside this one, with its streams at our end.
class ChildProgram
{
public:
    ChildProgram(const std::string& program, const std::string& arguments)
    {
        SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
        HANDLE childIn = nullptr;
        HANDLE childOut = nullptr;
        EXPECT_TRUE(::CreatePipe(&childIn, &m_input, &inherited, 0));
        EXPECT_TRUE(::CreatePipe(&m_output, &childOut, &inherited, 0));
        ::SetHandleInformation(m_input, HANDLE_FLAG_INHERIT, 0);
        ::SetHandleInformation(m_output, HANDLE_FLAG_INHERIT, 0);
        STARTUPINFOA startup{};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = childIn;
        startup.hStdOutput = childOut;
        startup.hStdError = childOut;
        std::string command = "\"" + folder() + program + "\" " + arguments;
        PROCESS_INFORMATION process{};
        EXPECT_TRUE(
            ::CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process));
        m_process = process.hProcess;
        ::CloseHandle(process.hThread);
        ::CloseHandle(childIn);
        ::CloseHandle(childOut);
    }
    ~ChildProgram()
    {
        endInput();
        if (::WaitForSingleObject(m_process, 10000) != WAIT_OBJECT_0)
            ::TerminateProcess(m_process, 99);
        ::CloseHandle(m_process);
        ::CloseHandle(m_output);
    }
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;

    std::string readLine()
    {
        std::string line;
        char c = '\0';
        DWORD read = 0;
        while (::ReadFile(m_output, &c, 1, &read, nullptr) && read == 1 && c != '\n')
            if (c != '\r')
                line += c;
        return line;
    }
    void endInput()
    {
        if (m_input != nullptr)
            ::CloseHandle(m_input);
        m_input = nullptr;
    }
    DWORD exitCode()
    {
        DWORD code = 98;
        EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(m_process, 10000));
        ::GetExitCodeProcess(m_process, &code);
        return code;
    }

private:
    static std::string folder()
    {
        char path[MAX_PATH];
        ::GetModuleFileNameA(nullptr, path, MAX_PATH);
        const std::string self = path;
        return self.substr(0, self.find_last_of("\\/") + 1);
    }

    HANDLE m_input = nullptr;
    HANDLE m_output = nullptr;
    HANDLE m_process = nullptr;
};
} // namespace auttest

#endif
