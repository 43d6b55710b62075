#include "tests/system/Processes.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <psapi.h>

#include <cstring>
#include <sstream>

namespace auttest
{
namespace
{
constexpr DWORD kPatienceMs = 30000;
constexpr char kHelper[] = "system_helper.exe";
std::string settingsOf(const std::string& program) { return "Software\\Wine\\AppDefaults\\" + program; }

void writeHelperSetting(const std::string& key, const char* name, const char* text)
{
    aut::UniqueKey opened;
    ASSERT_EQ(ERROR_SUCCESS, ::RegCreateKeyExA(HKEY_CURRENT_USER, key.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr,
                                               opened.put(), nullptr));
    ASSERT_EQ(ERROR_SUCCESS, ::RegSetValueExA(opened.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text),
                                              static_cast<DWORD>(std::strlen(text) + 1)));
}

std::string readAll(HANDLE pipe)
{
    std::string text;
    char part[4096];
    DWORD size = 0;
    while (::ReadFile(pipe, part, sizeof part, &size, nullptr) && size > 0)
        text.append(part, size);
    return text;
}
} // namespace

Child::Child(std::string commandLine, HANDLE output)
{
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    if (output != nullptr)
    {
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = output;
        startup.hStdError = output;
    }
    PROCESS_INFORMATION started{};
    const BOOL ok = ::CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, output != nullptr, 0, nullptr,
                                     nullptr, &startup, &started);
    EXPECT_TRUE(ok) << commandLine << " was not started, error " << ::GetLastError();
    aut::UniqueHandle{started.hThread}.reset();
    m_process.reset(started.hProcess);
    m_pid = started.dwProcessId;
}

DWORD Child::wait() const
{
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(m_process.get(), kPatienceMs));
    DWORD status = ~0UL;
    ::GetExitCodeProcess(m_process.get(), &status);
    return status;
}

void Child::end()
{
    if (!m_process)
        return;
    ::TerminateProcess(m_process.get(), 0);
    ::WaitForSingleObject(m_process.get(), kPatienceMs);
    m_process.reset();
}

std::string programFolder()
{
    char path[MAX_PATH] = "";
    ::GetModuleFileNameA(nullptr, path, sizeof path);
    return std::string(path, std::strrchr(path, '\\'));
}

std::string helperProgram() { return "\"" + programFolder() + "\\" + kHelper + "\""; }

HelperRun runHelper(const std::string& arguments, const std::string& program)
{
    return runProgram(programFolder() + "\\" + program, arguments);
}

HelperRun runProgram(const std::string& program, const std::string& arguments)
{
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    aut::UniqueHandle reader;
    aut::UniqueHandle writer;
    EXPECT_TRUE(::CreatePipe(reader.put(), writer.put(), &inheritable, 0));
    ::SetHandleInformation(reader.get(), HANDLE_FLAG_INHERIT, 0);

    const Child child("\"" + program + "\" " + arguments, writer.get());
    writer.reset(); // so that the pipe ends with the child
    std::istringstream output(readAll(reader.get()));
    HelperRun run;
    run.status = child.wait();
    for (std::string line; std::getline(output, line);)
    {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        run.lines.push_back(line);
    }
    return run;
}

HelperWindowsVersion::HelperWindowsVersion(const char* version, const std::string& program)
    : m_settings(settingsOf(program))
{
    writeHelperSetting(m_settings, "Version", version);
}

HelperWindowsVersion::~HelperWindowsVersion() { ::RegDeleteTreeA(HKEY_CURRENT_USER, m_settings.c_str()); }

HelperWithoutLibrary::HelperWithoutLibrary(const char* library)
{
    writeHelperSetting(settingsOf(kHelper) + "\\DllOverrides", library, "");
}

HelperWithoutLibrary::~HelperWithoutLibrary() { ::RegDeleteTreeA(HKEY_CURRENT_USER, settingsOf(kHelper).c_str()); }

IdleProcesses::IdleProcesses(const std::string& name) : m_program(m_folder / name)
{
    EXPECT_TRUE(::CopyFileA((programFolder() + "\\system_idle.exe").c_str(), m_program.c_str(), FALSE));
}

Child IdleProcesses::start() const
{
    const std::string name = "system_idle " + std::to_string(::GetCurrentProcessId());
    const aut::UniqueHandle ready{::CreateEventA(nullptr, FALSE, FALSE, name.c_str())};
    Child child("\"" + m_program + "\" \"" + name + "\"");
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(ready.get(), kPatienceMs));
    return child;
}

std::string ownUser()
{
    char user[256] = "";
    char computer[256] = "";
    DWORD userSize = sizeof user;
    DWORD computerSize = sizeof computer;
    ::GetUserNameA(user, &userSize);
    ::GetComputerNameA(computer, &computerSize);
    return std::string(computer) + "\\" + user;
}

void endAllShells()
{
    DWORD ids[1000];
    DWORD bytes = 0;
    ::EnumProcesses(ids, sizeof ids, &bytes);
    for (DWORD i = 0; i < bytes / sizeof ids[0]; ++i)
    {
        const aut::UniqueHandle process{::OpenProcess(
            PROCESS_QUERY_INFORMATION | PROCESS_VM_READ | PROCESS_TERMINATE | SYNCHRONIZE, FALSE, ids[i])};
        char name[MAX_PATH] = "";
        if (process && ::GetModuleBaseNameA(process.get(), nullptr, name, sizeof name) > 0 &&
            ::_stricmp(name, "explorer.exe") == 0)
        {
            ::TerminateProcess(process.get(), 0);
            ::WaitForSingleObject(process.get(), kPatienceMs);
        }
    }
}

void allowOnly(HANDLE object, DWORD allowed)
{
    SID_IDENTIFIER_AUTHORITY world = SECURITY_WORLD_SID_AUTHORITY;
    BYTE everyone[SECURITY_MAX_SID_SIZE];
    ASSERT_TRUE(::InitializeSid(everyone, &world, 1));
    *::GetSidSubAuthority(everyone, 0) = SECURITY_WORLD_RID;

    alignas(ACL) BYTE list[256];
    auto* const acl = reinterpret_cast<ACL*>(list);
    ASSERT_TRUE(::InitializeAcl(acl, sizeof list, ACL_REVISION));
    if (allowed != 0)
    {
        ASSERT_TRUE(::AddAccessAllowedAce(acl, ACL_REVISION, allowed, everyone));
    }

    SECURITY_DESCRIPTOR descriptor;
    ASSERT_TRUE(::InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    ASSERT_TRUE(::SetSecurityDescriptorDacl(&descriptor, TRUE, acl, FALSE));
    ASSERT_TRUE(::SetKernelObjectSecurity(object, DACL_SECURITY_INFORMATION, &descriptor)) << ::GetLastError();
}

aut::UniqueHandle tokenOf(HANDLE process)
{
    aut::UniqueHandle token;
    EXPECT_TRUE(::OpenProcessToken(process, TOKEN_ALL_ACCESS, token.put()));
    return token;
}

bool impersonating()
{
    aut::UniqueHandle token;
    return ::OpenThreadToken(::GetCurrentThread(), TOKEN_QUERY, TRUE, token.put()) != FALSE;
}

bool hasNullAccessList(HANDLE object)
{
    alignas(void*) BYTE bytes[1024];
    DWORD size = 0;
    if (!::GetKernelObjectSecurity(object, DACL_SECURITY_INFORMATION, bytes, sizeof bytes, &size))
        return false;
    BOOL present = FALSE;
    BOOL defaulted = FALSE;
    ACL* acl = nullptr;
    return ::GetSecurityDescriptorDacl(bytes, &present, &acl, &defaulted) && present && acl == nullptr;
}

bool isInheritable(HANDLE object)
{
    DWORD flags = 0;
    return ::GetHandleInformation(object, &flags) && (flags & HANDLE_FLAG_INHERIT) != 0;
}
} // namespace auttest
