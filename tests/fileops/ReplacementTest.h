#ifndef AUTOOLS_TESTS_FILEOPS_REPLACEMENTTEST_H
#define AUTOOLS_TESTS_FILEOPS_REPLACEMENTTEST_H

#include "fileops/RT_File.h"
#include "platform/UniqueResource.h"
#include "tests/fileops/FileProbe.h"
#include "tests/fileops/StandIns.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/DetailedLog.h"
#include "tests/support/LogFile.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

namespace auttest
{
using Events = std::vector<LogEvent>;

/// A file in use: while this lives, nobody else can open it (but for what is shared), change it or take it away.
class InUse
{
public:
    explicit InUse(const std::string& path, DWORD sharing = 0)
        : m_file(::CreateFileA(path.c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING, 0, nullptr))
    {
        EXPECT_TRUE(m_file) << path << " cannot be held, error " << ::GetLastError();
    }

private:
    aut::UniqueFile m_file;
};

/// What the system does with files at its next start, as it is stored: pairs of source and target, each followed by a
/// bar. Empty again when this is gone.
class PendingMoves
{
public:
    PendingMoves() { clear(); }
    ~PendingMoves() { clear(); }
    PendingMoves(const PendingMoves&) = delete;
    PendingMoves& operator=(const PendingMoves&) = delete;

    std::string text() const
    {
        const auto stored = Registry().readRaw(kKey, kName);
        if (!stored)
            return "";
        std::string bytes = stored->bytes.substr(0, stored->bytes.size() - 1); // without the end of the list
        std::replace(bytes.begin(), bytes.end(), '\0', '|');
        return bytes;
    }
    static std::string move(const std::string& source, const std::string& target)
    {
        return "\\??\\" + source + "|!\\??\\" + target + "|";
    }
    static std::string deletion(const std::string& path) { return "\\??\\" + path + "||"; }

private:
    static constexpr char kKey[] = "System\\CurrentControlSet\\Control\\Session Manager";
    static constexpr char kName[] = "PendingFileRenameOperations";
    static void clear() { Registry().removeValue(kKey, kName); }
};

inline void setReadOnly(const std::string& path)
{
    EXPECT_TRUE(::SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY));
}

/// A source file of a name of its own, a folder to put it into, and everything that a replacement may leave behind:
/// the record, the events of every level, the moves of the next start and the flag.
class ReplacementTest : public ::testing::Test
{
protected:
    ReplacementTest()
    {
        removeAll(temporary);
        spoilResult();
        bRebootNeeded = false;
        log.mark();
    }
    ~ReplacementTest() override
    {
        bRebootNeeded = false;
        removeAll(temporary);
    }

    void expectNothingPending() const
    {
        EXPECT_EQ("", pending.text());
        EXPECT_FALSE(bRebootNeeded);
    }
    /// Nothing recorded, logged or pending.
    void expectQuiet() const
    {
        EXPECT_FALSE(wasRecorded()) << recordedResult();
        EXPECT_EQ(Events{}, log.events());
        expectNothingPending();
    }
    /// The record as its codes and texts, with the phase it had before. The action comes first, then object, function
    /// and arguments.
    static std::string record(int status, long win32, const std::string& action, const std::string& object,
                              const std::string& function, const std::string& argument1)
    {
        return "0," + std::to_string(status) + "," + std::to_string(win32) + ",7," + action + "," + object + "," +
               function + "," + argument1 + ",";
    }

    DetailedLog detailed;
    PendingMoves pending;
    const TestFolder folder;
    const std::string source = folder.writeFile("source\\a_replaced.txt", "new");
    const std::string target = folder / "target\\a_replaced.txt";
    const std::string directory = folder / "target";
    const std::string temporary = "C:\\a_replaced_0.tmp"; ///< the copy that waits for the next start
    LogFile log;
};
} // namespace auttest

#endif
