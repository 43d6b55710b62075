#ifndef AUTOOLS_FOUNDATION_EVENTLOGGER_H
#define AUTOOLS_FOUNDATION_EVENTLOGGER_H

#include "foundation/LogArchives.h"

#include <atomic>
#include <string>
#include <windows.h>

namespace aut
{
class LogFile;

/// The log of this process: where it lies, what it drops, and the lock under which its events are written.
///
/// Constructed while the library is loaded, under the loader's lock and before or after any other static object, so
/// it depends on none of them.
class EventLogger
{
public:
    EventLogger();
    EventLogger(const EventLogger&) = delete;
    EventLogger& operator=(const EventLogger&) = delete;
    ~EventLogger();

    /// Counts a call and tells whether an event of this code is to be written. Takes no lock and, but for reading the
    /// detail level again on every tenth call, touches nothing outside of memory.
    bool wants(unsigned long code) noexcept;
    /// Writes an event. What cannot be written is lost without a report. May throw bad_alloc.
    void write(unsigned long code, const char* message);

private:
    void initialise();
    void readDetailLevel() noexcept;
    const std::string& environment();
    std::string storedLine(unsigned long code, const char* escaped);
    bool open(LogFile& file);
    void insert(const std::string& line);

    bool m_initialised = false;
    bool m_perUser = true;
    CRITICAL_SECTION m_lock{}; ///< guards everything below up to m_deferred
    char m_directory[MAX_PATH] = "";
    char m_path[MAX_PATH] = ""; ///< "" when the path would not fit: every event is lost then
    ArchiveCounts m_archives;
    std::string m_environment; ///< as stored; filled on first need and kept
    unsigned int m_patienceMs;
    bool m_writing = false;
    std::string m_deferred; ///< what this thread logged while an event of its own was being written

    std::atomic<unsigned long> m_detailLevel{0};
    std::atomic<unsigned long> m_calls{0};
};
} // namespace aut

#endif
