#include "fileops/ExecCommand.h"
#include "platform/UniqueResource.h"
#include "tests/fileops/StandIns.h"
#include "tests/support/OpenHandles.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <process.h>

#include <thread>

using auttest::currentDirectory;
using auttest::EnvironmentVariable;
using auttest::shortPath;
using auttest::Spawned;
using auttest::SpawnRecorder;

namespace
{
using Lines = std::vector<std::string>;

int exec(std::string commandLine, bool wait = true) { return ExecCommand(commandLine.data(), wait); }

/// Waits for the end of the process that was started without waiting, and closes it. Its exit code.
DWORD end(int spawnResult)
{
    const aut::UniqueHandle process(reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(spawnResult)));
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(process.get(), 30000));
    DWORD code = 0;
    EXPECT_TRUE(::GetExitCodeProcess(process.get(), &code));
    return code;
}

/// Programs are named in the current directory, the test's own folder.
class ExecCommandTest : public auttest::StandInTest
{
protected:
    ExecCommandTest() { EXPECT_TRUE(::SetCurrentDirectoryA(m_folder.path().c_str())); }
};

// ---- Splitting

struct SplitCase
{
    const char* name;
    std::string commandLine;
    Lines arguments;
};
void PrintTo(const SplitCase& row, std::ostream* out) { *out << row.name; }

class Splitting : public ExecCommandTest, public ::testing::WithParamInterface<SplitCase>
{
};

TEST_P(Splitting, GivesTheseArguments)
{
    const std::string program = m_folder.writeFile("p.exe", "");
    const SpawnRecorder spawns;
    EXPECT_EQ(0, exec(GetParam().commandLine));
    EXPECT_EQ(GetParam().arguments, spawns.only().arguments);
    EXPECT_EQ(0, ::lstrcmpiA(shortPath(program).c_str(), shortPath(spawns.only().program).c_str()));
}

const SplitCase kSplitCases[] = {
    {"Alone", "p.exe", {"p.exe"}},
    {"Blanks", "p.exe a b", {"p.exe", "a", "b"}},
    {"Tabs", "p.exe\ta\tb", {"p.exe", "a", "b"}},
    {"RunsOfBlanksAndTabs", "p.exe  a \t b", {"p.exe", "a", "b"}},
    {"BlanksAtBothEnds", "  \t p.exe a \t ", {"p.exe", "a"}},
    {"LineEndsAreNoSeparators", "p.exe a\r\nb", {"p.exe", "a\r\nb"}},
    {"LeadingControlCharacters", "\r\n\x01p.exe \x01\x1f\x20x \x7fy", {"p.exe", "x", "\x7fy"}},
    {"NothingButControlCharactersIsNoArgument", "p.exe \x01 \n a \x1f", {"p.exe", "a"}},
    {"TrailingControlCharactersStay", "p.exe a\x01 b\n", {"p.exe", "a\x01", "b\n"}},
    {"LettersBeyondAsciiStay", "p.exe \xe4 \xff", {"p.exe", "\xe4", "\xff"}},
    {"QuotedBlanks", "p.exe \"a b\" c", {"p.exe", "\"a b\"", "c"}},
    {"QuotedTabs", "p.exe \"a\tb\"", {"p.exe", "\"a\tb\""}},
    {"QuotedLeadingBlanksStay", "p.exe \" \x01 a\"", {"p.exe", "\" \x01 a\""}},
    {"EmptyQuotes", "p.exe \"\" a", {"p.exe", "\"\"", "a"}},
    {"EmptyQuotesAtTheEnd", "p.exe \"\"", {"p.exe", "\"\""}},
    {"QuotesInside", "p.exe a\"b c\"d e", {"p.exe", "a\"b c\"d", "e"}},
    {"QuotesSideBySide", "p.exe \"a b\"\"c d\" e", {"p.exe", "\"a b\"\"c d\"", "e"}},
    {"QuoteLeftOpen", "p.exe \"a b", {"p.exe", "\"a b"}},
    {"BackslashDoesNotEscape", "p.exe \"a\\\" b\" c\"", {"p.exe", "\"a\\\"", "b\" c\""}},
    {"QuotedProgram", "\"p.exe\" a", {"\"p.exe\"", "a"}},
    {"OtherSeparatorsAreNone", "p.exe a,b;c=d'e f'", {"p.exe", "a,b;c=d'e", "f'"}},
};

INSTANTIATE_TEST_SUITE_P(ExecCommand, Splitting, ::testing::ValuesIn(kSplitCases),
                         [](const auto& row) { return row.param.name; });

TEST_F(ExecCommandTest, OnlyTheProgramLosesItsEnclosingQuotes)
{
    m_folder.writeFile("with blank.exe", "");
    const SpawnRecorder spawns;
    EXPECT_EQ(0, exec("\"with blank.exe\" \"with blank.exe\""));
    EXPECT_EQ((Lines{"\"with blank.exe\"", "\"with blank.exe\""}), spawns.only().arguments);
    EXPECT_EQ("with blank.exe", spawns.only().program.substr(spawns.only().program.rfind('\\') + 1));
}

TEST_F(ExecCommandTest, QuotesThatDoNotEncloseTheProgramBelongToItsName)
{
    m_folder.writeFile("p.exe", "");
    const SpawnRecorder spawns;
    for (const char* const line : {"\"p.exe", "p.exe\"", "p\".exe\"", "\"p\".exe", "\"p.exe\"x\"", "\"", "\"\"",
                                   "\" \"", "\"\" p.exe", "\"\"p.exe\"\""})
        EXPECT_EQ(-1, exec(line)) << line;
    EXPECT_TRUE(spawns.all().empty());
}

TEST_F(ExecCommandTest, WithoutArgumentTheResultIsMinusOne)
{
    const SpawnRecorder spawns;
    EXPECT_EQ(-1, ExecCommand(nullptr, true));
    EXPECT_EQ(-1, ExecCommand(nullptr, false));
    for (const char* const line : {"", " ", " \t  ", "\x01\x1f\r\n"})
    {
        EXPECT_EQ(-1, exec(line, true)) << line;
        EXPECT_EQ(-1, exec(line, false)) << line;
    }
    EXPECT_TRUE(spawns.all().empty());
    EXPECT_EQ(m_folder.path(), currentDirectory()) << "nobody went anywhere";
}

TEST_F(ExecCommandTest, TheTextIsOnlyRead)
{
    m_folder.writeFile("p.exe", "");
    const SpawnRecorder spawns;
    std::string line = " \"p.exe\"  \"a b\"\tc ";
    const std::string before = line;
    EXPECT_EQ(0, ExecCommand(line.data(), true));
    EXPECT_EQ(before, line);
}

TEST_F(ExecCommandTest, LongArgumentsStayWhole)
{
    m_folder.writeFile("p.exe", "");
    const SpawnRecorder spawns;
    const std::string text = "\"" + std::string(5000, 'a') + " " + std::string(5000, 'b') + "\"";
    EXPECT_EQ(0, exec("p.exe " + text));
    EXPECT_EQ((Lines{"p.exe", text}), spawns.only().arguments);
}

TEST_F(ExecCommandTest, ManyArgumentsAreAllPassed)
{
    m_folder.writeFile("p.exe", "");
    const SpawnRecorder spawns;
    std::string line = "p.exe";
    for (int i = 0; i < 5000; ++i)
        line += " " + std::to_string(i);
    EXPECT_EQ(0, exec(line));
    ASSERT_EQ(5001U, spawns.only().arguments.size());
    EXPECT_EQ("4999", spawns.only().arguments.back());
}

TEST_F(ExecCommandTest, AProgramOfTenThousandCharactersIsNotFound)
{
    EXPECT_EQ(-1, exec(std::string(10000, 'p')));
    EXPECT_EQ(-1, exec("\"C:\\" + std::string(10000, 'p') + ".exe\" a"));
    EXPECT_EQ(-1, exec("C:\\" + std::string(10000, '\\') + "p.exe"));
    EXPECT_EQ(-1, exec(std::string(10000, '"')));
}

// ---- Waiting and results

TEST_F(ExecCommandTest, WaitingIsTheSpawnsOwn)
{
    m_folder.writeFile("p.exe", "");
    {
        const SpawnRecorder spawns(42);
        EXPECT_EQ(42, exec("p.exe", true));
        EXPECT_EQ(_P_WAIT, spawns.only().mode);
    }
    const SpawnRecorder spawns(0x174);
    EXPECT_EQ(0x174, exec("p.exe", false));
    EXPECT_EQ(_P_NOWAIT, spawns.only().mode);
}

TEST_F(ExecCommandTest, TheResultOfWaitingIsTheWholeExitCode)
{
    const std::string line = "\"" + copy("recorder.exe", "p.exe") + "\"";
    for (const DWORD code : {0UL, 1UL, 99UL, 255UL, 256UL, 0x7FFFFFFFUL, 0x80000000UL, 0xC0000005UL, 0xFFFFFFFFUL})
    {
        const EnvironmentVariable exit("AUTTEST_EXIT", std::to_string(code).c_str());
        EXPECT_EQ(static_cast<int>(code), exec(line)) << code;
    }
}

TEST_F(ExecCommandTest, WaitsForAsLongAsTheProgramTakes)
{
    const std::string name = "AutTestGoOn" + std::to_string(::GetCurrentProcessId());
    const aut::UniqueHandle goOn(::CreateEventA(nullptr, TRUE, FALSE, name.c_str()));
    const EnvironmentVariable event("AUTTEST_EVENT", name.c_str());
    const EnvironmentVariable exit("AUTTEST_EXIT", "5");
    const std::string line = "\"" + copy("recorder.exe", "p.exe") + "\"";
    const aut::UniqueHandle done(::CreateEventA(nullptr, TRUE, FALSE, nullptr));
    int outcome = -2;
    std::thread caller(
        [&]
        {
            outcome = exec(line);
            ::SetEvent(done.get());
        });
    while (recorded().size() < 2) // it runs
        ::Sleep(5);
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), ::WaitForSingleObject(done.get(), 100));
    ::SetEvent(goOn.get());
    caller.join();
    EXPECT_EQ(5, outcome);
}

TEST_F(ExecCommandTest, WithoutWaitingTheResultIsTheProcessWhichTheCallerCloses)
{
    const std::string name = "AutTestGoOn" + std::to_string(::GetCurrentProcessId());
    const aut::UniqueHandle goOn(::CreateEventA(nullptr, TRUE, FALSE, name.c_str()));
    const EnvironmentVariable event("AUTTEST_EVENT", name.c_str());
    const EnvironmentVariable exit("AUTTEST_EXIT", "6");
    const std::string line = "\"" + copy("recorder.exe", "p.exe") + "\"";
    const int process = exec(line, false);
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT),
              ::WaitForSingleObject(reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(process)), 100));
    ::SetEvent(goOn.get());
    EXPECT_EQ(6U, end(process));
}

TEST_F(ExecCommandTest, AProgramThatCannotBeStartedGivesMinusOne)
{
    const std::string empty = m_folder.writeFile("empty.exe", "");
    for (const bool wait : {true, false})
    {
        EXPECT_EQ(-1, exec("\"" + empty + "\"", wait));
        EXPECT_EQ(-1, exec("\"" + (m_folder / "missing.exe") + "\"", wait));
        EXPECT_EQ(-1, exec("\"" + (m_folder / "missing\\p.exe") + "\"", wait));
        EXPECT_EQ(-1, exec("\"" + m_folder.path() + "\"", wait));
        EXPECT_EQ(-1, exec("\"" + m_folder.path() + "\\\"", wait));
        EXPECT_EQ(-1, exec("nosuchprogram.exe", wait));
    }
}

TEST_F(ExecCommandTest, TheProgramGetsItsArgumentsWhole)
{
    const std::string program = copy("recorder.exe", "with blank.exe");
    const std::string arguments = "\"a b\" c \"\" \"" + std::string(9000, 'x') + " \"";
    EXPECT_EQ(0, exec("\"" + program + "\"  " + arguments + " "));
    EXPECT_EQ("\"" + program + "\" " + arguments, recorded().at(0));
}

// ---- The current directory

TEST_F(ExecCommandTest, TheProgramStartsInItsOwnFolderInShortForm)
{
    const std::string program = copy("recorder.exe", "folder with a long name\\p.exe");
    EXPECT_EQ(0, exec("\"" + program + "\""));
    EXPECT_EQ(shortPath(m_folder / "folder with a long name"), recorded().at(1));
    EXPECT_NE(m_folder / "folder with a long name", recorded().at(1));

    const SpawnRecorder spawns;
    exec("\"" + program + "\"", false);
    EXPECT_EQ(shortPath(m_folder / "folder with a long name"), spawns.only().directory);
}

TEST_F(ExecCommandTest, TheCurrentDirectoryComesBackInShortForm)
{
    const std::string home = m_folder.makeFolder("the folder of the caller");
    const std::string program = copy("recorder.exe", "other folder\\p.exe");
    const std::string notAProgram = m_folder.writeFile("other folder\\empty.exe", "");
    for (const std::string& path :
         {program, notAProgram, m_folder / "other folder\\missing.exe", m_folder / "no\\p.exe"})
        for (const bool wait : {true, false})
        {
            ASSERT_TRUE(::SetCurrentDirectoryA(home.c_str()));
            const int outcome = exec("\"" + path + "\"", wait);
            EXPECT_EQ(shortPath(home), currentDirectory()) << path;
            if (!wait && outcome != -1)
                end(outcome);
        }
}

TEST_F(ExecCommandTest, ADirectoryThatTheCodePageCannotSpellComesBackToo)
{
    const std::wstring home =
        std::wstring(m_folder.path().begin(), m_folder.path().end()) + L"\\\x0416\x4E2D\x05D0 and more";
    ASSERT_TRUE(::CreateDirectoryW(home.c_str(), nullptr));
    ASSERT_TRUE(::SetCurrentDirectoryW(home.c_str()));
    wchar_t expected[MAX_PATH];
    ASSERT_NE(0U, ::GetShortPathNameW(home.c_str(), expected, MAX_PATH));

    EXPECT_EQ(0, exec("\"" + copy("recorder.exe", "other folder\\p.exe") + "\""));
    EXPECT_EQ(shortPath(m_folder / "other folder"), recorded().at(1));
    wchar_t directory[MAX_PATH];
    ASSERT_NE(0U, ::GetCurrentDirectoryW(MAX_PATH, directory));
    EXPECT_STREQ(expected, directory);
    ::SetCurrentDirectoryA(m_folder.path().c_str());
    EXPECT_TRUE(::RemoveDirectoryW(home.c_str()));
}

TEST_F(ExecCommandTest, AProgramInTheRootOfADriveStartsThere)
{
    const std::string program = "C:\\auttest-p.exe";
    auttest::writeFile(program, "");
    {
        const SpawnRecorder spawns;
        EXPECT_EQ(0, exec(program));
        EXPECT_EQ("C:\\", spawns.only().directory);
        EXPECT_EQ(program, spawns.only().program);
    }
    auttest::removeAll(program);
}

TEST_F(ExecCommandTest, ARelativeProgramCountsFromTheCallersDirectory)
{
    copy("recorder.exe", "a folder\\p.exe");
    for (const char* const line : {"\"a folder\\p.exe\" x", "\".\\a folder\\p.exe\" x", "\"a folder/p.exe\" x"})
    {
        forget();
        ASSERT_TRUE(::SetCurrentDirectoryA(m_folder.path().c_str()));
        EXPECT_EQ(0, exec(line)) << line;
        ASSERT_EQ(2U, recorded().size()) << line;
        EXPECT_EQ(line, recorded().at(0)) << "the arguments stay as they were given";
        EXPECT_EQ(shortPath(m_folder / "a folder"), recorded().at(1)) << line;
    }
}

// ---- Nothing leaks

/// What the heaps of this process hold.
std::size_t heapBytes()
{
    HANDLE heaps[64];
    const DWORD count = ::GetProcessHeaps(64, heaps);
    EXPECT_LE(count, 64U);
    std::size_t bytes = 0;
    for (DWORD i = 0; i < count && i < 64; ++i)
    {
        PROCESS_HEAP_ENTRY entry{};
        ::HeapLock(heaps[i]);
        while (::HeapWalk(heaps[i], &entry))
            bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0;
        ::HeapUnlock(heaps[i]);
    }
    return bytes;
}

TEST_F(ExecCommandTest, AThousandRoundsLeaveNoHandleAndNoMemory)
{
    const std::string program = "\"" + copy("recorder.exe", "p.exe") + "\" \"a b\" c";
    const std::string notAProgram = "\"" + m_folder.writeFile("empty.exe", "") + "\" \"a b\" c";
    const EnvironmentVariable noRecord("AUTTEST_RECORD", nullptr);
    const auto round = [&](int i)
    {
        if (i % 10 == 0) // to start a program takes long
        {
            EXPECT_EQ(0, exec(program));
        }
        if (i % 50 == 0)
        {
            EXPECT_EQ(0U, end(exec(program, false)));
        }
        EXPECT_EQ(-1, exec(notAProgram));
        EXPECT_EQ(-1, exec("nosuchprogram a b c"));
        EXPECT_EQ(-1, exec(" "));
    };
    for (int i = 0; i < 30; ++i)
        round(i); // what is loaded and kept once
    const std::size_t handles = auttest::openHandles();
    const std::size_t bytes = heapBytes();
    for (int i = 0; i < 1000; ++i)
        round(i);
    EXPECT_EQ(handles, auttest::openHandles());
    EXPECT_LT(heapBytes(), bytes + 100) << "less than one byte for each start";
}
} // namespace
