#ifndef AUTOOLS_TORTURE_FAULTS_SCENARIO_H
#define AUTOOLS_TORTURE_FAULTS_SCENARIO_H

#include "tests/support/ClientRegistry.h"
#include "tests/support/LogFile.h"
#include "tests/support/TestFolder.h"
#include "tests/torture/faults/Jobs.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace faults
{
/// What was found wrong after one fault.
class Problems
{
public:
    void expect(bool holds, const std::string& what)
    {
        if (!holds)
            m_found.push_back(what);
    }
    bool none() const { return m_found.empty(); }
    std::string text() const;

private:
    std::vector<std::string> m_found;
};

/// A job of the client with all it finds and leaves: how it starts, what must hold whenever it is cut short, and what
/// is there when it was done again.
class Scenario
{
public:
    virtual ~Scenario() = default;

    /// A fresh start: the folder, the registry.
    virtual void prepare();
    virtual Job job() const = 0;
    /// The program that does the job and dies.
    virtual std::string program() const;

    /// After a death: how many steps the process had finished.
    virtual void died(int /*progress*/) {}
    /// After a failure, with which the job went on.
    virtual void failed() { m_failed = true; }
    /// Must hold after a death and after a failure.
    virtual void intact(Problems& problems) = 0;
    /// Whether all of the job is done.
    virtual bool isDone() = 0;
    /// The next start does the job.
    virtual void retry(Problems& problems);
    /// Must hold then; that the job is done, and nothing left over.
    virtual void complete(Problems& problems);
    /// Whether the system's own code, between the library and this call, keeps the failure to itself.
    virtual bool isSwallowed(const std::string& /*call*/) const { return false; }
    /// What the job gives when all goes well.
    virtual int success() const { return 1; }

protected:
    std::string path(const std::string& name) const { return *m_folder / name; }
    /// "" also for a file that is not there.
    std::string read(const std::string& name) const;

    auttest::ClientRegistry m_registry;
    std::optional<auttest::TestFolder> m_folder;
    bool m_failed = false; ///< the job has met a failure since it was prepared
};

/// The folder of the test programs.
std::string programFolder();
/// Every file below a folder, by its path, that is nobody's but ours: "*.tmp".
std::vector<std::string> temporaryFiles(const std::string& folder);
/// Runs the program until it ends; its exit status.
DWORD runVictim(Scenario& scenario, const std::string& when, int number);

using Maker = std::unique_ptr<Scenario> (*)();
struct NamedScenario
{
    const char* name;
    Maker make;
    int shortStep; ///< the short form tries each so many-th call
};
const std::vector<NamedScenario>& scenarios();
std::unique_ptr<Scenario> makeLog();
std::unique_ptr<Scenario> makeCache();
std::unique_ptr<Scenario> makeConfiguration();
std::unique_ptr<Scenario> makeList();
std::unique_ptr<Scenario> makeTreeCopy();
std::unique_ptr<Scenario> makeTreeMove();
std::unique_ptr<Scenario> makeTreeRemoval();
std::unique_ptr<Scenario> makeCopy();
std::unique_ptr<Scenario> makeCopyOfNewer();
std::unique_ptr<Scenario> makeCopyToAbsent();
std::unique_ptr<Scenario> makeMove();
std::unique_ptr<Scenario> makeMoveToAbsent();
std::unique_ptr<Scenario> makeWaitingCopy();
std::unique_ptr<Scenario> makeWaitingMove();
std::unique_ptr<Scenario> makeLevel();
std::unique_ptr<Scenario> makeShare();
std::unique_ptr<Scenario> makeUnshare();
std::unique_ptr<Scenario> makeLastUnshare();
std::unique_ptr<Scenario> makeRelease();
} // namespace faults

#endif
