#ifndef AUTOOL_COMMON_COMMAND_H
#define AUTOOL_COMMON_COMMAND_H

#include <functional>

namespace CLI
{
class App;
}

namespace autool
{
class Console;

/// What the chosen command does; gives the exit code. May throw std::exception, which ends the program with
/// `kCouldNotRun` and its text on the error stream.
using Action = std::function<int(Console&)>;

// One function per command, in the command's own folder: adds its subcommand, which sets `action` when it is chosen.
void addCheck(CLI::App& program, Action& action);
void addExplain(CLI::App& program, Action& action);
void addLog(CLI::App& program, Action& action);
void addPlan(CLI::App& program, Action& action);
void addState(CLI::App& program, Action& action);
} // namespace autool

#endif
