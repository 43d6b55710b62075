#ifndef AUTOOLS_TESTS_TOOLS_AUTOOL_H
#define AUTOOLS_TESTS_TOOLS_AUTOOL_H

#include "common/Console.h"

#include <memory>
#include <string>
#include <vector>

namespace auttest
{
/// Where a console of a test writes to; it can claim to be a terminal with colours.
struct Screen
{
    std::string text;
    bool isTerminal = false;
    std::size_t columns = 100;
};
/// A console on two screens, which must outlive it.
autool::Console consoleOn(Screen& out, Screen& error);

/// What one run of autool gave.
struct AutoolRun
{
    int code = -1;
    std::string out;
    std::string error;
};
/// The whole program in this process: arguments in UTF-8.
AutoolRun runAutool(const std::vector<std::string>& arguments);
/// autool.exe itself, in this suite's prefix, with its two streams apart. The arguments are a command line.
AutoolRun runAutoolProgram(const std::string& arguments);

/// The lines of a text, without their ends.
std::vector<std::string> linesOf(const std::string& text);
} // namespace auttest

#endif
