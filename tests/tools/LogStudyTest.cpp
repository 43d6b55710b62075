// What the study of a log finds, and what it must not find.
#include "log/LogStudy.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{
using namespace autool;

const LogTime kStart = logTime(2026, 11, 20, 8, 0, 0);

class LogStudyTest : public ::testing::Test
{
protected:
    void take(LogTime time, const std::string& type, const std::string& text = "text")
    {
        LogEvent event;
        event.time = time;
        event.type = type;
        event.text = text;
        m_study.take(event, m_part);
    }
    void end()
    {
        PartOutcome whole;
        whole.isReadable = true;
        whole.endsWhole = true;
        m_study.endOf(m_part, whole);
        m_study.finish(kStart + 86400);
    }
    std::vector<std::string> kinds() const
    {
        std::vector<std::string> found;
        for (const Finding& finding : m_study.findings())
            found.push_back(finding.kind);
        return found;
    }
    std::string text(std::size_t at) const { return m_study.findings().at(at).text; }

    LogPart m_part = {"C:\\log.xml", "log.xml", 0, std::nullopt, {}, 0};
    LogStudy m_study;
    using Kinds = std::vector<std::string>;
};

TEST_F(LogStudyTest, AGoodCycleHasNoFindings)
{
    for (int phase = 1; phase <= 3; ++phase)
    {
        take(kStart + phase * 60, "Phase" + std::to_string(phase) + "_Start");
        take(kStart + phase * 60 + 1, "Warning", "Reboot Needed: C:\\x");
        take(kStart + phase * 60 + 30, "Phase" + std::to_string(phase) + "_End");
    }
    end();
    EXPECT_EQ(Kinds(), kinds());
    ASSERT_EQ(3U, m_study.phases().size());
    EXPECT_EQ(2, m_study.phases()[1].phase);
    EXPECT_EQ(kStart + 120, m_study.phases()[1].start);
    EXPECT_EQ(kStart + 150, m_study.phases()[1].end);
}

TEST_F(LogStudyTest, APhaseThatStartsAgainOrNeverEndsIsFound)
{
    take(kStart, "Phase1_Start");
    take(kStart + 600, "Phase1_Start");
    take(kStart + 660, "Phase1_End");
    take(kStart + 700, "Phase2_Start");
    end();
    ASSERT_EQ((Kinds{"no-end", "no-end"}), kinds());
    EXPECT_EQ("Phase 1 that started at 2026-11-20 08:00:00 has no end: it started again at 2026-11-20 08:10:00.",
              text(0));
    EXPECT_NE(std::string::npos, text(1).find("Phase 2"));
}

TEST_F(LogStudyTest, AnEndWhoseStartMayBeInALostArchiveIsNone)
{
    take(kStart, "Phase2_End");
    end();
    EXPECT_EQ(Kinds(), kinds());
}

TEST_F(LogStudyTest, TracesWithoutEndAreFoundWhateverStandsBetween)
{
    take(kStart, "Info", "phase1xml::GetCountry - START");
    take(kStart, "Info", "phase1xml::GetCountry - START"); // another process at the same step
    take(kStart, "Info", "phase1xml::GetCountry - END");
    take(kStart, "Info", "phase1xml::GetCountry - END");
    take(kStart, "Info", "phase1xml::ParseXMLDocument - START");
    end();
    ASSERT_EQ(Kinds{"no-end"}, kinds());
    EXPECT_NE(std::string::npos, text(0).find("ParseXMLDocument"));
}

TEST_F(LogStudyTest, TheSameErrorIsTheSameWhateverItsNumbers)
{
    for (int i = 0; i < 3; ++i)
        take(kStart + i, "Error", "Release file C:\\x.lst not deleted: error " + std::to_string(5 + 30 * i));
    take(kStart, "Error", "another");
    take(kStart, "Error", "another");
    end();
    ASSERT_EQ(Kinds{"repeated-error"}, kinds());
    EXPECT_EQ(
        "3 times between 2026-11-20 08:00:00 and 2026-11-20 08:00:02: Release file C:\\x.lst not deleted: error 5",
        text(0));
}

TEST_F(LogStudyTest, TheClockGoingBackIsFoundButNotAnEventALittleLate)
{
    take(kStart, "Info");
    take(kStart - 30, "Info");
    EXPECT_EQ(Kinds(), kinds());
    take(kStart - 3600, "Info");
    take(kStart - 90000, "Info");
    end();
    ASSERT_EQ((Kinds{"clock-jump", "clock-jump"}), kinds());
    EXPECT_NE(std::string::npos, text(0).find("summer time"));
    EXPECT_EQ(std::string::npos, text(1).find("summer time"));
}

TEST_F(LogStudyTest, MissingArchivesAreFound)
{
    const auto archive = [](unsigned int number)
    { return LogPart{"", "log_0" + std::to_string(number) + ".xml", number, std::nullopt, {}, 0}; };
    m_study.expect({archive(4), archive(3), archive(1), m_part});
    ASSERT_EQ(Kinds{"rotation-gap"}, kinds());
    EXPECT_NE(std::string::npos, text(0).find("Archives 2 to 2"));
    LogStudy whole;
    whole.expect({archive(2), archive(1), m_part});
    EXPECT_TRUE(whole.findings().empty());
    LogStudy first;
    first.expect({archive(2), m_part});
    EXPECT_EQ(1U, first.findings().size());
}

TEST_F(LogStudyTest, ItsMemoryDoesNotGrowWithTheLog)
{
    for (int i = 0; i < 100000; ++i)
    {
        take(kStart + i * 977, "Type" + std::to_string(i), "x" + std::to_string(i) + " - START");
        take(kStart + i * 977, "Error",
             std::string(1, static_cast<char>('a' + i % 26)) + std::string(static_cast<std::size_t>(1 + i % 200), 'q'));
        take(kStart + i * 977, "Phase1_Start");
    }
    m_study.finish(kStart);
    EXPECT_LE(m_study.findings().size(), 200U);
    EXPECT_LE(m_study.density().size(), 4000U);
    EXPECT_LE(m_study.phases().size(), 2000U);
    EXPECT_LE(m_study.counts().size(), 60U);
}
} // namespace
