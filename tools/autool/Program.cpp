#include "Program.h"

#include "common/Command.h"
#include "common/Console.h"
#include "common/ExitCode.h"
#include "common/Table.h"
#include "common/Text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <exception>
#include <sstream>

namespace autool
{
namespace
{
constexpr char kAbout[] = "Explains what the Velmora Automatic Update client did, would do and means.\n"
                          "It only reads: it never changes the registry, the client's files or its event log.";
constexpr char kFooter[] = "Exit codes: 0 fine, 1 findings, 2 wrong usage, 3 could not run.";

void complain(Console& console, const std::string& text)
{
    for (const std::string& line : wrapped("autool: " + text, kMaxColumns))
        console.complain(line);
}

/// What CLI11 has to say: help and version on the output, complaints on the error stream.
int answer(CLI::App& program, const CLI::ParseError& error, Console& console)
{
    std::ostringstream out;
    std::ostringstream complaint;
    const int code = program.exit(error, out, complaint);
    console.print(out.str());
    std::string text = complaint.str();
    text.erase(text.find_last_not_of("\r\n") + 1);
    if (!text.empty())
        complain(console, text);
    return code == 0 ? kFine : kUsage;
}

/// CLI11 would ask for a command, as if none had been given.
bool isUnknownCommand(const CLI::App& program, const std::string& word)
{
    if (word.empty() || word.front() == '-')
        return false;
    const auto isNamed = [&word](const CLI::App* command) { return command->get_name() == word; };
    return program.get_subcommands(isNamed).empty();
}

std::string commandNames(const CLI::App& program)
{
    std::string names;
    for (const CLI::App* command : program.get_subcommands([](const CLI::App*) { return true; }))
        names += (names.empty() ? "" : ", ") + command->get_name();
    return names;
}
} // namespace

int runProgram(std::vector<std::string> arguments, Console& console)
{
    CLI::App program(kAbout, "autool");
    program.footer(kFooter);
    program.set_version_flag("--version", "autool " AUTOOL_VERSION, "Show the version and end");
    program.require_subcommand(1);
    program.get_formatter()->column_width(28);
    Action action;
    addCheck(program, action);
    addExplain(program, action);
    addLog(program, action);
    addPlan(program, action);
    addState(program, action);
    if (!arguments.empty() && isUnknownCommand(program, arguments.front()))
    {
        complain(console, "there is no command \"" + shortened(arguments.front(), 40) + "\", but " +
                              commandNames(program) + "\nRun with --help for more information.");
        return kUsage;
    }
    try
    {
        std::reverse(arguments.begin(), arguments.end()); // as CLI11 wants them
        program.parse(std::move(arguments));
    }
    catch (const CLI::ParseError& error)
    {
        return answer(program, error, console);
    }
    try
    {
        const int code = action(console);
        console.flush();
        return code;
    }
    catch (const OutputClosed&)
    {
        return kCouldNotRun; // and nobody to be told
    }
    catch (const std::exception& error)
    {
        console.complain(std::string("autool: ") + error.what());
        return kCouldNotRun;
    }
}
} // namespace autool
