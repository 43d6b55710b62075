#include "tests/torture/faults/Scenario.h"

#include "platform/UniqueResource.h"
#include "tests/foundation/ChildProgram.h"

#include <windows.h>

namespace faults
{
namespace
{
void addTemporaryFiles(const std::string& folder, std::vector<std::string>& files)
{
    WIN32_FIND_DATAA found{};
    const aut::UniqueFind search(::FindFirstFileA((folder + "\\*").c_str(), &found));
    for (bool more = static_cast<bool>(search); more; more = ::FindNextFileA(search.get(), &found) != FALSE)
    {
        const std::string name = found.cFileName;
        if (name == "." || name == "..")
            continue;
        if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
            addTemporaryFiles(folder + "\\" + name, files);
        else if (name.size() > 4 && name.compare(name.size() - 4, 4, ".tmp") == 0)
            files.push_back(folder + "\\" + name);
    }
}
} // namespace

std::string Problems::text() const
{
    std::string text;
    for (const std::string& one : m_found)
        text += "\n  " + one;
    return text;
}

void Scenario::prepare()
{
    m_failed = false;
    m_folder.reset();
    m_folder.emplace();
    m_registry.removeKey("");
    m_registry.write("", "DataPath", m_folder->makeFolder("data"));
}

std::string Scenario::program() const { return programFolder() + "\\victim_program.exe"; }

void Scenario::retry(Problems& problems)
{
    const int outcome = run(job(), [] {});
    problems.expect(outcome == success(), "done again, the job gives " + std::to_string(outcome));
}

void Scenario::complete(Problems& problems)
{
    problems.expect(isDone(), "done again, the job is not done");
    for (const std::string& file : temporaryFiles(m_folder->path()))
        problems.expect(false, file + " is left");
}

std::string Scenario::read(const std::string& name) const
{
    return m_folder->exists(name) ? m_folder->readFile(name) : std::string();
}

std::string programFolder() { return auttest::programFolder(); }

std::vector<std::string> temporaryFiles(const std::string& folder)
{
    std::vector<std::string> files;
    addTemporaryFiles(folder, files);
    return files;
}

DWORD runVictim(Scenario& scenario, const std::string& when, int number)
{
    const Job job = scenario.job();
    return auttest::runProgram(scenario.program(), job.name + " \"" + job.folder + "\" \"" + job.extra + "\" " + when +
                                                       " " + std::to_string(number));
}

const std::vector<NamedScenario>& scenarios()
{
    static const std::vector<NamedScenario> kScenarios = {
        {"logging through a rotation", makeLog, 17},
        {"saving a cache file", makeCache, 1},
        {"updating the client's configuration", makeConfiguration, 17},
        {"accepting a product list", makeList, 17},
        {"copying a tree", makeTreeCopy, 7},
        {"moving a tree", makeTreeMove, 7},
        {"removing a tree", makeTreeRemoval, 7},
        {"copying a file", makeCopy, 7},
        {"copying a newer file", makeCopyOfNewer, 7},
        {"copying a file to where none is", makeCopyToAbsent, 7},
        {"moving a file", makeMove, 7},
        {"moving a file to where none is", makeMoveToAbsent, 7},
        {"copying onto a file in use", makeWaitingCopy, 7},
        {"moving onto a file in use", makeWaitingMove, 7},
        {"inserting a level", makeLevel, 7},
        {"sharing a component", makeShare, 1},
        {"unsharing a component", makeUnshare, 7},
        {"unsharing a component for the last time", makeLastUnshare, 7},
        {"saving a release", makeRelease, 7}};
    return kScenarios;
}
} // namespace faults
