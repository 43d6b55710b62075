#include "common/Command.h"
#include "common/Console.h"
#include "common/ExitCode.h"
#include "common/Progress.h"
#include "common/Text.h"
#include "log/LogOutput.h"
#include "log/LogSource.h"

#include <CLI/CLI.hpp>

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <stdexcept>

namespace autool
{
namespace
{
constexpr std::size_t kEventsBeforeFollowing = 10;
constexpr DWORD kPollMs = 250;

std::atomic<bool> g_isEnding{false};

BOOL WINAPI endFollowing(DWORD) noexcept
{
    g_isEnding = true;
    return TRUE;
}

std::unique_ptr<LogOutput> makeOutput(const LogOptions& options, Console& console)
{
    if (!options.html.empty())
        return makeHtmlOutput(console, options.html);
    if (options.json)
        return options.follow ? makeJsonLinesOutput(console) : makeJsonOutput(console);
    return makeTextOutput(console);
}

void printOther(const LogOptions& options, const LogSource& source, Console& console)
{
    if (source.other.empty() || options.json || !options.html.empty())
        return;
    console.line(console.styled(Style::Dim, (options.ofUser ? "The service logs to " : "This user's programs log to ") +
                                                printable(source.other) +
                                                (options.ofUser ? "" : " (autool log --user)")));
}

std::uint64_t sizeOf(const std::vector<LogPart>& parts)
{
    std::uint64_t size = 0;
    for (const LogPart& part : parts)
        size += part.size;
    return size;
}

/// Reads everything there is, oldest first.
void readAll(std::vector<LogPart>& parts, const std::function<void(const LogEvent&, const LogPart&)>& sink,
             const std::function<void(const LogPart&, const PartOutcome&)>& atEnd, bool isFinal, Console& console)
{
    Progress progress(console, "Reading the log");
    const std::uint64_t total = sizeOf(parts);
    std::uint64_t before = 0;
    for (LogPart& part : parts)
    {
        const bool endsHere = isFinal || !part.isCurrent();
        const PartOutcome outcome = scanPart(
            part, 0, endsHere, [&](const LogEvent& event) { sink(event, part); },
            [&](std::uint64_t done) { progress.update(std::min(before + done, total), total); });
        before += part.size;
        atEnd(part, outcome);
    }
}

int showLog(const LogOptions& options, Console& console)
{
    LogSource source = findLog(options);
    if (source.parts.empty() && !options.file.empty())
        throw std::runtime_error(printable(options.file) + " is neither a log nor a folder with one");
    if (source.parts.empty())
        throw std::runtime_error("there is no log in " + (source.folder.empty() ? "the data folder, which is not set"
                                                                                : printable(source.folder)));
    const std::unique_ptr<LogOutput> output = makeOutput(options, console);
    LogFilter filter(options);
    LogStudy study;
    study.expect(source.parts);
    printOther(options, source, console);
    output->begin(source.folder, source.parts);
    readAll(
        source.parts,
        [&](const LogEvent& event, const LogPart& part)
        {
            if (!filter.isLater(event))
                return;
            study.take(event, part);
            if (filter.wants(event))
                output->event(event, part);
        },
        [&study](const LogPart& part, const PartOutcome& outcome) { study.endOf(part, outcome); }, true, console);
    study.finish(localNow());
    output->end(study);
    return study.findings().empty() ? kFine : kFindings;
}

int followLog(const LogOptions& options, Console& console)
{
    LogSource source = findLog(options);
    if (source.folder.empty())
        throw std::runtime_error("the data folder is not set");
    const std::unique_ptr<LogOutput> output = makeOutput(options, console);
    LogFilter filter(options);
    const auto isWanted = [&filter](const LogEvent& event) { return filter.isLater(event) && filter.wants(event); };
    output->begin(source.folder, source.parts);

    // What was there before: the last few, or all that is asked for by its time.
    std::deque<std::pair<LogEvent, LogPart>> earlier;
    std::uint64_t consumed = 0;
    readAll(
        source.parts,
        [&](const LogEvent& event, const LogPart& part)
        {
            if (!isWanted(event))
                return;
            earlier.emplace_back(event, part);
            if (!options.since && earlier.size() > kEventsBeforeFollowing)
                earlier.pop_front();
        },
        [&consumed](const LogPart&, const PartOutcome& outcome) { consumed = outcome.consumed; }, false, console);
    for (const auto& [event, part] : earlier)
        output->event(event, part);
    console.flush();

    const bool hasCurrent = !source.parts.empty();
    LogFollower follower(source.folder, source.fileName,
                         hasCurrent ? std::optional<LogPart>(source.parts.back()) : std::nullopt, consumed);
    const auto show = [&](const LogEvent& event, const LogPart& part)
    {
        if (isWanted(event))
            output->event(event, part);
    };
    ::SetConsoleCtrlHandler(endFollowing, TRUE);
    const ULONGLONG start = ::GetTickCount64();
    const auto patienceMs = static_cast<ULONGLONG>(options.followSeconds * 1000);
    bool isLast = false;
    while (!isLast)
    {
        isLast = g_isEnding || (patienceMs > 0 && ::GetTickCount64() - start >= patienceMs);
        if (follower.poll(show))
            console.complain("autool: the log was rotated away faster than it was read; events may be missing here.");
        console.flush();
        if (!isLast)
            ::Sleep(kPollMs);
    }
    ::SetConsoleCtrlHandler(endFollowing, FALSE);
    return kFine;
}

const std::vector<std::string> kTypes = {
    "Info",       "Warning",    "Error",        "Phase1_Start", "Phase2_Start",         "Phase3_Start",  "Phase1_End",
    "Phase2_End", "Phase3_End", "Send_Reports", "Reports_Sent", "Main_Window_Creation", kEnvironmentType};

std::string checkType(std::string& text) // as CLI11 calls it; the text stays
{
    std::string known;
    for (const std::string& type : kTypes)
    {
        if (lowerCase(type) == lowerCase(text))
            return {};
        known += (known.empty() ? "" : ", ") + type;
    }
    return "\"" + text + "\" is no type: write " + known;
}

std::string checkSince(std::string& text)
{
    return parseSince(text, localNow())
               ? std::string()
               : "\"" + text + "\" is no time: write 2026-11-20, \"2026-11-20 14:05\", 14:05, 30m, 2h or 3d";
}
} // namespace

void addLog(CLI::App& program, Action& action)
{
    CLI::App* const command = program.add_subcommand("log", "Show the event log and its archives");
    const auto options = std::make_shared<LogOptions>();
    // The texts behind the names stand for CLI11's own, which would tell types and exclusions.
    CLI::Option* const file =
        command->add_option("--file", options->file, "A log file alone, or a folder with a log and its archives");
    CLI::Option* const user = command->add_flag("--user", options->ofUser, "This user's log, not the service's");
    CLI::Option* const since = command->add_option(
        "--since", options->sinceText,
        "Only from this time on: 2026-11-20, \"2026-11-20 14:05\",\n14:05 (today), 30m, 2h or 3d (ago)");
    CLI::Option* const types = command->add_option(
        "--type", options->types,
        "Only these types, separated by commas: Error, Warning,\nInfo, Phase1_Start, ..., Environment");
    CLI::Option* const text = command->add_option("--text", options->text, "Only events with this text, in any case");
    CLI::Option* const follow =
        command->add_flag("--follow", options->follow, "Go on with what is written, across rotations, until Ctrl+C");
    CLI::Option* const seconds =
        command->add_option("--for", options->followSeconds, "With --follow: only for so long");
    CLI::Option* const json =
        command->add_flag("--json", options->json, "Write JSON; with --follow one object per line");
    CLI::Option* const html = command->add_option("--html", options->html, "Write a report into this file instead");
    user->excludes(file)->option_text(" ");
    file->option_text("PATH");
    since->check(CLI::Validator(checkSince, "", "time"))->option_text("TIME");
    types->delimiter(',')->check(CLI::Validator(checkType, "", "type"))->option_text("TYPE");
    text->option_text("TEXT");
    seconds->needs(follow)->check(CLI::PositiveNumber)->option_text("SECONDS");
    follow->option_text(" ");
    json->option_text(" ");
    html->excludes(json)->excludes(follow)->option_text("FILE");
    command->footer("Exit codes: 0 fine, 1 findings, 2 wrong usage, 3 no log or it cannot be read.\n"
                    "Findings are about all events since --since, whatever --type and --text show.");
    command->callback(
        [&action, options]
        {
            if (!options->sinceText.empty())
                options->since = parseSince(options->sinceText, localNow());
            action = [options](Console& console)
            { return options->follow ? followLog(*options, console) : showLog(*options, console); };
        });
}
} // namespace autool
