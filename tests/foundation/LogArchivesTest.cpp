#include "foundation/LogArchives.h"

#include "foundation/LogFile.h"
#include "tests/support/LogFile.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
class LogArchives : public ::testing::Test
{
protected:
    static std::string archive(int number) { return "7xAutoupdateLog_0" + std::to_string(number) + ".xml"; }
    /// Writes a current file of these bytes and rotates it. True when it was closed, that is, moved.
    bool rotate(const std::string& bytes)
    {
        m_folder.writeFile(kCurrent, bytes);
        aut::LogFile current;
        EXPECT_TRUE(current.open((m_folder / kCurrent).c_str(), 0));
        aut::rotateLog(current, m_folder.path().c_str(), m_counts);
        return !current.isOpen();
    }
    std::string contentOf(int number) const
    {
        return m_folder.exists(archive(number)) ? m_folder.readFile(archive(number)) : "(missing)";
    }

    static constexpr const char* kCurrent = "7xAutoupdateLog.xml";
    auttest::TestFolder m_folder;
    aut::ArchiveCounts m_counts;
};
} // namespace

TEST(ArchiveCounts, AreLastInTheLowAndMaxInTheHighHalf)
{
    const auto counts = [](DWORD value)
    {
        const aut::ArchiveCounts read = aut::archiveCountsFromRegistry(value);
        return std::pair<unsigned int, unsigned int>(read.last, read.max);
    };
    EXPECT_EQ((std::pair<unsigned int, unsigned int>(0, 4)), counts(0));
    EXPECT_EQ((std::pair<unsigned int, unsigned int>(3, 4)), counts(0x00020003)); // a maximum of 2 is raised to 4
    EXPECT_EQ((std::pair<unsigned int, unsigned int>(3, 4)), counts(3));
    EXPECT_EQ((std::pair<unsigned int, unsigned int>(0, 9)), counts(0x00090000));
    EXPECT_EQ((std::pair<unsigned int, unsigned int>(65535, 65535)), counts(0xFFFFFFFF));
}

TEST(LogPaths, AreFormattedAsTheirReadersExpect)
{
    char path[MAX_PATH];
    EXPECT_TRUE(aut::logFilePath(path, "C:\\d"));
    EXPECT_STREQ("C:\\d\\7xAutoupdateLog.xml", path);
    EXPECT_TRUE(aut::numberedArchivePath(path, "C:\\d", 1));
    EXPECT_STREQ("C:\\d\\7xAutoupdateLog_01.xml", path);
    EXPECT_TRUE(aut::numberedArchivePath(path, "C:\\d", 123));
    EXPECT_STREQ("C:\\d\\7xAutoupdateLog_123.xml", path);
    SYSTEMTIME time{};
    time.wYear = 2009;
    time.wMonth = 7;
    time.wDay = 2;
    time.wHour = 4;
    time.wMinute = 5;
    time.wSecond = 6;
    EXPECT_TRUE(aut::timedArchivePath(path, "C:\\d", time));
    EXPECT_STREQ("C:\\d\\7xAutoupdateLog_09-07-02_04-05-06.xml", path);
}

TEST(LogPaths, AreEmptyWhenTheyDoNotFit)
{
    const std::string fits(259 - std::string("\\7xAutoupdateLog.xml").size(), 'x');
    char path[MAX_PATH];
    EXPECT_TRUE(aut::logFilePath(path, fits.c_str()));
    EXPECT_EQ(fits + "\\7xAutoupdateLog.xml", path);
    EXPECT_FALSE(aut::logFilePath(path, (fits + 'x').c_str()));
    EXPECT_STREQ("", path);
    EXPECT_FALSE(aut::numberedArchivePath(path, fits.c_str(), 1));
    EXPECT_FALSE(aut::timedArchivePath(path, std::string(10000, 'x').c_str(), SYSTEMTIME{}));
}

TEST_F(LogArchives, TheCurrentFileBecomesArchive01)
{
    EXPECT_TRUE(rotate("first"));
    EXPECT_EQ(1u, m_counts.last);
    EXPECT_EQ("first", contentOf(1));
    EXPECT_FALSE(m_folder.exists(kCurrent));
}

TEST_F(LogArchives, AfterFiveRotationsTheOldestIsGone)
{
    for (const char* bytes : {"first", "second", "third", "fourth", "fifth"})
        EXPECT_TRUE(rotate(bytes));
    EXPECT_EQ("fifth", contentOf(1));
    EXPECT_EQ("fourth", contentOf(2));
    EXPECT_EQ("third", contentOf(3));
    EXPECT_EQ("second", contentOf(4));
    EXPECT_EQ("(missing)", contentOf(5));
    EXPECT_EQ(4u, m_counts.last);
}

TEST_F(LogArchives, AMissingOldestArchiveIsNoObstacle)
{
    m_counts = {4, 4};
    EXPECT_TRUE(rotate("first"));
    EXPECT_EQ("first", contentOf(1));
    EXPECT_EQ(4u, m_counts.last);
}

TEST_F(LogArchives, StopsWhenTheOldestCannotBeDeleted)
{
    for (int i = 1; i <= 4; ++i)
        m_folder.writeFile(archive(i), std::to_string(i));
    m_counts = {4, 4};
    ::SetFileAttributesA((m_folder / archive(4)).c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(rotate("current"));
    ::SetFileAttributesA((m_folder / archive(4)).c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ("current", m_folder.readFile(kCurrent));
    EXPECT_EQ("1", contentOf(1));
    EXPECT_EQ("4", contentOf(4));
    EXPECT_EQ(4u, m_counts.last);
}

TEST_F(LogArchives, ArchivesOfAnEarlierProcessAreNotOverwritten)
{
    // This process believes in no archive, so 01 is not moved up, and the current file finds its place taken.
    m_folder.writeFile(archive(1), "earlier");
    EXPECT_FALSE(rotate("current"));
    EXPECT_EQ("earlier", contentOf(1));
    EXPECT_EQ("current", m_folder.readFile(kCurrent));
    EXPECT_EQ(1u, m_counts.last);
    // With the next event it knows one more.
    EXPECT_TRUE(rotate("current"));
    EXPECT_EQ("earlier", contentOf(2));
    EXPECT_EQ("current", contentOf(1));
}

TEST_F(LogArchives, WaitsWhileAReaderForbidsMovingTheCurrentFile)
{
    for (int i = 1; i <= 4; ++i)
        m_folder.writeFile(archive(i), std::to_string(i));
    m_counts = {4, 4};
    m_folder.writeFile(kCurrent, "current");
    {
        const aut::UniqueFile reader(::CreateFileA((m_folder / kCurrent).c_str(), GENERIC_READ,
                                                   FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                                   nullptr));
        ASSERT_TRUE(reader);
        aut::LogFile current;
        ASSERT_TRUE(current.open((m_folder / kCurrent).c_str(), 0));
        aut::rotateLog(current, m_folder.path().c_str(), m_counts);
        EXPECT_TRUE(current.isOpen());
    }
    EXPECT_EQ("current", m_folder.readFile(kCurrent));
    for (int i = 1; i <= 4; ++i) // nothing was lost for nothing
        EXPECT_EQ(std::to_string(i), contentOf(i));
}

TEST_F(LogArchives, DoesNothingInAFolderWhosePathIsTooLong)
{
    aut::LogFile current;
    aut::rotateLog(current, std::string(300, 'x').c_str(), m_counts);
    EXPECT_EQ(0u, m_counts.last);
}
