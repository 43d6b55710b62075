#include "fileops/ExecCommand.h"

#include "fileops/CommandLine.h"
#include "fileops/ProgramSearch.h"
#include "platform/QueriedText.h"

#include <windows.h>

#include <new>
#include <optional>
#include <process.h>
#include <string>
#include <vector>

namespace
{
/// Takes the process to another directory and, when it ends, back to the one it came from. Both in their short form; a
/// volume without short names gives the long one.
class DirectoryVisit
{
public:
    explicit DirectoryVisit(const std::string& directory) : m_back(currentDirectory())
    {
        // A folder that cannot be entered keeps nobody from starting the program in it.
        ::SetCurrentDirectoryA(shortForm(directory).c_str());
    }
    DirectoryVisit(const DirectoryVisit&) = delete;
    DirectoryVisit& operator=(const DirectoryVisit&) = delete;
    ~DirectoryVisit() { ::SetCurrentDirectoryW(m_back.c_str()); }

private:
    // Wide, because the way back must not fail for a name that this code page cannot spell.
    static std::wstring currentDirectory()
    {
        const std::wstring directory =
            aut::queriedText<wchar_t>([](wchar_t* text, DWORD size) { return ::GetCurrentDirectoryW(size, text); });
        const std::wstring shortened = aut::queriedText<wchar_t>(
            [&directory](wchar_t* text, DWORD size) { return ::GetShortPathNameW(directory.c_str(), text, size); });
        return shortened.empty() ? directory : shortened;
    }
    static std::string shortForm(const std::string& directory)
    {
        const std::string shortened = aut::queriedText<char>(
            [&directory](char* text, DWORD size) { return ::GetShortPathNameA(directory.c_str(), text, size); });
        return shortened.empty() ? directory : shortened;
    }

    std::wstring m_back;
};
} // namespace

int ExecCommand(char* commandLine, bool wait)
try
{
    const std::vector<std::string> arguments = aut::splitArguments(commandLine);
    if (arguments.empty())
        return -1;
    const std::string program = aut::withoutEnclosingQuotes(arguments.front());

    // The path is searched before the directory changes, because a relative name counts from the caller's directory,
    // and here, because not every runtime's own search is to be relied on.
    const std::optional<std::string> file = aut::findProgram(program);

    std::vector<const char*> vector;
    for (const std::string& argument : arguments)
        vector.push_back(argument.c_str());
    vector.push_back(nullptr);

    // Drive and directory of the program as it was named: a bare name has neither and stays in the current directory,
    // wherever PATH finds it.
    const DirectoryVisit visit(aut::fullPathOf(program).folder());
    if (!file)
        return -1;
    return static_cast<int>(::_spawnv(wait ? _P_WAIT : _P_NOWAIT, file->c_str(), vector.data()));
}
catch (const std::bad_alloc&)
{
    return -1;
}
