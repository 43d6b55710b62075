// The NT family's side, which is what this process sees, and the temporary name.

#include "tests/fileops/ReplacementTest.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/OpenHandles.h"

using auttest::Events;
using auttest::FileProbe;
using auttest::ImportPatch;
using auttest::PendingMoves;
using auttest::recordedResult;
using auttest::wasRecorded;

namespace
{
struct DelayedMove
{
    std::string source;
    std::string target;
    DWORD flags = 0;
};
DelayedMove g_delayed;
BOOL WINAPI refusedMove(const char* source, const char* target, DWORD flags)
{
    g_delayed = {source, target != nullptr ? target : "(null)", flags};
    ::SetLastError(ERROR_WRITE_PROTECT);
    return FALSE;
}

class RebootReplacement : public auttest::ReplacementTest
{
protected:
    FileProbe file{source.c_str()};
};

TEST_F(RebootReplacement, AReplacementIsADelayedMove)
{
    EXPECT_TRUE(file.OverWriteFileAtNextReboot("C:\\some\\target.txt", OVERWRITE_REPLACE));
    EXPECT_TRUE(bRebootNeeded);
    EXPECT_FALSE(wasRecorded());
    EXPECT_EQ(PendingMoves::move(source, "C:\\some\\target.txt"), pending.text());
    EXPECT_EQ((Events{{"Info", "MoveFileEx " + source + "->C:\\some\\target.txt"},
                      {"Warning", "Reboot Needed: C:\\some\\target.txt"}}),
              log.events());
}

TEST_F(RebootReplacement, ADeletionIsADelayedMoveToNothing)
{
    EXPECT_TRUE(file.OverWriteFileAtNextReboot("C:\\some\\target.txt", OVERWRITE_DELETE));
    EXPECT_TRUE(bRebootNeeded);
    EXPECT_EQ(PendingMoves::deletion(source), pending.text());
    EXPECT_EQ((Events{{"Info", "MoveFileEx " + source + "->NULL"}, {"Warning", "Reboot Needed: C:\\some\\target.txt"}}),
              log.events());
}

TEST_F(RebootReplacement, AnyOtherModeOnlySaysThatARestartIsNeeded)
{
    for (const int mode : {2, -1})
    {
        bRebootNeeded = false;
        log.mark();
        EXPECT_TRUE(file.OverWriteFileAtNextReboot("C:\\t.txt", static_cast<OVERWRITE>(mode)));
        EXPECT_TRUE(bRebootNeeded);
        EXPECT_EQ("", pending.text());
        EXPECT_EQ((Events{{"Warning", "Reboot Needed: C:\\t.txt"}}), log.events());
    }
}

TEST_F(RebootReplacement, TheMoveIsWrittenAtDetailLevel4)
{
    const auttest::DetailedLog lower(3);
    log.mark();
    EXPECT_TRUE(file.OverWriteFileAtNextReboot("C:\\t.txt", OVERWRITE_REPLACE));
    EXPECT_EQ((Events{{"Warning", "Reboot Needed: C:\\t.txt"}}), log.events());
    const auttest::DetailedLog level(4);
    log.mark();
    EXPECT_TRUE(file.OverWriteFileAtNextReboot("C:\\t.txt", OVERWRITE_DELETE));
    EXPECT_TRUE(log.has("Info", "MoveFileEx " + source + "->NULL"));
}

TEST_F(RebootReplacement, ARefusedMoveOrDeletionIsRecordedWithTheSameFlags)
{
    const ImportPatch patch("MoveFileExA", refusedMove);
    for (const OVERWRITE mode : {OVERWRITE_REPLACE, OVERWRITE_DELETE})
    {
        auttest::spoilResult();
        EXPECT_FALSE(file.OverWriteFileAtNextReboot("C:\\t.txt", mode));
        EXPECT_EQ(record(465, 19, "Unable to move file", source, "RT_File::OverWriteFileAtNextReboot", "C:\\t.txt"),
                  recordedResult());
        EXPECT_EQ(source, g_delayed.source);
        EXPECT_EQ(mode == OVERWRITE_REPLACE ? "C:\\t.txt" : "(null)", g_delayed.target);
        EXPECT_EQ(static_cast<DWORD>(MOVEFILE_REPLACE_EXISTING | MOVEFILE_DELAY_UNTIL_REBOOT), g_delayed.flags);
    }
    EXPECT_FALSE(log.has("Warning", "Reboot Needed: C:\\t.txt"));
    expectNothingPending();
}

TEST_F(RebootReplacement, ACopyWaitsUnderItsTemporaryNameOnTheTargetsVolume)
{
    EXPECT_TRUE(file.CopyFileAtNextReboot(target.c_str()));
    EXPECT_TRUE(bRebootNeeded);
    EXPECT_FALSE(wasRecorded());
    EXPECT_EQ("new", auttest::readFile(temporary));
    EXPECT_EQ("new", auttest::readFile(source));
    EXPECT_EQ(PendingMoves::move(temporary, target), pending.text());
    EXPECT_EQ((Events{{"Info", "MoveFileEx " + temporary + "->" + target}, {"Warning", "Reboot Needed: " + target}}),
              log.events());
}

TEST_F(RebootReplacement, WithoutATargetThereIsNoTemporaryName)
{
    for (const char* none : {"", static_cast<const char*>(nullptr)})
    {
        auttest::spoilResult();
        ::SetLastError(1234);
        EXPECT_FALSE(file.CopyFileAtNextReboot(none));
        EXPECT_EQ(0u, recordedResult().find("0,462,"));
        EXPECT_NE(std::string::npos, recordedResult().find(",7,Error during temporary file copy," + source +
                                                           ",RT_File::CopyFileAtNextReboot,,"));
    }
    EXPECT_EQ(Events{}, log.events());
    expectNothingPending();
}

TEST_F(RebootReplacement, ACopyThatFailsIsRecordedWithTheTemporaryName)
{
    ::DeleteFileA(source.c_str());
    EXPECT_FALSE(file.CopyFileAtNextReboot(target.c_str()));
    EXPECT_EQ(record(462, 2, "Error during file copy", source, "RT_File::CopyFileAtNextReboot", temporary),
              recordedResult());
    expectNothingPending();
}

TEST_F(RebootReplacement, ARefusedMoveOfTheCopyDeletesIt)
{
    const ImportPatch patch("MoveFileExA", refusedMove);
    EXPECT_FALSE(file.CopyFileAtNextReboot(target.c_str()));
    EXPECT_EQ(record(465, 19, "Error during file move", temporary, "RT_File::CopyFileAtNextReboot", target),
              recordedResult());
    EXPECT_EQ(static_cast<DWORD>(MOVEFILE_REPLACE_EXISTING | MOVEFILE_DELAY_UNTIL_REBOOT), g_delayed.flags);
    EXPECT_EQ((Events{{"Info", "MoveFileEx " + temporary + "->" + target}}), log.events());
    EXPECT_FALSE(auttest::fileExists(temporary));
    expectNothingPending();
}

TEST_F(RebootReplacement, TheTemporaryNameIsMadeOfTheDriveAndTheNameWithoutItsLastExtension)
{
    struct Row
    {
        const char* name;
        const char* given;
        const char* expected;
    };
    for (const Row& row : {
             Row{"a.b.dll", "D:\\App\\other.dll", "D:\\a.b_0.tmp"},
             Row{"plain", "C:\\x", "C:\\plain_0.tmp"},
             Row{".hidden", "C:\\x", "C:\\_0.tmp"},
             Row{"100%s.dll", "C:\\x", "C:\\100%s_0.tmp"},
             Row{"a.dll", "\\\\server\\share\\a.dll", "\\\\\\a_0.tmp"},
             Row{"a.dll", "relative\\a.dll", "re\\a_0.tmp"},
             Row{"a.dll", "x", "x\\a_0.tmp"},
         })
    {
        String path(row.given);
        EXPECT_TRUE(FileProbe("C:\\source", row.name).GetTemporaryFilePath(path));
        EXPECT_STREQ(row.expected, path);
    }
}

TEST_F(RebootReplacement, AFileOfTheTemporaryNameDoesNotCount)
{
    auttest::writeFile(temporary, "somebody's");
    String path("C:\\x");
    EXPECT_TRUE(file.GetTemporaryFilePath(path));
    EXPECT_STREQ("C:\\a_replaced_0.tmp", path);
}

TEST_F(RebootReplacement, AFolderOfTheTemporaryNameWithThisFileInItDoes)
{
    for (int n = 0; n < 10; ++n)
    {
        String path("C:\\x");
        EXPECT_TRUE(file.GetTemporaryFilePath(path));
        const std::string expected = "C:\\a_replaced_" + std::to_string(n) + ".tmp";
        EXPECT_EQ(expected, static_cast<const char*>(path));
        ASSERT_TRUE(::CreateDirectoryA(expected.c_str(), nullptr));
        auttest::writeFile(expected + "\\a_replaced.txt", "");
    }
    String path("C:\\x");
    EXPECT_FALSE(file.GetTemporaryFilePath(path));
    EXPECT_STREQ("C:\\x", path);
    EXPECT_FALSE(file.CopyFileAtNextReboot("C:\\x"));
    EXPECT_NE(std::string::npos, recordedResult().find(",7,Error during temporary file copy," + source +
                                                       ",RT_File::CopyFileAtNextReboot,C:\\x,"));
    for (int n = 0; n < 10; ++n)
        auttest::removeAll("C:\\a_replaced_" + std::to_string(n) + ".tmp");
}

TEST_F(RebootReplacement, TheTemporaryNameNeedsAText)
{
    String path;
    EXPECT_FALSE(file.GetTemporaryFilePath(path));
    EXPECT_TRUE(path.IsEmpty());
}

TEST_F(RebootReplacement, TheFlagIsNeverTakenBack)
{
    bRebootNeeded = true;
    const ImportPatch patch("MoveFileExA", refusedMove);
    EXPECT_FALSE(file.OverWriteFileAtNextReboot("C:\\t.txt", OVERWRITE_REPLACE));
    EXPECT_FALSE(file.CopyFileAtNextReboot(""));
    EXPECT_TRUE(bRebootNeeded);
}

TEST_F(RebootReplacement, NoHandleStaysOpenOverAThousandRounds)
{
    const auttest::DetailedLog quiet(0);
    const ImportPatch patch("MoveFileExA", refusedMove); // or the list of moves would grow with every round
    const auto round = [this]
    {
        EXPECT_FALSE(file.CopyFileAtNextReboot(target.c_str()));
        EXPECT_FALSE(file.OverWriteFileAtNextReboot(target.c_str(), OVERWRITE_DELETE));
    };
    round();
    const std::size_t before = auttest::openHandles();
    for (int i = 0; i < 1000; ++i)
        round();
    EXPECT_EQ(before, auttest::openHandles());
}
} // namespace
