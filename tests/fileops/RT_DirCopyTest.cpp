// Copying and moving trees.

#include "tests/fileops/TreeTest.h"
#include "tests/support/LogFile.h"
#include "tests/support/NoMemoryOnce.h"
#include "tests/support/OpenHandles.h"

using namespace auttest;
using Names = std::vector<std::string>;

namespace
{
class RT_DirCopyTo : public TreeTest
{
};
class RT_DirMoveTo : public TreeTest
{
};

/// What copying to a temporary name leaves in the root of C:.
struct TemporaryCopy
{
    explicit TemporaryCopy(const char* name) : path(std::string("C:\\") + name) { removeAll(path); }
    ~TemporaryCopy() { removeAll(path); }
    const std::string path;
};

// --- CopyTo

TEST_F(RT_DirCopyTo, AMissingDirectoryIsNotCopied)
{
    folder.writeFile("to\\a\\file", "kept");
    folder.writeFile("file", "x");
    for (const OVERWRITEFLAG overwrite : {OVERWRITE_NOW_ONLY, OVERWRITE_AT_REBOOT})
    {
        EXPECT_EQ(0, dir("a").CopyTo(path("to"), overwrite));
        EXPECT_EQ(0, dir("a").CopyTo(path("new"), overwrite));
        EXPECT_EQ(0, dir("file").CopyTo(path("new"), overwrite)); // no directory
        EXPECT_EQ(0, RT_Dir("").CopyTo(path("new"), overwrite));
        EXPECT_EQ(0, dir(std::string(10'000, 'x')).CopyTo(path("new"), overwrite));
    }
    EXPECT_EQ((Names{"file", "to\\"}), names(""));
    EXPECT_EQ("kept", folder.readFile("to\\a\\file"));
    expectNoRecord();
}

TEST_F(RT_DirCopyTo, TheTreeStandsUnderItsNameInTheDestinationWhichIsMade)
{
    folder.writeFile("a\\file", "one");
    folder.writeFile("a\\b\\c\\file", "two");
    folder.makeFolder("a\\empty\\too");
    EXPECT_EQ(1, dir("a").CopyTo(path("to\\be\\made"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ((Names{"a\\"}), names("to\\be\\made"));
    EXPECT_EQ((Names{"b\\", "empty\\", "file"}), names("to\\be\\made\\a"));
    EXPECT_EQ((Names{"too\\"}), names("to\\be\\made\\a\\empty"));
    EXPECT_EQ("one", folder.readFile("to\\be\\made\\a\\file"));
    EXPECT_EQ("two", folder.readFile("to\\be\\made\\a\\b\\c\\file"));
    EXPECT_EQ((Names{"b\\", "empty\\", "file"}), names("a")); // the source stays
    EXPECT_EQ("two", folder.readFile("a\\b\\c\\file"));
    expectNoRecord();
}

TEST_F(RT_DirCopyTo, TheDestinationMayBeWrittenLooselyButMustBeAFullPath)
{
    folder.writeFile("a\\file", "one");
    std::string slashes = folder / "to//be\\\\made/";
    std::replace(slashes.begin(), slashes.end(), '\\', '/');
    EXPECT_EQ(1, dir("a").CopyTo(slashes.c_str(), OVERWRITE_NOW_ONLY));
    EXPECT_EQ("one", folder.readFile("to\\be\\made\\a\\file"));

    const std::string tooLong = folder / std::string(10'000, 'x');
    for (const char* refused : {"", "relative", "..", "\\rooted", "x:y:z", "\\\\", "Q:", "Q:\\x", tooLong.c_str()})
    {
        SCOPED_TRACE(refused);
        EXPECT_EQ(0, dir("a").CopyTo(refused, OVERWRITE_NOW_ONLY));
        EXPECT_EQ(0, dir("a").CopyTo(refused, OVERWRITE_AT_REBOOT));
    }
    EXPECT_EQ(0, dir("a").CopyTo(static_cast<const char*>(nullptr), OVERWRITE_NOW_ONLY));
    EXPECT_EQ("one", folder.readFile("a\\file"));
    EXPECT_FALSE(fileExists("relative"));
    EXPECT_FALSE(fileExists("a"));
}

TEST_F(RT_DirCopyTo, AnExistingTargetIsCopiedOver)
{
    folder.writeFile("a\\file", "new");
    folder.writeFile("a\\b\\file", "new");
    for (const int number : {0, 2, -1})
    {
        folder.writeFile("to\\a\\file", "old");
        folder.writeFile("to\\a\\b\\extra", "kept");
        folder.writeFile("to\\a\\extra", "kept");
        EXPECT_EQ(1, dir("a").CopyTo(path("to"), flag<OVERWRITEFLAG>(number)));
        EXPECT_EQ((Names{"b\\", "extra", "file"}), names("to\\a"));
        EXPECT_EQ((Names{"extra", "file"}), names("to\\a\\b"));
        EXPECT_EQ("new", folder.readFile("to\\a\\file"));
        EXPECT_EQ("new", folder.readFile("to\\a\\b\\file"));
    }
}

TEST_F(RT_DirCopyTo, FilesAreReplacedWithoutComparing)
{
    folder.writeFile("a\\file", "same size");
    folder.writeFile("to\\a\\file", "SAME SIZE"); // younger
    ::SetFileAttributesA((folder / "to\\a\\file").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(1, dir("a").CopyTo(path("to"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ("same size", folder.readFile("to\\a\\file"));
}

TEST_F(RT_DirCopyTo, AtRebootRemovesAnExistingTargetFirst)
{
    folder.writeFile("a\\file", "new");
    folder.writeFile("a\\b\\file", "new");
    folder.makeFolder("a\\empty");
    folder.writeFile("to\\a\\extra", "old");
    folder.writeFile("to\\a\\b\\c\\extra", "old");
    EXPECT_EQ(1, dir("a").CopyTo(path("to"), OVERWRITE_AT_REBOOT));
    EXPECT_EQ((Names{"b\\", "empty\\", "file"}), names("to\\a"));
    EXPECT_EQ((Names{"file"}), names("to\\a\\b"));
    EXPECT_FALSE(bRebootNeeded);
}

TEST_F(RT_DirCopyTo, ARemovedTargetIsOnlyMadeAgainForWhatIsCopied)
{
    folder.makeFolder("empty");
    folder.makeFolder("to\\empty");
    EXPECT_EQ(1, dir("empty").CopyTo(path("to"), OVERWRITE_AT_REBOOT));
    EXPECT_FALSE(folder.exists("to\\empty"));
    EXPECT_EQ(1, dir("empty").CopyTo(path("to"), OVERWRITE_AT_REBOOT));
    EXPECT_TRUE(folder.exists("to\\empty")); // one that was missing is made
}

TEST_F(RT_DirCopyTo, ATargetThatCannotBeRemovedEndsTheCopy)
{
    folder.writeFile("a\\file", "new");
    folder.writeFile("to\\a\\locked", "old");
    folder.writeFile("to\\a\\other", "old");
    {
        const aut::UniqueFile held = lock("to\\a\\locked");
        EXPECT_EQ(0, dir("a").CopyTo(path("to"), OVERWRITE_AT_REBOOT));
    }
    EXPECT_EQ((Names{"locked"}), names("to\\a"));
    EXPECT_EQ((Names{folder / "to\\a\\locked", ""}), pendingMoves()); // scheduled, so it goes at the next start
}

TEST_F(RT_DirCopyTo, ATargetThatCannotBeMadeEndsTheCopy)
{
    folder.writeFile("a\\file", "new");
    folder.writeFile("to\\a", "in the way");
    folder.writeFile("file", "in the way");
    EXPECT_EQ(0, dir("a").CopyTo(path("to"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ(0, dir("a").CopyTo(path("to"), OVERWRITE_AT_REBOOT));
    EXPECT_EQ(0, dir("a").CopyTo(path("file"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ("in the way", folder.readFile("to\\a"));
    expectNoRecord();
}

TEST_F(RT_DirCopyTo, ASubdirectoryThatCannotBeCopiedDoesNotStopTheOthers)
{
    folder.writeFile("a\\b\\c\\file", "new");
    folder.writeFile("a\\m\\file", "new");
    folder.writeFile("a\\z\\file", "new");
    folder.writeFile("to\\a\\m", "in the way");
    EXPECT_EQ(0, dir("a").CopyTo(path("to"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ("in the way", folder.readFile("to\\a\\m"));
    EXPECT_EQ("new", folder.readFile("to\\a\\b\\c\\file"));
    EXPECT_EQ("new", folder.readFile("to\\a\\z\\file"));
}

TEST_F(RT_DirCopyTo, ASourceFileInUseIsOnlyLogged)
{
    const TemporaryCopy temporary("locked_0.tmp");
    folder.writeFile("a\\file", "new");
    folder.writeFile("a\\locked", "new");
    const LogFile log;
    const aut::UniqueFile held = lock("a\\locked");
    EXPECT_EQ(1, dir("a").CopyTo(path("to"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ((Names{"file"}), names("to\\a"));
    EXPECT_TRUE(log.has("Error", "RT_File::CopyTo : copy of " + folder / "a\\locked" + " - failed"));
    EXPECT_EQ(462, result->GetStatusCode()); // the file's own record
}

TEST_F(RT_DirCopyTo, ATargetFileInUseIsReplacedAtTheNextStart)
{
    const TemporaryCopy temporary("locked_0.tmp");
    folder.writeFile("a\\b\\locked.txt", "new");
    folder.writeFile("to\\a\\b\\locked.txt", "old");
    {
        const aut::UniqueFile held = lock("to\\a\\b\\locked.txt");
        EXPECT_EQ(1, dir("a").CopyTo(path("to"), OVERWRITE_NOW_ONLY));
    }
    EXPECT_TRUE(bRebootNeeded);
    EXPECT_EQ("old", folder.readFile("to\\a\\b\\locked.txt"));
    EXPECT_EQ((Names{temporary.path, folder / "to\\a\\b\\locked.txt"}), pendingMoves());
    EXPECT_EQ("new", readFile(temporary.path));
}

TEST_F(RT_DirCopyTo, ADirectoryWithoutANameIsCopiedIntoTheDestinationItself)
{
    // The drive as a source would be all of C:, which the destination lies in: refused.
    EXPECT_EQ(0, RT_Dir("C:").CopyTo(path("to"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ(Names{}, names(""));
}

// --- What lies in itself

TEST_F(RT_DirCopyTo, SourceAndTargetMustNotOverlap)
{
    folder.writeFile("a\\file", "x");
    folder.writeFile("a\\sub\\file", "x");
    folder.writeFile("a\\a\\file", "inner");
    std::string upper = folder / "A\\SUB";
    for (const OVERWRITEFLAG overwrite : {OVERWRITE_NOW_ONLY, OVERWRITE_AT_REBOOT})
    {
        EXPECT_EQ(0, dir("a").CopyTo(path(""), overwrite));              // onto itself
        EXPECT_EQ(0, dir("A").CopyTo(path("."), overwrite));             // the same, written otherwise
        EXPECT_EQ(0, dir("a").CopyTo(path("a"), overwrite));             // onto what it holds
        EXPECT_EQ(0, dir("a").CopyTo(path("a\\sub\\new"), overwrite));   // into a directory to be made
        EXPECT_EQ(0, dir("a").CopyTo(upper.c_str(), overwrite));         // case does not count
        EXPECT_EQ(0, dir("a").CopyTo(path("b\\..\\a\\new"), overwrite)); // by a detour
    }
    EXPECT_EQ((Names{"a\\"}), names(""));
    EXPECT_EQ((Names{"a\\", "file", "sub\\"}), names("a"));
    EXPECT_EQ((Names{"file"}), names("a\\sub"));
    EXPECT_EQ("inner", folder.readFile("a\\a\\file"));
    EXPECT_EQ(Names{}, pendingMoves());
    expectNoRecord();
}

TEST_F(RT_DirCopyTo, OntoWhatHoldsItATreeIsCopiedUnlessThatIsRemovedFirst)
{
    folder.writeFile("a\\a\\file", "x");
    folder.writeFile("a\\a\\a\\deep", "x"); // whose target is the source itself
    EXPECT_EQ(0, dir("a\\a").CopyTo(path(""), OVERWRITE_AT_REBOOT));
    EXPECT_EQ((Names{"a\\", "file"}), names("a\\a"));
    EXPECT_EQ(1, dir("a\\a").CopyTo(path(""), OVERWRITE_NOW_ONLY));
    EXPECT_EQ((Names{"a\\", "file"}), names("a"));
    EXPECT_EQ((Names{"a\\", "deep", "file"}), names("a\\a"));
    EXPECT_EQ((Names{"deep"}), names("a\\a\\a"));
}

TEST_F(RT_DirCopyTo, NeighboursWithLikeNamesDoNotOverlap)
{
    folder.writeFile("a\\file", "x");
    folder.makeFolder("ab");
    EXPECT_EQ(1, dir("a").CopyTo(path("ab"), OVERWRITE_AT_REBOOT));
    EXPECT_EQ("x", folder.readFile("ab\\a\\file"));
    EXPECT_EQ(1, dir("ab").CopyTo(path("a"), OVERWRITE_AT_REBOOT));
    EXPECT_EQ("x", folder.readFile("a\\ab\\a\\file"));
}

TEST_F(RT_DirCopyTo, ALinkDoesNotHideThatTheyOverlap)
{
    folder.writeFile("a\\file", "x");
    folder.writeFile("a\\sub\\file", "x");
    makeLink(folder / "to itself", folder.path());
    makeLink(folder / "into", folder / "a\\sub");
    for (const OVERWRITEFLAG overwrite : {OVERWRITE_NOW_ONLY, OVERWRITE_AT_REBOOT})
    {
        EXPECT_EQ(0, dir("a").CopyTo(path("to itself"), overwrite));
        EXPECT_EQ(0, dir("a").CopyTo(path("into"), overwrite));
        EXPECT_EQ(0, dir("a").CopyTo(path("into\\new"), overwrite));
        EXPECT_EQ(0, dir("to itself\\a").CopyTo(path("into"), overwrite));
        EXPECT_EQ(0, dir("to itself\\a\\sub").CopyTo(path("a"), overwrite));
    }
    EXPECT_EQ((Names{"file", "sub\\"}), names("a"));
    EXPECT_EQ((Names{"file"}), names("a\\sub"));
    EXPECT_TRUE(removeLink(folder / "to itself"));
    EXPECT_TRUE(removeLink(folder / "into"));
}

DWORD WINAPI untoldFinalPath(HANDLE, WCHAR*, DWORD, DWORD)
{
    ::SetLastError(ERROR_NOT_SUPPORTED);
    return 0;
}

BOOL WINAPI untoldInformation(HANDLE, BY_HANDLE_FILE_INFORMATION*)
{
    ::SetLastError(ERROR_NOT_SUPPORTED);
    return FALSE;
}

TEST_F(RT_DirCopyTo, OverlapIsSeenOnSharesThatDoNotTellTheRealPath)
{
    folder.writeFile("a\\file", "x");
    folder.writeFile("a\\a\\file", "inner");
    makeLink(folder / "to itself", folder.path());
    const ImportPatch noRealPath("GetFinalPathNameByHandleW", untoldFinalPath);
    for (const OVERWRITEFLAG overwrite : {OVERWRITE_NOW_ONLY, OVERWRITE_AT_REBOOT})
    {
        EXPECT_EQ(0, dir("a").CopyTo(path("a\\new"), overwrite));
        EXPECT_EQ(0, dir("a").CopyTo(path("to itself"), overwrite)); // by the directories' own numbers
        EXPECT_EQ(0, dir("a").CopyTo(path("to itself\\a\\new"), overwrite));
    }
    EXPECT_EQ(0, dir("a\\a").CopyTo(path(""), OVERWRITE_AT_REBOOT));
    EXPECT_EQ(1, dir("a").CopyTo(path("apart"), OVERWRITE_NOW_ONLY));

    const ImportPatch noNumbers("GetFileInformationByHandle", untoldInformation);
    EXPECT_EQ(0, dir("a").CopyTo(path("A\\new"), OVERWRITE_NOW_ONLY)); // by the texts
    EXPECT_EQ(0, dir("a\\a").CopyTo(path(""), OVERWRITE_AT_REBOOT));
    EXPECT_EQ(1, dir("a").CopyTo(path("apart"), OVERWRITE_AT_REBOOT));
    EXPECT_EQ((Names{"a\\", "file"}), names("a"));
    EXPECT_TRUE(removeLink(folder / "to itself"));
}

TEST_F(RT_DirCopyTo, ALinkIsNotFollowedAndCountsAsASubdirectoryNotCopied)
{
    folder.writeFile("outside\\file", "x");
    folder.writeFile("a\\b\\file", "x");
    folder.writeFile("a\\z\\file", "x");
    makeLink(folder / "a\\link", folder / "outside");
    makeLink(folder / "a\\b\\up", folder / "a");
    EXPECT_EQ(0, dir("a").CopyTo(path("to"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ((Names{"b\\", "z\\"}), names("to\\a"));
    EXPECT_EQ((Names{"file"}), names("to\\a\\b"));
    EXPECT_EQ((Names{"file"}), names("to\\a\\z"));
    EXPECT_TRUE(removeLink(folder / "a\\link"));
    EXPECT_TRUE(removeLink(folder / "a\\b\\up"));
    expectNoRecord();
}

TEST_F(RT_DirCopyTo, ALinkThatIsNamedItselfIsReadThrough)
{
    folder.writeFile("outside\\sub\\file", "x");
    makeLink(folder / "link", folder / "outside");
    EXPECT_EQ(1, dir("link").CopyTo(path("to"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ("x", folder.readFile("to\\link\\sub\\file"));
    EXPECT_TRUE(removeLink(folder / "link"));
}

TEST_F(RT_DirCopyTo, ALinkInTheTargetDoesNotLeadBackIntoTheSource)
{
    folder.writeFile("a\\sub\\deep\\file", "x");
    folder.writeFile("a\\z\\file", "x");
    folder.makeFolder("to\\a");
    makeLink(folder / "to\\a\\sub", folder / "a\\sub\\deep");
    EXPECT_EQ(0, dir("a").CopyTo(path("to"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ((Names{"file"}), names("a\\sub\\deep"));
    EXPECT_EQ((Names{"deep\\"}), names("a\\sub"));
    EXPECT_EQ((Names{"file"}), names("to\\a\\z"));
    EXPECT_TRUE(removeLink(folder / "to\\a\\sub"));
}

TEST_F(RT_DirCopyTo, ALinkInTheTargetIsCopiedThroughWhenItLeadsElsewhere)
{
    folder.writeFile("a\\sub\\file", "x");
    folder.makeFolder("to\\a");
    folder.writeFile("elsewhere\\other", "kept");
    makeLink(folder / "to\\a\\sub", folder / "elsewhere");
    EXPECT_EQ(1, dir("a").CopyTo(path("to"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ((Names{"file", "other"}), names("elsewhere"));
    EXPECT_TRUE(removeLink(folder / "to\\a\\sub"));
}

// --- Listings that fail

TEST_F(RT_DirCopyTo, WhatCannotBeListedIsNotCopied)
{
    folder.writeFile("a\\file", "x");
    const ImportPatch patch("FindFirstFileA", refusedFindFirstFile);
    EXPECT_EQ(0, dir("a").CopyTo(path("to"), OVERWRITE_NOW_ONLY));
}

BOOL WINAPI brokenFindNextFile(HANDLE search, WIN32_FIND_DATAA* entry)
{
    if (::FindNextFileA(search, entry))
        return TRUE;
    ::SetLastError(ERROR_NETNAME_DELETED);
    return FALSE;
}

TEST_F(RT_DirCopyTo, AListingThatBreaksOffIsNoSuccess)
{
    folder.writeFile("a\\file", "x");
    folder.writeFile("a\\sub\\file", "x");
    const ImportPatch patch("FindNextFileA", brokenFindNextFile);
    EXPECT_EQ(0, dir("a").CopyTo(path("to"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ("x", folder.readFile("to\\a\\file"));
    EXPECT_EQ("x", folder.readFile("to\\a\\sub\\file")); // the rest is copied all the same
}

HANDLE WINAPI noEntryAtAll(const char*, WIN32_FIND_DATAA*)
{
    ::SetLastError(ERROR_FILE_NOT_FOUND); // an empty root has not even "." and ".."
    return INVALID_HANDLE_VALUE;
}

TEST_F(RT_DirCopyTo, AListingWithoutAnyEntryIsWhole)
{
    folder.makeFolder("a");
    const ImportPatch patch("FindFirstFileA", noEntryAtAll);
    EXPECT_EQ(1, dir("a").CopyTo(path("to"), OVERWRITE_NOW_ONLY));
    EXPECT_TRUE(folder.exists("to\\a"));
}

std::string g_vanishing;

BOOL WINAPI findNextWhileOthersRemove(HANDLE search, WIN32_FIND_DATAA* entry)
{
    const BOOL found = ::FindNextFileA(search, entry);
    if (!found)
    {
        removeAll(g_vanishing);
        ::SetLastError(ERROR_NO_MORE_FILES);
    }
    return found;
}

TEST_F(RT_DirCopyTo, ASubdirectoryThatVanishesIsNotCopied)
{
    folder.writeFile("a\\b\\file", "x");
    folder.writeFile("a\\z\\file", "x");
    g_vanishing = folder / "a\\b";
    const ImportPatch patch("FindNextFileA", findNextWhileOthersRemove);
    EXPECT_EQ(0, dir("a").CopyTo(path("to"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ((Names{"z\\"}), names("to\\a"));
}

// --- Names and sizes

TEST_F(RT_DirCopyTo, NamesThatTheCodePageLacksAreCopiedUnderTheirShortNames)
{
    const std::string a = folder.makeFolder("a");
    const std::wstring wide = std::wstring(a.begin(), a.end()) + L"\\\u4e2d\u6587";
    ASSERT_TRUE(::CreateDirectoryW(wide.c_str(), nullptr));
    {
        const aut::UniqueFile file(::CreateFileW((wide + L"\\\u65e5\u672c\u8a9e.txt").c_str(), GENERIC_WRITE, 0,
                                                 nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(file);
    }
    folder.writeFile("a\\\xe4\xf6\xfc", "x"); // this one has its place in the code page
    EXPECT_EQ(1, dir("a").CopyTo(path("to"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ("x", folder.readFile("to\\a\\\xe4\xf6\xfc"));
    const Names copied = names("to\\a");
    ASSERT_EQ(2U, copied.size());
    EXPECT_EQ(std::string::npos, copied[0].find('?')) << copied[0];
    const Names below = names("to\\a\\" + copied[0]);
    ASSERT_EQ(1U, below.size());
    EXPECT_EQ(std::string::npos, below[0].find('?')) << below[0];
    EXPECT_EQ(1, dir("a").Remove(OVERWRITE_NOW_ONLY, DIR_RECURSIVE));
}

TEST_F(RT_DirCopyTo, ATreeOfTenThousandFilesIsCopiedAndRemoved)
{
    for (int i = 0; i < 100; ++i)
    {
        const std::string sub = folder.makeFolder("a\\" + std::to_string(i));
        for (int k = 0; k < 100; ++k)
            writeFile(sub + "\\" + std::to_string(k), "x");
    }
    EXPECT_EQ(1, dir("a").CopyTo(path("to"), OVERWRITE_AT_REBOOT));
    EXPECT_EQ(100U, names("to\\a").size());
    std::size_t files = 0;
    for (int i = 0; i < 100; ++i)
        files += names("to\\a\\" + std::to_string(i)).size();
    EXPECT_EQ(10'000U, files);
    EXPECT_EQ(1, dir("to").Remove(OVERWRITE_AT_REBOOT, DIR_RECURSIVE));
    EXPECT_EQ(1, dir("a").Remove(OVERWRITE_AT_REBOOT, DIR_RECURSIVE));
    EXPECT_EQ(Names{}, names(""));
    expectNoRecord();
}

TEST_F(RT_DirCopyTo, ATargetTooDeepForPathsIsAFailure)
{
    makeDeepTree("a");
    const std::string longer(40, 'x');
    EXPECT_EQ(0, dir("a").CopyTo(path(longer), OVERWRITE_NOW_ONLY));
    EXPECT_TRUE(folder.exists(longer + "\\a\\d\\d\\d"));
}

// --- MoveTo

BOOL WINAPI copyOntoAFullDisk(const char*, const char*, BOOL)
{
    ::SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

TEST_F(RT_DirMoveTo, OnOneVolumeATreeIsRenamedWithWriteThrough)
{
    folder.writeFile("a\\b\\file", "x");
    {
        const ImportPatch see("MoveFileExA", seenMoveFileEx);
        const ImportPatch noCopy("CopyFileA", copyOntoAFullDisk);
        EXPECT_EQ(1, dir("a").MoveTo(path("to\\be\\made"), OVERWRITE_NOW_ONLY));
        EXPECT_EQ(1, dir("to\\be\\made\\a").MoveTo(path("back"), OVERWRITE_AT_REBOOT));
        EXPECT_EQ(1, dir("back\\a").MoveTo(path("to"), flag<OVERWRITEFLAG>(2)));
    }
    EXPECT_EQ(
        (Names{folder / "a -> " + folder / "to\\be\\made\\a, 8", //
               folder / "to\\be\\made\\a -> " + folder / "back\\a, 9", folder / "back\\a -> " + folder / "to\\a, 8"}),
        g_seen.moved);
    EXPECT_EQ("x", folder.readFile("to\\a\\b\\file"));
    EXPECT_EQ((Names{"back\\", "to\\"}), names(""));
    expectNoRecord();
}

TEST_F(RT_DirMoveTo, DrivesAreComparedWithoutRegardToCase)
{
    folder.writeFile("a\\file", "x");
    std::string lower = folder / "to";
    lower[0] = 'c';
    const ImportPatch see("MoveFileExA", seenMoveFileEx);
    EXPECT_EQ(1, dir("a").MoveTo(lower.c_str(), OVERWRITE_NOW_ONLY));
    EXPECT_EQ(1U, g_seen.moved.size());
    EXPECT_EQ("x", folder.readFile("to\\a\\file"));
}

std::string g_target;
bool g_ownFilesThere = false;
bool g_subdirectoryThere = false;

BOOL WINAPI moveThatLooksAtTheTarget(const char*, const char*, DWORD)
{
    g_ownFilesThere = fileExists(g_target + "\\old");
    g_subdirectoryThere = fileExists(g_target + "\\sub\\old");
    ::SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

TEST_F(RT_DirMoveTo, OnlyAtRebootRemovesTheTargetsOwnFilesBeforeTheRename)
{
    g_target = folder / "to\\a";
    const ImportPatch look("MoveFileExA", moveThatLooksAtTheTarget);
    for (const OVERWRITEFLAG overwrite : {OVERWRITE_NOW_ONLY, OVERWRITE_AT_REBOOT})
    {
        folder.writeFile("a\\file", "new");
        folder.writeFile("to\\a\\old", "old");
        folder.writeFile("to\\a\\sub\\old", "old");
        EXPECT_EQ(1, dir("a").MoveTo(path("to"), overwrite));
        EXPECT_EQ(overwrite == OVERWRITE_NOW_ONLY, g_ownFilesThere);
        EXPECT_TRUE(g_subdirectoryThere);
    }
}

TEST_F(RT_DirMoveTo, ATargetThatCannotBeEmptiedIsNoReasonNotToTry)
{
    folder.writeFile("a\\file", "new");
    folder.writeFile("to\\a\\held", "old");
    const aut::UniqueFile held = lock("to\\a\\held");
    {
        const ImportPatch see("MoveFileExA", seenMoveFileEx);
        EXPECT_EQ(0, dir("a").MoveTo(path("to"), OVERWRITE_AT_REBOOT));
    }
    EXPECT_EQ(1, std::count(g_seen.moved.begin(), g_seen.moved.end(), folder / "a -> " + folder / "to\\a, 9"));
    EXPECT_EQ("new", folder.readFile("a\\file"));
}

TEST_F(RT_DirMoveTo, AtRebootReplacesAnExistingTargetAsAWhole)
{
    for (const char* old : {"to\\a\\old", "to\\a\\sub\\old"})
    {
        SCOPED_TRACE(old);
        folder.writeFile("a\\b\\file", "new");
        folder.writeFile(old, "old");
        EXPECT_EQ(1, dir("a").MoveTo(path("to"), OVERWRITE_AT_REBOOT));
        EXPECT_EQ((Names{"b\\"}), names("to\\a"));
        EXPECT_EQ("new", folder.readFile("to\\a\\b\\file"));
        EXPECT_FALSE(folder.exists("a"));
    }
    expectNoRecord();
}

TEST_F(RT_DirMoveTo, NowOnlyMergesIntoAnExistingTarget)
{
    folder.writeFile("a\\b\\file", "new");
    folder.writeFile("to\\a\\b\\file", "old");
    folder.writeFile("to\\a\\extra", "kept");
    EXPECT_EQ(1, dir("a").MoveTo(path("to"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ((Names{"b\\", "extra"}), names("to\\a"));
    EXPECT_EQ("new", folder.readFile("to\\a\\b\\file"));
    EXPECT_FALSE(folder.exists("a"));
}

TEST_F(RT_DirMoveTo, ARenameThatFailsIsMadeUpForByCopyingAndRemoving)
{
    folder.writeFile("a\\b\\file", "x");
    folder.makeFolder("a\\empty");
    const ImportPatch refuse("MoveFileExA", refusedMoveFileEx);
    EXPECT_EQ(1, dir("a").MoveTo(path("to"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ((Names{folder / "a -> " + folder / "to\\a, 8"}), g_seen.moved);
    EXPECT_EQ((Names{"b\\", "empty\\"}), names("to\\a"));
    EXPECT_EQ("x", folder.readFile("to\\a\\b\\file"));
    EXPECT_FALSE(folder.exists("a"));
    expectNoRecord();
}

TEST_F(RT_DirMoveTo, ToAnotherVolumeATreeIsCopiedAndThenRemoved)
{
    const std::string other = onAnotherDrive(folder.path());
    if (other.empty())
        GTEST_SKIP() << "no second drive letter here";
    folder.writeFile("a\\b\\file", "x");
    folder.makeFolder("a\\empty");
    const ImportPatch see("MoveFileExA", seenMoveFileEx);
    for (const OVERWRITEFLAG overwrite : {OVERWRITE_NOW_ONLY, OVERWRITE_AT_REBOOT})
    {
        EXPECT_EQ(1, dir("a").MoveTo((other + "\\to").c_str(), overwrite));
        EXPECT_EQ((Names{"to\\"}), names(""));
        EXPECT_EQ((Names{"b\\", "empty\\"}), names("to\\a"));
        EXPECT_EQ("x", folder.readFile("to\\a\\b\\file"));
        EXPECT_EQ(1, RT_Dir((other + "\\to\\a").c_str()).MoveTo(path(""), overwrite));
        EXPECT_EQ((Names{"b\\", "empty\\"}), names("a"));
    }
    EXPECT_EQ(Names{}, g_seen.moved); // never tried
    expectNoRecord();
}

TEST_F(RT_DirMoveTo, SharesOfOneServerAreOneVolumeAndADriveIsNone)
{
    const std::string share = onAShare(folder.path());
    if (share.empty())
        GTEST_SKIP() << "no share to write to here";
    folder.writeFile("a\\file", "x");
    RT_Dir source((share + "\\a").c_str());
    ASSERT_EQ(1, source.IsExisting());
    const ImportPatch see("MoveFileExA", seenMoveFileEx);
    EXPECT_EQ(1, source.MoveTo((share + "\\to").c_str(), OVERWRITE_NOW_ONLY));
    EXPECT_EQ((Names{share + "\\a -> " + share + "\\to\\a, 8"}), g_seen.moved);
    EXPECT_EQ("x", folder.readFile("to\\a\\file"));

    EXPECT_EQ(1, RT_Dir((share + "\\to\\a").c_str()).MoveTo(path("drive"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ(1, dir("drive\\a").MoveTo((share + "\\share").c_str(), OVERWRITE_NOW_ONLY));
    EXPECT_EQ(1U, g_seen.moved.size()); // copied both ways
    EXPECT_EQ("x", folder.readFile("share\\a\\file"));
    EXPECT_EQ(Names{}, names("to"));
    EXPECT_EQ(Names{}, names("drive"));
}

TEST_F(RT_DirMoveTo, WhatCouldNotBeCopiedWholeIsNotRemoved)
{
    folder.writeFile("a\\b\\file", "x");
    folder.writeFile("to\\a\\b", "in the way");
    EXPECT_EQ(0, dir("a").MoveTo(path("to"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ("x", folder.readFile("a\\b\\file"));

    folder.writeFile("outside\\file", "x");
    folder.writeFile("c\\file", "x");
    makeLink(folder / "c\\link", folder / "outside");
    const ImportPatch refuse("MoveFileExA", refusedMoveFileEx);
    EXPECT_EQ(0, dir("c").MoveTo(path("to"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ((Names{"file", "link\\"}), names("c"));
    EXPECT_TRUE(removeLink(folder / "c\\link"));
}

TEST_F(RT_DirMoveTo, WhatAFullDiskDoesNotTakeStaysWhereItIs)
{
    folder.writeFile("a\\file", "x");
    folder.writeFile("a\\b\\file", "x");
    const ImportPatch refuse("MoveFileExA", refusedMoveFileEx); // another volume
    {
        const ImportPatch full("CopyFileA", copyOntoAFullDisk);
        for (const OVERWRITEFLAG overwrite : {OVERWRITE_NOW_ONLY, OVERWRITE_AT_REBOOT})
            EXPECT_EQ(0, dir("a").MoveTo(path("to"), overwrite));
        EXPECT_EQ(1, dir("a").CopyTo(path("to"), OVERWRITE_NOW_ONLY)); // deliberately
    }
    EXPECT_EQ("x", folder.readFile("a\\file"));
    EXPECT_EQ("x", folder.readFile("a\\b\\file"));
    EXPECT_EQ(1, dir("a").MoveTo(path("to"), OVERWRITE_NOW_ONLY));
    EXPECT_EQ("x", folder.readFile("to\\a\\b\\file"));
    EXPECT_FALSE(folder.exists("a"));
}

TEST_F(RT_DirMoveTo, OneFileThatCouldNotBeCopiedKeepsTheWholeTree)
{
    for (const char* name : {"a\\a.txt", "a\\b\\file", "a\\z\\file"})
        folder.writeFile(name, "x");
    folder.writeFile("to\\a\\there", "x"); // so that the rename fails
    {
        const aut::UniqueFile held = lock("a\\b\\file");
        EXPECT_EQ(0, dir("a").MoveTo(path("to"), OVERWRITE_NOW_ONLY));
    }
    EXPECT_EQ((Names{"a.txt", "b\\", "z\\"}), names("a"));
    EXPECT_EQ((Names{"a.txt", "b\\", "there", "z\\"}), names("to\\a"));
    EXPECT_EQ(Names{}, pendingMoves());
}

TEST_F(RT_DirMoveTo, ASourceFileInUseGoesAtTheNextStart)
{
    folder.writeFile("a\\file", "x");
    folder.writeFile("a\\held", "x");
    folder.writeFile("to\\a\\there", "x"); // so that the rename fails
    {
        // Others may read it, so that it is copied, but not delete it.
        const aut::UniqueFile held(::CreateFileA((folder / "a\\held").c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                                 OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(held);
        EXPECT_EQ(0, dir("a").MoveTo(path("to"), OVERWRITE_NOW_ONLY));
    }
    EXPECT_EQ((Names{"held"}), names("a"));
    EXPECT_EQ((Names{"file", "held", "there"}), names("to\\a"));
    EXPECT_EQ((Names{folder / "a\\held", ""}), pendingMoves());
    EXPECT_TRUE(bRebootNeeded);
}

TEST_F(RT_DirMoveTo, AMissingDirectoryTouchesNothing)
{
    folder.writeFile("to\\a\\file", "kept");
    folder.writeFile("file", "x");
    for (const OVERWRITEFLAG overwrite : {OVERWRITE_NOW_ONLY, OVERWRITE_AT_REBOOT})
    {
        EXPECT_EQ(0, dir("a").MoveTo(path("to"), overwrite));
        EXPECT_EQ(0, dir("a").MoveTo(path("new"), overwrite));
        EXPECT_EQ(0, dir("file").MoveTo(path("new"), overwrite));
        EXPECT_EQ(0, RT_Dir("").MoveTo(path("new"), overwrite));
    }
    EXPECT_EQ("kept", folder.readFile("to\\a\\file"));
    EXPECT_EQ((Names{"file", "to\\"}), names(""));
    expectNoRecord();
}

TEST_F(RT_DirMoveTo, TheDestinationMustBeAFullPath)
{
    folder.writeFile("a\\file", "x");
    const std::string tooLong = folder / std::string(10'000, 'x');
    for (const char* refused : {"", "relative", "\\rooted", "x:y:z", "Q:", "Q:\\x", tooLong.c_str()})
        for (const OVERWRITEFLAG overwrite : {OVERWRITE_NOW_ONLY, OVERWRITE_AT_REBOOT})
            EXPECT_EQ(0, dir("a").MoveTo(refused, overwrite)) << refused;
    EXPECT_EQ("x", folder.readFile("a\\file"));
}

TEST_F(RT_DirMoveTo, WhatIsThereAlreadyStays)
{
    folder.writeFile("a\\file", "x");
    const ImportPatch see("MoveFileExA", seenMoveFileEx);
    for (const OVERWRITEFLAG overwrite : {OVERWRITE_NOW_ONLY, OVERWRITE_AT_REBOOT})
    {
        EXPECT_EQ(1, dir("a").MoveTo(path(""), overwrite));
        EXPECT_EQ(1, dir("A").MoveTo(path("."), overwrite));
    }
    EXPECT_EQ("x", folder.readFile("a\\file"));
    EXPECT_EQ(Names{}, g_seen.moved);
}

TEST_F(RT_DirMoveTo, NothingIsMovedIntoItselfOrOntoWhatHoldsIt)
{
    folder.writeFile("a\\file", "x");
    folder.writeFile("a\\a\\file", "inner");
    makeLink(folder / "link", folder.path());
    for (const OVERWRITEFLAG overwrite : {OVERWRITE_NOW_ONLY, OVERWRITE_AT_REBOOT})
    {
        EXPECT_EQ(0, dir("a").MoveTo(path("a"), overwrite));
        EXPECT_EQ(0, dir("a").MoveTo(path("a\\new\\folder"), overwrite));
        EXPECT_EQ(0, dir("a\\a").MoveTo(path(""), overwrite));
        EXPECT_EQ(0, dir("a\\a").MoveTo(path("link"), overwrite));
        EXPECT_EQ(0, dir("a").MoveTo(path("link\\a"), overwrite));
    }
    EXPECT_EQ((Names{"a\\", "file"}), names("a"));
    EXPECT_EQ("inner", folder.readFile("a\\a\\file"));
    EXPECT_TRUE(removeLink(folder / "link"));
}

TEST_F(RT_DirMoveTo, ALinkToTheSourceIsNotThatTheSourceIsThere)
{
    folder.writeFile("a\\file", "x");
    folder.makeFolder("to");
    makeLink(folder / "to\\a", folder / "a");
    for (const OVERWRITEFLAG overwrite : {OVERWRITE_NOW_ONLY, OVERWRITE_AT_REBOOT})
    {
        EXPECT_EQ(0, dir("a").MoveTo(path("to"), overwrite));
        EXPECT_EQ(0, dir("to\\a").MoveTo(path(""), overwrite));
    }
    EXPECT_EQ("x", folder.readFile("a\\file"));
    EXPECT_TRUE(removeLink(folder / "to\\a"));
}

TEST_F(RT_DirMoveTo, ThousandRoundsLeaveNoHandleOpen)
{
    folder.writeFile("a\\b\\file", "x");
    const ImportPatch refuse("MoveFileExA", refusedMoveFileEx);
    std::size_t before = 0;
    for (int round = 0; round < 1000; ++round)
    {
        EXPECT_EQ(1, dir("a").MoveTo(path("to"), OVERWRITE_AT_REBOOT));
        EXPECT_EQ(0, dir("to\\a").MoveTo(path("to\\a\\b"), OVERWRITE_NOW_ONLY));
        EXPECT_EQ(1, dir("to\\a").MoveTo(path(""), OVERWRITE_NOW_ONLY));
        if (round == 10)
            before = openHandles();
    }
    EXPECT_LE(openHandles(), before);
}

// --- without memory

/// Copies or moves a tree with each request for memory failing once; nothing may stand where nobody wanted it.
void expectOnlyTarget(int (RT_Dir::*job)(const String&, OVERWRITEFLAG))
{
    bool met = true;
    for (int number = 1; met; ++number)
    {
        const TestFolder folder;
        folder.writeFile("a\\file", "x");
        folder.makeFolder("to");
        const String to((folder / "to").c_str());
        int done = 0;
        {
            RT_Dir source((folder / "a").c_str());
            const NoMemoryOnce once(number);
            RT_Dir copy(source);
            done = (copy.*job)(to, OVERWRITE_NOW_ONLY);
            met = once.wasMet();
        }
        const auto there = [&](const char* path) { return fileExists(folder / path); };
        EXPECT_FALSE(there("toa") || there("to\\file")) << "at request " << number;
        EXPECT_TRUE(there("a\\file") || there("to\\a\\file")) << "at request " << number;
        EXPECT_TRUE(done == 0 || there("to\\a")) << "at request " << number;
        EXPECT_TRUE(met || (done == 1 && there("to\\a\\file"))); // undisturbed
    }
}

TEST_F(RT_DirCopyTo, WithoutMemoryNothingIsCopiedElsewhere) { expectOnlyTarget(&RT_Dir::CopyTo); }

TEST_F(RT_DirMoveTo, WithoutMemoryNothingIsMovedElsewhere) { expectOnlyTarget(&RT_Dir::MoveTo); }
} // namespace
