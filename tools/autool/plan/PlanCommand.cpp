#include "common/Command.h"
#include "common/Console.h"
#include "common/ExitCode.h"
#include "common/Json.h"
#include "common/Progress.h"
#include "common/Table.h"
#include "common/Text.h"
#include "machine/Xml.h"
#include "plan/Plan.h"

#include <CLI/CLI.hpp>

#include <map>
#include <memory>

namespace autool
{
namespace
{
Style styleOf(Verb verb)
{
    switch (verb)
    {
    case Verb::nothing:
        return Style::Dim;
    case Verb::hold:
        return Style::Warning;
    case Verb::remove:
    case Verb::disable:
        return Style::Bad;
    default:
        return Style::Good;
    }
}

Json toJson(const Values& values)
{
    Json json = Json::object();
    for (const auto& [name, text] : values)
        json[name] = jsonText(text);
    return json;
}

Json toJson(const ComponentDecision& component)
{
    return {{"name", jsonText(component.asked.name)}, {"version", jsonText(component.asked.fullVersion)},
            {"decision", verbName(component.verb)},   {"necessary", component.necessary},
            {"rule", jsonText(component.rule)},       {"values", toJson(component.values)}};
}

Json toJson(const ReleaseDecision& release)
{
    Json components = Json::array();
    for (const ComponentDecision& component : release.components)
        components.push_back(toJson(component));
    Json notes = Json::array();
    for (const std::string& note : release.notes)
        notes.push_back(jsonText(note));
    return {{"name", jsonText(release.asked.name)},
            {"version", jsonText(release.asked.fullVersion)},
            {"certificateId", jsonText(release.asked.certificateId)},
            {"source", jsonText(release.asked.source)},
            {"decision", verbName(release.verb)},
            {"necessary", release.necessary},
            {"pending", release.pending},
            {"rule", jsonText(release.rule)},
            {"values", toJson(release.values)},
            {"notes", notes},
            {"components", components}};
}

Json toJson(const Plan& plan)
{
    Json json = {{"time", timeText(plan.conditions.time)},
                 {"serverTime", timeText(plan.conditions.serverTime)},
                 {"clientPhase", plan.clientPhase},
                 {"source", plan.source},
                 {"installationHours", plan.hours},
                 {"anyHour", plan.conditions.anyHour},
                 {"notes", plan.notes},
                 {"releases", Json::array()},
                 {"problems", Json::array()}};
    for (const ReleaseDecision& release : plan.releases)
        json["releases"].push_back(toJson(release));
    for (const PlanProblem& problem : plan.problems)
        json["problems"].push_back({{"what", problem.what}, {"why", problem.why}});
    return json;
}

void printHead(Console& console, const Plan& plan)
{
    const Conditions& conditions = plan.conditions;
    printParagraph(console, "",
                   "Plan for " + timeText(conditions.time) + ", server time " + timeText(conditions.serverTime) +
                       ". Nothing is changed.");
    printParagraph(console, "Releases of         ", plan.source);
    printParagraph(console, "Installation hours  ",
                   (plan.hours.empty() ? "any" : plan.hours) +
                       (conditions.anyHour ? "; switched off by the setting BFU9K" : ""));
    if (plan.clientPhase != 0)
        printParagraph(console, "The client          ", "is at work now, in phase " + std::to_string(plan.clientPhase));
    for (const std::string& note : plan.notes)
        printParagraph(console, "Note                ", note);
    console.line();
}

void printReleases(Console& console, const Plan& plan)
{
    Table table({{"Release, component"}, {"Asked"}, {"Installed"}, {"Decision"}, {"Why"}});
    for (const ReleaseDecision& release : plan.releases)
    {
        std::string why = fromSystem(release.rule);
        for (const std::string& note : release.notes)
            why += "\n" + fromSystem(note);
        const InstalledProduct& installed = release.installed;
        table.add({{fromSystem(release.asked.name), Style::Heading},
                   fromSystem(release.asked.fullVersion),
                   installed.version.empty() ? "-" : fromSystem(installed.fullVersion()),
                   {verbName(release.verb), styleOf(release.verb)},
                   why});
        for (const ComponentDecision& component : release.components)
        {
            const InstalledComponent& entry = component.installed;
            std::string found = entry.version;
            if (!entry.language.empty())
                found += "_" + entry.language;
            table.add({"  " + fromSystem(component.asked.name),
                       fromSystem(component.asked.fullVersion),
                       found.empty() ? "-" : fromSystem(found),
                       {verbName(component.verb), styleOf(component.verb)},
                       fromSystem(component.rule)});
        }
    }
    table.print(console);
}

std::string summaryOf(const Plan& plan)
{
    std::map<Verb, int> counts;
    for (const ReleaseDecision& release : plan.releases)
        ++counts[release.verb];
    std::string summary;
    for (const auto& [verb, count] : counts)
        summary += (summary.empty() ? "" : ", ") + std::to_string(count) + " " + verbName(verb);
    return summary;
}

void print(Console& console, const Plan& plan)
{
    printHead(console, plan);
    if (plan.releases.empty())
        console.line("No releases: the client has nothing to do.");
    else
    {
        printReleases(console, plan);
        console.line();
        console.line("Releases: " + summaryOf(plan));
    }
    for (const PlanProblem& problem : plan.problems)
        printParagraph(console, "Left out: ", problem.what + ": " + problem.why);
}

struct Options
{
    std::string at;
    PlanOptions plan;
    bool json = false;
};

int run(Console& console, const Options& options)
{
    const ComApartment com;
    Progress progress(console, "Planning");
    Plan plan;
    try
    {
        plan = makePlan(options.plan, [&](const std::string& what) { progress.update(what); });
    }
    catch (const NoPlan& reason)
    {
        console.complain(std::string("autool plan: ") + reason.what());
        return kCouldNotRun;
    }
    if (options.json)
        printJson(console, toJson(plan));
    else
        print(console, plan);
    return plan.problems.empty() ? kFine : kFindings;
}
} // namespace

void addPlan(CLI::App& program, Action& action)
{
    const auto options = std::make_shared<Options>();
    CLI::App* const command =
        program.add_subcommand("plan", "Show what the client would do with each release and component, and why");
    command->footer("It decides as the client does in its installation phase, and changes nothing.\n"
                    "Exit code 1: a release cannot be read, or has lost its file.");
    command->add_option("--at", options->at, "Decide for this local time: \"YYYY-MM-DD HH:MM\". Without it: for now")
        ->check(
            [options](const std::string& text) -> std::string
            {
                options->plan.at = parseTime(text);
                return options->plan.at ? "" : "\"" + text + "\" is no time like \"2026-11-22 01:30\"";
            });
    CLI::Option* const products =
        command->add_option("--products", options->plan.products, "Plan for this product list (XML)");
    command->add_option("--data", options->plan.data, "Plan for the release files (.lst) of this folder")
        ->excludes(products);
    command->add_flag("--json", options->json, "Print JSON");
    command->callback([options, &action] { action = [options](Console& console) { return run(console, *options); }; });
}
} // namespace autool
