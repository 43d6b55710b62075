#ifndef AUTOOLS_TORTURE_FAULTS_JOBS_H
#define AUTOOLS_TORTURE_FAULTS_JOBS_H

#include <functional>
#include <string>

namespace faults
{
/// What a process of the client does in one go. Run in a process that dies on the way, and in the tests' own.
struct Job
{
    std::string name;
    std::string folder; ///< everything lies here
    std::string extra;  ///< the Web Configurator's host; the text of the events
};

/// @param begin called when what is to be tested begins
/// @return what the library's function gave, as 0 or 1; -1 when it raised
int run(const Job& job, const std::function<void()>& begin);

/// What the jobs write: large enough for several calls of the system.
std::string newContent();
} // namespace faults

#endif
