// The event log as processes of their own see it: where they log, what they rotate, and what several make of one file.

#include "foundation/EventLog.h"
#include "tests/foundation/ChildProgram.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace
{
using auttest::ChildProgram;
using auttest::LogEvent;
using auttest::runProgram;
using Events = std::vector<LogEvent>;

constexpr char kLog[] = "7xAutoupdateLog.xml";
constexpr char kClosing[] = "</LogAutoUpdate>\r\n";

std::size_t countOf(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}

/// A log file of exactly this size.
std::string logOfSize(std::size_t size)
{
    const std::string head = "<LogAutoUpdate>\r\n<!--";
    const std::string tail = "-->\r\n</LogAutoUpdate>\r\n";
    return head + std::string(size - head.size() - tail.size(), 'x') + tail;
}

using Names = std::vector<std::string>;

/// What is in a folder.
Names namesIn(const std::string& folder)
{
    Names names;
    WIN32_FIND_DATAA found{};
    const aut::UniqueFind search(::FindFirstFileA((folder + "\\*").c_str(), &found));
    for (bool more = static_cast<bool>(search); more; more = ::FindNextFileA(search.get(), &found) != FALSE)
    {
        if (std::string(".") != found.cFileName && std::string("..") != found.cFileName)
            names.emplace_back(found.cFileName);
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// The browser's version in the registry, put back at the end.
class BrowserVersion
{
public:
    ~BrowserVersion()
    {
        if (m_before)
            m_machine.write(kKey, "Version", *m_before);
        else
            m_machine.removeValue(kKey, "Version");
    }
    void set(const std::string& version) const { m_machine.write(kKey, "Version", version); }
    void remove() const { m_machine.removeValue(kKey, "Version"); }

private:
    static constexpr char kKey[] = "Software\\Microsoft\\Internet Explorer";
    auttest::Registry m_machine;
    std::optional<std::string> m_before = m_machine.readText(kKey, "Version");
};

class EventLogProcess : public ::testing::Test
{
protected:
    EventLogProcess() { auttest::removeAll(auttest::LogFile::ownPath()); }
    ~EventLogProcess() override { auttest::removeAll(auttest::LogFile::ownPath()); }

    /// Gives the service a data path of the test's own.
    void useDataPath() { m_registry.write("", "DataPath", m_data.path()); }
    std::string programAs(const char* name) const { return auttest::logProgramAs(m_programs, name); }
    /// All events of a file.
    static Events eventsOf(const std::string& path)
    {
        const std::string bytes = auttest::readFile(path);
        auttest::removeAll(path);
        const auttest::LogFile log(path); // the mark is set while there is no file
        auttest::writeFile(path, bytes);
        return log.events();
    }
    static std::string archive(int number) { return "7xAutoupdateLog_0" + std::to_string(number) + ".xml"; }

    auttest::ClientRegistry m_registry;
    auttest::TestFolder m_programs;
    auttest::TestFolder m_data;
};
} // namespace

TEST_F(EventLogProcess, AnyProcessLogsIntoItsUsersFolder)
{
    useDataPath();
    EXPECT_EQ(0u, runProgram(programAs("Other.exe"), "log 0 hello"));
    EXPECT_EQ((Events{{"Info", "hello"}}), eventsOf(auttest::LogFile::ownPath()));
    EXPECT_FALSE(m_data.exists(kLog));
}

TEST_F(EventLogProcess, TheServiceLogsIntoTheDataPath)
{
    useDataPath();
    EXPECT_EQ(0u, runProgram(programAs("AutoUpdate.exe"), "log 2 hello"));
    EXPECT_EQ((Events{{"Error", "hello"}}), eventsOf(m_data / kLog));
    EXPECT_FALSE(auttest::fileExists(auttest::LogFile::ownPath()));
}

TEST_F(EventLogProcess, TheRestartToolDoesToo)
{
    useDataPath();
    EXPECT_EQ(0u, runProgram(programAs("ReloadAutoUpdate.exe"), "log 0 hello"));
    EXPECT_EQ((Events{{"Info", "hello"}}), eventsOf(m_data / kLog));
}

TEST_F(EventLogProcess, ProgramNamesCompareWithoutCase)
{
    useDataPath();
    EXPECT_EQ(0u, runProgram(programAs("AUTOUPDATE.EXE"), "log 0 one"));
    EXPECT_EQ(0u, runProgram(programAs("reloadautoupdate.exe"), "log 0 two"));
    EXPECT_EQ((Events{{"Info", "one"}, {"Info", "two"}}), eventsOf(m_data / kLog));
}

TEST_F(EventLogProcess, CreatesTheFolderWithAllMissingParents)
{
    m_registry.write("", "DataPath", m_data / "a\\b\\c");
    EXPECT_EQ(0u, runProgram(programAs("AutoUpdate.exe"), "log 0 hello"));
    EXPECT_EQ((Events{{"Info", "hello"}}), eventsOf(m_data / "a\\b\\c\\7xAutoupdateLog.xml"));
}

TEST_F(EventLogProcess, WithoutADataPathTheServiceDropsItsEvents)
{
    EXPECT_EQ(0u, runProgram(programAs("AutoUpdate.exe"), "log 0 hello"));
    EXPECT_FALSE(auttest::fileExists(auttest::LogFile::ownPath()));
    EXPECT_TRUE(m_registry.keyExists("")); // opened for writing, so it was made
}

TEST_F(EventLogProcess, WithATooLongDataPathTheServiceDropsItsEvents)
{
    const std::string program = programAs("AutoUpdate.exe");
    const Names root = namesIn("C:");
    // Room for the folder, but not for the name of the log behind it: not even a part of that may be written.
    const std::string name(250, 'x');
    m_registry.write("", "DataPath", "C:\\" + name);
    EXPECT_EQ(0u, runProgram(program, "log 0 hello"));
    EXPECT_TRUE(auttest::fileExists("C:\\" + name));
    EXPECT_EQ(Names{}, namesIn("C:\\" + name));
    auttest::removeAll("C:\\" + name);
    EXPECT_EQ(root, namesIn("C:"));
    EXPECT_FALSE(auttest::fileExists(auttest::LogFile::ownPath()));

    m_registry.write("", "DataPath", "C:\\" + std::string(10000, 'x'));
    EXPECT_EQ(0u, runProgram(program, "log 0 hello"));
    EXPECT_EQ(root, namesIn("C:"));
    EXPECT_FALSE(auttest::fileExists(auttest::LogFile::ownPath()));
}

TEST_F(EventLogProcess, AnyProcessLogsIntoTheDataPathWhenItsUserHasNoFolder)
{
    useDataPath();
    const auttest::Registry user(HKEY_CURRENT_USER);
    const std::string folders = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
    const auto before = user.readRaw(folders, "AppData");
    user.write(folders, "AppData", "Z:\\no\\such\\folder");
    EXPECT_EQ(0u, runProgram(programAs("Other.exe"), "log 0 hello"));
    if (before)
        user.writeRaw(folders, "AppData", before->type, before->bytes);
    else
        user.removeValue(folders, "AppData");
    EXPECT_EQ((Events{{"Info", "hello"}}), eventsOf(m_data / kLog));
    EXPECT_FALSE(auttest::fileExists(auttest::LogFile::ownPath()));
}

TEST_F(EventLogProcess, TheDetailLevelCountsFromTheFirstEventOn)
{
    useDataPath();
    const std::string program = programAs("AutoUpdate.exe");
    m_registry.write("Config", "TestEnv", 1u);
    EXPECT_EQ(0u, runProgram(program, "log 0x20000 dropped"));
    EXPECT_FALSE(m_data.exists(kLog));
    m_registry.write("Config", "TestEnv", 2u);
    EXPECT_EQ(0u, runProgram(program, "log 0x20000 kept"));
    EXPECT_EQ((Events{{"Info", "kept"}}), eventsOf(m_data / kLog));
}

TEST_F(EventLogProcess, AFolderThatCannotBeMadeLosesTheEventOnly)
{
    // The data path is a file, so that neither the folder nor the log can be made.
    m_registry.write("", "DataPath", m_data.writeFile("file", "bytes"));
    EXPECT_EQ(0u, runProgram(programAs("AutoUpdate.exe"), "log 0 hello"));
    EXPECT_EQ("bytes", m_data.readFile("file"));
}

TEST_F(EventLogProcess, TheEnvironmentTellsClientSystemAndBrowser)
{
    useDataPath();
    m_registry.write("", "Current_Kernel_Version", "3.3.302B1 <&>");
    const BrowserVersion browser;
    browser.set("9.1.2.3");
    const auttest::Registry user(HKEY_CURRENT_USER);
    user.write("Software\\Wine\\AppDefaults\\AutoUpdate.exe", "Version", "win7");

    EXPECT_EQ(0u, runProgram(programAs("AutoUpdate.exe"), "log 0 hello"));

    user.removeKey("Software\\Wine\\AppDefaults\\AutoUpdate.exe");
    EXPECT_EQ(0u, m_data.readFile(kLog).find("<LogAutoUpdate>\r\n<Environment>\r\n"
                                             "<AUVersion>3.3.302B1 &lt;&amp;&gt;</AUVersion>\r\n"
                                             "<OS>Windows 7 6.1 Service Pack 1</OS>\r\n<IE>9.1.2.3</IE>\r\n"
                                             "</Environment>\r\n<LogEvent>"));
}

TEST_F(EventLogProcess, ABrowserVersionThatIsMissingOrTooLongIsEmpty)
{
    useDataPath();
    const std::string program = programAs("AutoUpdate.exe");
    const auto browserElement = [&]
    {
        auttest::removeAll(m_data / kLog);
        EXPECT_EQ(0u, runProgram(program, "log 0 hello"));
        const std::string content = m_data.readFile(kLog);
        const std::size_t start = content.find("<IE>");
        return content.substr(start, content.find("\r\n", start) - start);
    };
    const BrowserVersion browser;
    browser.remove();
    EXPECT_EQ("<IE></IE>", browserElement());
    browser.set(std::string(260, '9'));
    EXPECT_EQ("<IE></IE>", browserElement());
    browser.set(std::string(259, '9'));
    EXPECT_EQ("<IE>" + std::string(259, '9') + "</IE>", browserElement());
}

TEST_F(EventLogProcess, AnUnknownSystemLeavesItsVersionEmpty)
{
    useDataPath();
    const auttest::Registry user(HKEY_CURRENT_USER);
    user.write("Software\\Wine\\AppDefaults\\AutoUpdate.exe", "Version", "win8");
    EXPECT_EQ(0u, runProgram(programAs("AutoUpdate.exe"), "log 0 hello"));
    user.removeKey("Software\\Wine\\AppDefaults\\AutoUpdate.exe");
    EXPECT_NE(std::string::npos, m_data.readFile(kLog).find("<AUVersion></AUVersion>\r\n<OS>UNKNOWN  </OS>\r\n"));
}

TEST_F(EventLogProcess, AFileMayGrowTo512000BytesWithTheLine)
{
    useDataPath();
    const std::string program = programAs("AutoUpdate.exe");
    const std::size_t line =
        std::string("<LogEvent><Date>yy/mm/dd hh:mm.ss</Date><Type>Info</Type><Event>hello</Event></LogEvent>\r\n")
            .size();
    m_data.writeFile(kLog, logOfSize(512000 - line));
    EXPECT_EQ(0u, runProgram(program, "log 0 hello"));
    EXPECT_EQ(512000u, m_data.readFile(kLog).size());
    EXPECT_FALSE(m_data.exists(archive(1)));

    const std::string full = logOfSize(512000 - line + 1);
    m_data.writeFile(kLog, full);
    EXPECT_EQ(0u, runProgram(program, "log 0 hello"));
    EXPECT_EQ(full, m_data.readFile(archive(1)));
    EXPECT_EQ(0u, m_data.readFile(kLog).find("<LogAutoUpdate>\r\n<Environment>\r\n"));
    EXPECT_EQ((Events{{"Info", "hello"}}), eventsOf(m_data / kLog));
}

TEST_F(EventLogProcess, LastAndMaxIndexTellTheServiceWhichArchivesThereAre)
{
    useDataPath();
    m_registry.write("", "LastAndMaxIndex", 0x00020003); // last 3; a maximum of 2 is raised to 4
    for (int i = 1; i <= 3; ++i)
        m_data.writeFile(archive(i), std::to_string(i));
    const std::string full = logOfSize(512000);
    m_data.writeFile(kLog, full);

    EXPECT_EQ(0u, runProgram(programAs("AutoUpdate.exe"), "log 0 hello"));

    EXPECT_EQ(full, m_data.readFile(archive(1)));
    EXPECT_EQ("1", m_data.readFile(archive(2)));
    EXPECT_EQ("2", m_data.readFile(archive(3)));
    EXPECT_EQ("3", m_data.readFile(archive(4)));
    EXPECT_EQ((Events{{"Info", "hello"}}), eventsOf(m_data / kLog));
    EXPECT_EQ(0x00020003u, m_registry.readNumber("", "LastAndMaxIndex")); // it is only read
}

TEST_F(EventLogProcess, MoreThanFourArchivesAreKeptWhenTheRegistrySaysSo)
{
    useDataPath();
    m_registry.write("", "LastAndMaxIndex", 0x00060004);
    for (int i = 1; i <= 4; ++i)
        m_data.writeFile(archive(i), std::to_string(i));
    m_data.writeFile(kLog, logOfSize(512000));
    EXPECT_EQ(0u, runProgram(programAs("AutoUpdate.exe"), "log 0 hello"));
    EXPECT_EQ("4", m_data.readFile(archive(5)));
    EXPECT_EQ("1", m_data.readFile(archive(2)));
}

TEST_F(EventLogProcess, AFailedFlushIsReportedInTheNewFile)
{
    // Archive 01 is read-only: it can be renamed, but not be opened for flushing. Flushing then logs, in the middle of
    // the rotation.
    useDataPath();
    m_registry.write("", "LastAndMaxIndex", 0x00040001);
    m_data.writeFile(archive(1), "1");
    ::SetFileAttributesA((m_data / archive(1)).c_str(), FILE_ATTRIBUTE_READONLY);
    const std::string full = logOfSize(512000);
    m_data.writeFile(kLog, full);

    EXPECT_EQ(0u, runProgram(programAs("AutoUpdate.exe"), "log 0 hello"));

    EXPECT_EQ("1", m_data.readFile(archive(2)));
    EXPECT_EQ(full, m_data.readFile(archive(1)));
    EXPECT_FALSE(m_data.exists(archive(3)));
    EXPECT_EQ(
        (Events{{"Warning", "RT_File::FlushFile : open failed (" + m_data / archive(2) + ")"}, {"Info", "hello"}}),
        eventsOf(m_data / kLog));
}

TEST_F(EventLogProcess, ARotationThatCannotDeleteTheOldestLetsTheFileGrow)
{
    useDataPath();
    m_registry.write("", "LastAndMaxIndex", 0x00040004);
    for (int i = 1; i <= 4; ++i)
        m_data.writeFile(archive(i), std::to_string(i));
    const aut::UniqueFile held(::CreateFileA((m_data / archive(4)).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                             OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(held);
    m_data.writeFile(kLog, logOfSize(512000));
    EXPECT_EQ(0u, runProgram(programAs("AutoUpdate.exe"), "burst grown 3"));
    EXPECT_EQ((Events{{"Info", "grown 0"}, {"Info", "grown 1"}, {"Info", "grown 2"}}), eventsOf(m_data / kLog));
    EXPECT_EQ("1", m_data.readFile(archive(1)));
}

TEST_F(EventLogProcess, OtherProcessesBelieveInNoArchives)
{
    m_registry.write("", "LastAndMaxIndex", 0x00090007);
    const std::string own = auttest::LogFile::ownPath();
    const std::string folder = own.substr(0, own.rfind('\\') + 1);
    auttest::writeFile(folder + archive(1), "earlier");
    auttest::writeFile(own, logOfSize(512000));
    EXPECT_EQ(0u, runProgram(programAs("Other.exe"), "log 0 one"));
    // Last index 1: archive 01 is not moved up, so the current file stays and grows.
    EXPECT_EQ("earlier", auttest::readFile(folder + archive(1)));
    EXPECT_EQ((Events{{"Info", "one"}}), eventsOf(own));
    auttest::removeAll(folder + archive(1));
}

TEST_F(EventLogProcess, FourProcessesLoseNoEvent)
{
    useDataPath();
    const std::string program = programAs("AutoUpdate.exe");
    constexpr int kEvents = 150;
    std::vector<std::unique_ptr<ChildProgram>> processes;
    for (const char* name : {"a", "b", "c", "d"})
        processes.push_back(
            std::make_unique<ChildProgram>(program, "burst " + std::string(name) + " " + std::to_string(kEvents)));
    for (const auto& process : processes)
        EXPECT_EQ(0u, process->wait());

    const std::string content = m_data.readFile(kLog);
    EXPECT_EQ(1u, countOf(content, "<LogAutoUpdate>"));
    EXPECT_EQ(1u, countOf(content, kClosing));
    EXPECT_EQ(std::size_t{4 * kEvents}, eventsOf(m_data / kLog).size());
    for (const char* name : {"a", "b", "c", "d"})
    {
        for (int i = 0; i < kEvents; ++i)
            EXPECT_EQ(1u, countOf(content, "<Event>" + std::string(name) + " " + std::to_string(i) + "</Event>"));
    }
}

TEST_F(EventLogProcess, FourProcessesRotateOnce)
{
    useDataPath();
    const std::string program = programAs("AutoUpdate.exe");
    const std::string full = logOfSize(512000);
    m_data.writeFile(kLog, full);
    std::vector<std::unique_ptr<ChildProgram>> processes;
    for (const char* name : {"a", "b", "c", "d"})
        processes.push_back(std::make_unique<ChildProgram>(program, "burst " + std::string(name) + " 20"));
    for (const auto& process : processes)
        EXPECT_EQ(0u, process->wait());
    EXPECT_EQ(full, m_data.readFile(archive(1)));
    EXPECT_FALSE(m_data.exists(archive(2)));
    EXPECT_EQ(80u, eventsOf(m_data / kLog).size());
}

TEST_F(EventLogProcess, TheFileIsWholeWheneverAProcessDies)
{
    useDataPath();
    const std::string program = programAs("AutoUpdate.exe");
    for (int run = 0; run < 5; ++run)
    {
        SCOPED_TRACE(run);
        const std::size_t before = m_data.exists(kLog) ? m_data.readFile(kLog).size() : 0;
        ChildProgram process(program, "forever");
        std::size_t size = before;
        for (int i = 0; i < 10000 && size < before + 2000; ++i)
        {
            ::Sleep(1);
            size = m_data.exists(kLog) ? m_data.readFile(kLog).size() : 0;
        }
        process.kill();
        const std::string content = m_data.readFile(kLog);
        EXPECT_LT(before, content.size());
        EXPECT_EQ(content.size() - 18, content.rfind(kClosing));
        EXPECT_EQ(1u, countOf(content, kClosing));
        EXPECT_EQ(countOf(content, "<LogEvent>"), countOf(content, "</LogEvent>\r\n"));
    }
}

TEST_F(EventLogProcess, AnEventOfWhichOnlyAPartCanBeWrittenIsTakenBack)
{
    // A process whose files may not grow over 4,096 bytes writes an event that crosses them, as on a disk that fills
    // up. Only the host can set such a limit, so its shell starts the process.
    useDataPath();
    const std::string before = logOfSize(4000);
    m_data.writeFile(kLog, before);
    programAs("AutoUpdate.exe");
    std::string commandLine = "sh -c \"trap '' XFSZ; ulimit -f 8; PATH=$PATH:/usr/lib/wine;"
                              "wine64 'AutoUpdate.exe' log 0 " +
                              std::string(500, 'x') + "; echo $? >done\"";
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    // The process finds the library by the folder of the test programs being in its path.
    char path[32768] = "";
    ::GetEnvironmentVariableA("WINEPATH", path, sizeof path);
    ::SetEnvironmentVariableA("WINEPATH", (auttest::programFolder() + ";" + path).c_str());
    const BOOL running = ::CreateProcessA("Z:\\bin\\sh", commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                          m_programs.path().c_str(), &startup, &started);
    ::SetEnvironmentVariableA("WINEPATH", path);
    if (running == FALSE)
        GTEST_SKIP() << "the host's shell cannot be started";
    aut::UniqueHandle(started.hProcess).reset();
    aut::UniqueHandle(started.hThread).reset();
    for (int i = 0; i < 3000 && (!m_programs.exists("done") || m_programs.readFile("done").empty()); ++i)
        ::Sleep(10); // it is no process of Windows that could be waited for
    ASSERT_EQ("0\n", m_programs.readFile("done"));
    EXPECT_EQ(before, m_data.readFile(kLog));

    EXPECT_EQ(0u, runProgram(m_programs / "AutoUpdate.exe", "log 0 hello"));
    EXPECT_EQ((Events{{"Info", "hello"}}), eventsOf(m_data / kLog));
}

TEST_F(EventLogProcess, ArchivingBesideAWriterLosesNothing)
{
    useDataPath();
    const std::string program = programAs("AutoUpdate.exe");
    ChildProgram writer(program, "burst w 200");
    for (int i = 0; i < 10000 && !m_data.exists(kLog); ++i)
        ::Sleep(1);
    EXPECT_EQ(0u, runProgram(program, "archive"));
    EXPECT_EQ(0u, writer.wait());

    std::size_t events = 0;
    WIN32_FIND_DATAA found{};
    const aut::UniqueFind search(::FindFirstFileA((m_data / "*.xml").c_str(), &found));
    for (bool more = static_cast<bool>(search); more; more = ::FindNextFileA(search.get(), &found) != FALSE)
        events += eventsOf(m_data / found.cFileName).size();
    EXPECT_EQ(200u, events);
}

namespace
{
int g_commits = 0;
int g_commitsWhileHeld = 0;

/// In the place of the runtime's commit: notes whether other processes can write to the log meanwhile.
int commitAndLook(int)
{
    ++g_commits;
    const aut::UniqueFile other(::CreateFileA(auttest::LogFile::ownPath().c_str(), GENERIC_WRITE,
                                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!other && ::GetLastError() == ERROR_SHARING_VIOLATION)
        ++g_commitsWhileHeld;
    return 0;
}
} // namespace

// Other processes wait for the end of a rotation, and lose events when it takes too long.
TEST_F(EventLogProcess, ARotationFlushesWhenOthersCanWriteAgain)
{
    const std::string own = auttest::LogFile::ownPath();
    const std::string folder = own.substr(0, own.rfind('\\') + 1);
    const auttest::ImportPatch patch("_commit", commitAndLook);
    g_commits = 0;
    g_commitsWhileHeld = 0;
    for (int i = 0; i < 5; ++i) // this process does not know of the archive: it takes a few events to make room
    {
        if (!auttest::fileExists(folder + archive(1)))
            auttest::writeFile(folder + archive(1), "earlier");
        auttest::writeFile(own, logOfSize(512000));
        Log(0, "one more");
    }
    EXPECT_LT(1, g_commits);
    EXPECT_EQ(0, g_commitsWhileHeld);
    for (int i = 1; i <= 4; ++i)
        auttest::removeAll(folder + archive(i));
}
