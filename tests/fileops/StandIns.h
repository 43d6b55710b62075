#ifndef AUTOOLS_TESTS_FILEOPS_STANDINS_H
#define AUTOOLS_TESTS_FILEOPS_STANDINS_H

#include "tests/support/ImportPatch.h"
#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace auttest
{
/// A variable of this process's environment, which its children inherit. The old value comes back at the end.
class EnvironmentVariable
{
public:
    /// Null removes it.
    EnvironmentVariable(const char* name, const char* value);
    ~EnvironmentVariable();
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

    static std::string read(const char* name);

private:
    std::string m_name;
    std::string m_before;
    bool m_wasThere;
};

/// One start of a program by the library, as the runtime's spawn was asked for it.
struct Spawned
{
    int mode = -1;
    std::string program;
    std::vector<std::string> arguments;
    std::string directory; ///< the current one at that moment

    /// The command line that the runtime makes of the arguments.
    std::string commandLine() const;
};

/// Keeps the library from starting programs while this lives and remembers what it wanted to start. There may be one at
/// a time.
class SpawnRecorder
{
public:
    explicit SpawnRecorder(std::intptr_t outcome = 0);
    const std::vector<Spawned>& all() const;
    /// The only one; fails the running test when there were more or none.
    Spawned only() const;

private:
    ImportPatch m_patch;
};

/// Tests that run programs: in a folder of their own, with what the stand-ins record, and back in the old current
/// directory at the end.
class StandInTest : public ::testing::Test
{
protected:
    StandInTest();
    ~StandInTest() override;

    /// Copies a stand-in (recorder.exe, comserver.dll, neighbour.dll, needsneighbour.dll) into the folder under another
    /// name, which may hold folders, and returns its full path.
    std::string copy(const char* standIn, const std::string& name) const;
    /// The lines that the stand-ins have recorded.
    std::vector<std::string> recorded() const;
    void forget() const;

    const TestFolder m_folder;
    const EnvironmentVariable m_record;

private:
    std::wstring m_directory;
};

/// The short form of a path that exists.
std::string shortPath(const std::string& path);
/// The names as they are on disk; the path itself when it does not exist.
std::string longPath(const std::string& path);
std::string currentDirectory();
std::string systemDirectory();
/// Leaves something in every field of `result` (phase 7), so that a record shows all that it writes and all that it
/// does not; wasRecorded() tells whether anything was.
void spoilResult();
bool wasRecorded();
/// All fields: lead code, status, system error, phase, action, object, function, both arguments.
std::string recordedResult();
} // namespace auttest

#endif
