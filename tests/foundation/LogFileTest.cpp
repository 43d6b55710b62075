#include "foundation/LogFile.h"

#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
constexpr char kClosing[] = "</LogAutoUpdate>\r\n";

/// One log file; `insertInto` gives what a file of these bytes becomes when the line "NEW" is inserted.
class LogFile : public ::testing::Test
{
protected:
    std::string insertInto(const std::string& bytes)
    {
        m_folder.writeFile("log.xml", bytes);
        aut::LogFile file;
        EXPECT_TRUE(file.open(path().c_str(), 0));
        EXPECT_TRUE(file.insert("NEW\r\n"));
        file.close();
        return m_folder.readFile("log.xml");
    }
    std::string path() const { return m_folder / "log.xml"; }
    HANDLE openAs(DWORD access, DWORD share) const
    {
        return ::CreateFileA(path().c_str(), access, share, nullptr, OPEN_ALWAYS, 0, nullptr);
    }

    auttest::TestFolder m_folder;
};
} // namespace

TEST_F(LogFile, IsCreatedEmptyWhenItIsMissing)
{
    aut::LogFile file;
    ASSERT_TRUE(file.open(path().c_str(), 0));
    EXPECT_TRUE(file.isOpen());
    EXPECT_EQ(0u, file.size());
    EXPECT_TRUE(file.insert("head\r\nNEW\r\n"));
    file.close();
    EXPECT_FALSE(file.isOpen());
    EXPECT_EQ("head\r\nNEW\r\n</LogAutoUpdate>\r\n", m_folder.readFile("log.xml"));
}

TEST_F(LogFile, TakesLinesBeforeItsClosingTag)
{
    EXPECT_EQ("<LogAutoUpdate>\r\nold\r\nNEW\r\n</LogAutoUpdate>\r\n",
              insertInto("<LogAutoUpdate>\r\nold\r\n</LogAutoUpdate>\r\n"));
}

TEST_F(LogFile, OverwritesAClosingTagWithOtherLineEnds)
{
    for (const char* end : {"", "\n", "\r\n\r\n", "\n\n  \t\n"})
    {
        SCOPED_TRACE(end);
        EXPECT_EQ(std::string("old\r\nNEW\r\n") + kClosing, insertInto(std::string("old\r\n</LogAutoUpdate>") + end));
    }
}

TEST_F(LogFile, KeepsEverythingOfAFileThatWasCutOff)
{
    EXPECT_EQ(std::string("event\r\nNEW\r\n") + kClosing, insertInto("event\r\n"));
    EXPECT_EQ(std::string("half an ev\r\nNEW\r\n") + kClosing, insertInto("half an ev"));
    EXPECT_EQ(std::string("event\r\n</LogAuto\r\nNEW\r\n") + kClosing, insertInto("event\r\n</LogAuto"));
    EXPECT_EQ(std::string("x\r\nNEW\r\n") + kClosing, insertInto("x")); // shorter than the closing tag
}

TEST_F(LogFile, KeepsWhatFollowsAClosingTag)
{
    EXPECT_EQ(std::string("</LogAutoUpdate>\r\nmore\r\nNEW\r\n") + kClosing,
              insertInto("</LogAutoUpdate>\r\nmore\r\n"));
    const std::string blanks(100, '\n'); // so far away that the tag is not looked for
    EXPECT_EQ("</LogAutoUpdate>" + blanks + "NEW\r\n" + kClosing, insertInto("</LogAutoUpdate>" + blanks));
}

TEST_F(LogFile, KeepsOtherWritersOutAndLetsReadersIn)
{
    aut::LogFile file;
    ASSERT_TRUE(file.open(path().c_str(), 0));
    aut::LogFile second;
    EXPECT_FALSE(second.open(path().c_str(), 0));
    const aut::UniqueFile writer(openAs(GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE));
    EXPECT_FALSE(writer);
    const aut::UniqueFile reader(openAs(GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE));
    EXPECT_TRUE(reader);
    EXPECT_TRUE(aut::UniqueStdio(std::fopen(path().c_str(), "r")));
}

TEST_F(LogFile, OpensWhileReadersHoldTheFile)
{
    const aut::UniqueFile reader(openAs(GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE));
    ASSERT_TRUE(reader);
    aut::LogFile file;
    EXPECT_TRUE(file.open(path().c_str(), 0));
}

TEST_F(LogFile, CanBeMovedWhileItIsOpen)
{
    aut::LogFile file;
    ASSERT_TRUE(file.open(path().c_str(), 0));
    EXPECT_TRUE(::MoveFileA(path().c_str(), (m_folder / "moved.xml").c_str()));
    EXPECT_TRUE(file.insert("NEW\r\n"));
    file.close();
    EXPECT_EQ(std::string("NEW\r\n") + kClosing, m_folder.readFile("moved.xml"));
}

TEST_F(LogFile, WaitsForAnotherWriterNoLongerThanItMay)
{
    const aut::UniqueFile writer(openAs(GENERIC_WRITE, FILE_SHARE_READ));
    ASSERT_TRUE(writer);
    aut::LogFile file;
    const ULONGLONG start = ::GetTickCount64();
    EXPECT_FALSE(file.open(path().c_str(), 100));
    const ULONGLONG waited = ::GetTickCount64() - start;
    EXPECT_GE(waited, 100u);
    EXPECT_LT(waited, 5000u);
}

TEST_F(LogFile, OpensAsSoonAsTheOtherWriterIsDone)
{
    aut::UniqueFile writer(openAs(GENERIC_WRITE, FILE_SHARE_READ));
    ASSERT_TRUE(writer);
    // The other writer ends while this thread waits.
    const aut::UniqueHandle ender(::CreateThread(
        nullptr, 0,
        [](void* held) -> DWORD
        {
            ::Sleep(50);
            static_cast<aut::UniqueFile*>(held)->reset();
            return 0;
        },
        &writer, 0, nullptr));
    aut::LogFile file;
    EXPECT_TRUE(file.open(path().c_str(), 30000));
    ::WaitForSingleObject(ender.get(), INFINITE);
}

TEST_F(LogFile, CannotBeOpenedAtOnceWhenThatIsHopeless)
{
    aut::LogFile file;
    const ULONGLONG start = ::GetTickCount64();
    EXPECT_FALSE(file.open("", 30000));
    EXPECT_FALSE(file.open((m_folder / "no such folder\\log.xml").c_str(), 30000));
    EXPECT_FALSE(file.open((m_folder / std::string(300, 'x')).c_str(), 30000));
    EXPECT_FALSE(file.open(m_folder.path().c_str(), 30000)); // a folder
    m_folder.writeFile("log.xml", kClosing);
    ::SetFileAttributesA(path().c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(file.open(path().c_str(), 30000));
    ::SetFileAttributesA(path().c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_FALSE(file.isOpen());
    EXPECT_LT(::GetTickCount64() - start, 15000u);
}

TEST(LogFileOnAFullDisk, ReportsThatNothingCouldBeWritten)
{
    aut::LogFile file;
    if (!file.open("Z:\\dev\\full", 0))
        GTEST_SKIP() << "the host has no device that is always full";
    EXPECT_FALSE(file.insert("NEW\r\n"));
}
