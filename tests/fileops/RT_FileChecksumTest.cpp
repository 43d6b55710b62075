#include "fileops/RT_File.h"
#include "foundation/RT_RESULT.h"
#include "tests/fileops/FileProbe.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <random>

using auttest::FileProbe;

namespace
{
unsigned long checkSumOf(const std::string& bytes)
{
    const auttest::TestFolder folder;
    return RT_File(folder.writeFile("a.bin", bytes).c_str()).GetCheckSum();
}

TEST(RT_FileGetCheckSum, AddsLittleEndianWordsOf32Bits)
{
    EXPECT_EQ(0x04030201u, checkSumOf("\x01\x02\x03\x04"));
    EXPECT_EQ(0x0C0A0806u, checkSumOf("\x01\x02\x03\x04\x05\x06\x07\x08"));
    EXPECT_EQ(0x80000000u, checkSumOf(std::string("\0\0\0\x80", 4)));
}

TEST(RT_FileGetCheckSum, WrapsAround)
{
    EXPECT_EQ(1u, checkSumOf(std::string("\xFF\xFF\xFF\xFF\x02\0\0\0", 8)));
    EXPECT_EQ(0u, checkSumOf(std::string("\xFF\xFF\xFF\xFF\x01\0\0\0", 8)));
}

TEST(RT_FileGetCheckSum, TheBytesBehindTheLastWholeWordDoNotCount)
{
    EXPECT_EQ(0u, checkSumOf("\x01"));
    EXPECT_EQ(0u, checkSumOf("\x01\x02\x03"));
    EXPECT_EQ(0x04030201u, checkSumOf("\x01\x02\x03\x04\x05"));
    EXPECT_EQ(0x04030201u, checkSumOf("\x01\x02\x03\x04\x05\x06\x07"));
}

TEST(RT_FileGetCheckSum, AnEmptyFileHasNone) { EXPECT_EQ(0u, checkSumOf("")); }

/// The rule, byte by byte.
unsigned long expectedSum(const std::string& bytes)
{
    unsigned long sum = 0;
    for (std::size_t chunk = 0; chunk < bytes.size(); chunk += 16'000)
    {
        const std::size_t end = std::min(bytes.size(), chunk + 16'000);
        for (std::size_t i = chunk; i + 4 <= end; i += 4)
        {
            for (std::size_t b = 0; b < 4; ++b)
                sum += static_cast<unsigned long>(static_cast<unsigned char>(bytes[i + b])) << (8 * b);
        }
    }
    return sum;
}

TEST(RT_FileGetCheckSum, HoldsAcrossChunks)
{
    std::mt19937 random(1);
    std::string bytes(100'003, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    for (const std::size_t size : {15999u, 16000u, 16001u, 16003u, 16004u, 31999u, 32000u, 32002u, 32004u, 100003u})
        EXPECT_EQ(expectedSum(bytes.substr(0, size)), checkSumOf(bytes.substr(0, size))) << size;
}

TEST(RT_FileGetCheckSum, ControlZAndLineEndsAreBytesLikeOthers)
{
    EXPECT_EQ(0x0A0D0A1Au, checkSumOf("\x1A\x0A\x0D\x0A"));
}

TEST(RT_FileGetCheckSum, IsZeroForAFileThatCannotBeOpened)
{
    const auttest::TestFolder folder;
    const std::string path = folder.writeFile("a.bin", "\x01\x02\x03\x04");
    RT_File holder(path.c_str());
    ASSERT_NE(0, holder.Open(0x00));
    *result = RT_RESULT();
    EXPECT_EQ(0u, RT_File(path.c_str()).GetCheckSum());
    EXPECT_EQ(0u, RT_File((folder / "missing.bin").c_str()).GetCheckSum());
    EXPECT_EQ(0u, RT_File(folder.path().c_str()).GetCheckSum());
    EXPECT_EQ(0u, RT_File().GetCheckSum());
    EXPECT_EQ(0, result->GetStatusCode());
}

TEST(RT_FileGetCheckSum, ReadsReadOnlyFilesAndThoseThatOthersRead)
{
    const auttest::TestFolder folder;
    const std::string path = folder.writeFile("a.bin", "\x01\x02\x03\x04");
    ASSERT_TRUE(::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
    RT_File reader(path.c_str());
    ASSERT_NE(0, reader.Open(0x20));
    EXPECT_EQ(0x04030201u, RT_File(path.c_str()).GetCheckSum());
}

TEST(RT_FileGetCheckSum, LeavesTheFileClosed)
{
    const auttest::TestFolder folder;
    RT_File file(folder.writeFile("a.bin", "\x01\x02\x03\x04").c_str());
    ASSERT_NE(0, file.Open(0x20));
    EXPECT_EQ(0x04030201u, file.GetCheckSum());
    EXPECT_EQ(nullptr, file.GetFileHandle());
}

void expectRecorded472(const char* path)
{
    EXPECT_EQ(std::string("0,472,0,0,GetFileCRC failed,") + path + ",RT_File::GetChecksum,,",
              std::string(static_cast<const char*>(result->GetErrorString())));
}

TEST(RT_FileGetCheckSum, AFileThatCannotBeReadIsRecordedAsStatus472)
{
    const auttest::TestFolder folder;
    FileProbe file(folder.writeFile("a.bin", "\x01\x02\x03\x04").c_str());
    file.m_fileName = "gone.bin"; // as if it went away once its length was known
    *result = RT_RESULT();
    EXPECT_EQ(0u, file.GetCheckSum());
    expectRecorded472((folder / "a.bin").c_str());
}

TEST(RT_FileGetCheckSum, AFileThatIsShorterThanItWasIsRecordedAsStatus472)
{
    const auttest::TestFolder folder;
    FileProbe file(folder.writeFile("a.bin", std::string(20'000, 'a')).c_str());
    folder.writeFile("short.bin", std::string(16'000, 'a'));
    file.m_fileName = "short.bin";
    *result = RT_RESULT();
    EXPECT_EQ(0u, file.GetCheckSum());
    expectRecorded472((folder / "a.bin").c_str());
}

TEST(RT_FileGetCheckSum, AFileThatIsLongerThanItWasIsReadUpToTheLengthItHad)
{
    const auttest::TestFolder folder;
    std::string longer(40'000, '\0');
    for (std::size_t i = 0; i < longer.size(); ++i)
        longer[i] = static_cast<char>(i % 251 + 1);
    folder.writeFile("longer.bin", longer);
    for (const std::size_t length : {3u, 4u, 6u, 16000u, 16002u, 20000u})
    {
        FileProbe file(folder.writeFile("a.bin", std::string(length, 'a')).c_str());
        file.m_fileName = "longer.bin"; // as if it had grown once its length was known
        EXPECT_EQ(expectedSum(longer.substr(0, length)), file.GetCheckSum()) << length;
    }
}

TEST(RT_FileGetCheckSum, ADirectoryThatEndsInABackslashGetsNoSecondOne)
{
    const auttest::TestFolder folder;
    FileProbe file(folder.writeFile("a.bin", "\x01\x02\x03\x04").c_str());
    file.m_path += '\\';
    EXPECT_EQ(0x04030201u, file.GetCheckSum());
}
} // namespace
