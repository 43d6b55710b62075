#ifndef AUTOOLS_UPDATECYCLE_PROGRESS_H
#define AUTOOLS_UPDATECYCLE_PROGRESS_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace updatecycle
{
/// Shows on the console that something is going on: a text, a dot each quarter of a second, the time it took in the
/// end.
///
/// The library's operations run on their caller's thread and block it, a download for minutes if need be; the dots
/// come from a thread of our own. Nobody else writes to the console meanwhile.
class Progress
{
public:
    explicit Progress(const char* what);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

private:
    void showDots();

    const std::chrono::steady_clock::time_point m_start;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_done = false;
    std::thread m_dots; // last: it uses the others
};
} // namespace updatecycle

#endif
