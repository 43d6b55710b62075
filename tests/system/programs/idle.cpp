// A program that only runs until it is ended: under any name, so that tests have processes to find. The argument names
// an event that it signals once it runs.
#include <windows.h>

int main(int argc, char** argv)
{
    const HANDLE ready = argc > 1 ? ::OpenEventA(EVENT_MODIFY_STATE, FALSE, argv[1]) : nullptr;
    if (ready != nullptr)
    {
        ::SetEvent(ready);
        ::CloseHandle(ready);
    }
    ::Sleep(INFINITE);
    return 0;
}
