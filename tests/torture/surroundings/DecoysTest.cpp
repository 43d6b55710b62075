// Programs and libraries that lie where the search for another one might come by.

#include "7xAutoUpdateTools.h"
#include "tests/fileops/StandIns.h"
#include "tests/support/ClientRegistry.h"
#include "tests/system/Processes.h"
#include "tests/torture/Figure.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

namespace
{
using Lines = std::vector<std::string>;
constexpr DWORD kPatienceMs = 30000;

void place(const std::string& decoy, const std::string& path)
{
    EXPECT_TRUE(::CopyFileA((auttest::programFolder() + "\\fileprograms\\" + decoy).c_str(), path.c_str(), FALSE))
        << path << ", error " << ::GetLastError();
}

/// A decoy outside of the test's own folder, away at the end.
class PlacedDecoy
{
public:
    PlacedDecoy(const std::string& decoy, std::string path) : m_path(std::move(path)) { place(decoy, m_path); }
    PlacedDecoy(const PlacedDecoy&) = delete;
    PlacedDecoy& operator=(const PlacedDecoy&) = delete;
    ~PlacedDecoy() { auttest::removeAll(m_path); }

private:
    std::string m_path;
};

class Decoys : public auttest::StandInTest
{
protected:
    /// The records as they are once there are so many, for programs that nobody waits for.
    Lines recordedAfter(std::size_t count) const
    {
        const ULONGLONG end = ::GetTickCount64() + kPatienceMs;
        while (recorded().size() < count && ::GetTickCount64() < end)
            ::Sleep(10);
        return recorded();
    }
    /// Every record must be of this file.
    void expectOnly(const std::string& genuine, std::size_t times)
    {
        Lines all = recordedAfter(times);
        ::Sleep(100); // one too many would come about now
        all = recorded();
        EXPECT_EQ(times, all.size());
        for (const std::string& line : all)
        {
            const bool isGenuine = ::_stricmp(auttest::longPath(line).c_str(), auttest::longPath(genuine).c_str()) == 0;
            EXPECT_TRUE(isGenuine) << line << " ran instead of " << genuine;
            m_wrong += isGenuine ? 0 : 1;
        }
        m_runs += static_cast<int>(all.size());
        forget();
    }

    auttest::ClientRegistry m_registry;
    int m_wrong = 0;
    int m_runs = 0;
};
} // namespace

TEST_F(Decoys, BesideAPathWithBlanksAreNeverRun)
{
    const std::string folder = m_folder.makeFolder("My Programs\\The Tool");
    const std::string program = folder + "\\set up.exe";
    place("torture_decoy.exe", program);
    for (const char* name : {"My.exe", "My", "My.com", "My Programs\\The.exe", "My Programs\\The Tool\\set.exe",
                             "My Programs\\The Tool\\set", "My Programs\\The Tool\\set up.exe.exe"})
        place("torture_decoy.exe", m_folder / name);
    // The best known of these places, and a genuine program below it.
    const PlacedDecoy root("torture_decoy.exe", "C:\\Program.exe");
    const std::string below = "C:\\Program Files\\torture tool.exe";
    const PlacedDecoy genuine("torture_decoy.exe", below);
    const PlacedDecoy beside("torture_decoy.exe", "C:\\Program Files\\torture.exe");

    for (const std::string& path : {program, below})
    {
        RT_File file(path.c_str());
        file.Execute(8, true);
        file.Execute(16, false);
        file.Execute(0, true);
        file.Register();
        file.UnRegister();
        std::string command = "\"" + path + "\" argument";
        ExecCommand(command.data(), true);
        ExecCommand(command.data(), false);
        expectOnly(path, 7);
    }

    // Started on the user's desktop: as the caller quotes it, nothing else is tried.
    const auttest::IdleProcesses shells("explorer.exe");
    auttest::endAllShells();
    const auttest::Registry user(HKEY_CURRENT_USER);
    user.write("Environment", "AUTTEST_RECORD", auttest::EnvironmentVariable::read("AUTTEST_RECORD"));
    {
        const auttest::Child shell = shells.start();
        CProcessListManager manager;
        EXPECT_EQ(1, manager.RunUserProcess(auttest::ownUser().c_str(), ("\"" + program + "\" argument").c_str()));
        expectOnly(program, 1);
    }
    auttest::endAllShells();
    user.removeValue("Environment", "AUTTEST_RECORD");

    // The restart tool, in a kernel folder with blanks.
    m_registry.write("", "CompPath", m_folder.makeFolder("Common Files"));
    m_registry.write("", "Current_Kernel_Version", "3.3.302.1_EN");
    const std::string kernel = m_folder.makeFolder("Common Files\\Kernel\\3.3.302.1_EN");
    place("torture_decoy.exe", m_folder / "Common.exe");
    place("torture_decoy.exe", kernel + "\\ReloadAutoUpdate.exe");
    EXPECT_TRUE(RestartService(true));
    expectOnly(kernel + "\\ReloadAutoUpdate.exe", 1);

    torture::count("decoys run beside a path with blanks, " + std::to_string(m_runs) + " starts", m_wrong, 0);
}

TEST_F(Decoys, OfTheRegistrationToolAreNeverRun)
{
    const std::string here = m_folder.makeFolder("here");
    const std::string temp = m_folder.makeFolder("temp");
    const std::string inPath = m_folder.makeFolder("in path");
    for (const std::string& folder : {here, temp, inPath})
        for (const char* name : {"RegSvr32.exe", "regsvr32.com", "regsvr32"})
            place("torture_decoy.exe", folder + "\\" + name);
    const auttest::EnvironmentVariable tempVariable("TEMP", temp.c_str());
    const auttest::EnvironmentVariable pathVariable(
        "PATH", (inPath + ";" + auttest::EnvironmentVariable::read("PATH")).c_str());
    ASSERT_TRUE(::SetCurrentDirectoryA(here.c_str()));

    m_folder.writeFile("here\\no library.dll", "text");
    RT_File file((m_folder / "here\\no library.dll").c_str());
    EXPECT_FALSE(file.Register());
    EXPECT_FALSE(file.UnRegister());
    torture::count("decoys of the registration tool run", static_cast<long long>(recorded().size()), 0);
    ::SetCurrentDirectoryA("C:\\");
}

TEST_F(Decoys, OfLibrariesAreNeverLoaded)
{
    const std::string here = m_folder.makeFolder("here");
    const std::string temp = m_folder.makeFolder("temp");
    const std::string inPath = m_folder.makeFolder("in path");
    const std::string client = m_folder.makeFolder("client");
    m_registry.write("", "Path", client);
    m_registry.write("", "CompPath", m_folder.makeFolder("components"));
    m_folder.writeFile("components\\comp\\1.0B1_EN\\comp.map", "server=update.example\n");
    // The documented first location of the companion libraries.
    for (const char* genuine : {"mapfile\\MapFile.dll", "7xFileTransfer.dll"})
    {
        const std::string name = genuine;
        ASSERT_TRUE(::CopyFileA((auttest::programFolder() + "\\" + name).c_str(),
                                (client + "\\" + name.substr(name.rfind('\\') + 1)).c_str(), FALSE))
            << name;
    }
    for (const std::string& folder : {here, temp, inPath})
        for (const char* name : {"MapFile.dll", "7xFileTransfer.dll", "Version.dll", "shell32.dll", "PSAPI.DLL",
                                 "Userenv.dll", "WtsApi32.dll", "msxml3.dll", "crypt32.dll"})
            place("torture_decoy_library.dll", folder + "\\" + name);
    const auttest::EnvironmentVariable tempVariable("TEMP", temp.c_str());
    const auttest::EnvironmentVariable pathVariable(
        "PATH", (inPath + ";" + auttest::EnvironmentVariable::read("PATH")).c_str());
    ASSERT_TRUE(::SetCurrentDirectoryA(here.c_str()));

    CComponent component(5, "comp", "1.0", "B1", "EN", 0, "");
    EXPECT_TRUE(component.LoadMapFile(nullptr)) << "the genuine one";
    component.ReleaseMapFile();
    String data;
    int status = 0;
    GetDataFromStream("http://127.0.0.1:1/", &status, nullptr, data);
    EXPECT_NE(0, status) << "the genuine one";
    CFileVersion version;
    version.Open("C:\\windows\\system32\\kernel32.dll");
    String path;
    GetAUDataPath(path, 1);
    String name;
    CProcessListManager processes;
    EXPECT_EQ(1, processes.GetProcessNameFromPID(::GetCurrentProcessId(), name));
    processes.RunUserProcess("host\\nobody", "nothing");
    CWTSApiWrapper::GetInstance()->IsWTSSession();
    CWTSApiWrapper::FreeInstance();
    FreeDLL(LoadDLL("MapFile.dll", nullptr));

    const Lines loaded = recorded();
    for (const std::string& line : loaded)
        ADD_FAILURE() << line << " was loaded";
    torture::count("decoys of 9 libraries in 3 folders loaded", static_cast<long long>(loaded.size()), 0);
    ::SetCurrentDirectoryA("C:\\");
}
