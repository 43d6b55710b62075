#include "tests/fileops/ReplacementTest.h"
#include "tests/fileops/VersionedFile.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/NoMemoryOnce.h"
#include "tests/support/OpenHandles.h"

#include <io.h>

#include <cstring>

using auttest::Events;
using auttest::ImportPatch;
using auttest::InUse;
using auttest::PendingMoves;
using auttest::recordedResult;
using auttest::wasRecorded;

namespace
{
constexpr WHEN kEveryWhen[] = {WHEN_ALWAYS, WHEN_DIFFERENT, WHEN_NEWER};

int g_commits = 0;
int __cdecl countedCommit(int file)
{
    ++g_commits;
    return ::_commit(file);
}

BOOL WINAPI refusedAttributes(const char*, DWORD)
{
    ::SetLastError(ERROR_WRITE_PROTECT);
    return FALSE;
}

BOOL WINAPI refusedDeletion(const char*)
{
    ::SetLastError(ERROR_WRITE_PROTECT);
    return FALSE;
}

DWORD g_moveFlags = 0;
std::string g_moveTarget;
BOOL WINAPI refusedMove(const char*, const char* target, DWORD flags)
{
    g_moveFlags = flags;
    g_moveTarget = target != nullptr ? target : "(null)";
    ::SetLastError(ERROR_WRITE_PROTECT);
    return FALSE;
}

/// The disk is full in the middle of the copy.
BOOL WINAPI halfCopy(const char*, const char* target, BOOL)
{
    const aut::UniqueFile file(::CreateFileA(target, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    if (file)
    {
        DWORD written = 0;
        ::WriteFile(file.get(), "ha", 2, &written, nullptr);
        ::SetLastError(ERROR_DISK_FULL);
    }
    return FALSE;
}

/// The same, and what is in another file at that moment.
std::string g_watched;
std::string g_seen;
BOOL WINAPI halfCopyWatched(const char* source, const char* target, BOOL keep)
{
    halfCopy(source, target, keep);
    g_seen = auttest::fileExists(g_watched) ? auttest::readFile(g_watched) : "(none)";
    ::SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

/// Days since the file was written.
void setAge(const std::string& path, int days)
{
    const aut::UniqueFile file(
        ::CreateFileA(path.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ULARGE_INTEGER time;
    time.QuadPart = 133'000'000'000'000'000ULL - static_cast<ULONGLONG>(days) * 864'000'000'000ULL;
    const FILETIME written{time.LowPart, time.HighPart};
    EXPECT_TRUE(::SetFileTime(file.get(), nullptr, nullptr, &written));
}

class RT_FileCopyTo : public auttest::ReplacementTest
{
protected:
    bool copy(WHEN when) { return RT_File(source.c_str()).CopyTo(directory.c_str(), when); }
    void writeTarget(const char* text = "old") const { auttest::writeFile(target, text); }
    /// Makes the target, in which the source has to go, older than it.
    void writeOlderTarget() const
    {
        folder.makeFolder("target");
        writeTarget();
        setAge(target, 2);
        setAge(source, 1);
    }
    Events waiting() const
    {
        return {{"Info", "MoveFileEx " + temporary + "->" + target}, {"Warning", "Reboot Needed: " + target}};
    }
};
class RT_FileMoveTo : public RT_FileCopyTo
{
protected:
    RT_FileMoveTo() { folder.makeFolder("target"); }
    bool move(OVERWRITEFLAG flag) { return RT_File(source.c_str()).MoveTo(directory.c_str(), flag); }
};
using RT_FileRemove = RT_FileCopyTo;

TEST_F(RT_FileCopyTo, CopiesUnderTheSameNameAndMakesTheFolderWithItsParents)
{
    for (const WHEN when : kEveryWhen)
    {
        const std::string into = folder / "made\\for\\" + std::to_string(when);
        EXPECT_TRUE(RT_File(source.c_str()).CopyTo(into.c_str(), when));
        EXPECT_EQ("new", auttest::readFile(into + "\\a_replaced.txt"));
        EXPECT_EQ("new", auttest::readFile(source));
    }
    expectQuiet();
}

TEST_F(RT_FileCopyTo, AMissingSourceIsRecordedWhenTheFolderIsMade)
{
    ::DeleteFileA(source.c_str());
    for (const int when : {0, 1, 2, 3})
    {
        auttest::spoilResult();
        EXPECT_FALSE(copy(static_cast<WHEN>(when)));
        EXPECT_EQ(record(463, 0, "Source File does not exist", source, "RT_File::CopyTo", ""), recordedResult());
        EXPECT_TRUE(auttest::fileExists(directory));
        EXPECT_FALSE(auttest::fileExists(target));
    }
    EXPECT_EQ(Events{}, log.events());
    expectNothingPending();
}

TEST_F(RT_FileCopyTo, AnyOtherConditionCopiesNothingAndGivesTrue)
{
    for (const int when : {3, -1, 1000})
        EXPECT_TRUE(copy(static_cast<WHEN>(when)));
    EXPECT_TRUE(auttest::fileExists(directory));
    EXPECT_FALSE(auttest::fileExists(target));
    expectQuiet();
}

TEST_F(RT_FileCopyTo, AlwaysReplacesWhateverIsThere)
{
    folder.makeFolder("target");
    writeTarget("newer");
    setAge(source, 9);
    auttest::setReadOnly(target);
    EXPECT_TRUE(copy(WHEN_ALWAYS));
    EXPECT_EQ("new", auttest::readFile(target));
    expectQuiet();
}

TEST_F(RT_FileCopyTo, NewerOntoAnIdenticalTargetTouchesNothing)
{
    folder.makeFolder("target");
    writeTarget("of four bytes or more");
    auttest::writeFile(source, "of four bytes or more");
    setAge(source, 3);
    setAge(target, 3);
    auttest::setReadOnly(target);
    for (const WHEN when : {WHEN_NEWER, WHEN_DIFFERENT})
    {
        EXPECT_TRUE(copy(when));
        EXPECT_TRUE(::GetFileAttributesA(target.c_str()) & FILE_ATTRIBUTE_READONLY);
    }
    WIN32_FILE_ATTRIBUTE_DATA data{};
    ::GetFileAttributesExA(target.c_str(), GetFileExInfoStandard, &data);
    ULARGE_INTEGER time;
    time.LowPart = data.ftLastWriteTime.dwLowDateTime;
    time.HighPart = data.ftLastWriteTime.dwHighDateTime;
    EXPECT_EQ(132'997'408'000'000'000ULL, time.QuadPart);
    ::SetFileAttributesA(target.c_str(), FILE_ATTRIBUTE_NORMAL);
    expectQuiet();
}

TEST_F(RT_FileCopyTo, ATargetInUseThatIsTheSameNeedsNoRestart)
{
    folder.makeFolder("target");
    auttest::writeLibrary(folder / "source\\a.dll", auttest::Version{1, 2, 3, 4});
    auttest::writeLibrary(folder / "target\\a.dll", auttest::Version{1, 2, 3, 5});
    const InUse held(folder / "target\\a.dll", FILE_SHARE_READ);
    EXPECT_TRUE(RT_File((folder / "source\\a.dll").c_str()).CopyTo(directory.c_str(), WHEN_NEWER));
    expectNothingPending();
}

TEST_F(RT_FileCopyTo, NewerLeavesANewerTargetAndDifferentReplacesIt)
{
    folder.makeFolder("target");
    writeTarget();
    setAge(target, 1);
    setAge(source, 2);
    EXPECT_TRUE(copy(WHEN_NEWER));
    EXPECT_EQ("old", auttest::readFile(target));
    EXPECT_TRUE(copy(WHEN_DIFFERENT));
    EXPECT_EQ("new", auttest::readFile(target));
    expectQuiet();
}

TEST_F(RT_FileCopyTo, AnOlderReadOnlyTargetIsReplaced)
{
    for (const WHEN when : {WHEN_DIFFERENT, WHEN_NEWER})
    {
        writeOlderTarget();
        auttest::setReadOnly(target);
        EXPECT_TRUE(copy(when));
        EXPECT_EQ("new", auttest::readFile(target));
    }
    expectQuiet();
}

TEST_F(RT_FileCopyTo, OnlyConditionalCopiesAreFlushed)
{
    const ImportPatch patch("_commit", countedCommit);
    g_commits = 0;
    EXPECT_TRUE(copy(WHEN_ALWAYS));
    EXPECT_TRUE(copy(WHEN_ALWAYS));
    EXPECT_EQ(0, g_commits);
    ::DeleteFileA(target.c_str());
    EXPECT_TRUE(copy(WHEN_DIFFERENT)); // not there
    EXPECT_EQ(1, g_commits);
    writeOlderTarget();
    EXPECT_TRUE(copy(WHEN_NEWER)); // there
    EXPECT_EQ(2, g_commits);
}

TEST_F(RT_FileCopyTo, AnAttributeThatStaysIsAnErrorUnderAlwaysAndAWarningOtherwise)
{
    for (const WHEN when : kEveryWhen)
    {
        writeOlderTarget();
        auttest::setReadOnly(target);
        log.mark();
        auttest::spoilResult();
        {
            const ImportPatch patch("SetFileAttributesA", refusedAttributes);
            EXPECT_FALSE(copy(when));
        }
        EXPECT_EQ((Events{{when == WHEN_ALWAYS ? "Error" : "Warning",
                           "RT_File::CopyTo : Attribute modification of " + target + " - failed"}}),
                  log.events());
        EXPECT_EQ(record(460, 19, "Unable to set file attributes", target, "RT_File::RemoveReadOnlyAttribIfAny", ""),
                  recordedResult());
        EXPECT_EQ("old", auttest::readFile(target));
        ::SetFileAttributesA(target.c_str(), FILE_ATTRIBUTE_NORMAL);
    }
    expectNothingPending();
}

TEST_F(RT_FileCopyTo, ATargetInUseWaitsForTheNextStart)
{
    for (const WHEN when : kEveryWhen)
    {
        SCOPED_TRACE(when);
        writeOlderTarget();
        const PendingMoves fresh;
        bRebootNeeded = false;
        log.mark();
        const InUse held(target);
        EXPECT_TRUE(copy(when));
        EXPECT_TRUE(bRebootNeeded);
        EXPECT_EQ(PendingMoves::move(temporary, target), fresh.text());
        EXPECT_EQ("new", auttest::readFile(temporary));
        EXPECT_EQ("new", auttest::readFile(source));
        EXPECT_EQ(waiting(), log.events());
    }
    EXPECT_FALSE(wasRecorded());
}

TEST_F(RT_FileCopyTo, TheSourceIsNamedUnderAlwaysAndTheTargetOtherwiseWhenNothingHelps)
{
    const ImportPatch patch("MoveFileExA", refusedMove);
    for (const WHEN when : kEveryWhen)
    {
        writeOlderTarget();
        log.mark();
        auttest::spoilResult();
        const InUse held(target);
        EXPECT_FALSE(copy(when));
        EXPECT_EQ(
            (Events{{"Info", "MoveFileEx " + temporary + "->" + target},
                    {"Error", "RT_File::CopyTo : copy of " + (when == WHEN_ALWAYS ? source : target) + " - failed"}}),
            log.events());
        EXPECT_EQ(record(465, 19, "Error during file move", temporary, "RT_File::CopyFileAtNextReboot", target),
                  recordedResult());
        EXPECT_FALSE(auttest::fileExists(temporary));
    }
    expectNothingPending();
}

TEST_F(RT_FileCopyTo, ACopyToAnAbsentTargetThatFailsDoesNotWaitForTheNextStart)
{
    const InUse held(source);
    for (const WHEN when : {WHEN_DIFFERENT, WHEN_NEWER})
    {
        auttest::spoilResult();
        EXPECT_FALSE(copy(when));
        EXPECT_EQ(record(462, 0, "CopyTo", source, "RT_File::CopyFile", target), recordedResult());
    }
    EXPECT_EQ(Events{}, log.events());
    expectNothingPending();
    EXPECT_FALSE(auttest::fileExists(temporary));
}

TEST_F(RT_FileCopyTo, AnAbsentTargetWaitsForTheNextStartUnderAlways)
{
    auttest::writeFile(directory, "a file where the folder should be");
    EXPECT_TRUE(copy(WHEN_ALWAYS));
    EXPECT_EQ(PendingMoves::move(temporary, target), pending.text());
    EXPECT_EQ(waiting(), log.events());
}

TEST_F(RT_FileCopyTo, AFullDiskLeavesNoHalfCopyToBePutInPlace)
{
    writeOlderTarget();
    {
        const InUse held(target);
        const ImportPatch patch("CopyFileA", halfCopy);
        EXPECT_FALSE(copy(WHEN_NEWER));
    }
    EXPECT_EQ(record(462, 112, "Error during file copy", source, "RT_File::CopyFileAtNextReboot", temporary),
              recordedResult());
    EXPECT_EQ((Events{{"Error", "RT_File::CopyTo : copy of " + target + " - failed"}}), log.events());
    EXPECT_FALSE(auttest::fileExists(temporary));
    EXPECT_EQ("old", auttest::readFile(target));
    expectNothingPending();
}

TEST_F(RT_FileCopyTo, AFullDiskLeavesNoHalfTargetThatALaterCopyWouldTakeForTheNewerOne)
{
    for (const bool replaces : {false, true})
    {
        for (const WHEN when : kEveryWhen)
        {
            SCOPED_TRACE(when);
            folder.makeFolder("target");
            ::DeleteFileA(target.c_str());
            if (replaces)
                writeOlderTarget();
            {
                const ImportPatch patch("CopyFileA", halfCopy);
                EXPECT_FALSE(copy(when));
            }
            // Only what always replaces writes into the target itself.
            if (replaces && when != WHEN_ALWAYS)
                EXPECT_EQ("old", auttest::readFile(target));
            else
                EXPECT_FALSE(auttest::fileExists(target));
            EXPECT_FALSE(auttest::fileExists(temporary));
            EXPECT_TRUE(copy(WHEN_NEWER));
            EXPECT_EQ("new", auttest::readFile(target));
        }
    }
    expectNothingPending();
}

TEST_F(RT_FileCopyTo, AFullDiskLeavesTheCopyOfAnEarlierReplacementWhole)
{
    writeOlderTarget();
    const InUse held(target);
    EXPECT_TRUE(copy(WHEN_ALWAYS));
    EXPECT_EQ("new", auttest::readFile(temporary));
    const ImportPatch patch("CopyFileA", halfCopy);
    EXPECT_FALSE(copy(WHEN_ALWAYS));
    EXPECT_EQ("new", auttest::readFile(temporary)) << "it is still going to be put in place";
}

TEST_F(RT_FileCopyTo, AProcessThatDiesInAConditionalCopyHasNotTouchedTheTarget)
{
    for (const WHEN when : {WHEN_DIFFERENT, WHEN_NEWER})
    {
        writeOlderTarget();
        {
            const ImportPatch patch("CopyFileA", halfCopyWatched);
            g_watched = target;
            copy(when);
        }
        EXPECT_EQ("old", g_seen) << "in the middle of the copy";
        EXPECT_TRUE(copy(when));
        EXPECT_EQ("new", auttest::readFile(target));
    }
}

TEST_F(RT_FileCopyTo, AProcessThatDiesInACopyThatWaitsHasNotTouchedTheEarlierOne)
{
    writeOlderTarget();
    const InUse held(target);
    EXPECT_TRUE(copy(WHEN_ALWAYS));
    auttest::writeFile(source, "newest");
    {
        const ImportPatch patch("CopyFileA", halfCopyWatched);
        g_watched = temporary;
        EXPECT_FALSE(copy(WHEN_ALWAYS));
    }
    EXPECT_EQ("new", g_seen) << "in the middle of the copy";
    EXPECT_TRUE(copy(WHEN_ALWAYS));
    EXPECT_EQ("newest", auttest::readFile(temporary));
}

TEST_F(RT_FileCopyTo, ATargetThatAReaderKeepsFromBeingReplacedIsWrittenTo)
{
    writeOlderTarget();
    const InUse held(target, FILE_SHARE_READ | FILE_SHARE_WRITE);
    EXPECT_TRUE(copy(WHEN_NEWER));
    EXPECT_EQ("new", auttest::readFile(target));
    expectNothingPending();
}

TEST_F(RT_FileCopyTo, ASourceInUseLeavesTheCopyOfAnEarlierReplacementAlone)
{
    writeOlderTarget();
    const InUse held(target);
    EXPECT_TRUE(copy(WHEN_ALWAYS));
    const InUse heldToo(source);
    auttest::spoilResult();
    EXPECT_FALSE(copy(WHEN_ALWAYS));
    EXPECT_EQ(record(462, 32, "Error during file copy", source, "RT_File::CopyFileAtNextReboot", temporary),
              recordedResult());
    EXPECT_EQ("new", auttest::readFile(temporary));
}

TEST_F(RT_FileCopyTo, TwoThatDifferInTheExtensionOnlyDeliberatelyShareTheCopyThatWaits)
{
    const std::string other = folder.writeFile("source\\a_replaced.dll", "the library");
    const std::string otherTarget = folder.writeFile("target\\a_replaced.dll", "old");
    writeTarget();
    const InUse held(target);
    const InUse heldToo(otherTarget);
    EXPECT_TRUE(copy(WHEN_ALWAYS));
    EXPECT_TRUE(RT_File(other.c_str()).CopyTo(directory.c_str(), WHEN_ALWAYS));
    EXPECT_EQ("the library", auttest::readFile(temporary));
    EXPECT_EQ(PendingMoves::move(temporary, target) + PendingMoves::move(temporary, otherTarget), pending.text());
}

TEST_F(RT_FileCopyTo, OntoItselfTheFileStaysWhole)
{
    for (const WHEN when : kEveryWhen)
    {
        EXPECT_TRUE(RT_File(source.c_str()).CopyTo((folder / "source").c_str(), when));
        EXPECT_EQ("new", auttest::readFile(source));
    }
}

TEST_F(RT_FileCopyTo, AReadOnlySourceCannotBeFlushedWhichIsLogged)
{
    auttest::setReadOnly(source);
    EXPECT_TRUE(copy(WHEN_DIFFERENT));
    EXPECT_EQ("new", auttest::readFile(target));
    EXPECT_EQ((Events{{"Warning", "RT_File::FlushFile : open failed (" + target + ")"}}), log.events());
}

TEST_F(RT_FileCopyTo, NamesAreTakenAsTheyAre)
{
    for (const char* name : {"b\xE4r \xDF.txt", "100%s %d.txt", "a & b (1).txt", ".hidden", "no extension"})
    {
        SCOPED_TRACE(name);
        const std::string file = folder.writeFile(std::string("source\\") + name, name);
        EXPECT_TRUE(RT_File(file.c_str()).CopyTo(directory.c_str(), WHEN_NEWER));
        EXPECT_EQ(name, auttest::readFile(directory + "\\" + name));
    }
    expectQuiet();
}

TEST_F(RT_FileCopyTo, ANameOutsideTheCodePageIsReachedByItsShortForm)
{
    const std::string sourceFolder = folder / "source";
    const std::wstring path = std::wstring(sourceFolder.begin(), sourceFolder.end()) + L"\\\x4E2D\x6587 name.txt";
    aut::UniqueFile(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr)).reset();
    wchar_t shortForm[MAX_PATH] = L"";
    ASSERT_NE(0u, ::GetShortPathNameW(path.c_str(), shortForm, MAX_PATH));
    const std::string name = std::string(shortForm, shortForm + std::wcslen(shortForm));
    EXPECT_TRUE(RT_File(name.c_str()).CopyTo(directory.c_str(), WHEN_NEWER));
    EXPECT_TRUE(auttest::fileExists(directory + name.substr(name.rfind('\\'))));
    EXPECT_TRUE(RT_File(name.c_str()).Remove(OVERWRITE_NOW_ONLY));
    EXPECT_EQ(INVALID_FILE_ATTRIBUTES, ::GetFileAttributesW(path.c_str()));
}

TEST_F(RT_FileCopyTo, PathsLongerThanTheSystemTakesFailAsMissingOrRefused)
{
    const std::string longName(300, 'x');
    EXPECT_FALSE(RT_File(("C:\\" + longName).c_str()).CopyTo(directory.c_str(), WHEN_ALWAYS));
    EXPECT_EQ(record(463, 0, "Source File does not exist", "C:\\" + longName.substr(0, 256), "RT_File::CopyTo", ""),
              recordedResult());

    const std::string longDirectory = "C:\\" + longName;
    auttest::spoilResult();
    EXPECT_FALSE(RT_File(source.c_str()).CopyTo(longDirectory.c_str(), WHEN_NEWER));
    EXPECT_EQ(record(462, 0, "CopyTo", source, "RT_File::CopyFile", longDirectory.substr(0, 259)), recordedResult());
    EXPECT_FALSE(RT_File(source.c_str()).CopyTo(std::string(10000, 'y').c_str(), WHEN_NEWER));
    expectNothingPending();
}

TEST_F(RT_FileCopyTo, ASourceOnAShareThatIsNotThereIsMissing)
{
    EXPECT_FALSE(RT_File("\\\\no-such-server\\share\\f.txt").CopyTo(directory.c_str(), WHEN_ALWAYS));
    EXPECT_EQ(record(463, 0, "Source File does not exist", "\\\\no-such-server\\share\\f.txt", "RT_File::CopyTo", ""),
              recordedResult());
}

TEST_F(RT_FileCopyTo, AShareCannotHoldTheCopyThatWaits)
{
    // The first two characters of the target are no drive there, so that the temporary name leads nowhere.
    EXPECT_FALSE(RT_File(source.c_str()).CopyTo("\\\\no-such-server\\share", WHEN_ALWAYS));
    const std::string expected = recordedResult();
    EXPECT_EQ(0u, expected.find("0,462,"));
    EXPECT_NE(std::string::npos, expected.find(",7,Error during file copy," + source +
                                               ",RT_File::CopyFileAtNextReboot,\\\\\\a_replaced_0.tmp,"));
    EXPECT_TRUE(log.has("Error", "RT_File::CopyTo : copy of " + source + " - failed"));
    expectNothingPending();
}

TEST_F(RT_FileCopyTo, WithoutADirectoryNothingIsCopiedOrMoved)
{
    RT_File file(source.c_str());
    EXPECT_FALSE(file.CopyTo(nullptr, WHEN_ALWAYS));
    EXPECT_FALSE(file.MoveTo(nullptr, OVERWRITE_AT_REBOOT));
    EXPECT_TRUE(auttest::fileExists(source));
    expectQuiet();
}

TEST_F(RT_FileMoveTo, AMissingSourceIsRecorded)
{
    ::DeleteFileA(source.c_str());
    writeTarget();
    EXPECT_FALSE(move(OVERWRITE_AT_REBOOT));
    EXPECT_EQ(record(463, 0, "Source File does not exist", source, "RT_File::MoveTo", ""), recordedResult());
    EXPECT_EQ("old", auttest::readFile(target));
    EXPECT_EQ(Events{}, log.events());
    expectNothingPending();
}

TEST_F(RT_FileMoveTo, MovesToWhereNothingIsAndFlushes)
{
    const ImportPatch patch("_commit", countedCommit);
    g_commits = 0;
    EXPECT_TRUE(move(OVERWRITE_NOW_ONLY));
    EXPECT_EQ(1, g_commits);
    EXPECT_EQ("new", auttest::readFile(target));
    EXPECT_FALSE(auttest::fileExists(source));
    expectQuiet();
}

TEST_F(RT_FileMoveTo, AMoveToWhereNothingIsThatFailsIsRecorded)
{
    ::RemoveDirectoryA(directory.c_str());
    EXPECT_FALSE(move(OVERWRITE_AT_REBOOT));
    EXPECT_EQ(record(465, 3, "Unable to move file", source, "RT_File::MoveTo", target), recordedResult());
    EXPECT_EQ("new", auttest::readFile(source));
    EXPECT_EQ(Events{}, log.events());
    expectNothingPending();
}

TEST_F(RT_FileMoveTo, ReplacesATargetThatIsFreeWithoutFlushing)
{
    const ImportPatch patch("_commit", countedCommit);
    g_commits = 0;
    writeTarget();
    EXPECT_TRUE(move(OVERWRITE_NOW_ONLY));
    EXPECT_EQ(0, g_commits);
    EXPECT_EQ("new", auttest::readFile(target));
    EXPECT_FALSE(auttest::fileExists(source));
    expectQuiet();
}

TEST_F(RT_FileMoveTo, ClearsTheAttributeOfAReadOnlyTargetAndReplacesIt)
{
    writeTarget();
    auttest::setReadOnly(target);
    EXPECT_TRUE(move(OVERWRITE_NOW_ONLY));
    EXPECT_EQ("new", auttest::readFile(target));
    expectQuiet();
}

TEST_F(RT_FileMoveTo, AnAttributeThatStaysEndsTheMoveWithItsOwnRecordOnly)
{
    writeTarget();
    auttest::setReadOnly(target);
    {
        const ImportPatch patch("SetFileAttributesA", refusedAttributes);
        EXPECT_FALSE(move(OVERWRITE_AT_REBOOT));
    }
    EXPECT_EQ(record(460, 19, "Unable to set file attributes", target, "RT_File::RemoveReadOnlyAttribIfAny", ""),
              recordedResult());
    EXPECT_EQ(Events{}, log.events());
    expectNothingPending();
    ::SetFileAttributesA(target.c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(RT_FileMoveTo, AReplacingMoveThatFailsIsRecorded)
{
    writeTarget();
    const InUse held(source);
    EXPECT_FALSE(move(OVERWRITE_AT_REBOOT));
    EXPECT_EQ(record(465, 32, "MoveFileEx", source, "RT_File::MoveTo", target), recordedResult());
    EXPECT_EQ("old", auttest::readFile(target));
    EXPECT_EQ(Events{}, log.events());
    expectNothingPending();
}

TEST_F(RT_FileMoveTo, MayCrossVolumesWhenItReplaces)
{
    writeTarget();
    const ImportPatch patch("MoveFileExA", refusedMove);
    EXPECT_FALSE(move(OVERWRITE_NOW_ONLY));
    EXPECT_EQ(static_cast<DWORD>(MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED), g_moveFlags);
    EXPECT_EQ(target, g_moveTarget);
}

TEST_F(RT_FileMoveTo, ATargetInUseIsRecordedUnlessItMayWait)
{
    writeTarget();
    const InUse held(target);
    for (const int flag : {0, 2, -1})
    {
        auttest::spoilResult();
        EXPECT_FALSE(move(static_cast<OVERWRITEFLAG>(flag)));
        EXPECT_EQ(record(465, 32, "MoveFileEx (2)", source, "RT_File::MoveTo", target), recordedResult());
    }
    EXPECT_EQ(Events{}, log.events());
    expectNothingPending();
}

TEST_F(RT_FileMoveTo, ATargetInUseWaitsForTheNextStart)
{
    writeTarget();
    const InUse held(target);
    EXPECT_TRUE(move(OVERWRITE_AT_REBOOT));
    EXPECT_TRUE(bRebootNeeded);
    EXPECT_FALSE(wasRecorded());
    EXPECT_EQ(PendingMoves::move(source, target), pending.text());
    EXPECT_EQ((Events{{"Info", "MoveFileEx " + source + "->" + target}, {"Warning", "Reboot Needed: " + target}}),
              log.events());
    EXPECT_EQ("new", auttest::readFile(source));
}

TEST_F(RT_FileMoveTo, ADelayedMoveThatIsRefusedIsRecorded)
{
    writeTarget();
    const InUse held(target);
    const ImportPatch patch("MoveFileExA", refusedMove);
    EXPECT_FALSE(move(OVERWRITE_AT_REBOOT));
    EXPECT_EQ(record(465, 19, "Unable to move file", source, "RT_File::OverWriteFileAtNextReboot", target),
              recordedResult());
    EXPECT_EQ((Events{{"Info", "MoveFileEx " + source + "->" + target}}), log.events());
    expectNothingPending();
}

TEST_F(RT_FileMoveTo, OntoItselfTheFileStaysWhole)
{
    EXPECT_TRUE(RT_File(source.c_str()).MoveTo((folder / "source").c_str(), OVERWRITE_AT_REBOOT));
    EXPECT_EQ("new", auttest::readFile(source));
}

TEST_F(RT_FileMoveTo, AShareThatIsNotThereIsRecorded)
{
    EXPECT_FALSE(RT_File(source.c_str()).MoveTo("\\\\no-such-server\\share", OVERWRITE_AT_REBOOT));
    EXPECT_NE(std::string::npos, recordedResult().find(",7,Unable to move file," + source +
                                                       ",RT_File::MoveTo,\\\\no-such-server\\share\\a_replaced.txt,"));
    EXPECT_EQ("new", auttest::readFile(source));
}

TEST_F(RT_FileRemove, AMissingFileIsGoneAlreadyAndRecordsNothing)
{
    for (const OVERWRITEFLAG flag : {OVERWRITE_NOW_ONLY, OVERWRITE_AT_REBOOT})
        EXPECT_TRUE(RT_File((folder / "missing.txt").c_str()).Remove(flag));
    expectQuiet();
}

TEST_F(RT_FileRemove, DeletesAFileReadOnlyOrNot)
{
    EXPECT_TRUE(RT_File(source.c_str()).Remove(OVERWRITE_NOW_ONLY));
    EXPECT_FALSE(auttest::fileExists(source));
    auttest::writeFile(source, "again");
    auttest::setReadOnly(source);
    EXPECT_TRUE(RT_File(source.c_str()).Remove(OVERWRITE_AT_REBOOT));
    EXPECT_FALSE(auttest::fileExists(source));
    expectQuiet();
}

TEST_F(RT_FileRemove, ASecondDeletionThatFailsIsRecorded)
{
    const ImportPatch patch("DeleteFileA", refusedDeletion);
    EXPECT_FALSE(RT_File(source.c_str()).Remove(OVERWRITE_AT_REBOOT));
    EXPECT_EQ(record(466, 19, "Unable to remove file", source, "RT_File::Remove", ""), recordedResult());
    EXPECT_EQ(Events{}, log.events());
    expectNothingPending();
}

TEST_F(RT_FileRemove, AFileInUseThatMustGoNowStaysWithARecordAndSuccess)
{
    const InUse held(source);
    for (const int flag : {0, 2, -1})
    {
        auttest::spoilResult();
        EXPECT_TRUE(RT_File(source.c_str()).Remove(static_cast<OVERWRITEFLAG>(flag)));
        EXPECT_EQ(record(466, 32, "Unable to remove file (2)", source, "RT_File::Remove", ""), recordedResult());
    }
    EXPECT_TRUE(auttest::fileExists(source));
    EXPECT_EQ(Events{}, log.events());
    expectNothingPending();
}

TEST_F(RT_FileRemove, AFileInUseMayGoAtTheNextStart)
{
    const InUse held(source);
    EXPECT_TRUE(RT_File(source.c_str()).Remove(OVERWRITE_AT_REBOOT));
    EXPECT_TRUE(bRebootNeeded);
    EXPECT_FALSE(wasRecorded());
    EXPECT_EQ(PendingMoves::deletion(source), pending.text());
    EXPECT_EQ((Events{{"Info", "MoveFileEx " + source + "->NULL"}, {"Warning", "Reboot Needed: " + source}}),
              log.events());
    EXPECT_TRUE(auttest::fileExists(source));
}

TEST_F(RT_FileRemove, ADelayedDeletionThatIsRefusedIsRecorded)
{
    const InUse held(source);
    const ImportPatch patch("MoveFileExA", refusedMove);
    EXPECT_FALSE(RT_File(source.c_str()).Remove(OVERWRITE_AT_REBOOT));
    EXPECT_EQ(record(465, 19, "Unable to move file", source, "RT_File::OverWriteFileAtNextReboot", source),
              recordedResult());
    expectNothingPending();
}

TEST_F(RT_FileRemove, NoHandleStaysOpenOverAThousandRounds)
{
    folder.makeFolder("target");
    const auto round = [this]
    {
        EXPECT_TRUE(copy(WHEN_DIFFERENT));
        EXPECT_TRUE(RT_File(source.c_str()).MoveTo(directory.c_str(), OVERWRITE_NOW_ONLY));
        EXPECT_TRUE(RT_File(target.c_str()).CopyTo((folder / "source").c_str(), WHEN_ALWAYS));
        EXPECT_TRUE(RT_File(target.c_str()).Remove(OVERWRITE_NOW_ONLY));
    };
    const auto refusedRound = [this]
    {
        const InUse held(source);
        EXPECT_FALSE(copy(WHEN_NEWER));
        EXPECT_TRUE(RT_File(source.c_str()).Remove(OVERWRITE_NOW_ONLY));
    };
    round();
    refusedRound();
    const std::size_t before = auttest::openHandles();
    for (int i = 0; i < 1000; ++i)
    {
        round();
        refusedRound();
    }
    EXPECT_EQ(before, auttest::openHandles());
}

TEST_F(RT_FileCopyTo, WithoutMemoryNothingElseIsReplaced)
{
    folder.makeFolder("target");
    bool met = true;
    for (int number = 1; met; ++number)
    {
        ::DeleteFileA(target.c_str());
        RT_File file(source.c_str());
        bool done = false;
        {
            const auttest::NoMemoryOnce once(number);
            done = file.CopyTo(directory.c_str(), WHEN_ALWAYS);
            met = once.wasMet();
        }
        EXPECT_EQ(done, auttest::fileExists(target)) << "at request " << number;
        EXPECT_FALSE(auttest::fileExists(directory + "a_replaced.txt")) << "at request " << number;
        EXPECT_EQ("", pending.text()) << "at request " << number;
        EXPECT_TRUE(met || done);
    }
}

TEST_F(RT_FileMoveTo, WithoutMemoryNothingElseWaitsForTheNextStart)
{
    writeTarget();
    const InUse held(target, FILE_SHARE_READ);
    bool met = true;
    for (int number = 1; met; ++number)
    {
        const PendingMoves moves;
        RT_File file(source.c_str());
        bool done = false;
        {
            const auttest::NoMemoryOnce once(number);
            done = file.MoveTo(directory.c_str(), OVERWRITE_AT_REBOOT);
            met = once.wasMet();
        }
        EXPECT_EQ(done ? PendingMoves::move(source, target) : "", moves.text()) << "at request " << number;
        EXPECT_TRUE(auttest::fileExists(source)) << "at request " << number;
        EXPECT_FALSE(auttest::fileExists(directory + "a_replaced.txt")) << "at request " << number;
        EXPECT_TRUE(met || done);
    }
}

TEST_F(RT_FileRemove, WithoutMemoryTheFolderDoesNotWaitToBeDeleted)
{
    const InUse held(source, FILE_SHARE_READ);
    bool met = true;
    for (int number = 1; met; ++number)
    {
        const PendingMoves moves;
        {
            const auttest::NoMemoryOnce once(number);
            RT_File((folder / "source").c_str(), "a_replaced.txt").Remove(OVERWRITE_AT_REBOOT);
            met = once.wasMet();
        }
        const std::string waiting = moves.text();
        EXPECT_TRUE(waiting == PendingMoves::deletion(source) || waiting.empty())
            << waiting << " at request " << number;
        EXPECT_TRUE(met || !waiting.empty());
    }
}
} // namespace
