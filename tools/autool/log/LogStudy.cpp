#include "log/LogStudy.h"

#include "common/Text.h"

#include <algorithm>
#include <iterator>

namespace autool
{
namespace
{
// Events of several processes may stand a little out of order: each takes its time before it waits for the file.
constexpr LogTime kOutOfOrderSeconds = 60;
constexpr LogTime kFutureSeconds = 3600;
constexpr std::uint64_t kRepeats = 3;
constexpr std::size_t kMaxFindingsOfAKind = 20;
constexpr std::size_t kMaxPhases = 2000;
constexpr std::size_t kMaxTexts = 2000;
constexpr std::size_t kMaxTypes = 50;
constexpr std::size_t kMaxDensity = 4000;
constexpr std::size_t kShownText = 160;

const char* const kTypeOrder[] = {
    "Error",        "Warning",    "Info",         "Phase1_Start", "Phase1_End",           "Phase2_Start",  "Phase2_End",
    "Phase3_Start", "Phase3_End", "Send_Reports", "Reports_Sent", "Main_Window_Creation", kEnvironmentType};

std::string duration(LogTime seconds)
{
    if (seconds < 120)
        return std::to_string(seconds) + " seconds";
    if (seconds < 7200)
        return std::to_string(seconds / 60) + " minutes";
    if (seconds < 172800)
        return std::to_string(seconds / 3600) + " hours";
    return std::to_string(seconds / 86400) + " days";
}

/// The same failure with another number or address in it is the same failure.
std::string withoutNumbers(const std::string& text)
{
    std::string same;
    for (const char letter : text.substr(0, 512))
    {
        const bool isDigit = letter >= '0' && letter <= '9';
        if (!isDigit)
            same += letter;
        else if (same.empty() || same.back() != '#')
            same += '#';
    }
    return same;
}

std::string at(std::optional<LogTime> time) { return time ? shownTime(*time) : "an unknown time"; }

bool endsIn(const std::string& text, const std::string& ending)
{
    return text.size() >= ending.size() && text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}
} // namespace

void LogStudy::find(const std::string& kind, std::string text, std::optional<LogTime> time, const std::string& file)
{
    const std::uint64_t count = ++m_found[kind];
    if (count <= kMaxFindingsOfAKind)
        m_findings.push_back({kind, std::move(text), time, file});
}

void LogStudy::expect(const std::vector<LogPart>& parts)
{
    unsigned int above = 0;
    const LogPart* last = nullptr;
    for (const LogPart& part : parts)
    {
        if (part.number != 0)
        {
            if (above > part.number + 1)
                find("rotation-gap",
                     "Archives " + std::to_string(part.number + 1) + " to " + std::to_string(above - 1) +
                         " are missing: events between " + part.name + " and the archive before are lost.",
                     std::nullopt, part.name);
            above = part.number;
        }
        last = &part;
    }
    if (above > 1)
        find("rotation-gap", "Archive 01 is missing: the newest archive is " + std::to_string(above) + ".",
             std::nullopt, last->name);
}

void LogStudy::take(const LogEvent& event, const LogPart& part)
{
    ++m_events;
    if (m_counts.count(event.type) != 0 || m_counts.size() < kMaxTypes)
        ++m_counts[event.type];
    if (event.isDamaged)
    {
        ++m_damaged;
        find("damaged-event", "An event was cut off in the middle, as by a crash: " + shortened(event.text, kShownText),
             event.time ? event.time : m_last, part.name);
    }
    if (event.time)
        takeTime(*event.time, event, part);
    takePhase(event, part);
    takeTrace(event);
    if (event.type == "Error")
        takeError(event, part);
}

void LogStudy::takeTime(LogTime time, const LogEvent& event, const LogPart& part)
{
    if (m_last && time + kOutOfOrderSeconds < *m_last)
    {
        const LogTime back = *m_last - time;
        const bool isSummerTime = back > 3600 - 300 && back <= 3600;
        find("clock-jump",
             "The clock went back " + duration(back) + ", from " + shownTime(*m_last) + " to " + shownTime(time) +
                 (isSummerTime ? ", as when summer time ends." : "."),
             time, part.name);
    }
    m_first = m_first ? std::min(*m_first, time) : time;
    m_latest = m_latest ? std::max(*m_latest, time) : time;
    m_last = time;

    Density& density = m_density[time - time % m_densitySeconds];
    ++density.events;
    density.warnings += event.type == "Warning" ? 1 : 0;
    density.errors += event.type == "Error" ? 1 : 0;
    while (m_density.size() > kMaxDensity)
    {
        m_densitySeconds *= 2;
        std::map<LogTime, Density> coarser;
        for (const auto& [start, part_] : m_density)
        {
            Density& sum = coarser[start - start % m_densitySeconds];
            sum.events += part_.events;
            sum.warnings += part_.warnings;
            sum.errors += part_.errors;
        }
        m_density = std::move(coarser);
    }
}

void LogStudy::takePhase(const LogEvent& event, const LogPart& part)
{
    if (event.type.size() < 10 || event.type.rfind("Phase", 0) != 0 || event.type[5] < '1' || event.type[5] > '3')
        return;
    const int phase = event.type[5] - '0';
    const std::string what = event.type.substr(6);
    const auto open = m_openPhases.find(phase);
    const std::string name = "Phase " + std::to_string(phase);
    if (what == "_Start")
    {
        if (open != m_openPhases.end())
            find("no-end",
                 name + " that started at " + at(m_phases[open->second].start) + " has no end: it started again at " +
                     at(event.time) + ".",
                 m_phases[open->second].start, part.name);
        m_openPhases.erase(phase);
        if (m_phases.size() < kMaxPhases)
        {
            m_openPhases[phase] = m_phases.size();
            m_phases.push_back({phase, event.time, std::nullopt});
        }
    }
    else if (what == "_End" && open != m_openPhases.end())
    {
        m_phases[open->second].end = event.time;
        m_openPhases.erase(open);
    }
    else if (what == "_End" && m_phases.size() < kMaxPhases)
    {
        // The first one may have begun in an archive that is gone.
        const bool hasEarlier =
            std::any_of(m_phases.begin(), m_phases.end(), [phase](const PhaseRun& run) { return run.phase == phase; });
        if (hasEarlier)
            find("no-start", name + " ended at " + at(event.time) + " without a start.", event.time, part.name);
        m_phases.push_back({phase, std::nullopt, event.time});
    }
}

/// The library's own traces (detail 2 and more) come in pairs, too. Several processes may be at the same step, so only
/// the balance at the end tells something.
void LogStudy::takeTrace(const LogEvent& event)
{
    const std::string start = " - START";
    const std::string end = " - END";
    const bool isStart = endsIn(event.text, start);
    if (!isStart && !endsIn(event.text, end))
        return;
    const std::string name = event.text.substr(0, event.text.size() - (isStart ? start : end).size());
    if (m_traces.count(name) == 0 && (m_traces.size() >= kMaxTexts || !isStart))
        return;
    auto& [balance, last] = m_traces[name];
    balance += isStart ? 1 : -1;
    if (isStart)
        last = event.time;
}

void LogStudy::takeError(const LogEvent& event, const LogPart& part)
{
    const std::string same = withoutNumbers(event.text);
    const auto known = m_repeated.find(same);
    if (known == m_repeated.end() && m_repeated.size() >= kMaxTexts)
        return;
    Repeated& repeated = m_repeated[same];
    if (repeated.count++ == 0)
    {
        repeated.sample = shortened(printable(event.text), kShownText);
        repeated.first = event.time;
        repeated.file = part.name;
    }
    repeated.last = event.time;
}

void LogStudy::endOf(const LogPart& part, const PartOutcome& outcome)
{
    if (!outcome.isReadable)
        find("unreadable",
             part.name + " could not be read to its end: it was deleted meanwhile, or its rights forbid it.", m_last,
             part.name);
    else if (!outcome.endsWhole)
        find("cut-off",
             part.name + " does not end as a log does: a crash or a full disk cut it off. Shown is what there is.",
             m_last, part.name);
    if (outcome.strayBytes > 0)
        find("stray-bytes",
             part.name + " has " + std::to_string(outcome.strayBytes) + " bytes that belong to no event.", std::nullopt,
             part.name);
}

void LogStudy::findRepeated()
{
    std::vector<const Repeated*> often;
    for (const auto& [same, repeated] : m_repeated)
        if (repeated.count >= kRepeats)
            often.push_back(&repeated);
    std::sort(often.begin(), often.end(), [](const Repeated* a, const Repeated* b) { return a->count > b->count; });
    for (const Repeated* repeated : often)
        find("repeated-error",
             std::to_string(repeated->count) + " times between " + at(repeated->first) + " and " + at(repeated->last) +
                 ": " + repeated->sample,
             repeated->first, repeated->file);
}

void LogStudy::findOpen()
{
    for (const auto& [phase, place] : m_openPhases)
        find("no-end",
             "Phase " + std::to_string(phase) + " that started at " + at(m_phases[place].start) +
                 " has no end up to the end of the log: it may be running, or its process was ended.",
             m_phases[place].start, "");
    for (const auto& [name, trace] : m_traces)
        if (trace.first > 0)
            find("no-end",
                 shortened(printable(name), kShownText) + " was begun at " + at(trace.second) + " and never ended.",
                 trace.second, "");
}

void LogStudy::finish(LogTime now)
{
    findOpen();
    findRepeated();
    if (m_latest && *m_latest > now + kFutureSeconds)
        find("clock-ahead", "The log reaches to " + shownTime(*m_latest) + ", which is after the time of this machine.",
             m_latest, "");
    for (const auto& [kind, count] : m_found)
        if (count > kMaxFindingsOfAKind)
            m_findings.push_back(
                {kind, std::to_string(count - kMaxFindingsOfAKind) + " more of this kind.", std::nullopt, ""});
    m_last = m_latest;
}

std::vector<std::pair<std::string, std::uint64_t>> LogStudy::counts() const
{
    std::vector<std::pair<std::string, std::uint64_t>> ordered;
    for (const char* const type : kTypeOrder)
        if (const auto found = m_counts.find(type); found != m_counts.end())
            ordered.emplace_back(*found);
    for (const auto& count : m_counts)
        if (std::find(std::begin(kTypeOrder), std::end(kTypeOrder), count.first) == std::end(kTypeOrder))
            ordered.emplace_back(count);
    return ordered;
}
} // namespace autool
