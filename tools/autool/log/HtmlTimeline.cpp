#include "log/LogOutput.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace autool
{
namespace
{
constexpr double kWidth = 1000;
constexpr double kLeft = 70; ///< room for the names of the lanes
constexpr double kLane = 20;
constexpr double kBar = 14;
constexpr double kHistogram = 60;
constexpr int kColumns = 180;
constexpr int kTicks = 4;

class Scale
{
public:
    Scale(LogTime first, LogTime last) : m_first(first), m_seconds(std::max<LogTime>(last - first, 1)) {}
    double x(LogTime time) const
    {
        return kLeft + (kWidth - kLeft) * static_cast<double>(time - m_first) / static_cast<double>(m_seconds);
    }
    int column(LogTime time) const
    {
        return std::clamp(static_cast<int>((time - m_first) * kColumns / m_seconds), 0, kColumns - 1);
    }
    LogTime at(int tick) const { return m_first + m_seconds * tick / kTicks; }

private:
    LogTime m_first;
    LogTime m_seconds;
};

std::string rectangle(const char* kind, double x, double y, double width, double height, const std::string& title)
{
    char numbers[128];
    std::snprintf(numbers, sizeof numbers, R"( x="%.1f" y="%.1f" width="%.1f" height="%.1f")", x, y, width, height);
    return std::string("<rect class=\"") + kind + "\"" + numbers +
           (title.empty() ? "/>" : "><title>" + escapedHtml(title) + "</title></rect>") + "\n";
}

std::string label(double x, double y, const std::string& text, const char* anchor = "start")
{
    char numbers[96];
    std::snprintf(numbers, sizeof numbers, "<text x=\"%.1f\" y=\"%.1f\" text-anchor=\"%s\">", x, y, anchor);
    return numbers + escapedHtml(text) + "</text>\n";
}

std::string phaseBar(const PhaseRun& run, const Scale& scale, LogTime first, LogTime last)
{
    constexpr double kLeastWidth = 2;
    const LogTime from = run.start.value_or(first);
    const LogTime to = std::max(run.end.value_or(last), from); // an end before its start is a clock that was set
    const bool isWhole = run.start && run.end;
    const std::string title = "Phase " + std::to_string(run.phase) + ": " +
                              (run.start ? shownTime(*run.start) : "start unknown") + " to " +
                              (run.end ? shownTime(*run.end) : "no end");
    const double x = scale.x(from);
    return rectangle(isWhole ? "phase" : "open", std::min(x, kWidth - kLeastWidth), (run.phase - 1) * kLane + 3,
                     std::max(scale.x(to) - x, kLeastWidth), kBar, title);
}

std::string histogram(const LogStudy& study, const Scale& scale, double top)
{
    std::vector<Density> columns(kColumns);
    for (const auto& [time, density] : study.density())
    {
        Density& column = columns[static_cast<std::size_t>(scale.column(time))];
        column.events += density.events;
        column.warnings += density.warnings;
        column.errors += density.errors;
    }
    std::uint64_t most = 1;
    for (const Density& column : columns)
        most = std::max(most, column.events);
    const double width = (kWidth - kLeft) / kColumns;
    std::string text;
    for (int i = 0; i < kColumns; ++i)
    {
        const Density& column = columns[static_cast<std::size_t>(i)];
        const auto height = [most](std::uint64_t count)
        { return count == 0 ? 0 : std::max(kHistogram * static_cast<double>(count) / static_cast<double>(most), 2.0); };
        const double x = kLeft + i * width;
        const std::string title = std::to_string(column.events) + " events, " + std::to_string(column.warnings) +
                                  " warnings, " + std::to_string(column.errors) + " errors";
        const auto bar = [&](const char* kind, std::uint64_t count)
        {
            if (count > 0)
                text += rectangle(kind, x, top + kHistogram - height(count), width - 0.5, height(count), title);
        };
        bar("all", column.events);
        bar("warn", column.warnings + column.errors);
        bar("bad", column.errors);
    }
    return text;
}
} // namespace

std::string htmlTimeline(const LogStudy& study)
{
    if (!study.first() || !study.last())
        return "<p class=\"about\">No event has a readable date.</p>\n";
    const LogTime first = *study.first();
    const LogTime last = *study.last();
    const Scale scale(first, last);
    constexpr double kTop = 3 * kLane + 6;
    constexpr double kHeight = kTop + kHistogram + 20;
    char head[160];
    std::snprintf(head, sizeof head, "<svg viewBox=\"0 0 %.0f %.0f\" role=\"img\" aria-label=\"Timeline\">\n", kWidth,
                  kHeight);
    std::string text = head;
    for (int phase = 1; phase <= 3; ++phase)
        text += label(0, (phase - 1) * kLane + 14, "Phase " + std::to_string(phase));
    text += label(0, kTop + kHistogram - 4, "Events");
    for (const PhaseRun& run : study.phases())
        text += phaseBar(run, scale, first, last);
    text += histogram(study, scale, kTop);
    char axis[160];
    std::snprintf(axis, sizeof axis, "<line class=\"axis\" x1=\"%.0f\" y1=\"%.1f\" x2=\"%.0f\" y2=\"%.1f\"/>\n", kLeft,
                  kTop + kHistogram, kWidth, kTop + kHistogram);
    text += axis;
    for (int tick = 0; tick <= kTicks; ++tick)
    {
        const LogTime time = scale.at(tick);
        const char* const anchor = tick == 0 ? "start" : tick == kTicks ? "end" : "middle";
        text += label(scale.x(time), kHeight - 4, shownTime(time), anchor);
    }
    return text + "</svg>\n";
}
} // namespace autool
