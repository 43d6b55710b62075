#include "common/Command.h"
#include "common/Console.h"
#include "common/ExitCode.h"
#include "common/Table.h"
#include "explain/SystemErrors.h"

#include <CLI/CLI.hpp>

#include <memory>

namespace autool
{
namespace
{
int explain(const std::string& code, Console& console)
{
    const std::optional<SystemError> error = findSystemError(code);
    if (!error)
    {
        console.complain("Nothing is known about \"" + code + "\".");
        return kFindings;
    }
    printParagraph(console, console.styled(Style::Heading, error->code) + "  ", error->text);
    return kFine;
}
} // namespace

void addExplain(CLI::App& program, Action& action)
{
    CLI::App* const command = program.add_subcommand("explain", "Say what a code or a text of the log means");
    const auto code = std::make_shared<std::string>();
    command->add_option("CODE", *code, "A system error, for instance 5 or 0x80040154")->required();
    command->callback([&action, code] { action = [code](Console& console) { return explain(*code, console); }; });
}
} // namespace autool
