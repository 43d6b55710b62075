// What is registered before the next start of Windows is carried out by it. Windows really restarts between the two
// test suites, which is done by whoever runs this program; see run-suite.sh.

#include "tests/fileops/ReplacementTest.h"
#include "tests/system/Processes.h"

using auttest::InUse;

namespace
{
constexpr char kProgram[] = "fileops_helper.exe";

/// One file of each kind in a folder by the Windows version that the process sees, which replaced it.
struct Place
{
    explicit Place(const std::string& version) : folder("C:\\restart\\" + version) {}

    std::string source(const std::string& name) const { return folder + "\\source\\" + name; }
    std::string target(const std::string& name) const { return folder + "\\target\\" + name; }

    const std::string folder;
};
constexpr const char* kVersions[] = {"win7", "nt40", "win98", "win10"};

class BeforeRestart : public ::testing::TestWithParam<const char*>
{
protected:
    BeforeRestart() : place(GetParam()), m_version(GetParam(), kProgram)
    {
        ::CreateDirectoryA("C:\\restart", nullptr);
        for (const std::string& directory : {place.folder, place.folder + "\\source", place.folder + "\\target"})
            ::CreateDirectoryA(directory.c_str(), nullptr);
    }
    void writeBoth(const std::string& name) const
    {
        auttest::writeFile(place.source(name), "new");
        auttest::writeFile(place.target(name), "old");
    }
    /// The operation succeeds and leaves the target for the next start.
    void expectWaiting(const std::string& command, const std::string& name, const std::string& flag) const
    {
        const std::string target = place.target(name);
        const std::string operands = command == "remove"
                                         ? "\"" + target + "\" "
                                         : "\"" + place.source(name) + "\" \"" + place.folder + "\\target\" ";
        const auttest::HelperRun run = auttest::runHelper(command + " " + operands + flag, kProgram);
        ASSERT_EQ(4u, run.lines.size());
        EXPECT_EQ("true", run.lines[0]);
        EXPECT_EQ("restart needed", run.lines[1]);
    }

    const Place place;

private:
    const auttest::HelperWindowsVersion m_version;
};
INSTANTIATE_TEST_SUITE_P(Versions, BeforeRestart, ::testing::ValuesIn(kVersions),
                         [](const auto& row) { return row.param; });

TEST_P(BeforeRestart, AFileInUseIsMovedOnto)
{
    for (const char* name : {"moved.txt", "moved_under_a_long_name.txt"})
    {
        writeBoth(name);
        {
            const InUse held(place.target(name));
            expectWaiting("move", name, "1");
        }
        EXPECT_EQ("old", auttest::readFile(place.target(name)));
    }
}

TEST_P(BeforeRestart, AFileInUseIsCopiedOnto)
{
    // The temporary names lie in one folder.
    for (const std::string& name : {std::string("c_") + GetParam() + ".txt", std::string("copied_on_") + GetParam()})
    {
        writeBoth(name);
        {
            const InUse held(place.target(name));
            expectWaiting("copy", name, "0");
        }
        EXPECT_EQ("old", auttest::readFile(place.target(name)));
    }
}

TEST_P(BeforeRestart, FilesInUseAreRemoved)
{
    for (const char* name : {"removed1.txt", "removed2.txt"})
    {
        writeBoth(name);
        {
            const InUse held(place.target(name));
            expectWaiting("remove", name, "1");
        }
        EXPECT_EQ("old", auttest::readFile(place.target(name)));
    }
}

TEST_P(BeforeRestart, OfReplacingAndRemovingTheSameFileTheLaterCounts)
{
    for (const char* name : {"gone.txt", "here.txt"})
    {
        writeBoth(name);
        const InUse held(place.target(name));
        const bool removeLast = std::string(name) == "gone.txt";
        expectWaiting(removeLast ? "move" : "remove", name, "1");
        expectWaiting(removeLast ? "remove" : "move", name, "1");
    }
}

TEST_P(BeforeRestart, AProgramThatRunsIsReplaced)
{
    writeBoth("prog.exe");
    const std::string program = place.target("prog.exe");
    ASSERT_TRUE(::CopyFileA((auttest::programFolder() + "\\system_idle.exe").c_str(), program.c_str(), FALSE));
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    // It runs until Windows ends it.
    ASSERT_TRUE(
        ::CreateProcessA(program.c_str(), nullptr, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &started));
    aut::UniqueHandle(started.hThread).reset();
    aut::UniqueHandle(started.hProcess).reset();
    expectWaiting("move", "prog.exe", "1");
}

/// Once: what the older family's command needs. The emulator lacks both programs.
TEST(BeforeRestartOnce, TheCommandsOfTheOlderFamilyArePutInPlace)
{
    const std::string programs = auttest::programFolder() + "\\fileprograms\\";
    ::CreateDirectoryA("C:\\windows\\Command", nullptr);
    EXPECT_TRUE(::CopyFileA((programs + "commandinterpreter.exe").c_str(), "C:\\windows\\Command.com", TRUE));
    EXPECT_TRUE(::CopyFileA((programs + "movecommand.exe").c_str(), "C:\\windows\\Command\\Move.exe", TRUE));
}

/// The commands that run once are not waited for by the start.
bool comesTo(const std::string& path, const std::string& text)
{
    for (int tries = 0; tries < 500; ++tries)
    {
        if (auttest::fileExists(path) && auttest::readFile(path) == text)
            return true;
        ::Sleep(20);
    }
    return false;
}

TEST(AfterRestart, MovedFilesAreInPlace)
{
    for (const char* version : kVersions)
    {
        const Place place(version);
        for (const char* name : {"moved.txt", "moved_under_a_long_name.txt"})
        {
            EXPECT_TRUE(comesTo(place.target(name), "new")) << place.target(name);
            EXPECT_FALSE(auttest::fileExists(place.source(name)));
        }
    }
}

TEST(AfterRestart, CopiedFilesAreInPlaceAndTheTemporaryOnesGone)
{
    for (const char* version : kVersions)
    {
        const Place place(version);
        const std::string names[] = {std::string("c_") + version, std::string("copied_on_") + version};
        EXPECT_TRUE(comesTo(place.target(names[0] + ".txt"), "new")) << version;
        EXPECT_TRUE(comesTo(place.target(names[1]), "new")) << version;
        EXPECT_EQ("new", auttest::readFile(place.source(names[0] + ".txt")));
        EXPECT_FALSE(auttest::fileExists("C:\\" + names[0] + "_0.tmp"));
        EXPECT_FALSE(auttest::fileExists("C:\\" + names[1] + "_0.tmp"));
    }
}

TEST(AfterRestart, RemovedFilesAreGone)
{
    for (const char* version : kVersions)
    {
        for (const char* name : {"removed1.txt", "removed2.txt"})
            EXPECT_FALSE(auttest::fileExists(Place(version).target(name))) << version << " " << name;
    }
}

TEST(AfterRestart, WhatCameLaterCounted)
{
    for (const char* version : kVersions)
    {
        EXPECT_FALSE(auttest::fileExists(Place(version).target("gone.txt"))) << version;
        ASSERT_TRUE(auttest::fileExists(Place(version).target("here.txt"))) << version;
        EXPECT_EQ("new", auttest::readFile(Place(version).target("here.txt"))) << version;
    }
}

TEST(AfterRestart, ProgramsThatRanAreReplaced)
{
    for (const char* version : kVersions)
        EXPECT_EQ("new", auttest::readFile(Place(version).target("prog.exe"))) << version;
}

TEST(AfterRestart, NothingIsLeftToBeDone)
{
    EXPECT_FALSE(auttest::fileExists("C:\\windows\\wininit.ini"));
    EXPECT_FALSE(auttest::Registry().valueExists("System\\CurrentControlSet\\Control\\Session Manager",
                                                 "PendingFileRenameOperations"));
    EXPECT_TRUE(
        auttest::Registry().valueNames("SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\RunServicesOnce").empty());
}
} // namespace
