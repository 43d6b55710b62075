#ifndef AUTOOL_LOG_LOGSTUDY_H
#define AUTOOL_LOG_LOGSTUDY_H

#include "log/LogParts.h"
#include "log/LogReading.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace autool
{
/// Something in the log that wants looking at.
struct Finding
{
    std::string kind; ///< a stable word for scripts: "no-end", "repeated-error", ...
    std::string text;
    std::optional<LogTime> time;
    std::string file;
};

/// One run of a phase; either end may be missing.
struct PhaseRun
{
    int phase = 0;
    std::optional<LogTime> start;
    std::optional<LogTime> end;
};

/// How many events of which kind there were in a stretch of time.
struct Density
{
    std::uint64_t events = 0;
    std::uint64_t warnings = 0;
    std::uint64_t errors = 0;
};

/// Watches the events go by, in the order of the files, and keeps what tells their story. Its memory does not grow with
/// the log.
class LogStudy
{
public:
    /// The files that will come, oldest first.
    void expect(const std::vector<LogPart>& parts);
    void take(const LogEvent& event, const LogPart& part);
    void endOf(const LogPart& part, const PartOutcome& outcome);
    /// No more comes; `now` is the clock of this machine.
    void finish(LogTime now);

    std::uint64_t events() const { return m_events; }
    std::optional<LogTime> first() const { return m_first; }
    std::optional<LogTime> last() const { return m_last; }
    /// By type, in the order in which the types are usually told; unknown ones behind.
    std::vector<std::pair<std::string, std::uint64_t>> counts() const;
    const std::vector<PhaseRun>& phases() const { return m_phases; }
    const std::map<LogTime, Density>& density() const { return m_density; }
    LogTime densitySeconds() const { return m_densitySeconds; }
    const std::vector<Finding>& findings() const { return m_findings; }

private:
    struct Repeated
    {
        std::string sample;
        std::uint64_t count = 0;
        std::optional<LogTime> first;
        std::optional<LogTime> last;
        std::string file;
    };

    void find(const std::string& kind, std::string text, std::optional<LogTime> time, const std::string& file);
    void takeTime(LogTime time, const LogEvent& event, const LogPart& part);
    void takePhase(const LogEvent& event, const LogPart& part);
    void takeTrace(const LogEvent& event);
    void takeError(const LogEvent& event, const LogPart& part);
    void findRepeated();
    void findOpen();

    std::uint64_t m_events = 0;
    std::uint64_t m_damaged = 0;
    std::optional<LogTime> m_first;
    std::optional<LogTime> m_last;
    std::optional<LogTime> m_latest;
    std::map<std::string, std::uint64_t> m_counts;
    std::map<LogTime, Density> m_density;
    LogTime m_densitySeconds = 1;
    std::vector<PhaseRun> m_phases;
    std::map<int, std::size_t> m_openPhases; ///< phase -> its place in m_phases
    std::map<std::string, std::pair<long long, std::optional<LogTime>>> m_traces;
    std::map<std::string, Repeated> m_repeated;
    std::vector<Finding> m_findings;
    std::map<std::string, std::uint64_t> m_found; ///< how many findings of a kind
};
} // namespace autool

#endif
