// Notes which program was run: the path of its own file, as a line of the file that AUTTEST_RECORD names. Fails, so
// that nobody waits for what an installer might still do.

#include "tests/fileops/programs/Environment.h"

int main()
{
    char path[MAX_PATH];
    const DWORD length = ::GetModuleFileNameA(nullptr, path, sizeof path);
    appendToRecord(std::string(path, length));
    ::ExitProcess(7);
}
