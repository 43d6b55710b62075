#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

TEST(TestFolder, KeepsFilesByteForByte)
{
    const auttest::TestFolder folder;
    const std::string bytes("a\r\n\0\x1a\xff", 6);
    const std::string path = folder.writeFile("sub\\deep\\file.bin", bytes);
    EXPECT_EQ(folder.path() + "\\sub\\deep\\file.bin", path);
    EXPECT_EQ(bytes, folder.readFile("sub\\deep\\file.bin"));
    EXPECT_TRUE(folder.exists("sub"));
    EXPECT_FALSE(folder.exists("sub\\other"));
}

TEST(TestFolder, LeavesNothingBehindNotEvenReadOnlyFiles)
{
    std::string path;
    {
        const auttest::TestFolder folder;
        path = folder.path();
        ::SetFileAttributesA(folder.writeFile("a\\b.txt", "x").c_str(), FILE_ATTRIBUTE_READONLY);
        EXPECT_TRUE(auttest::fileExists(path));
    }
    EXPECT_FALSE(auttest::fileExists(path));
}

TEST(TestFolder, TwoAreNeverTheSame)
{
    const auttest::TestFolder one;
    const auttest::TestFolder other;
    EXPECT_NE(one.path(), other.path());
}
