#ifndef AUTOOLS_TORTURE_LOGGING_LOGFOLDER_H
#define AUTOOLS_TORTURE_LOGGING_LOGFOLDER_H

#include "tests/foundation/ChildProgram.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/TestFolder.h"

#include <map>
#include <string>
#include <vector>

namespace torture
{
/// What the files of a log hold.
struct LogContent
{
    int files = 0;
    int broken = 0;  ///< files that are no well-formed XML, or not the log's own lines in the log's own order
    int headers = 0; ///< opening tags in all files
    /// The numbers of the events "<tag> <number> ..." in the order of the log, oldest archive first.
    std::map<std::string, std::vector<int>> events;

    /// How many of the events 0 to count - 1 of a tag are there, each once and in order; less when others are there.
    long long inOrder(const std::string& tag, int count) const;
    /// What `inOrder` gives for the events of a tag that are there: all of them, when they count up from 0.
    bool countsUp(const std::string& tag) const;
};

/// The log of the service in a folder of its own, with room for 99 archives, and the program that writes to it.
class LogFolder
{
public:
    LogFolder();

    /// Copies of tests/foundation/LogProgram.cpp that log as the service does.
    auttest::ChildProgram start(const std::string& arguments) const;
    std::string log() const { return m_data / "7xAutoupdateLog.xml"; }
    const auttest::TestFolder& folder() const { return m_data; }
    /// Reads the log and its archives.
    LogContent content() const;

private:
    auttest::ClientRegistry m_registry;
    auttest::TestFolder m_programs;
    auttest::TestFolder m_data;
    std::string m_program;
};
} // namespace torture

#endif
