#include "Progress.h"

#include <cstdio>

namespace updatecycle
{
namespace
{
void show(const char* text)
{
    std::fputs(text, stdout);
    std::fflush(stdout);
}
} // namespace

Progress::Progress(const char* what) : m_start(std::chrono::steady_clock::now())
{
    show(what);
    show(" ");
    m_dots = std::thread([this] { showDots(); });
}

Progress::~Progress()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_done = true;
    }
    m_changed.notify_one();
    m_dots.join();
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - m_start;
    std::printf(" %.1f s\n", elapsed.count());
}

void Progress::showDots()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_changed.wait_for(lock, std::chrono::milliseconds(250), [this] { return m_done; }))
        show(".");
}
} // namespace updatecycle
