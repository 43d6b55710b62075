#include "foundation/RT_RESULT.h"
#include "system/KernelControl.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogFile.h"
#include "tests/system/Kernel.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace auttest;
using Events = std::vector<LogEvent>;

namespace
{
constexpr DWORD kPatienceMs = 30000;

/// A client whose kernel folder has blanks in its name and holds no reload program yet.
class KernelRestartTest : public ::testing::Test
{
protected:
    KernelRestartTest()
        : m_components(m_folder.makeFolder("Common Files")),
          m_kernelFolder(m_folder.makeFolder("Common Files\\Kernel\\3.3.302.1_EN"))
    {
        m_registry.write("", "CompPath", m_components);
        m_registry.write("", "Current_Kernel_Version", "3.3.302.1_EN");
        ::SetEnvironmentVariableA("AUTTEST_RELOADED", m_eventName.c_str());
        m_log.mark();
    }
    void install(const std::string& program) const
    {
        ASSERT_TRUE(::CopyFileA((programFolder() + "\\reload_standin.exe").c_str(), program.c_str(), FALSE))
            << program << " " << ::GetLastError();
    }
    std::string here() const { return m_kernelFolder + "\\ReloadAutoUpdate.exe"; }
    std::string x64() const { return m_kernelFolder + "\\x64\\ReloadAutoUpdate.exe"; }
    void makeX64() const { m_folder.makeFolder("Common Files\\Kernel\\3.3.302.1_EN\\x64"); }

    /// What the started program noted. Waits for its end: a program that runs cannot be deleted.
    std::string report(const std::string& program) const
    {
        EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(m_reloaded.get(), kPatienceMs));
        const std::string text = readFile(program.substr(0, program.rfind('\\')) + "\\report.txt");
        const std::size_t process = text.find("process=");
        if (process == std::string::npos)
            return text;
        const aut::UniqueHandle running{
            ::OpenProcess(SYNCHRONIZE, FALSE, std::stoul(text.substr(process + std::string("process=").size())))};
        if (running)
        {
            EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(running.get(), kPatienceMs));
        }
        return text.substr(0, process);
    }
    std::string expectedReport(const std::string& program, const std::string& arguments) const
    {
        return "command line=\"" + program + "\" " + arguments + "\nfolder=" + m_kernelFolder + "\ninherited=0\n";
    }
    static LogEvent missing(const std::string& program) { return {"Error", program + " does not exist."}; }

    ClientRegistry m_registry;
    TestFolder m_folder;
    const std::string m_components;
    const std::string m_kernelFolder;
    const std::string m_eventName = "KernelRestartTest" + std::to_string(::GetCurrentProcessId());
    const aut::UniqueHandle m_reloaded{::CreateEventA(nullptr, FALSE, FALSE, m_eventName.c_str())};
    LogFile m_log;
};
} // namespace

TEST_F(KernelRestartTest, TheKernelStartsTheProgramInItsFolder)
{
    makeX64();
    install(here());
    install(x64());
    EXPECT_TRUE(RestartService(true));
    EXPECT_EQ(expectedReport(here(), "Called by Automatic Update"), report(here()));
    EXPECT_FALSE(fileExists(m_kernelFolder + "\\x64\\report.txt"));
    EXPECT_EQ((Events{{"Info", "Restart the service"}}), m_log.events());
}

TEST_F(KernelRestartTest, OthersStartTheSixtyFourBitProgramInTheSameCurrentDirectory)
{
    makeX64();
    install(here());
    install(x64());
    EXPECT_TRUE(RestartService(false));
    EXPECT_EQ(expectedReport(x64(), "Restart AU"), report(x64()));
    EXPECT_FALSE(fileExists(m_kernelFolder + "\\report.txt"));
    EXPECT_EQ((Events{{"Info", "Restart the service"}}), m_log.events());
}

TEST_F(KernelRestartTest, OnAThirtyTwoBitSystemOthersStartTheProgramInTheFolder)
{
    makeX64();
    install(here());
    install(x64());
    const HelperWindowsVersion setting("win98", "kernelcontrol_helper.exe"); // which counts as 32-bit
    EXPECT_EQ((std::vector<std::string>{"1"}), runHelper("restart", "kernelcontrol_helper.exe").lines);
    EXPECT_EQ(expectedReport(here(), "Restart AU"), report(here()));
}

TEST_F(KernelRestartTest, AMissingProgramIsLogged)
{
    EXPECT_FALSE(RestartService(true));
    EXPECT_FALSE(RestartService(false));
    EXPECT_EQ((Events{missing(here()), missing(x64())}), m_log.events());
}

TEST_F(KernelRestartTest, NeitherProgramStandsInForTheOther)
{
    install(here());
    EXPECT_FALSE(RestartService(false));
    EXPECT_TRUE(::DeleteFileA(here().c_str()));
    makeX64();
    install(x64());
    EXPECT_FALSE(RestartService(true));
    EXPECT_EQ((Events{missing(x64()), missing(here())}), m_log.events());
}

TEST_F(KernelRestartTest, WhatIsNoProgramIsLoggedWithTheSystemError)
{
    writeFile(here(), "this is no program");
    EXPECT_FALSE(RestartService(true));
    EXPECT_EQ((Events{{"Info", "Restart the service"}, {"Error", "Can not execute " + here() + ", err:193"}}),
              m_log.events());
}

TEST_F(KernelRestartTest, AFolderOfThatNameExistsButCannotBeExecuted)
{
    ASSERT_TRUE(::CreateDirectoryA(here().c_str(), nullptr));
    EXPECT_FALSE(RestartService(true));
    ASSERT_EQ(2U, m_log.events().size());
    EXPECT_EQ(0U, m_log.events()[1].text.find("Can not execute " + here() + ", err:"));
}

TEST_F(KernelRestartTest, WithoutSettingsThereIsNoProgram)
{
    m_registry.removeValue("", "CompPath");
    m_registry.removeValue("", "Current_Kernel_Version");
    EXPECT_FALSE(RestartService(true));
    EXPECT_FALSE(RestartService(false));
    EXPECT_EQ((Events{missing("\\Kernel\\\\ReloadAutoUpdate.exe"), missing("\\Kernel\\\\x64\\ReloadAutoUpdate.exe")}),
              m_log.events());
}

TEST_F(KernelRestartTest, AFolderWithoutADriveIsNotSearchedFromTheCurrentDirectory)
{
    m_registry.write("", "CompPath", "..\\Common Files");
    install(here());
    char before[MAX_PATH] = "";
    ::GetCurrentDirectoryA(sizeof before, before);
    ASSERT_TRUE(::SetCurrentDirectoryA(m_components.c_str())); // from here the path would lead to the program
    EXPECT_FALSE(RestartService(true));
    ::SetCurrentDirectoryA(before);
    EXPECT_EQ((Events{missing("..\\Common Files\\Kernel\\3.3.302.1_EN\\ReloadAutoUpdate.exe")}), m_log.events());
}

TEST_F(KernelRestartTest, APathOfMoreThan259CharactersIsRefused)
{
    // As long as the settings allow, and each part no longer than a folder's name may be.
    const std::string kernels = "C:\\Kernel";
    const std::size_t fixed = kernels.size() + 1 + std::string("\\ReloadAutoUpdate.exe").size();
    const std::string longest(259 - fixed, 'v');
    m_registry.write("", "CompPath", "C:");
    m_registry.write("", "Current_Kernel_Version", longest + "v");
    const std::string folder = kernels + "\\" + longest + "v";
    ASSERT_TRUE(::CreateDirectoryA(kernels.c_str(), nullptr));
    ASSERT_TRUE(::CreateDirectoryA(folder.c_str(), nullptr)) << ::GetLastError();
    // The program is there all the same: wide paths of this form may be longer.
    const std::wstring there = L"\\\\?\\" + std::wstring(folder.begin(), folder.end()) + L"\\ReloadAutoUpdate.exe";
    const std::string standIn = programFolder() + "\\reload_standin.exe";
    ASSERT_TRUE(::CopyFileW(std::wstring(standIn.begin(), standIn.end()).c_str(), there.c_str(), FALSE));
    EXPECT_FALSE(RestartService(true));
    EXPECT_TRUE(::DeleteFileW(there.c_str()));
    EXPECT_EQ((Events{missing(folder + "\\ReloadAutoUpdate.exe")}), m_log.events());

    // One shorter, and it is started.
    m_registry.write("", "Current_Kernel_Version", longest);
    const std::string program = kernels + "\\" + longest + "\\ReloadAutoUpdate.exe";
    ASSERT_EQ(259U, program.size());
    ASSERT_TRUE(::CreateDirectoryA((kernels + "\\" + longest).c_str(), nullptr));
    install(program);
    EXPECT_TRUE(RestartService(true));
    EXPECT_EQ(0U, report(program).find("command line=\"" + program + "\" Called by Automatic Update\n"));
    removeAll(kernels);
}

TEST_F(KernelRestartTest, TextsOfTenThousandCharactersCountAsMissing)
{
    m_registry.write("", "CompPath", std::string(10000, 'p'));
    m_registry.write("", "Current_Kernel_Version", std::string(10000, 'v'));
    EXPECT_FALSE(RestartService(true));
    EXPECT_EQ((Events{missing("\\Kernel\\\\ReloadAutoUpdate.exe")}), m_log.events());
}

TEST_F(KernelRestartTest, NoHandleOfOursReachesTheProgram)
{
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    const aut::UniqueHandle handle{::CreateEventA(&inheritable, TRUE, FALSE, nullptr)};
    ::SetEnvironmentVariableA("AUTTEST_HANDLE", std::to_string(reinterpret_cast<std::size_t>(handle.get())).c_str());
    install(here());
    EXPECT_TRUE(RestartService(true));
    EXPECT_NE(std::string::npos, report(here()).find("inherited=0\n"));
    ::SetEnvironmentVariableA("AUTTEST_HANDLE", nullptr);
}

TEST_F(KernelRestartTest, TheProgramStartsWithDefaults)
{
    static STARTUPINFOA startup;
    static DWORD flags;
    static BOOL inherit;
    static std::string program;
    struct Note
    {
        static BOOL WINAPI create(const char* application, char*, SECURITY_ATTRIBUTES*, SECURITY_ATTRIBUTES*,
                                  BOOL inheritHandles, DWORD creationFlags, void*, const char*, STARTUPINFOA* info,
                                  PROCESS_INFORMATION*)
        {
            program = application;
            inherit = inheritHandles;
            flags = creationFlags;
            startup = *info;
            ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
            return FALSE;
        }
    };
    install(here());
    const ImportPatch create("CreateProcessA", &Note::create);
    EXPECT_FALSE(RestartService(true));
    EXPECT_EQ(here(), program);
    EXPECT_FALSE(inherit);
    EXPECT_EQ(0U, flags);
    EXPECT_EQ(sizeof startup, startup.cb);
    EXPECT_EQ(0U, startup.dwFlags);
    EXPECT_EQ(nullptr, startup.lpDesktop);
    EXPECT_EQ(nullptr, startup.lpTitle);
    EXPECT_EQ(0, startup.cbReserved2);
    EXPECT_EQ((LogEvent{"Error", "Can not execute " + here() + ", err:8"}), m_log.events().back());
}

TEST_F(KernelRestartTest, NothingIsRecorded)
{
    RT_RESULT before = *result;
    EXPECT_FALSE(RestartService(true));
    writeFile(here(), "this is no program");
    EXPECT_FALSE(RestartService(true));
    EXPECT_EQ(before.GetStatusCode(), result->GetStatusCode());
    EXPECT_EQ(before.GetAction(), result->GetAction());
    EXPECT_EQ(before.GetFunction(), result->GetFunction());
    EXPECT_EQ(before.GetObjectA(), result->GetObjectA());
}

TEST_F(KernelRestartTest, RestartingLeavesNoHandleOpen)
{
    install(here());
    const auto restart = [this]
    {
        EXPECT_TRUE(RestartService(true));
        report(here());
        EXPECT_FALSE(RestartService(false));
    };
    restart();
    const std::size_t before = openHandles();
    for (int round = 0; round < 10; ++round)
        restart();
    EXPECT_EQ(before, openHandles());
}
