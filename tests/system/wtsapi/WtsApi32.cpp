// Stands in for WtsApi32.dll, because the platform has one session only, nobody connects to it from elsewhere, and its
// calls do not fail on request. What it says comes from the running test. The .def file tells which of the functions it
// has.

#include "tests/system/wtsapi/TerminalServices.h"

namespace
{
auttest::TerminalServices* g_services = nullptr;
} // namespace

extern "C"
{
    void useTerminalServices(auttest::TerminalServices* services);
    BOOL WINAPI WTSQuerySessionInformationA(HANDLE server, DWORD session, int kind, char** text, DWORD* bytes);
    void WINAPI WTSFreeMemory(void* memory);
    BOOL WINAPI WTSSendMessageA(HANDLE server, DWORD session, char* title, DWORD titleLength, char* message,
                                DWORD messageLength, DWORD style, DWORD timeout, DWORD* answer, BOOL wait);

    void useTerminalServices(auttest::TerminalServices* services) { g_services = services; }

    BOOL WINAPI WTSQuerySessionInformationA(HANDLE server, DWORD session, int kind, char** text, DWORD* bytes)
    {
        return g_services->query(server, session, kind, text, bytes);
    }

    void WINAPI WTSFreeMemory(void* memory) { g_services->freeMemory(memory); }

    BOOL WINAPI WTSSendMessageA(HANDLE server, DWORD session, char* title, DWORD titleLength, char* message,
                                DWORD messageLength, DWORD style, DWORD timeout, DWORD* answer, BOOL wait)
    {
        return g_services->sendMessage(server, session, title, titleLength, message, messageLength, style, timeout,
                                       answer, wait);
    }
}
