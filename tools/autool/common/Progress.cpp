#include "common/Progress.h"

#include "common/Text.h"

#include <windows.h>

#include <algorithm>

namespace autool
{
namespace
{
constexpr std::uint64_t kPatienceMs = 1000;
constexpr std::uint64_t kEveryMs = 200;
} // namespace

Progress::Progress(Console& console, std::string what)
    : m_console(console), m_what(std::move(what)), m_start(::GetTickCount64())
{
}

Progress::~Progress()
{
    try
    {
        if (m_shownWidth > 0)
            show("");
    }
    catch (const std::exception&)
    {
        // Nobody looks any more.
    }
}

void Progress::update(std::uint64_t done, std::uint64_t total)
{
    const std::uint64_t now = ::GetTickCount64();
    if (!m_console.error().isTerminal() || now - m_start < kPatienceMs || now - m_shownAt < kEveryMs)
        return;
    m_shownAt = now;
    show(m_what + " ... " + (total == 0 ? "" : std::to_string(done * 100 / total) + " %"));
}

void Progress::update(const std::string& what)
{
    m_what = what;
    update(0);
}

void Progress::show(const std::string& text)
{
    // Not the last column: a terminal would go to the next line.
    const std::string shown = shortened(printable(text), m_console.error().columns() - 1);
    const std::size_t width = displayWidth(shown);
    const std::size_t rest = m_shownWidth - std::min(width, m_shownWidth);
    m_console.error().write("\r" + shown + std::string(rest, ' ') + std::string(rest, '\b') + (width == 0 ? "\r" : ""));
    m_console.error().flush();
    m_shownWidth = width;
}
} // namespace autool
