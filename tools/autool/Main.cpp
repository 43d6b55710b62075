#include "Program.h"
#include "common/Console.h"
#include "common/ExitCode.h"
#include "common/Text.h"

#include <windows.h>

#include <shellapi.h>

#include <exception>

namespace
{
/// The command line as it was typed: the 8-bit one has lost what the code page does not know.
std::vector<std::string> ownArguments()
{
    int count = 0;
    wchar_t** const texts = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 1; texts != nullptr && i < count; ++i)
        arguments.push_back(autool::fromWide(texts[i]));
    ::LocalFree(texts);
    return arguments;
}
} // namespace

int main()
{
    try
    {
        autool::Console console;
        const int code = autool::runProgram(ownArguments(), console);
        console.flush();
        return code;
    }
    catch (const std::exception&)
    {
        return autool::kCouldNotRun; // neither stream takes anything
    }
}
