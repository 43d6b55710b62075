#ifndef AUTOOLS_TESTS_SYSTEM_WTSAPI_TERMINALSERVICES_H
#define AUTOOLS_TESTS_SYSTEM_WTSAPI_TERMINALSERVICES_H

#include <windows.h>

namespace auttest
{
/// What the stand-in for WtsApi32.dll asks the running test for. The two share no C++ runtime: nothing that owns memory
/// is passed between them.
class TerminalServices
{
public:
    virtual BOOL query(HANDLE server, DWORD session, int kind, char** text, DWORD* bytes) = 0;
    virtual void freeMemory(void* memory) = 0;
    virtual BOOL sendMessage(HANDLE server, DWORD session, const char* title, DWORD titleLength, const char* message,
                             DWORD messageLength, DWORD style, DWORD timeout, DWORD* answer, BOOL wait) = 0;

protected:
    ~TerminalServices() = default;
};

/// The stand-in's own entry point "useTerminalServices".
using UseTerminalServices = void (*)(TerminalServices*);
} // namespace auttest

#endif
