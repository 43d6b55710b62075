// Files of the log on the disk: their order, reading beside writers, following across rotations.
#include <7xAutoUpdateTools.h>

#include "log/LogParts.h"
#include "log/LogReading.h"
#include "platform/UniqueResource.h"
#include "tests/support/LogFile.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <thread>

namespace
{
using namespace autool;
using auttest::LogFile;
using auttest::TestFolder;
using auttest::writeFile;

std::string line(const std::string& text, const std::string& date = "26/11/20 14:05.09")
{
    return "<LogEvent><Date>" + date + "</Date><Type>Info</Type><Event>" + text + "</Event></LogEvent>\r\n";
}
std::string whole(const std::string& lines) { return "<LogAutoUpdate>\r\n" + lines + "</LogAutoUpdate>\r\n"; }

std::vector<std::string> namesOf(const std::vector<LogPart>& parts)
{
    std::vector<std::string> names;
    for (const LogPart& part : parts)
        names.push_back(part.name);
    return names;
}

TEST(LogParts, StandInTheOrderInWhichTheyWereWritten)
{
    const TestFolder folder;
    const auto write = [&folder](const std::string& name, const std::string& date)
    { folder.writeFile(name, whole(line("x", date))); };
    write("7xAutoupdateLog.xml", "26/11/20 10:00.00");
    write("7xAutoupdateLog_01.xml", "26/11/18 10:00.00");
    write("7xAutoupdateLog_02.xml", "26/11/15 10:00.00");
    write("7xAutoupdateLog_12.xml", "26/11/01 10:00.00");
    write("7xAutoupdateLog_26-11-14_09-00-00.xml", "26/11/10 10:00.00");
    write("7xAutoupdateLog_26-11-19_09-00-00.xml", "26/11/19 08:00.00");
    for (const char* other :
         {"7xAutoupdateLog_.xml", "7xAutoupdateLog_copy.xml", "7xAutoupdateLogs.xml", "7xAutoupdateLog_01.xml.bak",
          "7xAutoupdateLog_00.xml", "7xAutoupdateLog_26-13-14_09-00-00.xml"})
        folder.writeFile(other, "x");
    EXPECT_EQ((std::vector<std::string>{"7xAutoupdateLog_12.xml", "7xAutoupdateLog_26-11-14_09-00-00.xml",
                                        "7xAutoupdateLog_02.xml", "7xAutoupdateLog_01.xml",
                                        "7xAutoupdateLog_26-11-19_09-00-00.xml", "7xAutoupdateLog.xml"}),
              namesOf(logParts(folder.path(), kLogFileName)));
    EXPECT_TRUE(logParts(folder.path() + "\\none", kLogFileName).empty());
}

TEST(LogParts, AFileIsReadOnUnderItsNewName)
{
    const TestFolder folder;
    const std::string path = folder.writeFile(kLogFileName, whole(line("one")));
    std::optional<LogPart> part = logPart(path);
    ASSERT_TRUE(part);
    ASSERT_TRUE(::MoveFileA(path.c_str(), (folder / "7xAutoupdateLog_01.xml").c_str()));
    folder.writeFile(kLogFileName, whole(line("another")));
    std::string bytes;
    ASSERT_TRUE(readPart(*part, 0, 1000, bytes));
    EXPECT_EQ(whole(line("one")), bytes);
    EXPECT_EQ("7xAutoupdateLog_01.xml", part->name);
}

TEST(LogReading, LeavesNoFileOpenBehindItself)
{
    const TestFolder folder;
    folder.writeFile(kLogFileName, whole(line("one")));
    std::vector<LogPart> parts = logParts(folder.path(), kLogFileName);
    ASSERT_EQ(1U, parts.size());
    scanPart(parts[0], 0, true, [](const LogEvent&) {});
    // Opening it without sharing anything fails while anybody has it open.
    const aut::UniqueFile alone(
        ::CreateFileA(parts[0].path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_TRUE(alone);
}

/// The user's own log, to which this process's Log() writes; removed before and after.
class FollowedLog : public ::testing::Test
{
protected:
    FollowedLog()
    {
        std::tie(m_folder, m_name) = splitPath(LogFile::ownPath());
        clear();
    }
    ~FollowedLog() override { clear(); }
    void clear() const
    {
        for (const LogPart& part : logParts(m_folder, m_name))
            ::DeleteFileA(part.path.c_str());
    }
    LogFollower::Sink collect()
    {
        return [this](const LogEvent& event, const LogPart&)
        {
            EXPECT_FALSE(event.isDamaged) << event.text;
            if (event.type != kEnvironmentType)
                m_seen.push_back(event.text);
        };
    }
    static std::string numbered(int number)
    {
        return "followed " + std::to_string(number) + " " + std::string(700, '.');
    }
    void expectAllInOrder(int count) const
    {
        ASSERT_EQ(static_cast<std::size_t>(count), m_seen.size());
        for (int i = 0; i < count; ++i)
            ASSERT_EQ(numbered(i), m_seen[static_cast<std::size_t>(i)]);
    }

    std::string m_folder;
    std::string m_name;
    std::vector<std::string> m_seen;
};

TEST_F(FollowedLog, GivesEachEventOnceAcrossRotations)
{
    LogFollower follower(m_folder, m_name, std::nullopt, 0);
    constexpr int kEvents = 2000; // three rotations
    for (int i = 0; i < kEvents; ++i)
    {
        Log(0, "%s", numbered(i).c_str());
        if (i % 37 == 0)
        {
            EXPECT_FALSE(follower.poll(collect()));
        }
    }
    EXPECT_FALSE(follower.poll(collect()));
    EXPECT_FALSE(follower.poll(collect()));
    EXPECT_GE(logParts(m_folder, m_name).size(), 3U);
    expectAllInOrder(kEvents);
}

TEST_F(FollowedLog, GivesWhatSeveralRotationsWroteBetweenTwoLooks)
{
    LogFollower follower(m_folder, m_name, std::nullopt, 0);
    Log(0, "%s", numbered(0).c_str());
    EXPECT_FALSE(follower.poll(collect()));
    constexpr int kEvents = 1700; // two rotations and more
    for (int i = 1; i < kEvents; ++i)
        Log(0, "%s", numbered(i).c_str());
    EXPECT_FALSE(follower.poll(collect()));
    expectAllInOrder(kEvents);
}

TEST_F(FollowedLog, SaysWhenRotationsWereFasterThanItself)
{
    LogFollower follower(m_folder, m_name, std::nullopt, 0);
    Log(0, "first");
    EXPECT_FALSE(follower.poll(collect()));
    for (const LogPart& part : logParts(m_folder, m_name))
        ASSERT_TRUE(::DeleteFileA(part.path.c_str()));
    Log(0, "second, which is longer than the first");
    EXPECT_TRUE(follower.poll(collect()));
    EXPECT_EQ((std::vector<std::string>{"first", "second, which is longer than the first"}), m_seen);
}

TEST_F(FollowedLog, AReplacedLogDoesNotBringTheArchivesAgain)
{
    writeFile(m_folder + "\\7xAutoupdateLog_01.xml", whole(line("old")));
    writeFile(m_folder + "\\" + m_name, whole(line("first")));
    std::optional<LogPart> last = logPart(m_folder + "\\" + m_name);
    ASSERT_TRUE(last);
    const PartOutcome outcome = scanPart(*last, 0, false, [](const LogEvent&) {});
    LogFollower follower(m_folder, m_name, last, outcome.consumed);
    writeFile(m_folder + "\\" + m_name, whole(line("another file under the same name")));
    EXPECT_TRUE(follower.poll(collect()));
    EXPECT_EQ(std::vector<std::string>{"another file under the same name"}, m_seen);
}

TEST_F(FollowedLog, ReadersAndWritersDoNotDisturbEachOther)
{
    std::atomic<bool> isEnding{false};
    LogFollower follower(m_folder, m_name, std::nullopt, 0);
    std::thread reader(
        [&]
        {
            while (!isEnding)
            {
                EXPECT_FALSE(follower.poll(collect()));
                for (LogPart& part : logParts(m_folder, m_name))
                    scanPart(part, 0, true, [](const LogEvent& event) { EXPECT_FALSE(event.isDamaged) << event.text; });
            }
        });
    constexpr int kEvents = 900; // one rotation
    for (int i = 0; i < kEvents; ++i)
        Log(0, "%s", numbered(i).c_str());
    isEnding = true;
    reader.join();
    EXPECT_FALSE(follower.poll(collect()));
    expectAllInOrder(kEvents); // none lost by the writer, none by the reader
}
} // namespace
