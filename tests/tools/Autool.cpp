#include "tests/tools/Autool.h"

#include "Program.h"
#include "tests/support/TestFolder.h"
#include "tests/system/Processes.h"

#include <gtest/gtest.h>

#include <sstream>

namespace auttest
{
namespace
{
class ScreenStream : public autool::Stream
{
public:
    explicit ScreenStream(Screen& screen) : m_screen(screen) {}
    void write(std::string_view utf8) override { m_screen.text += utf8; }
    bool isTerminal() const override { return m_screen.isTerminal; }
    bool hasColours() const override { return m_screen.isTerminal; }
    std::size_t columns() const override { return m_screen.columns; }

private:
    Screen& m_screen;
};

aut::UniqueFile inheritableFile(const std::string& path)
{
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    aut::UniqueFile file{::CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inheritable, CREATE_ALWAYS,
                                       FILE_ATTRIBUTE_NORMAL, nullptr)};
    EXPECT_TRUE(file) << path;
    return file;
}
} // namespace

autool::Console consoleOn(Screen& out, Screen& error)
{
    return {std::make_unique<ScreenStream>(out), std::make_unique<ScreenStream>(error)};
}

AutoolRun runAutool(const std::vector<std::string>& arguments)
{
    Screen out;
    Screen error;
    autool::Console console = consoleOn(out, error);
    const int code = autool::runProgram(arguments, console);
    return {code, out.text, error.text};
}

AutoolRun runAutoolProgram(const std::string& arguments)
{
    const TestFolder folder;
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    aut::UniqueFile out = inheritableFile(folder / "out.txt");
    aut::UniqueFile error = inheritableFile(folder / "error.txt");
    startup.hStdOutput = out.get();
    startup.hStdError = error.get();
    PROCESS_INFORMATION started{};
    std::string commandLine = "\"" + programFolder() + "\\autool.exe\" " + arguments;
    EXPECT_TRUE(
        ::CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &started));
    const aut::UniqueHandle thread{started.hThread};
    const aut::UniqueHandle process{started.hProcess};
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(process.get(), 60000)) << commandLine;
    DWORD code = ~0UL;
    ::GetExitCodeProcess(process.get(), &code);
    return {static_cast<int>(code), folder.readFile("out.txt"), folder.readFile("error.txt")};
}

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream input(text);
    for (std::string line; std::getline(input, line);)
        lines.push_back(line);
    return lines;
}
} // namespace auttest
