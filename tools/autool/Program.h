#ifndef AUTOOL_PROGRAM_H
#define AUTOOL_PROGRAM_H

#include <string>
#include <vector>

namespace autool
{
class Console;

/// The whole program: `arguments` in UTF-8, without the program's name. Gives the exit code.
int runProgram(std::vector<std::string> arguments, Console& console);
} // namespace autool

#endif
