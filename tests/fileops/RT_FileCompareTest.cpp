#include "fileops/RT_File.h"
#include "platform/UniqueResource.h"
#include "tests/fileops/FileProbe.h"
#include "tests/fileops/VersionedFile.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

using auttest::FileProbe;
using auttest::Version;

namespace
{
constexpr COMPFLAG kUntouched = static_cast<COMPFLAG>(3);

static_assert(WHEN_ALWAYS == 0 && WHEN_DIFFERENT == 1 && WHEN_NEWER == 2);
static_assert(COMP_OTHER_NEWER == 0 && COMP_SAME == 1 && COMP_OTHER_OLDER == 2);

void setTime(const std::string& path, unsigned long minutes)
{
    const aut::UniqueFile file(
        ::CreateFileA(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    ULARGE_INTEGER time;
    time.QuadPart = 130'000'000'000'000'000 + minutes * 600'000'000ULL; // units of 100 ns
    const FILETIME written{time.LowPart, time.HighPart};
    ASSERT_TRUE(::SetFileTime(file.get(), nullptr, nullptr, &written));
}

// ---- Versions

TEST(RT_FileHasVersionInfo, GivesTheFixedFileVersionWithCommas)
{
    RT_File file(auttest::compiledLibrary().c_str());
    char version[260] = "old";
    EXPECT_TRUE(file.HasVersionInfo(version));
    EXPECT_STREQ("3,3,302,1", version);
    EXPECT_TRUE(file.HasVersionInfo(nullptr));
}

TEST(RT_FileHasVersionInfo, EmptiesTheTextWithoutAVersion)
{
    const auttest::TestFolder folder;
    auttest::writeBlankLibrary(folder / "blank.dll");
    folder.writeFile("a.txt", "text");
    for (const char* name : {"blank.dll", "a.txt", "missing.dll"})
    {
        char version[260] = "old";
        EXPECT_FALSE(RT_File((folder / name).c_str()).HasVersionInfo(version)) << name;
        EXPECT_STREQ("", version);
    }
}

struct VersionCase
{
    Version own;
    const char* given;
    int expected;
};

TEST(RT_FileVersionCmp, GivesTheSignOfGivenMinusOwn)
{
    const Version own{2, 0, 1, 5};
    const VersionCase cases[] = {
        {own, "2.0.1.5", 0},
        {own, "2,0,1,5", 0},
        {own, "2.0.1.6", 1},
        {own, "2.0.1.4", -1},
        {own, "2.0.2", 1},
        {own, "1.9.9.9", -1},
        {own, "3", 1},
        {own, "10.0.1.5", 1},  // by number, not by text
        {own, "2.0.1", -1},    // missing parts count 0
        {own, "2.0.1.5.1", 1}, // up to five parts
        {own, "2.0.1.5.0", 0},
        {own, "2.0.1.5.0.9", 0},     // and no sixth
        {own, " 2 . 0 . 1 . 5 ", 0}, // blanks are removed
        {own, "1 1.0", 1},           // even between digits
        {own, "2.0A.5", 0},          // A is ",1"
        {own, "2.0B", 1},            // B is ",2"
        {own, "2.0P", 1},            // P is ",3"
        {own, "2.0a.5", -1},         // small letters end the text
        {own, "2.0.1.5x", 0},
        {own, "2..1.5", -1}, // as does a missing number
        {own, "2.0.-1.5", -1},
        {own, "2.0.+1.5", 0},
        {own, "2.0.\t1.5", 0}, // white space before a number is skipped
        {own, "abc", -1},
        {own, " ", -1},
        {own, "99999999999999999999", 1}, // too large a number is the largest
        {own, "-99999999999999999999", -1},
        {own, "2.0.1.4294967301", 1}, // and does not wrap around to 5
        {{1, 0, 2, 0}, "1.0B", 0},
        {{1, 0, 1, 3}, "1.0AP", 0},
        {{65535, 65535, 65535, 65535}, "65535.65535.65535.65535", 0},
        {{0, 0, 0, 0}, "abc", 0},
    };
    const auttest::TestFolder folder;
    Version written{};
    for (const VersionCase& row : cases)
    {
        const std::string path = folder / "a.dll";
        if (&row == cases || row.own != written)
            auttest::writeLibrary(path, row.own);
        written = row.own;
        int comparison = 77;
        EXPECT_TRUE(RT_File(path.c_str()).VersionCmp(row.given, &comparison)) << row.given;
        EXPECT_EQ(row.expected, comparison) << row.given;
    }
}

TEST(RT_FileVersionCmp, ATextOfAnyLengthIsRead)
{
    RT_File file(auttest::compiledLibrary().c_str());
    int comparison = 77;
    EXPECT_TRUE(file.VersionCmp(std::string(10'000, '9').c_str(), &comparison));
    EXPECT_EQ(1, comparison);
    EXPECT_TRUE(file.VersionCmp(("3.3.302.1." + std::string(10'000, 'A')).c_str(), &comparison));
    EXPECT_EQ(0, comparison);
}

TEST(RT_FileVersionCmp, IsFalseWithoutAVersionOnBothSides)
{
    const auttest::TestFolder folder;
    auttest::writeBlankLibrary(folder / "blank.dll");
    RT_File blank((folder / "blank.dll").c_str());
    RT_File versioned(auttest::compiledLibrary().c_str());
    int comparison = 77;
    EXPECT_FALSE(versioned.VersionCmp(nullptr, &comparison));
    EXPECT_FALSE(versioned.VersionCmp("", &comparison));
    EXPECT_FALSE(blank.VersionCmp("1.0", &comparison));
    EXPECT_FALSE(RT_File((folder / "missing.dll").c_str()).VersionCmp("1.0", &comparison));
    EXPECT_FALSE(versioned.VersionCmp("1.0", nullptr));
    EXPECT_EQ(77, comparison);
}

/// Three libraries of rising version and one without.
class RT_FileVersions : public ::testing::Test
{
protected:
    void SetUp() override
    {
        auttest::writeLibrary(m_older.GetFullPath(), Version{1, 0, 0, 0});
        auttest::writeLibrary(m_file.GetFullPath(), Version{1, 0, 0, 1});
        auttest::writeLibrary(m_same.GetFullPath(), Version{1, 0, 0, 1});
        auttest::writeLibrary(m_newer.GetFullPath(), Version{1, 0, 1, 0});
        auttest::writeBlankLibrary(m_blank.GetFullPath());
    }

    const auttest::TestFolder m_folder;
    FileProbe m_older{(m_folder / "older.dll").c_str()};
    FileProbe m_file{(m_folder / "file.dll").c_str()};
    FileProbe m_same{(m_folder / "same.dll").c_str()};
    FileProbe m_newer{(m_folder / "newer.dll").c_str()};
    FileProbe m_blank{(m_folder / "blank.dll").c_str()};
};

TEST_F(RT_FileVersions, IsDifferentByVersionTellsHowTheOtherFileStands)
{
    for (const WHEN when : {WHEN_ALWAYS, WHEN_DIFFERENT, WHEN_NEWER})
    {
        COMPFLAG flag = kUntouched;
        EXPECT_TRUE(m_file.IsDifferentByVersion(m_older, when, flag)) << when;
        EXPECT_EQ(COMP_OTHER_OLDER, flag);
        EXPECT_FALSE(m_file.IsDifferentByVersion(m_same, when, flag)) << when;
        EXPECT_EQ(COMP_SAME, flag);
        EXPECT_EQ(when != WHEN_NEWER, m_file.IsDifferentByVersion(m_newer, when, flag)) << when;
        EXPECT_EQ(COMP_OTHER_NEWER, flag);
    }
}

TEST_F(RT_FileVersions, IsDifferentByVersionIsTrueWhereVersionsAreMissing)
{
    COMPFLAG flag = kUntouched;
    EXPECT_TRUE(m_file.IsDifferentByVersion(m_blank, WHEN_NEWER, flag));
    EXPECT_TRUE(m_blank.IsDifferentByVersion(m_file, WHEN_NEWER, flag));
    EXPECT_TRUE(m_blank.IsDifferentByVersion(m_blank, WHEN_NEWER, flag));
    EXPECT_EQ(kUntouched, flag);
}

TEST_F(RT_FileVersions, IsNewerByVersionIsTrueForALowerVersionOrNone)
{
    EXPECT_TRUE(m_file.IsNewerByVersion(m_older));
    EXPECT_FALSE(m_file.IsNewerByVersion(m_same));
    EXPECT_FALSE(m_file.IsNewerByVersion(m_newer));
    EXPECT_TRUE(m_file.IsNewerByVersion(m_blank));
    EXPECT_TRUE(m_blank.IsNewerByVersion(m_file));
}

TEST_F(RT_FileVersions, IsDifferentAsksTheVersionFirst)
{
    // The other file's time is always that of a newer file: only the version makes it older.
    setTime(m_file.GetFullPath(), 0);
    for (FileProbe* other : {&m_older, &m_same, &m_newer})
        setTime(other->GetFullPath(), 10);
    EXPECT_TRUE(m_file.IsDifferent(m_older, WHEN_NEWER));
    EXPECT_TRUE(m_file.IsDifferent(m_older, WHEN_DIFFERENT));
    EXPECT_TRUE(m_file.IsDifferent(m_older, WHEN_ALWAYS));
}

TEST_F(RT_FileVersions, AHigherVersionIsDifferentButNeverReplacedByAnOlderOne)
{
    setTime(m_file.GetFullPath(), 10);
    setTime(m_newer.GetFullPath(), 0); // by its time it would be older
    EXPECT_TRUE(m_file.IsDifferent(m_newer, WHEN_DIFFERENT));
    EXPECT_TRUE(m_file.IsDifferent(m_newer, WHEN_ALWAYS));
    EXPECT_FALSE(m_file.IsDifferent(m_newer, WHEN_NEWER));
}

TEST_F(RT_FileVersions, EqualVersionsGoOnToTheTime)
{
    setTime(m_file.GetFullPath(), 10);
    setTime(m_same.GetFullPath(), 0);
    EXPECT_TRUE(m_file.IsDifferent(m_same, WHEN_NEWER));
    setTime(m_same.GetFullPath(), 20);
    EXPECT_FALSE(m_file.IsDifferent(m_same, WHEN_NEWER));
    EXPECT_TRUE(m_file.IsDifferent(m_same, WHEN_DIFFERENT));
}

TEST_F(RT_FileVersions, AFileWithoutVersionIsComparedByItsTimeAlone)
{
    setTime(m_file.GetFullPath(), 10);
    setTime(m_blank.GetFullPath(), 20);
    EXPECT_FALSE(m_file.IsDifferent(m_blank, WHEN_NEWER));
    setTime(m_blank.GetFullPath(), 0);
    EXPECT_TRUE(m_file.IsDifferent(m_blank, WHEN_NEWER));
}

TEST_F(RT_FileVersions, EqualVersionAndTimeAreSummedOnlyForWhenDifferent)
{
    // Equal in all but a byte behind the library's own contents.
    ASSERT_TRUE(::CopyFileA(m_file.GetFullPath(), m_same.GetFullPath(), FALSE));
    setTime(m_file.GetFullPath(), 0);
    setTime(m_same.GetFullPath(), 0);
    EXPECT_FALSE(m_file.IsDifferent(m_same, WHEN_DIFFERENT));
    ASSERT_NE(0, m_same.Open(2));
    m_same.SeekToEnd();
    EXPECT_TRUE(m_same.Write("more"));
    m_same.Close();
    setTime(m_same.GetFullPath(), 0);
    EXPECT_TRUE(m_file.IsDifferent(m_same, WHEN_DIFFERENT));
    EXPECT_FALSE(m_file.IsDifferent(m_same, WHEN_NEWER));
    EXPECT_FALSE(m_file.IsDifferent(m_same, WHEN_ALWAYS));
}

namespace
{
std::vector<std::string> g_summed;
std::FILE* notesWhatIsSummed(const char* path, const char* mode)
{
    g_summed.emplace_back(path);
    return std::fopen(path, mode);
}
} // namespace

TEST_F(RT_FileVersions, EqualVersionAndTimeLeaveBothFilesUnreadForWhenNewer)
{
    setTime(m_file.GetFullPath(), 0);
    setTime(m_same.GetFullPath(), 0);
    const auttest::ImportPatch patch("fopen", notesWhatIsSummed);
    g_summed.clear();
    EXPECT_FALSE(m_file.IsDifferent(m_same, WHEN_NEWER));
    EXPECT_EQ(std::vector<std::string>{}, g_summed);
    EXPECT_FALSE(m_file.IsDifferent(m_same, WHEN_DIFFERENT));
    EXPECT_EQ((std::vector<std::string>{std::string(m_file.GetFullPath()), std::string(m_same.GetFullPath())}),
              g_summed);
}

// ---- Times and sums

class RT_FileTimes : public ::testing::Test
{
protected:
    const auttest::TestFolder m_folder;
    FileProbe m_file{m_folder.writeFile("file.txt", "same text").c_str()};
    FileProbe m_other{m_folder.writeFile("other.txt", "same text").c_str()};
};

TEST_F(RT_FileTimes, IsDifferentByLastModTimeTellsHowTheOtherFileStands)
{
    setTime(m_file.GetFullPath(), 10);
    for (const WHEN when : {WHEN_ALWAYS, WHEN_DIFFERENT, WHEN_NEWER})
    {
        COMPFLAG flag = kUntouched;
        setTime(m_other.GetFullPath(), 9);
        EXPECT_TRUE(m_file.IsDifferentByLastModTime(m_other, when, flag)) << when;
        EXPECT_EQ(COMP_OTHER_OLDER, flag);
        setTime(m_other.GetFullPath(), 10);
        EXPECT_FALSE(m_file.IsDifferentByLastModTime(m_other, when, flag)) << when;
        EXPECT_EQ(COMP_SAME, flag);
        setTime(m_other.GetFullPath(), 11);
        EXPECT_EQ(when != WHEN_NEWER, m_file.IsDifferentByLastModTime(m_other, when, flag)) << when;
        EXPECT_EQ(COMP_OTHER_NEWER, flag);
    }
}

TEST_F(RT_FileTimes, ATimeThatCannotBeReadIsDifferentAndLeavesTheFlag)
{
    FileProbe missing((m_folder / "missing.txt").c_str());
    COMPFLAG flag = kUntouched;
    EXPECT_TRUE(m_file.IsDifferentByLastModTime(missing, WHEN_NEWER, flag));
    EXPECT_TRUE(missing.IsDifferentByLastModTime(m_file, WHEN_NEWER, flag));
    RT_File holder(m_other.GetFullPath());
    ASSERT_NE(0, holder.Open(0x00));
    EXPECT_TRUE(m_file.IsDifferentByLastModTime(m_other, WHEN_NEWER, flag));
    EXPECT_TRUE(m_other.IsDifferentByLastModTime(m_file, WHEN_NEWER, flag));
    EXPECT_EQ(kUntouched, flag);
}

TEST_F(RT_FileTimes, LeavesTheFilesOwnHandlesAlone)
{
    ASSERT_NE(0, m_file.Open(0x20));
    const HANDLE handle = m_file.GetFileHandle();
    COMPFLAG flag = kUntouched;
    setTime(m_other.GetFullPath(), 0);
    EXPECT_TRUE(m_file.IsDifferentByLastModTime(m_other, WHEN_NEWER, flag));
    EXPECT_EQ(COMP_OTHER_OLDER, flag);
    EXPECT_EQ(handle, m_file.GetFileHandle());
}

TEST_F(RT_FileTimes, EqualContentsHaveEqualSums)
{
    EXPECT_FALSE(m_file.IsDifferentByCheckSum(m_other));
    m_folder.writeFile("other.txt", "another text");
    EXPECT_TRUE(m_file.IsDifferentByCheckSum(m_other));
}

TEST_F(RT_FileTimes, ASourceWithoutASumIsAlwaysDifferent)
{
    m_folder.writeFile("file.txt", "");
    m_folder.writeFile("other.txt", "");
    EXPECT_TRUE(m_file.IsDifferentByCheckSum(m_other));
    EXPECT_TRUE(m_file.IsDifferentByCheckSum(m_file));
    m_folder.writeFile("file.txt", std::string(8, '\0'));
    m_folder.writeFile("other.txt", std::string(8, '\0'));
    EXPECT_TRUE(m_file.IsDifferentByCheckSum(m_other));
}

TEST_F(RT_FileTimes, EqualTimesAreSummedOnlyForWhenDifferent)
{
    setTime(m_file.GetFullPath(), 0);
    setTime(m_other.GetFullPath(), 0);
    EXPECT_FALSE(m_file.IsDifferent(m_other, WHEN_DIFFERENT));
    EXPECT_FALSE(m_file.IsDifferent(m_other, WHEN_NEWER));
    m_folder.writeFile("other.txt", "another text");
    setTime(m_other.GetFullPath(), 0);
    EXPECT_TRUE(m_file.IsDifferent(m_other, WHEN_DIFFERENT));
    EXPECT_FALSE(m_file.IsDifferent(m_other, WHEN_NEWER));
    EXPECT_FALSE(m_file.IsDifferent(m_other, WHEN_ALWAYS));
}

TEST_F(RT_FileTimes, AMissingTargetIsDifferent)
{
    FileProbe missing((m_folder / "missing.txt").c_str());
    for (const WHEN when : {WHEN_ALWAYS, WHEN_DIFFERENT, WHEN_NEWER})
        EXPECT_TRUE(m_file.IsDifferent(missing, when)) << when;
}

TEST_F(RT_FileTimes, AFileComparedWithItselfIsTheSame)
{
    EXPECT_FALSE(m_file.IsDifferent(m_file, WHEN_DIFFERENT));
    EXPECT_FALSE(m_file.IsDifferent(m_file, WHEN_NEWER));
}
} // namespace
