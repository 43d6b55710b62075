// What systems below the NT family carry out at their next start: seen from outside, in a process that sees such a
// system. Windows versions too new to be classified belong here.

#include "tests/fileops/ReplacementTest.h"
#include "tests/system/Processes.h"

#include <cstdlib>
#include <ctime>
#include <map>

using auttest::Events;
using auttest::InUse;
using auttest::Registry;
using auttest::shortPath;

namespace
{
constexpr char kProgram[] = "fileops_helper.exe";
constexpr char kSettings[] = "C:\\windows\\wininit.ini";
constexpr char kRunOnce[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\RunServicesOnce";

struct System
{
    const char* version;
    const char* value;
};
void PrintTo(const System& system, std::ostream* out) { *out << system.version; }

class StartupRenames : public auttest::ReplacementTest, public ::testing::WithParamInterface<System>
{
protected:
    StartupRenames() : m_version(GetParam().version, kProgram)
    {
        clear();
        folder.makeFolder("target");
        auttest::writeFile(target, "old");
        auttest::writeFile(plainTarget, "old");
    }
    ~StartupRenames() override { clear(); }

    /// Runs one operation in a process that sees the older system.
    void run(const std::string& arguments)
    {
        log.mark();
        const auttest::HelperRun helper = auttest::runHelper(arguments, kProgram);
        ASSERT_EQ(4u, helper.lines.size());
        returned = helper.lines[0] == "true";
        restartNeeded = helper.lines[1] == "restart needed";
        EXPECT_EQ(std::string("system ") + GetParam().value, helper.lines[2]);
        recorded = helper.lines[3];
    }
    void expectRegistered(const std::string& forTarget)
    {
        EXPECT_TRUE(returned);
        EXPECT_TRUE(restartNeeded);
        EXPECT_EQ("", recorded);
        EXPECT_EQ((Events{{"Warning", "Reboot Needed: " + forTarget}}), log.events());
        EXPECT_EQ("", pending.text());
    }
    void expectRefused(const std::string& expected)
    {
        EXPECT_FALSE(returned);
        EXPECT_FALSE(restartNeeded);
        EXPECT_EQ(expected, recorded);
        EXPECT_EQ(Events{}, log.events());
    }
    /// The lines of the [Rename] section, each followed by a bar; "" when there is no such file.
    static std::string renames()
    {
        if (!auttest::fileExists(kSettings))
            return "";
        std::string text = auttest::readFile(kSettings);
        const std::string head = "[Rename]\r\n";
        EXPECT_EQ(head, text.substr(0, head.size()));
        std::string lines;
        for (std::size_t at = head.size(); at < text.size();)
        {
            const std::size_t end = text.find("\r\n", at);
            if (end > at)
                lines += text.substr(at, end - at) + "|";
            at = end + 2;
        }
        return lines;
    }
    /// The commands that run once, by their name.
    static std::map<std::string, std::string> commands()
    {
        std::map<std::string, std::string> all;
        for (const std::string& name : Registry().valueNames(kRunOnce))
            all[name] = Registry().readText(kRunOnce, name.c_str()).value_or("(no text)");
        return all;
    }
    std::string overwrite(const std::string& file, const std::string& onto, int mode) const
    {
        return "overwrite \"" + file + "\" \"" + onto + "\" " + std::to_string(mode);
    }

    const std::string plainSource = folder.writeFile("source\\plain.txt", "new");
    const std::string plainTarget = folder / "target\\plain.txt";
    bool returned = false;
    bool restartNeeded = false;
    std::string recorded;

private:
    static void clear()
    {
        auttest::removeAll(kSettings);
        Registry().removeKey(kRunOnce);
        Registry().createKey(kRunOnce);
    }

    const auttest::HelperWindowsVersion m_version;
};

INSTANTIATE_TEST_SUITE_P(OlderSystems, StartupRenames, ::testing::Values(System{"win98", "6"}, System{"win10", "0"}),
                         [](const auto& row) { return row.param.version; });

TEST_P(StartupRenames, AShortNameIsRenamed)
{
    run(overwrite(plainSource, plainTarget, 0));
    expectRegistered(plainTarget);
    EXPECT_EQ(shortPath(plainTarget) + "=" + shortPath(plainSource) + "|", renames());
    EXPECT_TRUE(commands().empty());
}

TEST_P(StartupRenames, TheNameIsComparedWithoutRegardToCase)
{
    run(overwrite(folder / "source\\PLAIN.TXT", plainTarget, 0));
    expectRegistered(plainTarget);
    EXPECT_EQ(shortPath(plainTarget) + "=" + shortPath(plainSource) + "|", renames());
    EXPECT_TRUE(commands().empty());
}

TEST_P(StartupRenames, ALongNameNeedsACommandThatRunsOnce)
{
    const std::string directoryOnly = shortPath(directory);
    const std::time_t before = std::time(nullptr);
    run(overwrite(source, target, 0));
    const std::time_t after = std::time(nullptr);
    expectRegistered(target);
    EXPECT_EQ("", renames());
    const auto all = commands();
    ASSERT_EQ(1u, all.size());
    EXPECT_EQ("Command.com /C C:\\windows\\Command\\Move.exe /Y " + shortPath(source) + " " + directoryOnly +
                  "\\a_replaced.txt",
              all.begin()->second);

    // The generator has just been seeded with the time.
    bool isNextNumber = false;
    for (std::time_t time = before; time <= after; ++time)
    {
        std::srand(static_cast<unsigned>(time));
        isNextNumber = isNextNumber || all.begin()->first == std::to_string(std::rand());
    }
    EXPECT_TRUE(isNextNumber) << all.begin()->first;
}

TEST_P(StartupRenames, ACommandThatHasNotRunYetIsNotOverwritten)
{
    const std::time_t now = std::time(nullptr);
    std::map<std::string, std::string> expected;
    for (std::time_t time = now; time < now + 30; ++time)
    {
        std::srand(static_cast<unsigned>(time));
        expected[std::to_string(std::rand())] = "waits";
    }
    for (const auto& [name, command] : expected)
        Registry().write(kRunOnce, name.c_str(), command);
    run(overwrite(source, target, 0));
    expectRegistered(target);
    auto all = commands();
    EXPECT_EQ(expected.size() + 1, all.size());
    for (const auto& [name, command] : expected)
        EXPECT_EQ(command, all[name]);
}

TEST_P(StartupRenames, AnotherNameThanTheTargetsNeedsACommandToo)
{
    run(overwrite(plainSource, folder.writeFile("target\\other.txt", "old"), 0));
    EXPECT_TRUE(returned);
    EXPECT_EQ("", renames());
    const auto all = commands();
    ASSERT_EQ(1u, all.size());
    EXPECT_EQ("Command.com /C C:\\windows\\Command\\Move.exe /Y " + shortPath(plainSource) + " " +
                  shortPath(directory) + "\\plain.txt",
              all.begin()->second);
}

TEST_P(StartupRenames, ATargetThatIsNotThereKeepsItsPath)
{
    run(overwrite(plainSource, "C:\\nowhere\\plain.txt", 0));
    expectRegistered("C:\\nowhere\\plain.txt");
    EXPECT_EQ("C:\\nowhere\\plain.txt=" + shortPath(plainSource) + "|", renames());
}

TEST_P(StartupRenames, ATargetWithoutAFolderWritesNothing)
{
    for (const char* bare : {"plain.txt", "other.txt", "C:plain.txt"})
    {
        run(overwrite(plainSource, bare, 0));
        expectRegistered(bare);
    }
    EXPECT_EQ("", renames());
    EXPECT_TRUE(commands().empty());
}

TEST_P(StartupRenames, AnyOtherModeWritesNothing)
{
    run(overwrite(plainSource, plainTarget, 2));
    expectRegistered(plainTarget);
    EXPECT_EQ("", renames());
    EXPECT_TRUE(commands().empty());
}

TEST_P(StartupRenames, EveryDeletionIsKeptTheLatestFirst)
{
    run(overwrite(plainSource, plainTarget, 1));
    expectRegistered(plainTarget);
    EXPECT_EQ("NUL=" + shortPath(plainSource) + "|", renames());
    run(overwrite(source, target, 1));
    EXPECT_EQ("NUL=" + shortPath(source) + "|NUL=" + shortPath(plainSource) + "|", renames());
    run(overwrite(plainSource, plainTarget, 1)); // once more
    EXPECT_EQ("NUL=" + shortPath(plainSource) + "|NUL=" + shortPath(source) + "|", renames());
    EXPECT_TRUE(commands().empty());
}

TEST_P(StartupRenames, AReplacementTakesBackTheDeletionOfItsTarget)
{
    run(overwrite(source, source, 1));
    run(overwrite(plainTarget, plainTarget, 1));
    run(overwrite(plainSource, plainTarget, 0));
    EXPECT_EQ("NUL=" + shortPath(source) + "|" + shortPath(plainTarget) + "=" + shortPath(plainSource) + "|",
              renames());
}

TEST_P(StartupRenames, TheKeyNamesTheLatestDeletionBehindTheReplacementItFollows)
{
    run(overwrite(source, source, 1));
    run(overwrite(plainSource, plainTarget, 0));
    run(overwrite(plainTarget, plainTarget, 1));
    EXPECT_EQ(shortPath(plainTarget) + "=" + shortPath(plainSource) + "|NUL=" + shortPath(plainTarget) +
                  "|NUL=" + shortPath(source) + "|",
              renames());
    char value[MAX_PATH] = "";
    ::GetPrivateProfileStringA("Rename", "NUL", "", value, sizeof value, kSettings);
    EXPECT_EQ(shortPath(plainTarget), value);
}

TEST_P(StartupRenames, ADeletionLeavesWhatOthersHaveWrittenInItsOrder)
{
    auttest::writeFile(kSettings, "[Rename]\r\nC:\\B=C:\\A\r\nnul=C:\\C\r\nC:\\NUL=C:\\D\r\nNULL=C:\\E\r\n");
    run(overwrite(plainSource, plainSource, 1));
    EXPECT_EQ("C:\\B=C:\\A|C:\\NUL=C:\\D|NULL=C:\\E|NUL=" + shortPath(plainSource) + "|nul=C:\\C|", renames());
}

TEST_P(StartupRenames, ASecondReplacementOfTheSameTargetWins)
{
    run(overwrite(plainSource, plainTarget, 0));
    const std::string later = folder.writeFile("later\\plain.txt", "newer");
    run(overwrite(later, plainTarget, 0));
    EXPECT_EQ(shortPath(plainTarget) + "=" + shortPath(later) + "|", renames());
}

TEST_P(StartupRenames, ManyDeletionsAreAllKept)
{
    std::string lines;
    for (int i = 0; i < 500; ++i)
        lines += "NUL=C:\\some\\longer\\path\\of\\another\\" + std::to_string(i) + ".txt\r\n";
    auttest::writeFile(kSettings, "[Rename]\r\n" + lines);
    run(overwrite(plainSource, plainSource, 1));
    const std::string kept = renames();
    EXPECT_EQ("NUL=" + shortPath(plainSource) + "|", kept.substr(0, kept.find('|') + 1));
    EXPECT_EQ(501, std::count(kept.begin(), kept.end(), '|'));
    EXPECT_NE(std::string::npos, kept.find("\\499.txt|"));
}

TEST_P(StartupRenames, MoveToATargetInUseIsRenamed)
{
    const InUse held(plainTarget);
    run("move \"" + plainSource + "\" \"" + directory + "\" 1");
    expectRegistered(plainTarget);
    EXPECT_EQ(shortPath(plainTarget) + "=" + shortPath(plainSource) + "|", renames());
}

TEST_P(StartupRenames, RemovingAFileInUseIsADeletion)
{
    const InUse held(plainTarget);
    run("remove \"" + plainTarget + "\" 1");
    expectRegistered(plainTarget);
    EXPECT_EQ("NUL=" + shortPath(plainTarget) + "|", renames());
}

TEST_P(StartupRenames, ACopyTakesThePlaceOfTheSourceButNotOfItsName)
{
    auttest::removeAll("C:\\plain_0.tmp");
    const InUse held(plainTarget);
    run("copy \"" + plainSource + "\" \"" + directory + "\" 0");
    expectRegistered(plainTarget);
    EXPECT_EQ(shortPath(plainTarget) + "=C:\\plain_0.tmp|", renames());
    EXPECT_EQ("new", auttest::readFile("C:\\plain_0.tmp"));
    EXPECT_TRUE(commands().empty());
    auttest::removeAll("C:\\plain_0.tmp");
}

TEST_P(StartupRenames, ACopyOfALongNameNeedsACommand)
{
    const InUse held(target);
    run("copy \"" + source + "\" \"" + directory + "\" 2");
    expectRegistered(target);
    EXPECT_EQ("", renames());
    const auto all = commands();
    ASSERT_EQ(1u, all.size());
    EXPECT_EQ("Command.com /C C:\\windows\\Command\\Move.exe /Y " + shortPath(temporary) + " " + shortPath(directory) +
                  "\\a_replaced.txt",
              all.begin()->second);
    EXPECT_EQ("new", auttest::readFile(temporary));
}

TEST_P(StartupRenames, AnEqualsSignWouldNameAnotherFileAndIsRefused)
{
    const std::string split = "C:\\no=where\\plain.txt";
    run(overwrite(plainSource, split, 0));
    expectRefused("0,465,123,0,Unable to move file," + plainSource + ",RT_File::OverWriteFileAtNextReboot," + split +
                  ",");
    run("later \"" + plainSource + "\" \"" + split + "\"");
    expectRefused("0,465,123,0,Error during file move,C:\\plain_0.tmp,RT_File::CopyFileAtNextReboot," + split + ",");
    EXPECT_FALSE(auttest::fileExists("C:\\plain_0.tmp"));
    EXPECT_EQ("", renames());
}

TEST_P(StartupRenames, APathThatIsTooLongIsRefused)
{
    const std::string longTarget = "C:\\" + std::string(300, 'x') + "\\plain.txt";
    run(overwrite(plainSource, longTarget, 0));
    expectRefused("0,465,206,0,Unable to move file," + plainSource + ",RT_File::OverWriteFileAtNextReboot," +
                  longTarget.substr(0, 259) + ",");
    run(overwrite("C:\\" + std::string(300, 'x'), plainTarget, 1));
    EXPECT_FALSE(returned);
    EXPECT_EQ("", renames());
    EXPECT_TRUE(commands().empty());
}

TEST_P(StartupRenames, SettingsThatCannotBeWrittenAreARefusal)
{
    auttest::writeFile(kSettings, "[Rename]\r\n");
    auttest::setReadOnly(kSettings);
    for (const int mode : {0, 1})
    {
        run(overwrite(plainSource, plainTarget, mode));
        EXPECT_FALSE(returned);
        EXPECT_FALSE(restartNeeded);
        EXPECT_EQ(0u, recorded.find("0,465,5,0,Unable to move file," + plainSource)) << recorded;
    }
    EXPECT_EQ("", renames());
}

/// The first and the last system of this family.
class EveryOlderSystem : public StartupRenames
{
};
INSTANTIATE_TEST_SUITE_P(OlderSystems, EveryOlderSystem, ::testing::Values(System{"win95", "1"}, System{"winme", "7"}),
                         [](const auto& row) { return row.param.version; });

TEST_P(EveryOlderSystem, RenamesShortNamesAndRunsCommandsForLongOnes)
{
    run(overwrite(plainSource, plainTarget, 0));
    expectRegistered(plainTarget);
    EXPECT_EQ(shortPath(plainTarget) + "=" + shortPath(plainSource) + "|", renames());
    run(overwrite(source, target, 0));
    expectRegistered(target);
    EXPECT_EQ(1u, commands().size());
}

/// The NT family, from its first version on, writes neither.
class NtFamilyRenames : public StartupRenames
{
};
INSTANTIATE_TEST_SUITE_P(NtFamily, NtFamilyRenames,
                         ::testing::Values(System{"nt40", "8"}, System{"win2k", "9"}, System{"win7", "12"}),
                         [](const auto& row) { return row.param.version; });

TEST_P(NtFamilyRenames, TakesTheDelayedMove)
{
    run(overwrite(plainSource, plainTarget, 0));
    EXPECT_TRUE(returned);
    EXPECT_TRUE(restartNeeded);
    run("later \"" + source + "\" \"" + target + "\"");
    EXPECT_TRUE(returned);
    EXPECT_EQ(auttest::PendingMoves::move(plainSource, plainTarget) + auttest::PendingMoves::move(temporary, target),
              pending.text());
    EXPECT_EQ("", renames());
    EXPECT_TRUE(commands().empty());
}
} // namespace
