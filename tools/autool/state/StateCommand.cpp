#include "common/Command.h"
#include "common/Console.h"
#include "common/ExitCode.h"
#include "common/Json.h"
#include "common/Progress.h"
#include "common/Table.h"
#include "common/Text.h"
#include "machine/Client.h"
#include "plan/Plan.h"
#include "state/Bundle.h"
#include "state/Compare.h"
#include "state/State.h"

#include <CLI/CLI.hpp>

#include <ctime>
#include <memory>

namespace autool
{
namespace
{
constexpr std::size_t kMaxTextColumns = 300; ///< of one value; JSON has all of it

std::string shown(const Json& json)
{
    if (json.is_null())
        return "-";
    std::string text = json.is_string() ? json.get<std::string>() : jsonLine(json);
    const std::size_t characters = text.size();
    if (characters > kMaxTextColumns)
        text = shortened(text, kMaxTextColumns) + " (" + std::to_string(characters) + " characters)";
    return text.empty() ? "\"\"" : text;
}

std::string member(const Json& json, const char* name) { return json.contains(name) ? shown(json[name]) : ""; }

/// "2026-11-22 01:10:00 (3 h)".
std::string withAge(const Json& json, const char* name)
{
    const std::string text = member(json, name);
    const auto time = parseTime(text);
    return time ? text + " (" + ageText(::_time64(nullptr) - *time) + ")" : text;
}

void heading(Console& console, const std::string& text)
{
    console.line();
    console.line(console.styled(Style::Heading, text));
}

/// `none` when there are no rows.
void print(Console& console, const Table& table, const char* none)
{
    if (table.isEmpty())
        console.line(none);
    else
        table.print(console);
}

Cell valueCell(const Json& value)
{
    if (value.contains("missing"))
        return {"missing, default: " + (value["default"] == "" ? "empty" : shown(value["default"])), Style::Dim};
    std::string text = member(value, "value");
    if (value.contains("time"))
        text += ", " + withAge(value, "time");
    if (!value.contains("expected"))
        return {text};
    return {text + "\nwrong type " + member(value, "type") + ", expected " + member(value, "expected"), Style::Bad};
}

void printRegistry(Console& console, const Json& registry)
{
    for (const auto& key : registry.items())
    {
        if (key.value().empty())
            continue;
        heading(console, "Registry: " + printable(key.key()));
        Table table({{"Value", false, 30}, {"Holds"}});
        for (const auto& value : key.value().items())
            table.add({value.key(), valueCell(value.value())});
        table.print(console);
    }
}

void printCaches(Console& console, const Json& caches)
{
    heading(console, "Cached answers of the Web Configurator");
    Table table({{"File"}, {"Time stamp"}, {"Written (age)"}, {"Size", true}});
    for (const auto& cache : caches.items())
    {
        const Json& state = cache.value();
        const std::string note = member(state, "note");
        table.add({{cache.key() + (note.empty() ? "" : "\n" + note), note.empty() ? Style::Plain : Style::Warning},
                   member(state, "timeStamp"),
                   withAge(state, "written"),
                   member(state, "size")});
    }
    print(console, table, "none");
}

void printReleaseFiles(Console& console, const Json& files)
{
    heading(console, "Release files");
    Table table({{"File"}, {"Release"}, {"Action"}, {"Components", true}, {"Written (age)"}});
    for (const auto& file : files.items())
    {
        const Json& state = file.value();
        if (state.contains("error"))
            table.add({file.key(),
                       {"cannot be read: " + member(state, "error"), Style::Bad},
                       "",
                       "",
                       withAge(state, "written")});
        else
            table.add({file.key(), member(state, "release") + " " + member(state, "version"), member(state, "action"),
                       member(state, "components"), withAge(state, "written")});
    }
    print(console, table, "none");
}

void printSharedCounts(Console& console, const Json& counts)
{
    heading(console, "Shared files of the client, as Windows counts them");
    Table table({{"Count", true}, {"File"}, {"Belongs to"}});
    for (const auto& count : counts.items())
    {
        const std::string note = member(count.value(), "note");
        table.add({member(count.value(), "count"),
                   {count.key() + (note.empty() ? "" : "\n" + note), note.empty() ? Style::Plain : Style::Warning},
                   member(count.value(), "belongsTo")});
    }
    print(console, table, "none");
}

void printReboot(Console& console, const Json& entries)
{
    heading(console, "What waits for the restart of Windows");
    Table table({{"Whose"}, {"What"}, {"File"}});
    for (const Json& entry : entries)
    {
        const bool isOurs = entry["ours"].get<bool>();
        std::string file = entry.contains("command") ? member(entry, "command") : member(entry, "source");
        if (entry.contains("target"))
            file += "\n-> " + member(entry, "target");
        if (isOurs)
            file += "\n(" + member(entry, "because") + ")";
        if (entry.contains("note"))
            file += "\n" + member(entry, "note");
        table.add({isOurs ? "client" : "other",
                   entry.contains("command") ? "run" : member(entry, "action"),
                   {file, entry.contains("note") ? Style::Warning : Style::Plain}});
    }
    print(console, table, "nothing");
}

void printSessions(Console& console, const Json& state)
{
    heading(console, "Sessions, shells and the client's processes");
    if (state.contains("note"))
        console.line(member(state, "note"));
    Table sessions({{"Session", true}, {"Station"}, {"State"}, {"User"}});
    for (const Json& session : state["sessions"])
        sessions.add({member(session, "session"), member(session, "station"), member(session, "state"),
                      member(session, "user")});
    if (!sessions.isEmpty())
        sessions.print(console);
    Table programs({{"Session", true}, {"Process", true}, {"Program"}, {"Owner"}});
    for (const Json& program : state["programs"])
        programs.add({member(program, "session"), member(program, "process"), member(program, "program"),
                      member(program, "owner")});
    print(console, programs, "no shell: nobody is logged on");
}

void printFiles(Console& console, const Json& files)
{
    heading(console, "The client's programs and libraries");
    Table table({{"File"}, {"Version"}, {"Written"}, {"Size", true}});
    for (const auto& file : files.items())
        table.add({file.key(), member(file.value(), "version"), member(file.value(), "written"),
                   member(file.value(), "size")});
    print(console, table, "none");
}

void print(Console& console, const Json& state)
{
    console.line("State of " + member(state, "machine") + " at " + member(state, "time") + ". Credentials are hidden.");
    if (!state["clientPresent"].get<bool>())
        console.line(console.styled(Style::Bad, "This machine has no client: its registry key is missing."));
    printRegistry(console, state["registry"]);
    printCaches(console, state["caches"]);
    printReleaseFiles(console, state["releaseFiles"]);
    printSharedCounts(console, state["sharedCounts"]);
    printReboot(console, state["reboot"]);
    printSessions(console, state["sessions"]);
    printFiles(console, state["files"]);
}

int printDifferences(Console& console, const Json& then, const MachineState& now, bool asJson)
{
    const std::vector<Difference> differences = compareStates(then, now.json, now.secrets);
    if (asJson)
    {
        Json json = {{"then", then.value("time", Json())}, {"now", now.json["time"]}, {"differences", Json::array()}};
        for (const Difference& difference : differences)
            json["differences"].push_back(
                {{"where", difference.where}, {"then", difference.then}, {"now", difference.now}});
        printJson(console, json);
    }
    else
    {
        console.line("Then: " + shown(then.value("time", Json())) + ". Now: " + shown(now.json["time"]) + ".");
        Table table({{"Where"}, {"Then"}, {"Now"}});
        for (const Difference& difference : differences)
            table.add({difference.where, difference.then.empty() ? Cell("-", Style::Dim) : Cell(shown(difference.then)),
                       difference.now.empty() ? Cell("-", Style::Dim) : Cell(shown(difference.now))});
        print(console, table, "No difference.");
    }
    return differences.empty() ? kFine : kFindings;
}

int reportBundle(Console& console, const BundleReport& report, const std::string& folder, bool asJson)
{
    if (asJson)
        printJson(console, {{"folder", folder}, {"files", report.files}, {"errors", report.errors}});
    else
    {
        console.line("Bundle in " + folder + ": " + std::to_string(report.files.size()) +
                     " files. Credentials are hidden in all of them.");
        for (const std::string& file : report.files)
            console.line("  " + file);
        for (const std::string& error : report.errors)
            printParagraph(console, "Left out: ", error);
    }
    return report.errors.empty() ? kFine : kFindings;
}

struct Options
{
    bool json = false;
    std::string compareWith;
    std::string bundle;
};

int run(Console& console, const Options& options)
{
    try
    {
        const Json then = options.compareWith.empty() ? Json() : readState(options.compareWith);
        Progress progress(console, "Reading");
        const Step step = [&](const std::string& what) { progress.update(what); };
        const MachineState now = readMachineState(step);
        if (!options.bundle.empty())
            return reportBundle(console, writeBundle(options.bundle, now, step), options.bundle, options.json);
        if (!options.compareWith.empty())
            return printDifferences(console, then, now, options.json);
        if (options.json)
            printJson(console, now.json);
        else
            print(console, now.json);
        return now.json["clientPresent"].get<bool>() ? kFine : kFindings;
    }
    catch (const NoState& reason)
    {
        console.complain(std::string("autool state: ") + reason.what());
    }
    catch (const NoBundle& reason)
    {
        console.complain(std::string("autool state: ") + reason.what());
    }
    return kCouldNotRun;
}
} // namespace

void addState(CLI::App& program, Action& action)
{
    const auto options = std::make_shared<Options>();
    CLI::App* const command = program.add_subcommand("state", "Show what this machine holds of the client");
    command->footer("Credentials are never shown or written, only that there are some.\n"
                    "Exit code 1: no client, a difference, or something that is missing in the bundle.");
    command->add_flag("--json", options->json, "Print JSON");
    CLI::Option* const compare =
        command->add_option("--compare", options->compareWith, "Show what differs from this earlier JSON");
    command->add_option("--bundle", options->bundle, "Write state, registry, logs and lists into this new folder")
        ->excludes(compare);
    command->callback([options, &action] { action = [options](Console& console) { return run(console, *options); }; });
}
} // namespace autool
