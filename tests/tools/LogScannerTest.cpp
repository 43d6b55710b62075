// The tolerant reading of log files: whole ones, cut ones, hostile ones.
#include "log/LogScanner.h"
#include "common/Text.h"
#include "log/LogEvent.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <psapi.h>

#include <vector>

namespace
{
using namespace autool;

struct Scanned
{
    std::vector<LogEvent> events;
    bool endsWhole = false;
    std::uint64_t strayBytes = 0;
    std::uint64_t consumed = 0;
};

Scanned scan(const std::string& bytes, std::size_t pieceBytes = 1 << 20)
{
    Scanned scanned;
    LogScanner scanner([&scanned](const LogEvent& event) { scanned.events.push_back(event); });
    for (std::size_t at = 0; at < bytes.size(); at += pieceBytes)
        scanner.feed(std::string_view(bytes).substr(at, pieceBytes));
    scanner.finish();
    scanned.endsWhole = scanner.endsWhole();
    scanned.strayBytes = scanner.strayBytes();
    scanned.consumed = scanner.consumed();
    return scanned;
}

std::string line(const std::string& text, const std::string& type = "Info")
{
    return "<LogEvent><Date>26/11/20 14:05.09</Date><Type>" + type + "</Type><Event>" + text +
           "</Event></LogEvent>\r\n";
}

const std::string kHead = "<LogAutoUpdate>\r\n<Environment>\r\n<AUVersion>3.3.302B1</AUVersion>\r\n<OS>Windows 7 6.1 "
                          "SP1</OS>\r\n<IE>8.0</IE>\r\n</Environment>\r\n";
const std::string kFoot = "</LogAutoUpdate>\r\n";

TEST(LogTimes, AreReadAsStoredAndAsTyped)
{
    const LogTime time = logTime(2026, 11, 20, 14, 5, 9);
    EXPECT_EQ(time, parseLogDate("26/11/20 14:05.09"));
    EXPECT_EQ("2026-11-20 14:05:09", shownTime(time));
    EXPECT_EQ("2024-02-29 23:59:59", shownTime(logTime(2024, 2, 29, 23, 59, 59)));
    EXPECT_EQ("2000-01-01 00:00:00", shownTime(logTime(2000, 1, 1, 0, 0, 0)));
    for (const char* bad : {"", "26/13/20 14:05.09", "26/11/20 24:05.09", "26/11/20 14:05:09", "26/11/20", "x"})
        EXPECT_EQ(std::nullopt, parseLogDate(bad)) << bad;

    EXPECT_EQ(time, parseSince("2026-11-20 14:05:09", 0));
    EXPECT_EQ(time, parseSince("2026-11-20T14:05:09", 0));
    EXPECT_EQ(time, parseSince("26/11/20 14:05.09", 0));
    EXPECT_EQ(time - 9, parseSince("2026-11-20 14:05", 0));
    EXPECT_EQ(logTime(2026, 11, 20, 0, 0, 0), parseSince("2026-11-20", 0));
    EXPECT_EQ(logTime(2026, 11, 20, 8, 30, 0), parseSince("8:30", time));
    EXPECT_EQ(time - 1800, parseSince("30m", time));
    EXPECT_EQ(time - 2 * 86400, parseSince("2d", time));
    for (const char* bad : {"", "yesterday", "20.11.2026", "5", "m", "25:00", "2026-13-01", "99999999999h"})
        EXPECT_EQ(std::nullopt, parseSince(bad, time)) << bad;
}

TEST(LogScannerWhole, GivesEveryEventAndTheVersionsInPiecesOfAnySize)
{
    const std::string log = kHead + line("one") + line("two &lt;a&gt; &amp;amp; &quot;b&quot; &apos;c&apos;", "Error") +
                            line("three\r\nlines", "") + kFoot;
    for (const std::size_t piece : {1U, 2U, 3U, 7U, 18U, 64U, 4096U})
    {
        const Scanned scanned = scan(log, piece);
        ASSERT_EQ(4U, scanned.events.size()) << piece;
        EXPECT_EQ("Environment", scanned.events[0].type);
        EXPECT_EQ("client 3.3.302B1, Windows 7 6.1 SP1, browser 8.0", scanned.events[0].text);
        EXPECT_EQ("one", scanned.events[1].text);
        EXPECT_EQ(logTime(2026, 11, 20, 14, 5, 9), scanned.events[1].time);
        EXPECT_EQ("Error", scanned.events[2].type);
        EXPECT_EQ("two <a> &amp; \"b\" 'c'", scanned.events[2].text);
        EXPECT_EQ("three\r\nlines", scanned.events[3].text);
        EXPECT_TRUE(scanned.endsWhole);
        EXPECT_EQ(0U, scanned.strayBytes);
        EXPECT_EQ(log.size() - kFoot.size() - 2, scanned.consumed);
    }
}

TEST(LogScannerCut, EveryCutKeepsAllEventsBeforeItAndNeverInventsOne)
{
    const std::string log = kHead + line("one") + line("two") + kFoot;
    for (std::size_t length = 0; length < log.size() - 2; ++length)
    {
        const Scanned scanned = scan(log.substr(0, length), 5);
        EXPECT_FALSE(scanned.endsWhole) << length;
        ASSERT_LE(scanned.events.size(), 3U) << length;
        for (std::size_t i = 0; i < scanned.events.size(); ++i)
        {
            const bool isLast = i + 1 == scanned.events.size();
            EXPECT_TRUE(isLast || !scanned.events[i].isDamaged) << length;
            if (!scanned.events[i].isDamaged && i > 0)
            {
                EXPECT_EQ(i == 1 ? "one" : "two", scanned.events[i].text) << length;
            }
        }
    }
}

TEST(LogScannerCut, WhatWasWrittenBehindACutEventIsNotLost)
{
    const std::string cut = "<LogEvent><Date>26/11/20 14:05.09</Date><Type>Error</Type><Event>half of it";
    const Scanned scanned = scan(kHead + line("one") + cut + "\r\n" + line("two") + kFoot);
    ASSERT_EQ(4U, scanned.events.size());
    EXPECT_TRUE(scanned.events[2].isDamaged);
    EXPECT_EQ("Error", scanned.events[2].type);
    EXPECT_EQ(0U, scanned.events[2].text.rfind("half of it", 0));
    EXPECT_FALSE(scanned.events[3].isDamaged);
    EXPECT_EQ("two", scanned.events[3].text);
    EXPECT_TRUE(scanned.endsWhole);
}

TEST(LogScannerHostile, TagsAndHalfTagsInATextAreText)
{
    const std::string text = "<script>alert(1)</script> < <b <LogEven </Event> <Type>x</Type> &#x41; & &lt";
    const Scanned scanned = scan(kHead + line(text) + kFoot, 3);
    ASSERT_EQ(2U, scanned.events.size());
    EXPECT_EQ("Info", scanned.events[1].type);
    EXPECT_EQ(text, scanned.events[1].text);
}

TEST(LogScannerHostile, InvalidBytesAreMadeValid)
{
    const Scanned scanned = scan(kHead + line("Z\xfcrich \xff\xfe \xed\xa0\x80") + kFoot);
    ASSERT_EQ(2U, scanned.events.size());
    EXPECT_TRUE(isValidUtf8(scanned.events[1].text));
    EXPECT_EQ(0U, scanned.events[1].text.rfind("Z\xc3\xbcrich", 0)) << scanned.events[1].text;
}

TEST(LogScannerHostile, ZerosAndRestsBetweenEventsAreCounted)
{
    const Scanned scanned =
        scan(kHead + line("one") + std::string(4096, '\0') + "</Event></LogEvent>" + line("two") + kFoot);
    EXPECT_EQ(3U, scanned.events.size());
    EXPECT_EQ(4096U + 19, scanned.strayBytes);
    EXPECT_TRUE(scanned.endsWhole);
}

TEST(LogScannerHostile, ALongEventIsWholeAndAnEndlessOneIsShortened)
{
    const std::string tenThousand(10000, 'x');
    Scanned scanned = scan(kHead + line(tenThousand) + kFoot, 4096);
    ASSERT_EQ(2U, scanned.events.size());
    EXPECT_EQ(tenThousand, scanned.events[1].text);
    EXPECT_FALSE(scanned.events[1].isShortened);

    scanned = scan(kHead + line(std::string(5000000, 'y')) + line("behind") + kFoot, 65536);
    ASSERT_EQ(3U, scanned.events.size());
    EXPECT_TRUE(scanned.events[1].isShortened);
    EXPECT_FALSE(scanned.events[1].isDamaged);
    EXPECT_LE(scanned.events[1].text.size(), LogScanner::kMaxEventBytes);
    EXPECT_EQ("behind", scanned.events[2].text);
}

TEST(LogScannerHostile, AHundredMegabytesNeedNoMoreMemoryThanAFew)
{
    PROCESS_MEMORY_COUNTERS before{};
    PROCESS_MEMORY_COUNTERS after{};
    ASSERT_TRUE(::GetProcessMemoryInfo(::GetCurrentProcess(), &before, sizeof before));
    std::string piece;
    while (piece.size() < 1000000)
        piece += line(std::string(900, 'z'));
    std::size_t events = 0;
    LogScanner scanner([&events](const LogEvent&) { ++events; });
    scanner.feed(kHead);
    for (int i = 0; i < 100; ++i)
        scanner.feed(piece);
    scanner.feed(kFoot);
    scanner.finish();
    ASSERT_TRUE(::GetProcessMemoryInfo(::GetCurrentProcess(), &after, sizeof after));
    EXPECT_EQ(100 * (piece.size() / line(std::string(900, 'z')).size()) + 1, events);
    EXPECT_LE(after.PeakWorkingSetSize, before.PeakWorkingSetSize + 20 * 1024 * 1024);
}
} // namespace
