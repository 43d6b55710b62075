#include "fileops/RT_File.h"
#include "foundation/RT_RESULT.h"
#include "platform/UniqueResource.h"
#include "tests/fileops/FileProbe.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogFile.h"
#include "tests/support/OpenHandles.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <winioctl.h>

#include <vector>

using auttest::FileProbe;

namespace
{
constexpr unsigned int kRead = 0x20; // read, others may read
constexpr unsigned int kCreate = 0x1001;
constexpr unsigned int kUpdate = 0x3002; // read and write, open or create

bool canOpen(const std::string& path, DWORD access)
{
    const aut::UniqueFile file(::CreateFileA(path.c_str(), access,
                                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                             OPEN_EXISTING, 0, nullptr));
    return static_cast<bool>(file);
}

// ---- Open, row by row of its flag word

struct AccessRow
{
    unsigned int flags;
    bool mayRead;
    bool mayWrite;
};

TEST(RT_FileOpen, BitsZeroAndOneGiveTheAccess)
{
    const auttest::TestFolder folder;
    const std::string path = folder.writeFile("a.txt", "text");
    for (const AccessRow& row : {AccessRow{0, true, false}, AccessRow{1, false, true}, AccessRow{2, true, true}})
    {
        RT_File file(path.c_str());
        ASSERT_NE(0, file.Open(row.flags)) << row.flags;
        char byte = 't';
        EXPECT_EQ(row.mayRead ? 1u : 0u, file.Read(&byte, 1)) << row.flags;
        EXPECT_EQ(row.mayWrite, file.Write(&byte, 1)) << row.flags;
    }
}

struct SharingRow
{
    unsigned int flags;
    bool othersMayRead;
    bool othersMayWrite;
};

TEST(RT_FileOpen, BitsFourToSixGiveWhatOthersMay)
{
    const auttest::TestFolder folder;
    const std::string path = folder.writeFile("a.txt", "text");
    for (const SharingRow& row :
         {SharingRow{0x00, false, false}, SharingRow{0x10, false, false}, SharingRow{0x20, true, false},
          SharingRow{0x30, false, true}, SharingRow{0x40, true, true}})
    {
        RT_File file(path.c_str());
        ASSERT_NE(0, file.Open(row.flags)) << row.flags;
        EXPECT_EQ(row.othersMayRead, canOpen(path, GENERIC_READ)) << row.flags;
        EXPECT_EQ(row.othersMayWrite, canOpen(path, GENERIC_WRITE)) << row.flags;
    }
}

struct CreationRow
{
    unsigned int flags;
    bool opensMissing;
    const char* existingBecomes;
};

TEST(RT_FileOpen, Bits0x1000And0x2000GiveTheCreation)
{
    for (const CreationRow& row : {CreationRow{0x0001, false, "text"}, CreationRow{0x1001, true, ""},
                                   CreationRow{0x2001, false, "text"}, CreationRow{0x3001, true, "text"}})
    {
        const auttest::TestFolder folder;
        const std::string path = folder.writeFile("a.txt", "text");
        EXPECT_NE(0, RT_File(path.c_str()).Open(row.flags)) << row.flags;
        EXPECT_EQ(row.existingBecomes, folder.readFile("a.txt")) << row.flags;
        RT_File missing((folder / "missing.txt").c_str());
        EXPECT_EQ(row.opensMissing, missing.Open(row.flags) != 0) << row.flags;
        EXPECT_EQ(row.opensMissing, folder.exists("missing.txt")) << row.flags;
    }
}

TEST(RT_FileOpen, InvalidAccessOrSharingOpensAndCreatesNothing)
{
    const auttest::TestFolder folder;
    folder.writeFile("a.txt", "text");
    for (const unsigned int flags : {0x0003u, 0x0023u, 0x1003u, 0x0050u, 0x0060u, 0x0070u, 0x1051u, 0x3062u})
    {
        FileProbe file((folder / "a.txt").c_str());
        EXPECT_EQ(0, file.Open(flags)) << flags;
        EXPECT_EQ(INVALID_HANDLE_VALUE, file.GetFileHandle());
        ASSERT_NE(0, file.Open(kRead));
        EXPECT_EQ(0, file.Open(flags)) << flags;
        EXPECT_EQ(nullptr, file.GetFileHandle()); // closed before the flags were looked at
        RT_File elsewhere((folder / "new folder\\a.txt").c_str());
        EXPECT_EQ(0, elsewhere.Open(flags)) << flags;
        EXPECT_FALSE(folder.exists("new folder"));
        EXPECT_EQ("text", folder.readFile("a.txt"));
    }
}

struct FolderRow
{
    unsigned int flags;
    bool createsFolder;
};

TEST(RT_FileOpen, WritingCreatingAndSharingForWritingCreateTheFolder)
{
    for (const FolderRow& row :
         {FolderRow{0x0000, false}, FolderRow{0x0001, true}, FolderRow{0x0002, true}, FolderRow{0x0010, false},
          FolderRow{0x0020, false}, FolderRow{0x0030, true}, FolderRow{0x0040, true}, FolderRow{0x1000, true},
          FolderRow{0x2000, false}, FolderRow{0x3000, false}, FolderRow{0x0080, false}, FolderRow{0x8000, false}})
    {
        const auttest::TestFolder folder;
        RT_File file((folder / "a\\b\\c.txt").c_str());
        EXPECT_EQ((row.flags & 0x3000) == 0x1000, file.Open(row.flags) != 0) << row.flags;
        EXPECT_EQ(row.createsFolder, folder.exists("a\\b")) << row.flags;
    }
}

TEST(RT_FileOpen, Bit15AndUnknownBitsAreIgnored)
{
    const auttest::TestFolder folder;
    const std::string path = folder.writeFile("a.txt", "text");
    for (const unsigned int flags : {0x8020u, 0xFFFF0F2Cu & ~0x80u, 0x4020u})
    {
        RT_File file(path.c_str());
        ASSERT_NE(0, file.Open(flags)) << flags;
        char byte = 0;
        EXPECT_EQ(1u, file.Read(&byte, 1));
        EXPECT_TRUE(canOpen(path, GENERIC_READ));
        EXPECT_FALSE(canOpen(path, GENERIC_WRITE));
    }
}

TEST(RT_FileOpen, TheHandleIsInheritableUnlessBit7IsSet)
{
    const auttest::TestFolder folder;
    RT_File file(folder.writeFile("a.txt", "text").c_str());
    DWORD flags = 0;
    ASSERT_NE(0, file.Open(0x20));
    ASSERT_TRUE(::GetHandleInformation(file.GetFileHandle(), &flags));
    EXPECT_EQ(static_cast<DWORD>(HANDLE_FLAG_INHERIT), flags & HANDLE_FLAG_INHERIT);
    ASSERT_NE(0, file.Open(0xA0));
    ASSERT_TRUE(::GetHandleInformation(file.GetFileHandle(), &flags));
    EXPECT_EQ(0u, flags & HANDLE_FLAG_INHERIT);
}

TEST(RT_FileOpen, ClosesTheFileThatWasOpen)
{
    const auttest::TestFolder folder;
    const std::string a = folder.writeFile("a.txt", "A");
    RT_File file(a.c_str());
    ASSERT_NE(0, file.Open(0x00));
    file.SetFullPath((folder / "missing.txt").c_str());
    EXPECT_EQ(0, file.Open(kRead));
    EXPECT_TRUE(canOpen(a, GENERIC_READ));
    EXPECT_EQ(INVALID_HANDLE_VALUE, file.GetFileHandle());
}

TEST(RT_FileOpen, FailsForReadOnlyAndLockedFilesFoldersAndEmptyObjects)
{
    const auttest::TestFolder folder;
    const std::string path = folder.writeFile("a.txt", "text");
    ASSERT_TRUE(::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
    RT_File file(path.c_str());
    EXPECT_EQ(0, file.Open(1));
    EXPECT_EQ(0, file.Open(kCreate));
    EXPECT_NE(0, file.Open(0x00));
    EXPECT_EQ(0, RT_File(path.c_str()).Open(kRead)); // held without sharing
    EXPECT_EQ(0, RT_File(folder.path().c_str()).Open(kRead));
    EXPECT_EQ(0, RT_File().Open(kRead));
    EXPECT_EQ(0, RT_File().Open(kUpdate));
}

// ---- Reading and writing

TEST(RT_FileRead, GivesTheBytesThereAre)
{
    const auttest::TestFolder folder;
    RT_File file(folder.writeFile("a.txt", "0123456789").c_str());
    ASSERT_NE(0, file.Open(kRead));
    char buffer[16] = {};
    EXPECT_EQ(4u, file.Read(buffer, 4));
    EXPECT_STREQ("0123", buffer);
    EXPECT_EQ(0u, file.Read(buffer, 0));
    EXPECT_EQ(6u, file.Read(buffer, sizeof buffer));
    EXPECT_EQ(0u, file.Read(buffer, sizeof buffer));
}

TEST(RT_FileRead, GivesNothingOnFailure)
{
    const auttest::TestFolder folder;
    RT_File file(folder.writeFile("a.txt", "0123456789").c_str());
    char byte = 'x';
    EXPECT_EQ(0u, file.Read(&byte, 1)); // never opened
    ASSERT_NE(0, file.Open(1));
    EXPECT_EQ(0u, file.Read(&byte, 1)); // for writing only
    ASSERT_NE(0, file.Open(kRead));
    EXPECT_EQ(0u, file.Read(&byte, -1));
    EXPECT_EQ(0u, file.Read(nullptr, 1));
    EXPECT_EQ('x', byte);
}

TEST(RT_FileWrite, WritesBytesAsTheyAre)
{
    const auttest::TestFolder folder;
    RT_File file((folder / "a.bin").c_str());
    ASSERT_NE(0, file.Open(kCreate));
    char bytes[] = {'a', '\n', '\0', 'b'};
    EXPECT_TRUE(file.Write(bytes, 4));
    EXPECT_TRUE(file.Write(bytes, 0));
    file.Close();
    EXPECT_EQ(std::string("a\n\0b", 4), folder.readFile("a.bin"));
}

TEST(RT_FileWrite, FailsWithoutAHandleThatWrites)
{
    const auttest::TestFolder folder;
    RT_File file(folder.writeFile("a.txt", "text").c_str());
    char byte = 'x';
    EXPECT_FALSE(file.Write(&byte, 1));
    EXPECT_FALSE(file.Write("x"));
    EXPECT_FALSE(file.Write(""));
    ASSERT_NE(0, file.Open(0x40));
    EXPECT_FALSE(file.Write(&byte, 1));
    EXPECT_FALSE(file.Write("x"));
    ASSERT_NE(0, file.Open(0x41));
    EXPECT_FALSE(file.Write(&byte, -1));
    EXPECT_FALSE(file.Write(nullptr, 1));
    EXPECT_EQ("text", folder.readFile("a.txt"));
}

TEST(RT_FileWrite, ATextGetsACarriageReturnBeforeEveryLineFeed)
{
    const auttest::TestFolder folder;
    RT_File file((folder / "a.txt").c_str());
    ASSERT_NE(0, file.Open(kCreate));
    EXPECT_TRUE(file.Write("one\ntwo\r\n\n\r"));
    EXPECT_TRUE(file.Write("end"));
    file.Close();
    EXPECT_EQ("one\r\ntwo\r\r\n\r\n\rend", folder.readFile("a.txt"));
}

TEST(RT_FileWrite, ATextOfNothingButLineFeedsDoubles)
{
    const auttest::TestFolder folder;
    RT_File file((folder / "a.txt").c_str());
    ASSERT_NE(0, file.Open(kCreate));
    EXPECT_TRUE(file.Write(std::string(10'000, '\n').c_str()));
    EXPECT_EQ(20'000u, file.GetLength());
}

TEST(RT_FileWrite, AnEmptyTextWritesNothing)
{
    const auttest::TestFolder folder;
    RT_File file((folder / "a.txt").c_str());
    ASSERT_NE(0, file.Open(kCreate));
    EXPECT_TRUE(file.Write(""));
    EXPECT_TRUE(file.Write(static_cast<const char*>(nullptr)));
    EXPECT_EQ(0u, file.GetLength());
}

struct LineCase
{
    const char* name;
    std::string content;
    std::vector<std::string> lines;
};

class RT_FileReadLine : public ::testing::TestWithParam<LineCase>
{
};

TEST_P(RT_FileReadLine, GivesTheseLines)
{
    const auttest::TestFolder folder;
    RT_File file(folder.writeFile("a.txt", GetParam().content).c_str());
    ASSERT_NE(0, file.Open(kRead));
    std::vector<char> buffer(1026, '#');
    for (const std::string& line : GetParam().lines)
    {
        EXPECT_EQ(1, file.ReadLine(buffer.data()));
        EXPECT_EQ(line, buffer.data());
    }
    EXPECT_EQ(0, file.ReadLine(buffer.data()));
    EXPECT_STREQ("", buffer.data());
    EXPECT_EQ(0, file.ReadLine(buffer.data()));
    EXPECT_EQ('#', buffer[1025]);
}

const std::string kLong(1024, 'x');

INSTANTIATE_TEST_SUITE_P(
    , RT_FileReadLine,
    ::testing::Values(
        LineCase{"EmptyFile", "", {}}, LineCase{"LastLineWithoutEnd", "abc", {"abc"}},
        LineCase{"LineFeeds", "a\n\nb\n", {"a", "", "b"}}, LineCase{"CarriageReturns", "a\r\rb\r", {"a", "", "b"}},
        LineCase{"APairGivesTheLineAndAnEmptyOne", "a\r\nb\r\n", {"a", "", "b", ""}},
        LineCase{"ZeroBytes", std::string("a\0b\0", 4), {"a", "b"}}, LineCase{"OneLineFeed", "\n", {""}},
        LineCase{"HighBytes", "\xFF\x80\n", {"\xFF\x80"}}, LineCase{"ControlZIsNoEnd", "a\x1A\nb", {"a\x1A", "b"}},
        LineCase{"ExactlyTheLimit", kLong + "\nb", {kLong, "", "b"}},
        LineCase{"OneMoreThanTheLimit", kLong + "y\nb", {kLong, "y", "b"}},
        LineCase{"TwoThousandCharacters", std::string(2000, 'x') + "\nb", {kLong, std::string(976, 'x'), "b"}}),
    [](const auto& line) { return line.param.name; });

TEST(RT_FileReadLineFailing, GivesZeroAndAnEmptyText)
{
    char buffer[1025] = "old";
    RT_File file;
    EXPECT_EQ(0, file.ReadLine(buffer));
    EXPECT_STREQ("", buffer);
    EXPECT_EQ(0, file.ReadLine(nullptr));
}

TEST(RT_FileSeek, MovesAsTheSystemDoes)
{
    const auttest::TestFolder folder;
    RT_File file(folder.writeFile("a.txt", "0123456789").c_str());
    ASSERT_NE(0, file.Open(kRead));
    EXPECT_EQ(3u, file.Seek(3, FILE_BEGIN));
    EXPECT_EQ(5u, file.Seek(2, FILE_CURRENT));
    EXPECT_EQ(4u, file.Seek(static_cast<unsigned long>(-1), FILE_CURRENT));
    EXPECT_EQ(8u, file.Seek(static_cast<unsigned long>(-2), FILE_END));
    char byte = 0;
    EXPECT_EQ(1u, file.Read(&byte, 1));
    EXPECT_EQ('8', byte);
    EXPECT_EQ(10u, file.SeekToEnd());
    EXPECT_EQ(INVALID_SET_FILE_POINTER, file.Seek(static_cast<unsigned long>(-1), FILE_BEGIN));
    EXPECT_EQ(20u, file.Seek(10, FILE_END)); // behind the end is allowed
}

TEST(RT_FileHandle, BothValuesWithoutAHandleCountAsClosed)
{
    const auttest::TestFolder folder;
    const std::string path = folder.writeFile("a.txt", "text");
    for (const HANDLE closed : {HANDLE{nullptr}, HANDLE{INVALID_HANDLE_VALUE}})
    {
        FileProbe file(path.c_str());
        file.m_handle = closed;
        char buffer[1025] = "x";
        EXPECT_EQ(0u, file.Read(buffer, 1));
        EXPECT_FALSE(file.Write(buffer, 1));
        EXPECT_FALSE(file.Write("x"));
        EXPECT_EQ(0, file.ReadLine(buffer));
        EXPECT_EQ(INVALID_SET_FILE_POINTER, file.Seek(0, FILE_BEGIN));
        EXPECT_EQ(0u, file.SeekToEnd());
        file.Flush();
        file.Close();
        EXPECT_EQ(closed, file.GetFileHandle());
        EXPECT_EQ(4u, file.GetLength());
        EXPECT_EQ(nullptr, file.GetFileHandle());
        EXPECT_NE(0, file.Open(kRead));
    }
}

TEST(RT_FileHandle, CloseSetsItToZero)
{
    const auttest::TestFolder folder;
    RT_File file(folder.writeFile("a.txt", "text").c_str());
    ASSERT_NE(0, file.Open(0x00));
    file.Close();
    EXPECT_EQ(nullptr, file.GetFileHandle());
    EXPECT_TRUE(canOpen(folder / "a.txt", GENERIC_WRITE));
    file.Close();
    EXPECT_EQ(nullptr, file.GetFileHandle());
}

TEST(RT_FileHandle, FlushKeepsTheFileOpen)
{
    const auttest::TestFolder folder;
    RT_File file((folder / "a.txt").c_str());
    ASSERT_NE(0, file.Open(kCreate | 0x20));
    EXPECT_TRUE(file.Write("text"));
    file.Flush();
    EXPECT_EQ("text", folder.readFile("a.txt"));
    EXPECT_TRUE(file.Write("text"));
}

HANDLE g_flushed = nullptr;

BOOL WINAPI notesTheFlush(HANDLE handle)
{
    g_flushed = handle;
    return ::FlushFileBuffers(handle);
}

TEST(RT_FileHandle, FlushAndCloseWriteWhatTheSystemHolds)
{
    const auttest::TestFolder folder;
    const auttest::ImportPatch patch("FlushFileBuffers", notesTheFlush);
    RT_File file((folder / "a.txt").c_str());
    ASSERT_NE(0, file.Open(kCreate));
    const HANDLE handle = file.GetFileHandle();
    g_flushed = nullptr;
    file.Flush();
    EXPECT_EQ(handle, g_flushed);
    g_flushed = nullptr;
    file.Close();
    EXPECT_EQ(handle, g_flushed);
    g_flushed = nullptr;
    file.Flush();
    file.Close();
    EXPECT_EQ(nullptr, g_flushed) << "nothing is open";
}

TEST(RT_FileGetLength, OpensOnlyForTheQuestion)
{
    const auttest::TestFolder folder;
    RT_File file(folder.writeFile("a.txt", std::string(100'000, 'x')).c_str());
    EXPECT_EQ(100'000u, file.GetLength());
    EXPECT_EQ(nullptr, file.GetFileHandle());
    EXPECT_TRUE(canOpen(folder / "a.txt", GENERIC_WRITE));
}

TEST(RT_FileGetLength, KeepsAnOpenFileOpenAndItsPosition)
{
    const auttest::TestFolder folder;
    RT_File file(folder.writeFile("a.txt", "0123456789").c_str());
    ASSERT_NE(0, file.Open(kRead));
    file.Seek(7, FILE_BEGIN);
    EXPECT_EQ(10u, file.GetLength());
    char byte = 0;
    EXPECT_EQ(1u, file.Read(&byte, 1));
    EXPECT_EQ('7', byte);
}

TEST(RT_FileGetLength, IsTheLow32BitsAbove4Gigabytes)
{
    const auttest::TestFolder folder;
    const std::string path = folder / "large.bin";
    {
        const aut::UniqueFile large(::CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                                  FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(large);
        DWORD bytes = 0;
        ::DeviceIoControl(large.get(), FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &bytes, nullptr);
        LARGE_INTEGER size{};
        size.QuadPart = 0x1'0000'0007;
        ASSERT_TRUE(::SetFilePointerEx(large.get(), size, nullptr, FILE_BEGIN));
        if (!::SetEndOfFile(large.get()))
            GTEST_SKIP() << "the file system has no files of this size: " << ::GetLastError();
        ASSERT_TRUE(::GetFileSizeEx(large.get(), &size));
        ASSERT_EQ(0x1'0000'0007, size.QuadPart);
    }
    EXPECT_EQ(7u, RT_File(path.c_str()).GetLength());
}

TEST(RT_FileGetLength, IsZeroForAFileThatCannotBeOpened)
{
    const auttest::TestFolder folder;
    EXPECT_EQ(0u, RT_File((folder / "missing.txt").c_str()).GetLength());
    EXPECT_EQ(0u, RT_File(folder.writeFile("empty.txt", "").c_str()).GetLength());
    RT_File holder(folder.writeFile("held.txt", "text").c_str());
    ASSERT_NE(0, holder.Open(0x00));
    EXPECT_EQ(0u, RT_File((folder / "held.txt").c_str()).GetLength());
}

// ---- Attributes and locks

TEST(RT_FileIsReadOnly, GivesTheAttribute)
{
    const auttest::TestFolder folder;
    const std::string path = folder.writeFile("a.txt", "text");
    FileProbe file(path.c_str());
    EXPECT_FALSE(file.IsReadOnly());
    ASSERT_TRUE(::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_TRUE(file.IsReadOnly());
}

TEST(RT_FileIsReadOnly, AMissingFileIsRecordedAsStatus463)
{
    const auttest::TestFolder folder;
    const std::string path = folder / "missing.txt";
    *result = RT_RESULT(7);
    EXPECT_FALSE(FileProbe(path.c_str()).IsReadOnly());
    EXPECT_EQ("0,463,2,7,File Not Found," + path + ",RT_File::IsReadOnly,,",
              std::string(static_cast<const char*>(result->GetErrorString())));
}

TEST(RT_FileRemoveReadOnly, ClearsTheAttribute)
{
    const auttest::TestFolder folder;
    const std::string path = folder.writeFile("a.txt", "text");
    FileProbe file(path.c_str());
    EXPECT_TRUE(file.RemoveReadOnlyAttribIfAny());
    ASSERT_TRUE(::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_TRUE(file.RemoveReadOnlyAttribIfAny());
    EXPECT_FALSE(file.IsReadOnly());
    EXPECT_TRUE(FileProbe((folder / "missing.txt").c_str()).RemoveReadOnlyAttribIfAny());
}

TEST(RT_FileRemoveReadOnly, MakesTheFileNormalWhateverElseItWas)
{
    const auttest::TestFolder folder;
    const std::string path = folder.writeFile("a.txt", "text");
    ASSERT_TRUE(::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));
    EXPECT_TRUE(FileProbe(path.c_str()).RemoveReadOnlyAttribIfAny());
    EXPECT_EQ(0u, ::GetFileAttributesA(path.c_str()) & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));
}

TEST(RT_FileIsFileLocked, AnyOtherHandleThatKeepsAWriterOutLocks)
{
    const auttest::TestFolder folder;
    const std::string path = folder.writeFile("a.txt", "text");
    FileProbe file(path.c_str());
    EXPECT_FALSE(file.IsFileLocked());
    RT_File holder(path.c_str());
    for (const unsigned int sharing : {0x00u, 0x20u, 0x40u})
    {
        ASSERT_NE(0, holder.Open(sharing));
        EXPECT_TRUE(file.IsFileLocked()) << sharing;
        EXPECT_FALSE(file.IsOverWriteable()) << sharing;
    }
    holder.Close();
    EXPECT_FALSE(file.IsFileLocked());
    EXPECT_TRUE(canOpen(path, GENERIC_READ | GENERIC_WRITE)); // the trial handle is gone
}

TEST(RT_FileIsFileLocked, AMissingFileCountsAsLocked)
{
    const auttest::TestFolder folder;
    EXPECT_TRUE(FileProbe((folder / "missing.txt").c_str()).IsFileLocked());
    EXPECT_FALSE(FileProbe((folder / "missing.txt").c_str()).IsOverWriteable());
    EXPECT_FALSE(folder.exists("missing.txt"));
}

TEST(RT_FileIsOverWriteable, AReadOnlyFileIsMadeWritable)
{
    const auttest::TestFolder folder;
    const std::string path = folder.writeFile("a.txt", "text");
    ASSERT_TRUE(::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
    FileProbe file(path.c_str());
    EXPECT_TRUE(file.IsFileLocked());
    EXPECT_TRUE(file.IsOverWriteable());
    EXPECT_FALSE(file.IsReadOnly());
    EXPECT_EQ("text", folder.readFile("a.txt"));
}

TEST(FlushFile, IsFalseOnlyForAMissingFile)
{
    const auttest::TestFolder folder;
    const std::string path = folder.writeFile("a.txt", "text");
    auttest::LogFile log;
    EXPECT_TRUE(FlushFile(path.c_str()));
    EXPECT_FALSE(FlushFile((folder / "missing.txt").c_str()));
    EXPECT_FALSE(FlushFile(""));
    EXPECT_FALSE(FlushFile(nullptr));
    EXPECT_TRUE(log.events().empty());
    EXPECT_EQ("text", folder.readFile("a.txt"));
    EXPECT_TRUE(canOpen(path, GENERIC_WRITE));
}

int g_commits = 0;

int __cdecl notesTheCommit(int)
{
    ++g_commits;
    return 0;
}

TEST(FlushFile, CommitsTheFileToDisk)
{
    const auttest::TestFolder folder;
    const std::string path = folder.writeFile("a.txt", "text");
    const auttest::ImportPatch patch("_commit", notesTheCommit);
    g_commits = 0;
    EXPECT_TRUE(FlushFile(path.c_str()));
    EXPECT_EQ(1, g_commits);
    EXPECT_FALSE(FlushFile((folder / "missing.txt").c_str()));
    EXPECT_EQ(1, g_commits);
}

TEST(FlushFile, LogsAFileThatCannotBeOpenedForWriting)
{
    const auttest::TestFolder folder;
    const std::string path = folder.writeFile("a.txt", "text");
    ASSERT_TRUE(::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
    auttest::LogFile log;
    EXPECT_TRUE(FlushFile(path.c_str()));
    EXPECT_TRUE(FlushFile(folder.path().c_str()));
    EXPECT_EQ((std::vector<auttest::LogEvent>{
                  {"Warning", "RT_File::FlushFile : open failed (" + path + ")"},
                  {"Warning", "RT_File::FlushFile : open failed (" + folder.path() + ")"},
              }),
              log.events());
}

// ---- Nothing leaks

TEST(RT_FileHandle, AThousandRoundsLeaveNoHandle)
{
    const auttest::TestFolder folder;
    const std::string path = folder.writeFile("a.txt", "0123456789");
    const auto round = [&]
    {
        FileProbe file(path.c_str());
        FileProbe missing((folder / "missing.txt").c_str());
        COMPFLAG flag = COMP_SAME;
        char byte = 0;
        file.Open(kRead);
        file.Open(0x60);
        file.Open(kRead);
        file.Read(&byte, 1);
        file.IsFileLocked();
        file.IsDifferentByLastModTime(missing, WHEN_DIFFERENT, flag);
        missing.IsDifferentByLastModTime(file, WHEN_DIFFERENT, flag);
        file.IsDifferent(missing, WHEN_DIFFERENT);
        file.GetCheckSum();
        missing.GetCheckSum();
        missing.GetLength();
        file.HasVersionInfo(nullptr);
        file.Share();
        file.UnShare();
        FlushFile(path.c_str());
        file.Open(0x00);
    };
    round(); // what is loaded once
    const std::size_t before = auttest::openHandles();
    for (int i = 0; i < 1000; ++i)
        round();
    EXPECT_EQ(before, auttest::openHandles());
}
} // namespace
