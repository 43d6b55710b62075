#include "fileops/RT_Dir.h"
#include "fileops/RT_File.h"
#include "tests/fileops/PathCases.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdlib>
#include <string>
#include <type_traits>

static_assert(std::has_virtual_destructor_v<RT_Dir>);

namespace
{
/// A directory as those see it that derive from it.
class DirProbe : public RT_Dir
{
public:
    using RT_Dir::CleanPath;
    using RT_Dir::Initialize;
    using RT_Dir::InitMembers;
    using RT_Dir::m_drive;
    using RT_Dir::m_path;
    using RT_Dir::m_server;
    using RT_Dir::RT_Dir;
};

void expectParts(const auttest::PathCase& expected, DirProbe& directory)
{
    EXPECT_STREQ(expected.drive, directory.m_drive);
    EXPECT_STREQ(expected.server, directory.m_server);
    EXPECT_STREQ(expected.path, directory.GetPath());
    EXPECT_STREQ(expected.name, directory.GetDirName());
    EXPECT_STREQ(expected.fullPath, directory.GetFullPath());
}

TEST(RT_Dir, TakesPathsApartAsFilesDo)
{
    DirProbe used(String(""));
    for (const auttest::PathCase& row : auttest::kPathCases)
    {
        SCOPED_TRACE(row.given);
        DirProbe directory{String(row.given)};
        expectParts(row, directory);
        used.SetFullPath(row.given);
        expectParts(row, used);
    }
}

TEST(RT_Dir, AnyOtherFormLeavesTheObjectAsItWas)
{
    for (const char* refused : auttest::kRefusedPaths)
    {
        SCOPED_TRACE(refused);
        DirProbe directory(String("C:\\old\\dir"));
        directory.SetFullPath(refused);
        EXPECT_FALSE(directory.Initialize(refused));
        expectParts({"", "C:", "", "C:\\old", "dir", "C:\\old\\dir"}, directory);
    }
}

TEST(RT_Dir, ParentAndNameMayBeGivenApart)
{
    DirProbe directory(String("d:/a//b/"), String("c"));
    expectParts({"", "d:", "", "d:\\a\\b", "c", "d:\\a\\b\\c"}, directory);
    DirProbe share(String("\\\\server\\share\\"), String("c"));
    expectParts({"", "", "\\\\server", "\\\\server\\share", "c", "\\\\server\\share\\c"}, share);
}

TEST(RT_Dir, CopiesHaveTheSameTexts)
{
    DirProbe directory(String("\\\\server\\share\\c"));
    DirProbe copy(directory);
    expectParts({"", "", "\\\\server", "\\\\server\\share", "c", "\\\\server\\share\\c"}, copy);
    DirProbe assigned(String("C:\\x"));
    assigned = directory;
    expectParts({"", "", "\\\\server", "\\\\server\\share", "c", "\\\\server\\share\\c"}, assigned);
    directory.InitMembers();
    expectParts({"", "", "", "", "", ""}, directory);
    expectParts({"", "", "\\\\server", "\\\\server\\share", "c", "\\\\server\\share\\c"}, assigned);
}

TEST(RT_Dir, CleanPathMakesRunsOfBackslashesOneAndTrimsBothEnds)
{
    constexpr const char* kCases[][2] = {
        {"", ""},         {"\\", ""},         {"\\\\\\\\", ""},
        {"a", "a"},       {"\\a\\", "a"},     {"\\\\a\\\\\\b\\\\\\c\\\\", "a\\b\\c"},
        {"a\\b", "a\\b"}, {"a/\\b", "a/\\b"},
    };
    for (const auto& [given, expected] : kCases)
    {
        DirProbe directory(String(""));
        String path(given);
        directory.CleanPath(path);
        EXPECT_STREQ(expected, path) << given;
    }
}

TEST(RT_Dir, OnlyADirectoryIsExisting)
{
    const auttest::TestFolder folder;
    folder.writeFile("file", "");
    EXPECT_EQ(1, RT_Dir(folder.path().c_str()).IsExisting());
    EXPECT_EQ(0, RT_Dir((folder / "file").c_str()).IsExisting());
    EXPECT_EQ(0, RT_Dir((folder / "missing").c_str()).IsExisting());
    EXPECT_EQ(0, RT_Dir("").IsExisting());
    EXPECT_EQ(1, RT_Dir("C:").IsExisting());
}

TEST(RT_Dir, CreateMakesAllMissingParents)
{
    const auttest::TestFolder folder;
    folder.makeFolder("a");
    RT_Dir directory((folder / "a\\b\\c\\d").c_str());
    EXPECT_EQ(1, directory.Create());
    EXPECT_EQ(1, directory.IsExisting());
    EXPECT_EQ(1, directory.Create()); // is there already
    EXPECT_EQ(1, RT_Dir(folder.path().c_str(), "e").Create());
    EXPECT_TRUE(folder.exists("e"));
}

TEST(RT_Dir, CreateFailsOnADriveThatDoesNotExist)
{
    EXPECT_EQ(0, RT_Dir("Q:\\a\\b").Create());
    EXPECT_EQ(0, RT_Dir("Q:").Create());
    EXPECT_EQ(0, RT_Dir("?:\\a").Create());
}

TEST(RT_Dir, CreateFailsOnAServerThatDoesNotExist)
{
    EXPECT_EQ(0, RT_Dir("\\\\no-such-server.example\\share\\a").Create());
    EXPECT_EQ(0, RT_Dir("\\\\no-such-server.example").Create());
}

TEST(RT_Dir, CreateFailsWhereAFileIsInTheWay)
{
    const auttest::TestFolder folder;
    folder.writeFile("file", "");
    EXPECT_EQ(0, RT_Dir((folder / "file").c_str()).Create());
    EXPECT_EQ(0, RT_Dir((folder / "file\\a\\b").c_str()).Create());
    EXPECT_EQ(0, RT_Dir((folder / "inv|alid?\\a").c_str()).Create());
}

TEST(RT_Dir, APathWithoutBackslashCountsAsCreatedAndNothingIsMade)
{
    EXPECT_EQ(1, RT_Dir("").Create());
    EXPECT_EQ(1, RT_Dir("relative").Create());
    EXPECT_FALSE(auttest::fileExists("relative"));
}

TEST(RT_Dir, CreateOfAPathThatIsTooDeepFailsWithoutHarm)
{
    const auttest::TestFolder folder;
    std::string deep;
    for (int i = 0; i < 1000; ++i)
        deep += "\\a";
    EXPECT_EQ(0, RT_Dir((folder / std::string(10'000, 'x')).c_str()).Create());
    EXPECT_EQ(0, RT_Dir(("Q:" + deep).c_str()).Create());
    for (int i = 0; i < 9; ++i)
        deep += deep;
    EXPECT_EQ(0, RT_Dir((folder.path() + deep).c_str()).Create());
    EXPECT_FALSE(folder.exists("a"));
}

TEST(RT_Dir, APathOfThreeHundredCharactersIsCreatedOrRefusedAsAWhole)
{
    const auttest::TestFolder folder;
    const std::string longPath =
        folder / (std::string(120, 'a') + "\\" + std::string(120, 'b') + "\\" + std::string(60, 'c'));
    RT_Dir directory(longPath.c_str());
    EXPECT_STREQ(longPath.c_str(), directory.GetFullPath());
    EXPECT_EQ(directory.Create(), directory.IsExisting());
}
} // namespace

// A path cut short is another folder's: it would be removed or written to instead.

namespace
{
int g_untilNoMemory = 0;
void* countedMalloc(std::size_t size) { return --g_untilNoMemory == 0 ? nullptr : std::malloc(size); }
void* countedRealloc(void* block, std::size_t size)
{
    return --g_untilNoMemory == 0 ? nullptr : std::realloc(block, size);
}
} // namespace

TEST(PathsWithoutMemory, AreEmptyAndNeverThoseOfAnotherFolder)
{
    for (const char* const path : {"C:\\one\\two\\three", "\\\\server\\share\\two"})
    {
        for (int number = 1; number < 40; ++number)
        {
            String directory;
            std::string file;
            const String text(path);
            {
                const auttest::ImportPatch first("malloc", countedMalloc);
                const auttest::ImportPatch second("realloc", countedRealloc);
                g_untilNoMemory = number;
                ::RT_Dir dir(text);
                RT_File named(path);
                g_untilNoMemory = 0;
                directory = dir.GetFullPath();
                file = named.GetFullPath();
            }
            EXPECT_TRUE(directory.IsEmpty() || directory == path) << number << ": " << directory;
            EXPECT_TRUE(file.empty() || file == path) << number << ": " << file;
        }
    }
}
