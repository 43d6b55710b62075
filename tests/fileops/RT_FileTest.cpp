#include "fileops/RT_File.h"
#include "tests/fileops/FileProbe.h"
#include "tests/fileops/PathCases.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <type_traits>

static_assert(std::has_virtual_destructor_v<RT_File>);

using auttest::FileProbe;

namespace
{
void expectParts(const auttest::PathCase& expected, FileProbe& file)
{
    EXPECT_STREQ(expected.drive, file.m_drive);
    EXPECT_STREQ(expected.server, file.m_server);
    EXPECT_STREQ(expected.path, file.GetPath());
    EXPECT_STREQ(expected.name, file.GetFileName());
    EXPECT_STREQ(expected.fullPath, file.GetFullPath());
}

TEST(RT_File, SetFullPathTakesDriveAndSharePathsApart)
{
    for (const auttest::PathCase& row : auttest::kPathCases)
    {
        SCOPED_TRACE(row.given);
        FileProbe file;
        file.SetFullPath(row.given);
        expectParts(row, file);
        FileProbe constructed(row.given);
        expectParts(row, constructed);
    }
}

TEST(RT_File, ANewPathReplacesEveryPartOfTheOldOne)
{
    FileProbe file;
    for (const auttest::PathCase& row : auttest::kPathCases)
    {
        SCOPED_TRACE(row.given);
        file.SetFullPath(row.given);
        expectParts(row, file);
    }
}

TEST(RT_File, AnyOtherFormLeavesTheObjectAsItWas)
{
    for (const char* refused : auttest::kRefusedPaths)
    {
        SCOPED_TRACE(refused);
        FileProbe file("C:\\old\\name.txt");
        file.SetFullPath(refused);
        expectParts({"", "C:", "", "C:\\old", "name.txt", "C:\\old\\name.txt"}, file);
        EXPECT_FALSE(file.Initialize(refused));
        expectParts({"", "C:", "", "C:\\old", "name.txt", "C:\\old\\name.txt"}, file);
    }
    FileProbe file("C:\\old\\name.txt");
    file.SetFullPath(nullptr);
    expectParts({"", "C:", "", "C:\\old", "name.txt", "C:\\old\\name.txt"}, file);
}

TEST(RT_File, InitializeLeavesRootAndCleanedRest)
{
    FileProbe file;
    EXPECT_TRUE(file.Initialize("d:/a//b/"));
    EXPECT_STREQ("d:", file.m_drive);
    EXPECT_STREQ("a\\b", file.m_path);
    EXPECT_TRUE(file.Initialize("\\\\server\\\\a\\b\\"));
    EXPECT_STREQ("", file.m_drive);
    EXPECT_STREQ("\\\\server", file.m_server);
    EXPECT_STREQ("a\\b", file.m_path);
}

TEST(RT_File, DirectoryAndNameMayBeGivenApart)
{
    FileProbe file("c:/Data//Sub/", "x.dll");
    expectParts({"", "c:", "", "c:\\Data\\Sub", "x.dll", "c:\\Data\\Sub\\x.dll"}, file);
    file.SetFullPath("\\\\server\\share", "y.dll");
    expectParts({"", "", "\\\\server", "\\\\server\\share", "y.dll", "\\\\server\\share\\y.dll"}, file);
    file.SetFullPath("C:", "z.dll");
    expectParts({"", "C:", "", "C:", "z.dll", "C:\\z.dll"}, file);
    file.SetFullPath("C:\\a", "");
    expectParts({"", "C:", "", "C:\\a", "", "C:\\a"}, file);
    file.SetFullPath("C:\\a", nullptr);
    expectParts({"", "C:", "", "C:\\a", "", "C:\\a"}, file);
}

TEST(RT_File, ANameGivenApartIsTakenAsItIs)
{
    FileProbe file("C:\\a", "/b//c.dll");
    expectParts({"", "C:", "", "C:\\a", "/b//c.dll", "C:\\a\\/b//c.dll"}, file);
}

TEST(RT_File, ANameGivenApartStandsEvenWhenTheDirectoryIsRefused)
{
    FileProbe file("C:\\old\\name.txt");
    file.SetFullPath("relative", "new.txt");
    expectParts({"", "C:", "", "C:\\old", "new.txt", "C:\\old\\name.txt"}, file);
    FileProbe fresh(nullptr, "new.txt");
    expectParts({"", "", "", "", "new.txt", ""}, fresh);
}

TEST(RT_File, TextsOfTheObjectItselfMayBeGiven)
{
    FileProbe file("C:\\a\\b.txt");
    file.SetFullPath(file.GetFullPath());
    expectParts({"", "C:", "", "C:\\a", "b.txt", "C:\\a\\b.txt"}, file);
    file.SetFullPath(file.GetFullPath(), file.GetFileName());
    expectParts({"", "C:", "", "C:\\a\\b.txt", "b.txt", "C:\\a\\b.txt\\b.txt"}, file);
    file.SetFullPath(file.GetPath(), file.GetFullPath());
    expectParts({"", "C:", "", "C:\\a\\b.txt", "C:\\a\\b.txt\\b.txt", "C:\\a\\b.txt\\C:\\a\\b.txt\\b.txt"}, file);
}

TEST(RT_File, ADefaultObjectIsEmpty)
{
    FileProbe file;
    expectParts({"", "", "", "", "", ""}, file);
    EXPECT_EQ(INVALID_HANDLE_VALUE, file.GetFileHandle());
    FileProbe used("C:\\a\\b.txt");
    used.m_handle = nullptr;
    used.InitMembers();
    expectParts({"", "", "", "", "", ""}, used);
    EXPECT_EQ(INVALID_HANDLE_VALUE, used.GetFileHandle());
}

TEST(RT_File, PathsHaveNoLimit)
{
    std::string longPath = "C:";
    for (int i = 0; i < 20'000; ++i)
        longPath += "\\\\abc";
    FileProbe file(longPath.c_str());
    EXPECT_EQ(2u + 20'000u * 4, std::string(file.GetFullPath()).size());
    EXPECT_STREQ("abc", file.GetFileName());
    EXPECT_FALSE(file.IsFileExisting(nullptr));
    EXPECT_FALSE(file.IsFileExisting(longPath.c_str()));
    EXPECT_EQ(0, file.Open(0x20));
    EXPECT_EQ(0u, file.GetLength());
    EXPECT_EQ(0u, file.GetCheckSum());
    EXPECT_TRUE(file.IsFileLocked());
    EXPECT_FALSE(file.IsReadOnly());
    EXPECT_FALSE(file.HasVersionInfo(nullptr));
}

TEST(RT_File, ACopyHasTheSameHandleAndTheFirstToCloseItWins)
{
    const auttest::TestFolder folder;
    folder.writeFile("a.txt", "text");
    FileProbe file((folder / "a.txt").c_str());
    ASSERT_NE(0, file.Open(0x20));
    const HANDLE handle = file.GetFileHandle();
    {
        RT_File copy(file);
        EXPECT_EQ(handle, copy.GetFileHandle());
        EXPECT_STREQ(file.GetFullPath(), copy.GetFullPath());
        EXPECT_STREQ(file.GetPath(), copy.GetPath());
        EXPECT_STREQ(file.GetFileName(), copy.GetFileName());
    }
    char byte = 0;
    EXPECT_EQ(0u, file.Read(&byte, 1)); // the copy closed it
    file.m_handle = nullptr;
}

TEST(RT_File, AssignmentClosesTheOwnHandleAndTakesTheOtherOne)
{
    const auttest::TestFolder folder;
    folder.writeFile("a.txt", "A");
    folder.writeFile("b.txt", "B");
    FileProbe a((folder / "a.txt").c_str());
    FileProbe b((folder / "b.txt").c_str());
    ASSERT_NE(0, a.Open(0));
    ASSERT_NE(0, b.Open(0x20));
    a = b;
    EXPECT_EQ(b.GetFileHandle(), a.GetFileHandle());
    EXPECT_STREQ(b.GetFullPath(), a.GetFullPath());
    EXPECT_FALSE(FileProbe((folder / "a.txt").c_str()).IsFileLocked());
    a = b; // the same handle again: it must not be closed
    char byte = 0;
    EXPECT_EQ(1u, a.Read(&byte, 1));
    EXPECT_EQ('B', byte);
    b.m_handle = nullptr;
    FileProbe& same = a;
    a = same;
    EXPECT_TRUE(a.GetFileHandle() != nullptr && a.GetFileHandle() != INVALID_HANDLE_VALUE);
}

TEST(RT_File, TheDestructorClosesTheFile)
{
    const auttest::TestFolder folder;
    folder.writeFile("a.txt", "text");
    {
        RT_File file((folder / "a.txt").c_str());
        ASSERT_NE(0, file.Open(0));
        EXPECT_TRUE(FileProbe((folder / "a.txt").c_str()).IsFileLocked());
    }
    EXPECT_FALSE(FileProbe((folder / "a.txt").c_str()).IsFileLocked());
}

TEST(RT_File, IsFileExistingTestsTheFullPathOrTheNameInAnotherFolder)
{
    const auttest::TestFolder folder;
    folder.writeFile("here.txt", "");
    folder.writeFile("other\\there.txt", "");
    RT_File here((folder / "here.txt").c_str());
    RT_File there((folder / "there.txt").c_str());
    EXPECT_TRUE(here.IsFileExisting(nullptr));
    EXPECT_FALSE(here.IsFileExisting((folder / "other").c_str()));
    EXPECT_FALSE(there.IsFileExisting(nullptr));
    EXPECT_TRUE(there.IsFileExisting((folder / "other").c_str()));
    EXPECT_FALSE(there.IsFileExisting((folder / "missing").c_str()));
    EXPECT_FALSE(RT_File().IsFileExisting(nullptr));
}

TEST(RT_File, AFolderOfThatNameCountsAsExisting)
{
    const auttest::TestFolder folder;
    EXPECT_TRUE(RT_File(folder.path().c_str()).IsFileExisting(nullptr));
}

TEST(RT_File, NamesOutsideOfTheSevenBitCharactersWork)
{
    const auttest::TestFolder folder;
    const std::string name = "gr\xFC\xDF \xE9t\xE9.txt"; // Western European code page
    RT_File file((folder / name).c_str());
    ASSERT_NE(0, file.Open(0x1000 | 1));
    EXPECT_TRUE(file.Write("text"));
    file.Close();
    EXPECT_STREQ(name.c_str(), file.GetFileName());
    EXPECT_TRUE(file.IsFileExisting(nullptr));
    EXPECT_EQ(4u, file.GetLength());
    EXPECT_TRUE(FlushFile(file.GetFullPath()));
    EXPECT_NE(0u, file.GetCheckSum());
}
} // namespace
