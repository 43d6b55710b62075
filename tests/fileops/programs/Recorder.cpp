// Stands in for installers and for programs that register themselves. What it does is told by the environment:
//
//     AUTTEST_RECORD   the file to which it appends its command line and its current directory, each on a line
//     AUTTEST_EVENT    the name of an event: it does not end before that is set
//     AUTTEST_EXIT     its exit code, in decimal; 0 by default

#include "Environment.h"

#include <cstdlib>

int main()
{
    char directory[MAX_PATH];
    const DWORD length = ::GetCurrentDirectoryA(sizeof directory, directory);
    appendToRecord(::GetCommandLineA());
    appendToRecord(std::string(directory, length));

    const std::string event = environmentText("AUTTEST_EVENT");
    if (!event.empty())
        if (const HANDLE opened = ::OpenEventA(SYNCHRONIZE, FALSE, event.c_str()))
            ::WaitForSingleObject(opened, 60000); // a test that died does not leave it behind for ever
    ::ExitProcess(std::strtoul(environmentText("AUTTEST_EXIT").c_str(), nullptr, 10));
}
