#include "check/Check.h"
#include "common/Command.h"
#include "common/Console.h"
#include "common/ExitCode.h"
#include "common/Json.h"
#include "common/Progress.h"
#include "common/Table.h"
#include "machine/Xml.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>

namespace autool
{
namespace
{
Style styleOf(Verdict verdict)
{
    return verdict == Verdict::pass ? Style::Good : verdict == Verdict::warn ? Style::Warning : Style::Bad;
}

int run(Console& console, bool asJson)
{
    const ComApartment com;
    std::vector<CheckAnswer> answers;
    {
        Progress progress(console, "Checking");
        answers = checkMachine([&](const std::string& what) { progress.update(what); });
    }
    const auto count = [&](Verdict verdict)
    {
        return std::count_if(answers.begin(), answers.end(),
                             [verdict](const CheckAnswer& answer) { return answer.verdict == verdict; });
    };
    if (asJson)
    {
        Json json = {{"passed", count(Verdict::pass)},
                     {"warnings", count(Verdict::warn)},
                     {"failures", count(Verdict::fail)},
                     {"checks", Json::array()}};
        for (const CheckAnswer& answer : answers)
            json["checks"].push_back(
                {{"code", answer.code}, {"verdict", verdictName(answer.verdict)}, {"sentence", answer.sentence}});
        printJson(console, json);
    }
    else
    {
        Table table({{""}, {"Check"}, {"Finding"}});
        for (const CheckAnswer& answer : answers)
            table.add({{verdictName(answer.verdict), styleOf(answer.verdict)}, answer.code, answer.sentence});
        table.print(console);
        console.line();
        const auto counted = [&](Verdict verdict, const char* noun)
        {
            const auto number = count(verdict);
            return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
        };
        console.line(std::to_string(count(Verdict::pass)) + " passed, " + counted(Verdict::warn, "warning") + ", " +
                     counted(Verdict::fail, "failure"));
    }
    return count(Verdict::pass) == static_cast<std::ptrdiff_t>(answers.size()) ? kFine : kFindings;
}
} // namespace

const char* verdictName(Verdict verdict)
{
    return verdict == Verdict::pass ? "pass" : verdict == Verdict::warn ? "warn" : "fail";
}

std::vector<CheckAnswer> checkMachine(const std::function<void(const std::string&)>& progress)
{
    CheckList list(progress);
    checkClient(list);
    checkFolders(list);
    checkLogs(list);
    checkLibraries(list);
    checkServer(list);
    checkCertificates(list);
    checkMarks(list);
    checkReboot(list);
    return list.answers();
}

void addCheck(CLI::App& program, Action& action)
{
    const auto asJson = std::make_shared<bool>(false);
    CLI::App* const command =
        program.add_subcommand("check", "Look for what keeps the client on this machine from working");
    command->footer("Each check has a code that stays the same. Nothing is changed; the server is asked once.\n"
                    "Exit code 1: a warning or a failure.");
    command->add_flag("--json", *asJson, "Print JSON");
    command->callback([asJson, &action] { action = [asJson](Console& console) { return run(console, *asJson); }; });
}
} // namespace autool
