#include "platform/FileReplacement.h"

#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
class FileReplacementTest : public ::testing::Test
{
protected:
    FileReplacementTest() : path(folder.writeFile("file.xml", "old")) {}
    /// What lies in the folder.
    int entries() const
    {
        WIN32_FIND_DATAA entry;
        const HANDLE find = ::FindFirstFileA((folder / "*").c_str(), &entry);
        int count = -2; // "." and ".."
        for (bool more = find != INVALID_HANDLE_VALUE; more; more = ::FindNextFileA(find, &entry) != FALSE)
            ++count;
        ::FindClose(find);
        return count;
    }
    void expectOld() const
    {
        EXPECT_EQ("old", folder.readFile("file.xml"));
        EXPECT_EQ(1, entries()) << "nothing is left beside it";
    }

    const auttest::TestFolder folder;
    const std::string path;
};

TEST_F(FileReplacementTest, CommitsWhatWasWritten)
{
    {
        aut::FileReplacement file(path.c_str());
        ASSERT_TRUE(file.write("new\0!", 5));
        EXPECT_EQ("old", folder.readFile("file.xml")) << "until it is whole";
        EXPECT_TRUE(file.commit());
        EXPECT_STREQ("", file.temporary());
    }
    EXPECT_EQ(std::string("new\0!", 5), folder.readFile("file.xml"));
    EXPECT_EQ(1, entries());
}

TEST_F(FileReplacementTest, CommitsACopyWithoutItsAttributes)
{
    const auttest::TestFolder other;
    const std::string source = other.writeFile("source", "copied");
    ::SetFileAttributesA(source.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
    aut::FileReplacement file(path.c_str());
    EXPECT_TRUE(file.copyFrom(source.c_str()) && file.commit());
    EXPECT_EQ("copied", folder.readFile("file.xml"));
    EXPECT_EQ(0u, ::GetFileAttributesA(path.c_str()) & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));
}

TEST_F(FileReplacementTest, CommitsWhatAnotherWroteToTheTemporaryName)
{
    aut::FileReplacement file(path.c_str());
    auttest::writeFile(file.temporary(), "by another");
    EXPECT_TRUE(file.commit());
    EXPECT_EQ("by another", folder.readFile("file.xml"));
}

TEST_F(FileReplacementTest, MakesAFileThatIsNotThereYet)
{
    aut::FileReplacement file((folder / "second.xml").c_str());
    EXPECT_TRUE(file.write("", 0) && file.commit());
    EXPECT_EQ("", folder.readFile("second.xml"));
}

TEST_F(FileReplacementTest, WithoutACommitNothingHasHappened)
{
    {
        aut::FileReplacement file(path.c_str());
        ASSERT_TRUE(file.write("new", 3));
    }
    expectOld();
}

TEST_F(FileReplacementTest, AReadOnlyFileStays)
{
    ::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY);
    {
        aut::FileReplacement file(path.c_str());
        ASSERT_TRUE(file.write("new", 3));
        EXPECT_FALSE(file.commit());
        EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError());
    }
    expectOld();
}

TEST_F(FileReplacementTest, AFileInUseStays)
{
    const HANDLE held = ::CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    {
        aut::FileReplacement file(path.c_str());
        ASSERT_TRUE(file.write("new", 3));
        EXPECT_FALSE(file.commit());
    }
    EXPECT_NE(DWORD{ERROR_SUCCESS}, ::GetLastError());
    ::CloseHandle(held);
    expectOld();
}

TEST_F(FileReplacementTest, ASourceThatIsMissingLeavesTheFile)
{
    {
        aut::FileReplacement file(path.c_str());
        EXPECT_FALSE(file.copyFrom((folder / "missing").c_str()));
        EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, ::GetLastError());
    }
    expectOld();
}

TEST_F(FileReplacementTest, DeletesWhatAProcessThatIsNoMoreHasLeft)
{
    const std::string left = folder.writeFile("dat7ffffff0-0001.tmp", "half");
    folder.writeFile("dat7ffffff0-0002.tmp", "another half");
    ::SetFileAttributesA(left.c_str(), FILE_ATTRIBUTE_READONLY);
    {
        aut::FileReplacement file(path.c_str());
        EXPECT_EQ(2, entries()) << "the file and the new temporary one";
    }
    expectOld();
}

TEST_F(FileReplacementTest, DeletesNothingOfARunningProcessAndNoOtherFile)
{
    aut::FileReplacement other(path.c_str());
    ASSERT_TRUE(other.write("of another thread", 17));
    for (const char* const name : {"data-1.tmp", "dat7ffffff0-1.tmp", "dat7ffffff0-0001.tmp.txt", "dat-0001.tmp",
                                   "dat00000000-0001.tmp", "dat7ffffff0-0001x.tmp"})
        folder.writeFile(name, "kept");
    {
        const aut::FileReplacement file((folder / "second.xml").c_str());
        EXPECT_EQ(9, entries());
    }
    EXPECT_EQ(8, entries());
    EXPECT_TRUE(other.commit());
    EXPECT_EQ("of another thread", folder.readFile("file.xml"));
}

TEST_F(FileReplacementTest, ARefusedReplacementLeavesNoReadOnlyCopyBeside)
{
    {
        aut::FileReplacement file(path.c_str());
        ::SetFileAttributesA(file.temporary(), FILE_ATTRIBUTE_READONLY);
    }
    expectOld();
}

TEST_F(FileReplacementTest, WithoutAPlaceForItNothingWorks)
{
    const std::string longPath = folder / std::string(300, 'x');
    for (const char* const where :
         {"", "file without a folder", "C:\\no such folder\\file", longPath.c_str(), static_cast<const char*>(nullptr)})
    {
        aut::FileReplacement file(where);
        EXPECT_STREQ("", file.temporary());
        EXPECT_NE(DWORD{ERROR_SUCCESS}, ::GetLastError());
        EXPECT_FALSE(file.write("x", 1));
        EXPECT_FALSE(file.copyFrom(path.c_str()));
        EXPECT_FALSE(file.commit());
    }
    expectOld();
}
} // namespace
