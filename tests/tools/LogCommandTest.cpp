// `autool log` as it is typed.
#include "common/Json.h"
#include "common/Text.h"
#include "log/LogEvent.h"
#include "log/LogParts.h"
#include "platform/UniqueResource.h"
#include "tests/support/TestFolder.h"
#include "tests/tools/Autool.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace
{
using namespace autool;
using namespace auttest;

std::string line(const std::string& date, const std::string& type, const std::string& text)
{
    return "<LogEvent><Date>" + date + "</Date><Type>" + type + "</Type><Event>" + text + "</Event></LogEvent>\r\n";
}

class LogCommand : public ::testing::Test
{
protected:
    LogCommand()
    {
        m_folder.writeFile("7xAutoupdateLog_01.xml",
                           kHead + line("26/11/19 08:00.00", "Phase1_Start", "") +
                               line("26/11/19 08:00.05", "Warning", "Reboot Needed: C:\\a&amp;b.txt") +
                               line("26/11/19 08:01.00", "Phase1_End", "") + kFoot);
        m_folder.writeFile(kLogFileName,
                           kHead + line("26/11/20 09:00.00", "Error", "Unable to load the DLL C:\\x.dll") +
                               line("26/11/20 09:00.01", "Info", "CID Z\xfcrich revoked or expired") + kFoot);
    }
    AutoolRun run(std::vector<std::string> more) const
    {
        std::vector<std::string> arguments{"log", "--file", m_folder.path()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runAutool(arguments);
    }

    const std::string kHead = "<LogAutoUpdate>\r\n<Environment>\r\n<AUVersion>3.3.302B1</AUVersion>\r\n<OS>W</OS>\r\n"
                              "<IE>8</IE>\r\n</Environment>\r\n";
    const std::string kFoot = "</LogAutoUpdate>\r\n";
    TestFolder m_folder;
};

TEST_F(LogCommand, ShowsArchivesBeforeTheLogInAHundredColumns)
{
    const AutoolRun shown = run({});
    EXPECT_EQ(0, shown.code) << shown.out;
    EXPECT_EQ("", shown.error);
    const std::size_t first = shown.out.find("2026-11-19 08:00:05  Warning       Reboot Needed: C:\\a&b.txt");
    const std::size_t second = shown.out.find("2026-11-20 09:00:00  Error         Unable to load the DLL C:\\x.dll");
    ASSERT_NE(std::string::npos, first) << shown.out;
    ASSERT_NE(std::string::npos, second) << shown.out;
    EXPECT_LT(first, second);
    EXPECT_NE(std::string::npos, shown.out.find("CID Z\xc3\xbcrich revoked"));
    EXPECT_TRUE(isValidUtf8(shown.out));
    for (const std::string& each : linesOf(shown.out))
        EXPECT_LE(displayWidth(each), 100U) << each;
}

TEST_F(LogCommand, FiltersByTimeTypeAndText)
{
    const AutoolRun since = run({"--since", "2026-11-20"});
    EXPECT_EQ(std::string::npos, since.out.find("Reboot Needed")) << since.out;
    EXPECT_NE(std::string::npos, since.out.find("Unable to load"));
    const AutoolRun types = run({"--type", "warning,ERROR"});
    EXPECT_NE(std::string::npos, types.out.find("Reboot Needed")) << types.out;
    EXPECT_EQ(std::string::npos, types.out.find("revoked"));
    EXPECT_NE(std::string::npos, types.out.find("Shown: 2.")) << types.out;
    EXPECT_EQ(std::string::npos, run({}).out.find("Shown: "));
    const AutoolRun text = run({"--text", "REVOKED"});
    EXPECT_NE(std::string::npos, text.out.find("revoked")) << text.out;
    EXPECT_EQ(std::string::npos, text.out.find("Reboot Needed"));
}

TEST_F(LogCommand, WrongValuesAreUsageErrors)
{
    for (const std::vector<std::string>& wrong : {std::vector<std::string>{"--since", "yesterday"},
                                                  {"--type", "Eror"},
                                                  {"--json", "--html", "x"},
                                                  {"--user"},
                                                  {"--follow", "--html", "x"},
                                                  {"--for", "1"}})
    {
        const AutoolRun shown = run(wrong);
        EXPECT_EQ(2, shown.code) << wrong[0];
        EXPECT_NE("", shown.error) << wrong[0];
    }
    const AutoolRun unknown = run({"--type", "Eror"});
    EXPECT_NE(std::string::npos, unknown.error.find("\"Eror\" is no type: write Info, ")) << unknown.error;
    for (const std::string& each : linesOf(unknown.error))
        EXPECT_LE(displayWidth(each), 100U) << each;
    const std::string none = m_folder / "none.xml";
    const AutoolRun missing = runAutool({"log", "--file", none});
    EXPECT_EQ(3, missing.code);
    EXPECT_NE(std::string::npos, missing.error.find(none + " is neither a log nor a folder with one")) << missing.error;
}

TEST_F(LogCommand, ACutFileIsShownAsFarAsItGoesAndCounted)
{
    const std::string whole = m_folder.readFile(kLogFileName);
    m_folder.writeFile(kLogFileName, whole.substr(0, whole.find("revoked") + 3));
    const AutoolRun shown = run({});
    EXPECT_EQ(1, shown.code);
    EXPECT_NE(std::string::npos, shown.out.find("CID Z\xc3\xbcrich rev [cut off here]")) << shown.out;
    EXPECT_NE(std::string::npos, shown.out.find("cut-off  7xAutoupdateLog.xml does not end")) << shown.out;
}

TEST_F(LogCommand, JsonIsOneDocumentWithEverything)
{
    const AutoolRun shown = run({"--json"});
    EXPECT_EQ(0, shown.code);
    const Json json = Json::parse(shown.out);
    ASSERT_EQ(7U, json["events"].size());
    EXPECT_EQ("2026-11-19T08:00:05", json["events"][2]["time"]);
    EXPECT_EQ("Reboot Needed: C:\\a&b.txt", json["events"][2]["text"]);
    EXPECT_EQ("7xAutoupdateLog_01.xml", json["events"][2]["file"]);
    EXPECT_EQ(1, json["summary"]["counts"]["Error"]);
    EXPECT_EQ("2026-11-19T08:01:00", json["summary"]["phases"][0]["end"]);
    EXPECT_TRUE(json["findings"].empty());
}

TEST_F(LogCommand, HostileTextStaysInItsPlaceInEveryForm)
{
    const std::string hostile =
        "</td><script>document.title='OWNED'</script> \x1b]0;title\x07 \xff " + std::string(10000, 'w');
    m_folder.writeFile(kLogFileName, kHead + line("26/11/20 09:00.00", "Er<b>ror", hostile) + kFoot);
    const AutoolRun text = run({});
    EXPECT_EQ(std::string::npos, text.out.find('\x1b'));
    EXPECT_TRUE(isValidUtf8(text.out));
    for (const std::string& each : linesOf(text.out))
        EXPECT_LE(displayWidth(each), 100U);
    const Json json = Json::parse(run({"--json"}).out);
    EXPECT_GE(json["events"].back()["text"].get<std::string>().size(), 10000U);

    const std::string file = m_folder / "report.html";
    EXPECT_EQ(0, run({"--html", file}).code);
    const std::string html = readFile(file);
    EXPECT_TRUE(isValidUtf8(html));
    EXPECT_EQ(std::string::npos, html.find("<script>document.title"));
    EXPECT_EQ(std::string::npos, html.find("Er<b>ror"));
    EXPECT_EQ(html.find("<script>"), html.rfind("<script>"));
    EXPECT_NE(std::string::npos, html.find("default-src 'none'"));
    for (const char* outside : {"http://", "https://", "//cdn", "src=", "@import", "url("})
        EXPECT_EQ(std::string::npos, html.find(outside)) << outside;
}

TEST_F(LogCommand, TheReportNeverOverwritesTheLog)
{
    const std::string before = m_folder.readFile(kLogFileName);
    const AutoolRun shown = run({"--html", m_folder / kLogFileName});
    EXPECT_EQ(3, shown.code);
    EXPECT_EQ(before, m_folder.readFile(kLogFileName));
}

TEST_F(LogCommand, ReadsBesideAWriterThatHoldsTheFile)
{
    // As the library holds it while it writes.
    const aut::UniqueFile held(::CreateFileA((m_folder / kLogFileName).c_str(), GENERIC_READ | GENERIC_WRITE,
                                             FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(held);
    const AutoolRun shown = run({});
    EXPECT_EQ(0, shown.code);
    EXPECT_NE(std::string::npos, shown.out.find("Unable to load"));
}

TEST_F(LogCommand, FollowsForAsLongAsItIsTold)
{
    const AutoolRun shown = runAutoolProgram("log --file \"" + m_folder.path() + "\" --follow --for 0.5 --json");
    EXPECT_EQ(0, shown.code) << shown.error;
    const std::vector<std::string> lines = linesOf(shown.out);
    ASSERT_EQ(7U, lines.size()) << shown.out;
    EXPECT_EQ("Error", Json::parse(lines[5])["type"]);
}

TEST_F(LogCommand, ChangesNothingInTheFolder)
{
    const auto stamp = [this]
    {
        WIN32_FILE_ATTRIBUTE_DATA data{};
        ::GetFileAttributesExA((m_folder / kLogFileName).c_str(), GetFileExInfoStandard, &data);
        return data.ftLastWriteTime.dwLowDateTime;
    };
    const std::string before = m_folder.readFile(kLogFileName);
    const DWORD stampBefore = stamp();
    run({});
    run({"--json"});
    EXPECT_EQ(before, m_folder.readFile(kLogFileName));
    EXPECT_EQ(stampBefore, stamp());
    EXPECT_EQ(2U, logParts(m_folder.path(), kLogFileName).size());
}
} // namespace
