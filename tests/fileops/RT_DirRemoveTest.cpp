// Whether a tree is empty, and removing it.

#include "tests/fileops/TreeTest.h"
#include "tests/support/OpenHandles.h"

using namespace auttest;
using Names = std::vector<std::string>;

namespace
{
class RT_DirIsEmpty : public TreeTest
{
};
class RT_DirRemove : public TreeTest
{
};

/// A directory whose members a test may choose.
class DirProbe : public RT_Dir
{
public:
    using RT_Dir::m_drive;
    using RT_Dir::m_server;
    using RT_Dir::RT_Dir;
};

// --- IsEmpty

TEST_F(RT_DirIsEmpty, WhatIsMissingOrNotADirectoryIsEmpty)
{
    folder.writeFile("file", "x");
    for (const DIRTESTFLAG flag : {DIR_TOP_ONLY, DIR_RECURSIVE})
    {
        EXPECT_EQ(1, dir("missing").IsEmpty(flag));
        EXPECT_EQ(1, dir("missing\\below").IsEmpty(flag));
        EXPECT_EQ(1, dir("file").IsEmpty(flag));
        EXPECT_EQ(1, RT_Dir("").IsEmpty(flag)); // although the root of the current drive has entries
        EXPECT_EQ(1, RT_Dir("relative").IsEmpty(flag));
        EXPECT_EQ(1, RT_Dir("Q:\\nowhere").IsEmpty(flag));
        EXPECT_EQ(1, RT_Dir(std::string(10'000, 'x').c_str()).IsEmpty(flag));
        EXPECT_EQ(1, dir(std::string(10'000, 'x')).IsEmpty(flag));
    }
    expectNoRecord();
}

TEST_F(RT_DirIsEmpty, ADirectoryThatCannotBeListedIsEmpty)
{
    folder.writeFile("a\\file", "x");
    const ImportPatch patch("FindFirstFileA", refusedFindFirstFile);
    EXPECT_EQ(1, dir("a").IsEmpty(DIR_TOP_ONLY));
    EXPECT_EQ(1, dir("a").IsEmpty(DIR_RECURSIVE));
}

TEST_F(RT_DirIsEmpty, NothingAtAllIsEmptyAndAnyFileIsNot)
{
    folder.makeFolder("a");
    folder.writeFile("b\\file", "");
    for (const DIRTESTFLAG flag : {DIR_TOP_ONLY, DIR_RECURSIVE})
    {
        EXPECT_EQ(1, dir("a").IsEmpty(flag));
        EXPECT_EQ(0, dir("b").IsEmpty(flag));
    }
    ::SetFileAttributesA((folder / "b\\file").c_str(), FILE_ATTRIBUTE_HIDDEN);
    EXPECT_EQ(0, dir("b").IsEmpty(DIR_TOP_ONLY));
}

TEST_F(RT_DirIsEmpty, SubdirectoriesCountOnlyWhenAskedFor)
{
    folder.makeFolder("a\\empty");
    folder.writeFile("b\\sub\\file", "x");
    folder.writeFile("c\\1\\2\\3\\4\\file", "x");
    folder.makeFolder("d\\1\\2\\3\\4");
    EXPECT_EQ(1, dir("a").IsEmpty(DIR_TOP_ONLY));
    EXPECT_EQ(1, dir("b").IsEmpty(DIR_TOP_ONLY));
    EXPECT_EQ(1, dir("a").IsEmpty(DIR_RECURSIVE));
    EXPECT_EQ(0, dir("b").IsEmpty(DIR_RECURSIVE));
    EXPECT_EQ(0, dir("c").IsEmpty(DIR_RECURSIVE));
    EXPECT_EQ(1, dir("d").IsEmpty(DIR_RECURSIVE));
}

TEST_F(RT_DirIsEmpty, EveryOtherFlagMeansTopOnly)
{
    folder.writeFile("b\\sub\\file", "x");
    for (const int number : {0, 2, 3, -1})
        EXPECT_EQ(1, dir("b").IsEmpty(flag<DIRTESTFLAG>(number))) << number;
}

TEST_F(RT_DirIsEmpty, TheAnswerOfTheLastSubdirectoryStands)
{
    folder.makeFolder("a\\one");
    folder.makeFolder("a\\two");
    std::string last;
    {
        WIN32_FIND_DATAA entry{};
        const aut::UniqueFind search(::FindFirstFileA((folder / "a\\*.*").c_str(), &entry));
        do
            last = entry.cFileName;
        while (::FindNextFileA(search.get(), &entry));
    }
    ASSERT_TRUE(last == "one" || last == "two") << last;
    const std::string first = last == "one" ? "two" : "one";

    folder.writeFile("a\\" + first + "\\file", "x");
    EXPECT_EQ(1, dir("a").IsEmpty(DIR_RECURSIVE));
    folder.writeFile("a\\" + last + "\\file", "x");
    EXPECT_EQ(0, dir("a").IsEmpty(DIR_RECURSIVE));
    removeAll(folder / ("a\\" + first + "\\file"));
    EXPECT_EQ(0, dir("a").IsEmpty(DIR_RECURSIVE));
}

TEST_F(RT_DirIsEmpty, AFileEndsTheWalkWhereverItIsListed)
{
    folder.makeFolder("a\\m");
    folder.writeFile("a\\b", "");
    EXPECT_EQ(0, dir("a").IsEmpty(DIR_RECURSIVE));
    removeAll(folder / "a\\b");
    folder.writeFile("a\\z", "");
    EXPECT_EQ(0, dir("a").IsEmpty(DIR_RECURSIVE));
}

TEST_F(RT_DirIsEmpty, ALinkCountsAsAnEmptySubdirectory)
{
    folder.writeFile("outside\\file", "x");
    folder.makeFolder("a");
    makeLink(folder / "a\\link", folder / "outside");
    makeLink(folder / "a\\to itself", folder / "a");
    EXPECT_EQ(1, dir("a").IsEmpty(DIR_RECURSIVE));
    EXPECT_EQ(1, dir("a").IsEmpty(DIR_TOP_ONLY));
    EXPECT_EQ(0, dir("a\\link").IsEmpty(DIR_TOP_ONLY)); // named itself, it stands for its target
    EXPECT_TRUE(removeLink(folder / "a\\link"));
    EXPECT_TRUE(removeLink(folder / "a\\to itself"));
}

// --- Remove

TEST_F(RT_DirRemove, WhatIsMissingIsRemoved)
{
    folder.writeFile("file", "x");
    for (const DIRTESTFLAG flag : {DIR_TOP_ONLY, DIR_RECURSIVE})
    {
        EXPECT_EQ(1, dir("missing").Remove(OVERWRITE_NOW_ONLY, flag));
        EXPECT_EQ(1, dir("file").Remove(OVERWRITE_NOW_ONLY, flag)); // no directory
        EXPECT_EQ(1, RT_Dir("").Remove(OVERWRITE_NOW_ONLY, flag));
        EXPECT_EQ(1, dir(std::string(10'000, 'x')).Remove(OVERWRITE_NOW_ONLY, flag));
    }
    EXPECT_EQ((Names{"file"}), names(""));
    expectNoRecord();
}

TEST_F(RT_DirRemove, ATreeGoesWithEverythingInIt)
{
    folder.makeFolder("keep");
    folder.writeFile("a\\file", "x");
    folder.writeFile("a\\b\\c\\file", "x");
    folder.writeFile("a\\b\\no extension", "x");
    folder.makeFolder("a\\empty");
    EXPECT_EQ(1, dir("a").Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE));
    EXPECT_EQ((Names{"keep\\"}), names(""));
    expectNoRecord();
    EXPECT_FALSE(bRebootNeeded);
}

TEST_F(RT_DirRemove, TopOnlyRemovesTheOwnFilesAndADirectoryWithoutOthers)
{
    folder.writeFile("a\\file", "x");
    folder.writeFile("b\\file", "x");
    folder.writeFile("b\\sub\\file", "x");
    EXPECT_EQ(1, dir("a").Remove(OVERWRITE_AT_REBOOT, DIR_TOP_ONLY));
    EXPECT_FALSE(folder.exists("a"));
    EXPECT_EQ(0, dir("b").Remove(OVERWRITE_AT_REBOOT, DIR_TOP_ONLY));
    EXPECT_EQ((Names{"sub\\"}), names("b"));
    EXPECT_EQ((Names{"file"}), names("b\\sub"));
    for (const int number : {2, -1})
        EXPECT_EQ(0, dir("b").Remove(OVERWRITE_AT_REBOOT, flag<DIRTESTFLAG>(number))) << number;
    EXPECT_EQ((Names{"file"}), names("b\\sub"));
    expectNoRecord();
}

TEST_F(RT_DirRemove, ReadOnlyFilesGoToo)
{
    ::SetFileAttributesA(folder.writeFile("a\\file", "x").c_str(), FILE_ATTRIBUTE_READONLY);
    ::SetFileAttributesA(folder.writeFile("a\\b\\file", "x").c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
    EXPECT_EQ(1, dir("a").Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE));
    EXPECT_FALSE(folder.exists("a"));
}

TEST_F(RT_DirRemove, AFileInUseIsScheduledAndItsDirectoriesStay)
{
    folder.writeFile("a\\b\\file", "x");
    folder.writeFile("a\\b\\other", "x");
    folder.writeFile("a\\c\\file", "x");
    folder.writeFile("a\\z", "x");
    {
        const aut::UniqueFile held = lock("a\\b\\file");
        EXPECT_EQ(0, dir("a").Remove(OVERWRITE_AT_REBOOT, DIR_RECURSIVE));
    }
    EXPECT_EQ((Names{"b\\"}), names("a"));
    EXPECT_EQ((Names{"file"}), names("a\\b"));
    EXPECT_EQ((Names{folder / "a\\b\\file", ""}), pendingMoves());
    EXPECT_TRUE(bRebootNeeded);
    expectNoRecord();
}

TEST_F(RT_DirRemove, AFileInUseStaysWhenItMustGoNow)
{
    folder.writeFile("a\\file", "x");
    folder.writeFile("a\\other", "x");
    const aut::UniqueFile held = lock("a\\file");
    EXPECT_EQ(0, dir("a").Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE));
    EXPECT_EQ((Names{"file"}), names("a"));
    EXPECT_EQ(Names{}, pendingMoves());
    EXPECT_FALSE(bRebootNeeded);
    EXPECT_EQ(466, result->GetStatusCode()); // the file's own record
    EXPECT_EQ(0, dir("a").Remove(flag<OVERWRITEFLAG>(2), DIR_RECURSIVE));
    EXPECT_FALSE(bRebootNeeded);
}

TEST_F(RT_DirRemove, AFailureDoesNotStopTheWalkAndLeavesTheDirectoriesAbove)
{
    folder.writeFile("a\\b\\c\\file", "x");
    folder.writeFile("a\\b\\d\\file", "x");
    folder.writeFile("a\\file", "x");
    {
        const ImportPatch refuseScheduling("MoveFileExA", refusedMoveFileEx);
        const ImportPatch seeRemoving("RemoveDirectoryA", seenRemoveDirectory);
        const aut::UniqueFile held = lock("a\\b\\c\\file");
        EXPECT_EQ(0, dir("a").Remove(OVERWRITE_AT_REBOOT, DIR_RECURSIVE));
    }
    EXPECT_EQ((Names{"b\\"}), names("a"));
    EXPECT_EQ((Names{"c\\"}), names("a\\b"));
    EXPECT_EQ((Names{folder / "a\\b\\d"}), g_seen.removed); // the others are not even tried
}

TEST_F(RT_DirRemove, ABareServerIsEmptiedAndStays)
{
    folder.writeFile("a\\file", "x");
    folder.writeFile("a\\sub\\file", "x");
    DirProbe server(path("a"));
    server.m_drive.Empty();
    server.m_server = path("A"); // compared without regard to case
    EXPECT_EQ(0, server.Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE));
    EXPECT_EQ((Names{"a\\"}), names(""));
    EXPECT_EQ(Names{}, names("a"));
}

TEST_F(RT_DirRemove, ADriveIsEmptiedAndStays)
{
    folder.writeFile("a\\file", "x");
    DirProbe drive(path("a"));
    drive.m_drive = path("a");
    const ImportPatch see("RemoveDirectoryA", seenRemoveDirectory);
    EXPECT_EQ(0, drive.Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE));
    EXPECT_EQ(Names{}, names("a"));
    EXPECT_EQ(Names{}, g_seen.removed); // "C:" would be the current folder
}

TEST_F(RT_DirRemove, ALinkGoesItselfAndNeverWhatItPointsTo)
{
    folder.writeFile("outside\\file", "x");
    folder.writeFile("outside\\sub\\file", "x");
    folder.writeFile("a\\b\\file", "x");
    makeLink(folder / "a\\b\\link", folder / "outside");
    const ImportPatch see("RemoveDirectoryA", seenRemoveDirectoryOrLink);
    const ImportPatch seeLists("FindFirstFileA", seenFindFirstFile);
    EXPECT_EQ(1, dir("a").Remove(OVERWRITE_AT_REBOOT, DIR_RECURSIVE));
    EXPECT_EQ((Names{folder / "a\\b\\link", folder / "a\\b", folder / "a"}), g_seen.removed);
    EXPECT_EQ(0, std::count(g_seen.listed.begin(), g_seen.listed.end(), folder / "a\\b\\link\\*.*"));
    EXPECT_EQ((Names{"outside\\"}), names(""));
    EXPECT_EQ((Names{"file", "sub\\"}), names("outside"));
    EXPECT_EQ((Names{"file"}), names("outside\\sub"));
    expectNoRecord();
}

TEST_F(RT_DirRemove, ALinkThatIsNamedItselfGoesWithoutWhatItPointsTo)
{
    for (const DIRTESTFLAG flag : {DIR_TOP_ONLY, DIR_RECURSIVE})
    {
        folder.writeFile("outside\\file", "x");
        makeLink(folder / "link", folder / "outside");
        const ImportPatch see("RemoveDirectoryA", seenRemoveDirectoryOrLink);
        EXPECT_EQ(1, dir("link").Remove(OVERWRITE_AT_REBOOT, flag));
        EXPECT_EQ((Names{"outside\\"}), names(""));
        EXPECT_EQ((Names{"file"}), names("outside"));
    }
}

TEST_F(RT_DirRemove, ALinkThatCannotBeRemovedLeavesTheTreeAbove)
{
    folder.writeFile("outside\\file", "x");
    folder.writeFile("a\\file", "x");
    makeLink(folder / "a\\link", folder / "outside");
    const ImportPatch patch("RemoveDirectoryA", refusedRemoveDirectory);
    EXPECT_EQ(0, dir("a").Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE));
    EXPECT_EQ((Names{"link\\"}), names("a"));
    EXPECT_EQ((Names{"file"}), names("outside"));
    EXPECT_TRUE(removeLink(folder / "a\\link"));
}

// --- Reparse points that are no links, which only some file systems have: the directory "special" is shown as one.

DWORD g_tag = 0;

void decorate(const char* name, DWORD& attributes, DWORD* tag)
{
    if (std::string(name).find("special") == std::string::npos)
        return;
    attributes |= FILE_ATTRIBUTE_REPARSE_POINT;
    if (tag != nullptr)
        *tag = g_tag;
}

HANDLE WINAPI findFirstWithTag(const char* pattern, WIN32_FIND_DATAA* entry)
{
    const HANDLE search = ::FindFirstFileA(pattern, entry);
    decorate(entry->cFileName, entry->dwFileAttributes, &entry->dwReserved0);
    g_seen.listed.emplace_back(pattern);
    return search;
}

BOOL WINAPI findNextWithTag(HANDLE search, WIN32_FIND_DATAA* entry)
{
    const BOOL found = ::FindNextFileA(search, entry);
    decorate(entry->cFileName, entry->dwFileAttributes, &entry->dwReserved0);
    return found;
}

DWORD WINAPI attributesWithTag(const char* path)
{
    DWORD attributes = ::GetFileAttributesA(path);
    if (attributes != INVALID_FILE_ATTRIBUTES)
        decorate(std::string(path).substr(std::string(path).rfind('\\') + 1).c_str(), attributes, nullptr);
    return attributes;
}

TEST_F(RT_DirRemove, OtherReparsePointsAreDirectoriesLikeAnyOther)
{
    const ImportPatch first("FindFirstFileA", findFirstWithTag);
    const ImportPatch next("FindNextFileA", findNextWithTag);
    const ImportPatch attributes("GetFileAttributesA", attributesWithTag);
    for (const DWORD tag : {IO_REPARSE_TAG_WIM, IO_REPARSE_TAG_DEDUP, IO_REPARSE_TAG_HSM, 0x9000001AUL})
    {
        SCOPED_TRACE(tag);
        g_tag = tag;
        folder.writeFile("a\\special\\sub\\file", "x");
        EXPECT_EQ(0, dir("a").IsEmpty(DIR_RECURSIVE));
        EXPECT_EQ(1, dir("a").Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE));
        EXPECT_FALSE(folder.exists("a"));
    }
}

TEST_F(RT_DirRemove, JunctionsAndSymbolicLinksAreLinks)
{
    const ImportPatch first("FindFirstFileA", findFirstWithTag);
    const ImportPatch next("FindNextFileA", findNextWithTag);
    const ImportPatch attributes("GetFileAttributesA", attributesWithTag);
    folder.writeFile("a\\special\\file", "x");
    for (const DWORD tag : {IO_REPARSE_TAG_MOUNT_POINT, IO_REPARSE_TAG_SYMLINK, 0UL})
    {
        SCOPED_TRACE(tag);
        g_tag = tag;
        EXPECT_EQ(1, dir("a").IsEmpty(DIR_RECURSIVE));
        EXPECT_EQ(0, dir("a").Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE)); // Windows would have removed the link
        EXPECT_EQ((Names{"file"}), names("a\\special"));
        EXPECT_EQ(0, std::count(g_seen.listed.begin(), g_seen.listed.end(), folder / "a\\special\\*.*"));
    }
}

// --- A disk that others use meanwhile

std::string g_path;    ///< what another process touches ...
int g_entriesTill = 0; ///< ... as soon as so many entries have been listed

BOOL WINAPI findNextWhileOthersRemove(HANDLE search, WIN32_FIND_DATAA* entry)
{
    if (--g_entriesTill == 0)
        removeAll(g_path);
    return ::FindNextFileA(search, entry);
}

TEST_F(RT_DirRemove, EntriesThatVanishDuringTheWalkAreRemoved)
{
    const ImportPatch patch("FindNextFileA", findNextWhileOthersRemove);
    for (const char* vanishing : {"a\\b", "a\\m", "a\\z"})
        for (int entries = 1; entries < 6; ++entries)
        {
            SCOPED_TRACE(std::string(vanishing) + " after " + std::to_string(entries));
            folder.writeFile("a\\b", "x");
            folder.writeFile("a\\m\\file", "x");
            folder.writeFile("a\\z\\file", "x");
            g_path = folder / vanishing;
            g_entriesTill = entries;
            EXPECT_EQ(1, dir("a").Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE));
            EXPECT_FALSE(folder.exists("a"));
        }
    expectNoRecord();
}

BOOL WINAPI removeDirectoryAfterAnother(const char* path)
{
    ::RemoveDirectoryA(path);
    return ::RemoveDirectoryA(path);
}

TEST_F(RT_DirRemove, ADirectoryThatAnotherRemovesFirstIsRemoved)
{
    folder.writeFile("a\\b\\file", "x");
    const ImportPatch patch("RemoveDirectoryA", removeDirectoryAfterAnother);
    EXPECT_EQ(1, dir("a").Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE));
    EXPECT_FALSE(folder.exists("a"));
}

BOOL WINAPI findNextWhileOthersWrite(HANDLE search, WIN32_FIND_DATAA* entry)
{
    const BOOL found = ::FindNextFileA(search, entry);
    if (!found)
    {
        writeFile(g_path, "new");
        ::SetLastError(ERROR_NO_MORE_FILES);
    }
    return found;
}

TEST_F(RT_DirRemove, AFileThatAppearsDuringTheWalkStays)
{
    folder.writeFile("a\\b\\file", "x");
    folder.writeFile("a\\file", "x");
    g_path = folder / "a\\new";
    {
        const ImportPatch patch("FindNextFileA", findNextWhileOthersWrite);
        EXPECT_EQ(0, dir("a").Remove(OVERWRITE_AT_REBOOT, DIR_RECURSIVE));
    }
    EXPECT_EQ((Names{"new"}), names("a"));
    EXPECT_EQ(1, dir("a").Remove(OVERWRITE_AT_REBOOT, DIR_RECURSIVE)); // the next attempt meets it
}

BOOL WINAPI findNextWhileALinkIsPut(HANDLE search, WIN32_FIND_DATAA* entry)
{
    const BOOL found = ::FindNextFileA(search, entry);
    if (!found && !g_path.empty())
    {
        removeAll(g_path);
        makeLink(g_path, g_path + "\\..\\..\\outside");
        g_path.clear();
        ::SetLastError(ERROR_NO_MORE_FILES);
    }
    return found;
}

TEST_F(RT_DirRemove, ALinkPutInThePlaceOfADirectoryIsNotFollowed)
{
    folder.writeFile("outside\\file", "x");
    folder.writeFile("a\\b\\file", "x");
    g_path = folder / "a\\b";
    const ImportPatch patch("FindNextFileA", findNextWhileALinkIsPut);
    const ImportPatch see("RemoveDirectoryA", seenRemoveDirectoryOrLink);
    EXPECT_EQ(1, dir("a").Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE));
    EXPECT_EQ((Names{"file"}), names("outside"));
}

TEST_F(RT_DirRemove, ADirectoryThatCannotBeListedIsOnlyRemovedWhenEmpty)
{
    folder.makeFolder("a");
    folder.writeFile("b\\file", "x");
    const ImportPatch patch("FindFirstFileA", refusedFindFirstFile);
    EXPECT_EQ(1, dir("a").Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE));
    EXPECT_EQ(0, dir("b").Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE));
    EXPECT_EQ("x", folder.readFile("b\\file"));
}

// --- Names and sizes

void writeWideFile(const std::wstring& path)
{
    const aut::UniqueFile file(
        ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    EXPECT_TRUE(file);
}

TEST_F(RT_DirRemove, NamesThatTheCodePageLacksGoToo)
{
    const std::string a = folder.makeFolder("a");
    const std::wstring wide(a.begin(), a.end());
    EXPECT_TRUE(::CreateDirectoryW((wide + L"\\\u4e2d").c_str(), nullptr));
    writeWideFile(wide + L"\\\u4e2d\\\u6587 \u65e5\u672c\u8a9e.txt");
    writeWideFile(wide + L"\\\u0416\u0416\u0416");
    writeWideFile(wide + L"\\\u00e4\u00f6\u00fc.txt"); // this one has its place in the code page
    EXPECT_EQ(0, dir("a").IsEmpty(DIR_RECURSIVE));
    EXPECT_EQ(1, dir("a").Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE));
    EXPECT_FALSE(folder.exists("a"));
}

TEST_F(RT_DirRemove, NamesWithBlanksAndPointsAreNamesLikeAnyOther)
{
    for (const char* name : {"a\\.hidden", "a\\..b", "a\\...c\\file", "a\\d e\\f g.x y", "a\\%TEMP%", "a\\{x}"})
        folder.writeFile(name, "x");
    EXPECT_EQ(0, dir("a").IsEmpty(DIR_TOP_ONLY));
    EXPECT_EQ(1, dir("a").Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE));
    EXPECT_FALSE(folder.exists("a"));
}

TEST_F(RT_DirRemove, ATreeAsDeepAsPathsReachIsWalkedToItsEnd)
{
    const std::string deepest = makeDeepTree("a");
    writeFile(deepest + "\\file", "x");
    ASSERT_GT(deepest.size(), (folder / "a").size() + 40);
    EXPECT_EQ(0, dir("a").IsEmpty(DIR_RECURSIVE));
    EXPECT_EQ(1, dir("a").Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE));
    EXPECT_FALSE(folder.exists("a"));
}

// --- Nothing leaks

int g_openSearches = 0;

HANDLE WINAPI countedFindFirstFile(const char* pattern, WIN32_FIND_DATAA* entry)
{
    const HANDLE search = ::FindFirstFileA(pattern, entry);
    g_openSearches += search != INVALID_HANDLE_VALUE ? 1 : 0;
    return search;
}

BOOL WINAPI countedFindClose(HANDLE search)
{
    --g_openSearches;
    return ::FindClose(search);
}

int g_openSearchesWhenRemoved = 0;

BOOL WINAPI removeDirectoryAndLook(const char* path)
{
    g_openSearchesWhenRemoved += g_openSearches;
    return ::RemoveDirectoryA(path);
}

// Wine itself closes the handle of a search that has come to its end, so that counting handles would miss a leak.
TEST_F(RT_DirRemove, EverySearchIsClosedBeforeItsDirectoryGoes)
{
    const ImportPatch first("FindFirstFileA", countedFindFirstFile);
    const ImportPatch close("FindClose", countedFindClose);
    const ImportPatch remove("RemoveDirectoryA", removeDirectoryAndLook);
    g_openSearches = 0;
    g_openSearchesWhenRemoved = 0;
    folder.writeFile("a\\b\\c\\file", "x");
    folder.writeFile("a\\d\\file", "x");
    folder.writeFile("a\\file", "x");
    EXPECT_EQ(0, dir("a").IsEmpty(DIR_RECURSIVE)); // left half way
    EXPECT_EQ(1, dir("a").CopyTo(path("to"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ(0, g_openSearches);
    EXPECT_EQ(1, dir("a").Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE));
    EXPECT_EQ(0, g_openSearches);
    EXPECT_EQ(0, g_openSearchesWhenRemoved);
}

TEST_F(RT_DirRemove, ThousandRoundsLeaveNoHandleOpen)
{
    folder.makeFolder("empty\\sub");
    std::size_t before = 0;
    for (int round = 0; round < 1000; ++round)
    {
        folder.writeFile("a\\b\\file", "x");
        const aut::UniqueFile held = lock("a\\b\\file");
        EXPECT_EQ(0, dir("a").IsEmpty(DIR_RECURSIVE));
        EXPECT_EQ(1, dir("empty").IsEmpty(DIR_RECURSIVE));
        EXPECT_EQ(0, dir("a\\b").IsEmpty(DIR_TOP_ONLY)); // left half way
        EXPECT_EQ(0, dir("a").Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE));
        if (round == 10)
            before = openHandles();
    }
    EXPECT_LE(openHandles(), before);
}
} // namespace
