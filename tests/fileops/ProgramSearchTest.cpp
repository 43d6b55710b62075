// Where ExecCommand finds a program.

#include "fileops/ExecCommand.h"
#include "tests/fileops/StandIns.h"

#include <gtest/gtest.h>

#include <windows.h>

using auttest::EnvironmentVariable;
using auttest::SpawnRecorder;

namespace
{
class ProgramSearch : public auttest::StandInTest
{
protected:
    ProgramSearch() { EXPECT_TRUE(::SetCurrentDirectoryA(m_folder.makeFolder("home").c_str())); }

    /// The program that a name stands for, below the test's folder; "" when there is none.
    std::string found(std::string name) const
    {
        const SpawnRecorder spawns;
        if (ExecCommand(name.data(), true) == -1)
            return "";
        const std::string program = auttest::longPath(spawns.only().program);
        return program.compare(0, m_folder.path().size() + 1, m_folder.path() + "\\") == 0
                   ? program.substr(m_folder.path().size() + 1)
                   : program;
    }
    void write(const char* name) const { m_folder.writeFile(name, ""); }
};

TEST_F(ProgramSearch, PathIsSearchedOnEveryCall)
{
    copy("recorder.exe", "tools\\auttest-tool.exe");
    const EnvironmentVariable path("PATH", (m_folder / "nowhere;" + m_folder / "tools").c_str());
    for (int i = 1; i <= 5; ++i)
    {
        std::string line = "auttest-tool x";
        EXPECT_EQ(0, ExecCommand(line.data(), true)) << "call " << i;
    }
    ASSERT_EQ(10U, recorded().size());
    EXPECT_EQ("auttest-tool x", recorded().at(0));
}

TEST_F(ProgramSearch, AProgramFoundThroughPathRunsInTheCallersDirectory)
{
    copy("recorder.exe", "tools\\auttest-tool.exe");
    const EnvironmentVariable path("PATH", (m_folder / "tools").c_str());
    std::string line = "auttest-tool.exe";
    EXPECT_EQ(0, ExecCommand(line.data(), true));
    EXPECT_EQ(auttest::shortPath(m_folder / "home"), recorded().at(1));
}

TEST_F(ProgramSearch, TheCurrentDirectoryComesFirst)
{
    write("home\\p.exe");
    write("tools\\p.exe");
    write("tools\\q.exe");
    const EnvironmentVariable path("PATH", (m_folder / "tools").c_str());
    EXPECT_EQ("home\\p.exe", found("p.exe"));
    EXPECT_EQ("tools\\q.exe", found("q.exe"));
}

TEST_F(ProgramSearch, TheFoldersOfPathAreTakenInOrder)
{
    write("one\\p.exe");
    write("two\\p.com");
    write("two\\q.exe");
    const EnvironmentVariable path("PATH",
                                   (";;" + m_folder / "missing;" + m_folder / "one;" + m_folder / "two\\;").c_str());
    EXPECT_EQ("one\\p.exe", found("p")) << "a folder before an extension";
    EXPECT_EQ("two\\q.exe", found("q"));
    EXPECT_EQ("", found("r"));
}

TEST_F(ProgramSearch, APathEntryMayBeQuotedOrRelative)
{
    write("tools\\p.exe");
    write("home\\below\\q.exe");
    const EnvironmentVariable path("PATH", ("\"" + m_folder / "tools\";below").c_str());
    EXPECT_EQ("tools\\p.exe", found("p"));
    EXPECT_EQ("home\\below\\q.exe", found("q"));
}

TEST_F(ProgramSearch, WithoutPathOnlyTheCurrentDirectoryIsSearched)
{
    write("home\\p.exe");
    const EnvironmentVariable path("PATH", nullptr);
    EXPECT_EQ("home\\p.exe", found("p"));
    EXPECT_EQ("", found("regsvr32.exe"));
}

TEST_F(ProgramSearch, APathOfAnyLengthIsSearched)
{
    write("tools\\p.exe");
    std::string folders;
    while (folders.size() < 20000)
        folders += m_folder / "missing;";
    const EnvironmentVariable path("PATH", (folders + m_folder / "tools").c_str());
    EXPECT_EQ("tools\\p.exe", found("p.exe"));
}

TEST_F(ProgramSearch, ANameWithAFolderIsNotSearchedInPath)
{
    write("tools\\p.exe");
    write("tools\\below\\p.exe");
    const EnvironmentVariable path("PATH", (m_folder / "tools").c_str());
    EXPECT_EQ("", found("below\\p.exe"));
    EXPECT_EQ("", found(".\\p.exe"));
    EXPECT_EQ("", found("./p.exe"));
    EXPECT_EQ("", found("C:p.exe"));
}

TEST_F(ProgramSearch, AMissingExtensionIsTriedInOrder)
{
    for (const char* const extension : {"", ".cmd", ".bat", ".exe", ".com"})
    {
        write(("home\\p" + std::string(extension)).c_str());
        EXPECT_EQ("home\\p" + std::string(extension), found("p"));
        EXPECT_EQ("home\\p" + std::string(extension), found("\"" + m_folder / "home\\p\""));
    }
}

TEST_F(ProgramSearch, AnExtensionIsTakenAsItIs)
{
    write("home\\p.v2.exe");
    write("home\\setup.pkg");
    EXPECT_EQ("", found("p.v2"));
    EXPECT_EQ("home\\p.v2.exe", found("p.v2.exe"));
    EXPECT_EQ("home\\setup.pkg", found("setup.pkg"));
}

TEST_F(ProgramSearch, APointInTheFolderIsNoExtension)
{
    write("folder v2.0\\p.exe");
    EXPECT_EQ("folder v2.0\\p.exe", found("\"" + m_folder / "folder v2.0\\p\""));
}

TEST_F(ProgramSearch, AFolderIsNoProgram)
{
    m_folder.makeFolder("home\\p.exe");
    write("tools\\p.exe");
    const EnvironmentVariable path("PATH", (m_folder / "tools").c_str());
    EXPECT_EQ("tools\\p.exe", found("p.exe"));
    EXPECT_EQ("", found("\"" + m_folder / "home\\p.exe\""));
}
} // namespace
