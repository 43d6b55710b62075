#include "fileops/RT_File.h"
#include "foundation/RT_RESULT.h"
#include "platform/UniqueResource.h"
#include "tests/fileops/StandIns.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/OpenHandles.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>

#include <algorithm>
#include <process.h>
#include <thread>

using auttest::EnvironmentVariable;
using auttest::ImportPatch;
using auttest::recordedResult;
using auttest::SpawnRecorder;
using auttest::wasRecorded;

namespace
{
using Lines = std::vector<std::string>;

const char kClass[] = "Software\\Classes\\CLSID\\{5B6A4F0E-2D5B-4D0A-9A53-7C1E0F6B8A11}";
constexpr int kCrash = static_cast<int>(0xC0000005U);

std::string g_systemDirectory; ///< what the library sees; "" when it cannot be read

UINT WINAPI otherSystemDirectory(char* text, UINT size)
{
    if (!g_systemDirectory.empty())
        ::lstrcpynA(text, g_systemDirectory.c_str(), static_cast<int>(size));
    return static_cast<UINT>(g_systemDirectory.size());
}

UINT g_errorMode = 0;
DWORD g_loadFlags = 0;

HMODULE WINAPI refuseLoad(const char*, HANDLE, DWORD flags)
{
    g_errorMode = ::GetErrorMode();
    g_loadFlags = flags;
    return nullptr;
}

std::vector<DWORD> g_sleeps;

void WINAPI recordSleep(DWORD milliseconds) { g_sleeps.push_back(milliseconds); }

/// Shows the library another system directory.
class SystemDirectory
{
public:
    explicit SystemDirectory(const std::string& path) : m_patch("GetSystemDirectoryA", &otherSystemDirectory)
    {
        g_systemDirectory = path;
    }

private:
    ImportPatch m_patch;
};

/// The library does not sleep; what it wanted to is in g_sleeps.
class NoSleep
{
public:
    NoSleep() : m_patch("Sleep", &recordSleep) { g_sleeps.clear(); }

private:
    ImportPatch m_patch;
};

class RegistrationTest : public auttest::StandInTest
{
protected:
    RegistrationTest()
    {
        auttest::Registry().removeKey(kClass);
        auttest::spoilResult();
    }
    ~RegistrationTest() override { auttest::Registry().removeKey(kClass); }

    /// The library that the class is registered with; "" when it is not.
    static std::string registeredLibrary()
    {
        return auttest::Registry().readText(std::string(kClass) + "\\InprocServer32", nullptr).value_or(std::string());
    }
    static std::string tool() { return "\"" + auttest::systemDirectory() + "\\RegSvr32.exe\""; }
};

bool registers(const std::string& path) { return RT_File(path.c_str()).Register(); }
bool unregisters(const std::string& path) { return RT_File(path.c_str()).UnRegister(); }
bool executes(const std::string& path, int type, bool install) { return RT_File(path.c_str()).Execute(type, install); }

std::string quoted(const std::string& text) { return "\"" + text + "\""; }

// ---- What is run

struct TypeCase
{
    const char* name;
    const char* file;
    bool isProgram;
};
void PrintTo(const TypeCase& row, std::ostream* out) { *out << row.name; }

class FileType : public RegistrationTest, public ::testing::WithParamInterface<TypeCase>
{
};

TEST_P(FileType, DecidesWhoRegisters)
{
    const std::string path = m_folder.writeFile(GetParam().file, "");
    const SpawnRecorder spawns;
    EXPECT_TRUE(registers(path));
    EXPECT_TRUE(unregisters(path));
    ASSERT_EQ(2U, spawns.all().size());
    if (GetParam().isProgram)
    {
        EXPECT_EQ(quoted(path) + " -regserver", spawns.all()[0].commandLine());
        EXPECT_EQ(quoted(path) + " -unregserver", spawns.all()[1].commandLine());
    }
    else
    {
        EXPECT_EQ(tool() + " /S " + quoted(path), spawns.all()[0].commandLine());
        EXPECT_EQ(tool() + " /U /S " + quoted(path), spawns.all()[1].commandLine());
    }
    EXPECT_EQ(_P_WAIT, spawns.all()[0].mode);
    EXPECT_EQ(_P_WAIT, spawns.all()[1].mode);
    EXPECT_FALSE(wasRecorded());
}

const TypeCase kTypeCases[] = {
    {"Exe", "server.exe", true},
    {"ExeInCapitals", "SERVER.EXE", true},
    {"ExeInBoth", "server.Exe", true},
    {"ExeAfterAnotherPoint", "server.dll.exe", true},
    {"NothingButTheExtension", ".exe", true},
    {"Dll", "server.dll", false},
    {"Ocx", "server.ocx", false},
    {"ExeBeforeAnotherPoint", "server.exe.dll", false},
    {"WithoutExtension", "server", false},
    {"NamedLikeTheExtension", "exe", false},
    {"FolderLikeAProgram", "folder.exe\\server", false},
    {"LongerExtension", "server.exe1", false},
    {"ShorterExtension", "server.ex", false},
};

INSTANTIATE_TEST_SUITE_P(RT_File, FileType, ::testing::ValuesIn(kTypeCases),
                         [](const auto& row) { return row.param.name; });

// ---- Libraries

TEST_F(RegistrationTest, ALibraryIsRegisteredAndUnregisteredByTheTool)
{
    const std::string path = copy("comserver.dll", "folder with blanks\\server.dll");
    EXPECT_TRUE(registers(path));
    EXPECT_EQ(path, registeredLibrary());
    EXPECT_TRUE(unregisters(path));
    EXPECT_EQ("", registeredLibrary());
    EXPECT_EQ((Lines{"register tool STA", "unregister tool STA"}), recorded());
    EXPECT_FALSE(wasRecorded());
}

TEST_F(RegistrationTest, ANameWithoutExtensionIsRegisteredByTheToolAsALibrary)
{
    const std::string path = copy("comserver.dll", "server.dll");
    EXPECT_TRUE(registers(m_folder / "server")); // the loader adds what is missing
    EXPECT_EQ(path, registeredLibrary());
    EXPECT_EQ((Lines{"register tool STA"}), recorded());
    EXPECT_FALSE(wasRecorded());
}

TEST_F(RegistrationTest, ALibraryThatFailsInTheToolIsRegisteredInThisProcess)
{
    const std::string path = copy("comserver.dll", "server.dll");
    const EnvironmentVariable byTool("AUTTEST_TOOL", "fail");
    EXPECT_TRUE(registers(path));
    EXPECT_EQ(path, registeredLibrary());
    EXPECT_EQ((Lines{"register tool STA", "register host STA"}), recorded());
    EXPECT_FALSE(wasRecorded());
    EXPECT_EQ(nullptr, ::GetModuleHandleA("server.dll")) << "the library is freed";
}

TEST_F(RegistrationTest, AnySuccessCodeOfTheEntryPointCounts)
{
    const std::string path = copy("comserver.dll", "server.dll");
    const EnvironmentVariable byTool("AUTTEST_TOOL", "fail");
    const EnvironmentVariable here("AUTTEST_SERVER", "odd");
    EXPECT_TRUE(registers(path));
    EXPECT_FALSE(wasRecorded());
}

TEST_F(RegistrationTest, ALibraryThatFailsEverywhereIsRecordedWithMinus23)
{
    const std::string path = copy("comserver.dll", "server.dll");
    const EnvironmentVariable byTool("AUTTEST_TOOL", "fail");
    const EnvironmentVariable here("AUTTEST_SERVER", "fail");
    EXPECT_FALSE(registers(path));
    EXPECT_EQ("0,470,0,7,Registration failed," + path + " (Error Code:FFFFFFE9),RT_File::Register,,", recordedResult());
    EXPECT_EQ((Lines{"register tool STA", "register host STA"}), recorded());
    EXPECT_EQ(nullptr, ::GetModuleHandleA("server.dll")) << "the library is freed";
}

TEST_F(RegistrationTest, ALibraryWithoutEntryPointIsRecordedWithMinus22)
{
    const std::string path = copy("neighbour.dll", "server.dll");
    EXPECT_FALSE(registers(path));
    EXPECT_EQ("0,470,0,7,Registration failed," + path + " (Error Code:FFFFFFEA),RT_File::Register,,", recordedResult());
    EXPECT_EQ(nullptr, ::GetModuleHandleA("server.dll")) << "the library is freed";
}

TEST_F(RegistrationTest, WhatCannotBeLoadedIsRecordedWithMinus21)
{
    for (const std::string& path : {m_folder / "missing.dll", m_folder.writeFile("text.dll", "no library"),
                                    m_folder.writeFile("empty.dll", ""), m_folder.makeFolder("folder.dll")})
    {
        auttest::spoilResult();
        EXPECT_FALSE(registers(path)) << path;
        EXPECT_EQ("0,470,0,7,Registration failed," + path + " (Error Code:FFFFFFEB),RT_File::Register,,",
                  recordedResult());
    }
}

TEST_F(RegistrationTest, AnObjectWithoutPathCannotBeRegistered)
{
    EXPECT_FALSE(RT_File().Register());
    EXPECT_EQ("0,470,0,7,Registration failed, (Error Code:FFFFFFEB),RT_File::Register,,", recordedResult());
    EXPECT_FALSE(RT_File().UnRegister());
    EXPECT_EQ("0,471,0,7,UnRegistration failed,,RT_File::UnRegister,,", recordedResult());
}

TEST_F(RegistrationTest, APathOfTenThousandCharactersIsCutInTheRecordOnly)
{
    const std::string path = "C:\\" + std::string(10000, 'p');
    EXPECT_FALSE(registers(path + ".dll"));
    EXPECT_EQ("0,470,0,7,Registration failed," + path.substr(0, 259) + ",RT_File::Register,,", recordedResult());
    EXPECT_FALSE(registers(path + ".exe"));
    EXPECT_FALSE(unregisters(path + ".dll"));
    EXPECT_EQ("0,471,0,7,UnRegistration failed," + path.substr(0, 259) + ",RT_File::UnRegister,,", recordedResult());
    EXPECT_FALSE(executes(path + ".exe", 0, true));
    EXPECT_EQ("0,477,0,7,Execution failed,\"" + path.substr(0, 258) + ",RT_File::Execute,,", recordedResult());
}

TEST_F(RegistrationTest, AnExceptionThatALibraryLetsOutIsAFailedCall)
{
    const std::string path = copy("comserver.dll", "server.dll");
    const EnvironmentVariable byTool("AUTTEST_TOOL", "fail");
    const EnvironmentVariable here("AUTTEST_SERVER", "throw");
    EXPECT_FALSE(registers(path));
    EXPECT_EQ("0,470,0,7,Registration failed," + path + " (Error Code:FFFFFFE9),RT_File::Register,,", recordedResult());
}

TEST_F(RegistrationTest, ALibraryThatCrashesTheToolIsNotLoadedHere)
{
    const std::string path = copy("comserver.dll", "server.dll");
    const EnvironmentVariable byTool("AUTTEST_TOOL", "crash");
    EXPECT_FALSE(registers(path));
    EXPECT_EQ("0,470,0,7,Registration failed," + path + " (Error Code:C0000005),RT_File::Register,,", recordedResult());
    EXPECT_EQ((Lines{"register tool STA"}), recorded());
}

TEST_F(RegistrationTest, OnlyACrashOfTheToolKeepsTheLibraryOut)
{
    const std::string path = copy("comserver.dll", "server.dll");
    for (const int outcome :
         {1, 3, 5, -1, -2, -21, static_cast<int>(0xF0000000U), static_cast<int>(0x80004005U), 0x40000015, 0x7FFFFFFF})
    {
        forget();
        const SpawnRecorder spawns(outcome);
        EXPECT_TRUE(registers(path)) << outcome;
        EXPECT_EQ((Lines{"register host STA"}), recorded()) << outcome;
    }
    for (const int outcome :
         {kCrash, static_cast<int>(0xC0000000U), static_cast<int>(0xE06D7363U), static_cast<int>(0xEFFFFFFFU)})
    {
        forget();
        const SpawnRecorder spawns(outcome);
        EXPECT_FALSE(registers(path)) << outcome;
        EXPECT_EQ(Lines(), recorded()) << outcome;
    }
}

TEST_F(RegistrationTest, DependenciesAreFoundInTheLibrarysOwnFolder)
{
    const std::string path = copy("needsneighbour.dll", "server\\server.dll");
    {
        // Not loaded here: Wine would keep a library open that it could not load.
        const ImportPatch load("LoadLibraryExA", &refuseLoad);
        EXPECT_FALSE(registers(path)) << "there is no neighbour elsewhere";
    }
    EXPECT_EQ(Lines(), recorded());

    copy("neighbour.dll", "server\\neighbour.dll");
    const EnvironmentVariable byTool("AUTTEST_TOOL", "fail");
    EXPECT_TRUE(registers(path));
    EXPECT_EQ(path, registeredLibrary());
    EXPECT_EQ((Lines{"register tool STA", "register host STA"}), recorded());
    EXPECT_EQ(nullptr, ::GetModuleHandleA("neighbour.dll"));
}

TEST_F(RegistrationTest, UnregisteringHasNoFallbackInThisProcess)
{
    const std::string path = copy("comserver.dll", "server.dll");
    ASSERT_TRUE(registers(path));
    forget();
    const EnvironmentVariable byTool("AUTTEST_TOOL", "fail");
    EXPECT_FALSE(unregisters(path));
    EXPECT_EQ("0,471,0,7,UnRegistration failed," + path + ",RT_File::UnRegister,,", recordedResult());
    EXPECT_EQ((Lines{"unregister tool STA"}), recorded());
    EXPECT_EQ(path, registeredLibrary());
}

// ---- Programs

TEST_F(RegistrationTest, AProgramRegistersItselfInItsOwnFolder)
{
    const std::string path = copy("recorder.exe", "folder with blanks\\server.exe");
    const std::string folder = auttest::shortPath(m_folder / "folder with blanks");
    EXPECT_TRUE(registers(path));
    EXPECT_TRUE(unregisters(path));
    EXPECT_EQ((Lines{quoted(path) + " -regserver", folder, quoted(path) + " -unregserver", folder}), recorded());
    EXPECT_FALSE(wasRecorded());
}

TEST_F(RegistrationTest, AProgramThatFailsIsRecordedWithItsExitCode)
{
    const std::string path = copy("recorder.exe", "server.exe");
    const EnvironmentVariable exit("AUTTEST_EXIT", std::to_string(0x1ABCDEFU).c_str());
    EXPECT_FALSE(registers(path));
    EXPECT_EQ("0,470,0,7,Registration failed," + path + " (Error Code:1ABCDEF),RT_File::Register,,", recordedResult());
    EXPECT_EQ(2U, recorded().size()) << "it is not tried again";

    EXPECT_FALSE(unregisters(path));
    EXPECT_EQ("0,471,0,7,UnRegistration failed," + path + ",RT_File::UnRegister,,", recordedResult());
}

TEST_F(RegistrationTest, AProgramThatEndsWithAllOnesFails)
{
    const std::string path = copy("recorder.exe", "server.exe");
    const EnvironmentVariable exit("AUTTEST_EXIT", "4294967295");
    EXPECT_FALSE(registers(path));
    EXPECT_EQ("0,470,0,7,Registration failed," + path + " (Error Code:FFFFFFFF),RT_File::Register,,", recordedResult());
}

TEST_F(RegistrationTest, AMissingProgramIsRecorded)
{
    const std::string path = m_folder / "missing.exe";
    EXPECT_FALSE(registers(path));
    EXPECT_EQ("0,470,0,7,Registration failed," + path + " (Error Code:FFFFFFFF),RT_File::Register,,", recordedResult());
    EXPECT_FALSE(unregisters(path));
    EXPECT_EQ("0,471,0,7,UnRegistration failed," + path + ",RT_File::UnRegister,,", recordedResult());
}

TEST_F(RegistrationTest, UnregisteringTakes0xFFFFFFFAsAlreadyRecorded)
{
    const std::string program = copy("recorder.exe", "server.exe");
    const EnvironmentVariable exit("AUTTEST_EXIT", std::to_string(0xFFFFFFF).c_str());
    EXPECT_FALSE(unregisters(program));
    EXPECT_FALSE(wasRecorded());
    EXPECT_FALSE(registers(program));
    EXPECT_EQ("0,470,0,7,Registration failed," + program + " (Error Code:FFFFFFF),RT_File::Register,,",
              recordedResult());
}

// ---- The tool

TEST_F(RegistrationTest, AMissingToolIsRecordedAndUnregisteringEndsThere)
{
    const std::string path = copy("comserver.dll", "server.dll");
    const SystemDirectory directory(m_folder.path());
    EXPECT_FALSE(unregisters(path));
    EXPECT_EQ("0,463,0,7,Regsvr32 does not exist," + m_folder / "RegSvr32.exe" + ",LaunchRegSvr32,,", recordedResult());
    EXPECT_EQ(Lines(), recorded());
}

TEST_F(RegistrationTest, WithoutToolALibraryIsRegisteredInThisProcess)
{
    const std::string path = copy("comserver.dll", "server.dll");
    const SystemDirectory directory(m_folder.path());
    EXPECT_TRUE(registers(path));
    EXPECT_EQ((Lines{"register host STA"}), recorded());
    EXPECT_EQ("0,463,0,7,Regsvr32 does not exist," + m_folder / "RegSvr32.exe" + ",LaunchRegSvr32,,", recordedResult());
}

TEST_F(RegistrationTest, WithoutToolTheFailureOfTheLibraryIsRecordedLast)
{
    const std::string path = copy("neighbour.dll", "server.dll");
    const SystemDirectory directory(m_folder.path());
    EXPECT_FALSE(registers(path));
    EXPECT_EQ("0,470,0,7,Registration failed," + path + " (Error Code:FFFFFFEA),RT_File::Register,,", recordedResult());
}

TEST_F(RegistrationTest, TheToolRunsFromTheSystemDirectory)
{
    const std::string path = copy("comserver.dll", "server.dll");
    const std::string toolPath = copy("recorder.exe", "the system\\RegSvr32.exe");
    const SystemDirectory directory(m_folder / "the system");
    EXPECT_TRUE(unregisters(path));
    EXPECT_EQ((Lines{quoted(toolPath) + " /U /S " + quoted(path), auttest::shortPath(m_folder / "the system")}),
              recorded());
}

TEST_F(RegistrationTest, WithoutSystemDirectoryTheToolIsSearchedInPath)
{
    const std::string path = copy("comserver.dll", "server.dll");
    const SystemDirectory directory("");
    {
        const EnvironmentVariable folders("PATH", auttest::systemDirectory().c_str());
        EXPECT_TRUE(registers(path));
        EXPECT_EQ((Lines{"register tool STA"}), recorded());
        EXPECT_FALSE(wasRecorded());

        const SpawnRecorder spawns;
        EXPECT_TRUE(registers(path));
        EXPECT_EQ("\"RegSvr32.exe\" /S " + quoted(path), spawns.only().commandLine());
    }
    const EnvironmentVariable folders("PATH", m_folder.path().c_str());
    EXPECT_FALSE(unregisters(path));
    EXPECT_EQ("0,463,0,7,Regsvr32 does not exist,RegSvr32.exe,LaunchRegSvr32,,", recordedResult());
}

// ---- The call in this process

const char* apartmentOfThisThread()
{
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    if (FAILED(::CoGetApartmentType(&type, &qualifier)))
        return "none";
    return type == APTTYPE_MTA ? "MTA" : "STA";
}

TEST_F(RegistrationTest, TheThreadsApartmentIsUsedAndLeftAsItWas)
{
    const std::string path = copy("comserver.dll", "server.dll");
    const EnvironmentVariable byTool("AUTTEST_TOOL", "fail");
    struct Row
    {
        bool initialised;
        DWORD kind;
        const char* before;
        const char* during;
    };
    for (const Row& row : {Row{false, 0, "none", "STA"}, Row{true, COINIT_APARTMENTTHREADED, "STA", "STA"},
                           Row{true, COINIT_MULTITHREADED, "MTA", "MTA"}})
    {
        forget();
        std::thread(
            [&]
            {
                if (row.initialised)
                {
                    EXPECT_EQ(S_OK, ::CoInitializeEx(nullptr, row.kind));
                }
                EXPECT_TRUE(registers(path));
                EXPECT_STREQ(row.before, apartmentOfThisThread());
                if (row.initialised)
                    ::CoUninitialize();
            })
            .join();
        EXPECT_EQ((Lines{"register tool STA", std::string("register host ") + row.during}), recorded());
    }
}

TEST_F(RegistrationTest, TheLibraryIsLoadedWithItsOwnSearchPathAndWithoutMessageBoxes)
{
    const std::string path = copy("comserver.dll", "server.dll");
    const ImportPatch load("LoadLibraryExA", &refuseLoad);
    const SpawnRecorder spawns(1);
    const UINT before = ::GetErrorMode();
    EXPECT_FALSE(registers(path));
    EXPECT_EQ(static_cast<DWORD>(LOAD_WITH_ALTERED_SEARCH_PATH), g_loadFlags);
    EXPECT_NE(0U, g_errorMode & SEM_FAILCRITICALERRORS);
    EXPECT_EQ(before, ::GetErrorMode());
}

TEST_F(RegistrationTest, AThousandRoundsLeaveNoHandle)
{
    const std::string library = copy("comserver.dll", "server.dll");
    const std::string noServer = copy("neighbour.dll", "no server.dll");
    const std::string program = copy("recorder.exe", "server.exe");
    const EnvironmentVariable noRecord("AUTTEST_RECORD", nullptr);
    const auto round = [&](int i)
    {
        const SystemDirectory directory(m_folder.path()); // to run the tool takes long
        EXPECT_TRUE(registers(library));
        EXPECT_FALSE(registers(noServer));
        EXPECT_FALSE(unregisters(library));
        if (i % 20 == 0)
        {
            EXPECT_TRUE(registers(program));
        }
    };
    for (int i = 0; i < 3; ++i)
        round(i); // what is loaded once
    const std::size_t before = auttest::openHandles();
    for (int i = 0; i < 1000; ++i)
        round(i);
    EXPECT_EQ(before, auttest::openHandles());
}

// ---- Installers

struct InstallCase
{
    const char* name;
    int type;
    bool install;
    const char* arguments;
};
void PrintTo(const InstallCase& row, std::ostream* out) { *out << row.name; }

class Installation : public RegistrationTest, public ::testing::WithParamInterface<InstallCase>
{
};

TEST_P(Installation, HasTheseArguments)
{
    const InstallCase& row = GetParam();
    const std::string path = copy("recorder.exe", "folder with blanks\\setup.exe");
    {
        const NoSleep noSleep;
        EXPECT_TRUE(executes(path, row.type, row.install));
        EXPECT_EQ(std::vector<DWORD>{3000}, g_sleeps);
        EXPECT_FALSE(wasRecorded());
    }
    ASSERT_EQ(2U, recorded().size());
    const std::string seen = recorded()[0];
    EXPECT_EQ(quoted(path) + " " + row.arguments, seen + (*row.arguments == '\0' ? " " : ""));
    EXPECT_EQ(auttest::shortPath(m_folder / "folder with blanks"), recorded()[1]);

    const EnvironmentVariable exit("AUTTEST_EXIT", "1");
    EXPECT_FALSE(executes(path, row.type, row.install));
    EXPECT_EQ("0,477,0,7,Execution failed," + quoted(path) + " " + row.arguments + ",RT_File::Execute,,",
              recordedResult());
}

const InstallCase kInstallCases[] = {
    {"ClientInstaller", 8, true, "/AU_INSTALL"},
    {"ClientRemover", 8, false, "/AU_REMOVE"},
    {"SilentInstaller", 16, true, "/VERYSILENT /NORESTART /NOCANCEL /RESTARTEXITCODE=99"},
    {"SilentRemover", 16, false, "/UNINSTALL /VERYSILENT /NORESTART /NOCANCEL /RESTARTEXITCODE=99"},
    {"Type0", 0, true, ""},
    {"Type0Removing", 0, false, ""},
    {"BothTypes", 24, true, ""},
    {"TypeMinus1", -1, false, ""},
};

INSTANTIATE_TEST_SUITE_P(RT_File, Installation, ::testing::ValuesIn(kInstallCases),
                         [](const auto& row) { return row.param.name; });

TEST_F(RegistrationTest, AnInstallerThatAsksForARestartCountsAsFailed)
{
    const std::string path = copy("recorder.exe", "setup.exe");
    const EnvironmentVariable exit("AUTTEST_EXIT", "99");
    const NoSleep noSleep;
    EXPECT_FALSE(executes(path, 16, true));
    EXPECT_EQ("0,477,0,7,Execution failed," + quoted(path) +
                  " /VERYSILENT /NORESTART /NOCANCEL /RESTARTEXITCODE=99,RT_File::Execute,,",
              recordedResult());
    EXPECT_EQ(std::vector<DWORD>(), g_sleeps) << "only success is given time";
}

TEST_F(RegistrationTest, AnyExitCodeButZeroIsAFailedExecution)
{
    const std::string path = copy("recorder.exe", "setup.exe");
    for (const char* const code : {"1", "256", "65536", "2147483648", "3221225477", "4294967295"})
    {
        auttest::spoilResult();
        const EnvironmentVariable exit("AUTTEST_EXIT", code);
        EXPECT_FALSE(executes(path, 8, true)) << code;
        EXPECT_EQ("0,477,0,7,Execution failed," + quoted(path) + " /AU_INSTALL,RT_File::Execute,,", recordedResult());
    }
}

TEST_F(RegistrationTest, WhatCannotBeStartedIsAFailedExecution)
{
    for (const std::string& path :
         {m_folder / "missing.exe", m_folder.writeFile("empty.exe", ""), m_folder.path(), std::string()})
    {
        auttest::spoilResult();
        EXPECT_FALSE(executes(path, 0, true)) << path;
        EXPECT_EQ("0,477,0,7,Execution failed," + quoted(path) + " ,RT_File::Execute,,", recordedResult());
    }
}

TEST_F(RegistrationTest, AnInstallerIsWaitedForHoweverLongItTakes)
{
    const std::string name = "AutTestInstall" + std::to_string(::GetCurrentProcessId());
    const aut::UniqueHandle goOn(::CreateEventA(nullptr, TRUE, FALSE, name.c_str()));
    const EnvironmentVariable event("AUTTEST_EVENT", name.c_str());
    const EnvironmentVariable exit("AUTTEST_EXIT", "1");
    const std::string path = copy("recorder.exe", "setup.exe");
    const aut::UniqueHandle done(::CreateEventA(nullptr, TRUE, FALSE, nullptr));
    bool outcome = true;
    std::thread caller(
        [&]
        {
            outcome = executes(path, 8, true);
            ::SetEvent(done.get());
        });
    while (recorded().size() < 2) // it runs
        ::Sleep(5);
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), ::WaitForSingleObject(done.get(), 100));
    EXPECT_FALSE(wasRecorded());
    ::SetEvent(goOn.get());
    caller.join();
    EXPECT_FALSE(outcome);
    EXPECT_TRUE(wasRecorded());
}
} // namespace
