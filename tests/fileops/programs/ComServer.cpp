// Stands in for a COM server in a library. It appends what it is asked for, the program that asks and the COM apartment
// it is asked in to the file AUTTEST_RECORD, and registers a class of its own. The environment makes it do otherwise:
//
//     AUTTEST_SERVER   "fail": refuses; "crash": an access violation; "throw": a C++ exception; "odd": succeeds,
//                      with S_FALSE
//     AUTTEST_TOOL     the same, when it is the registration tool that asks

#include "Environment.h"

#include <objbase.h>

#if defined(NEEDS_NEIGHBOUR)
extern "C" __declspec(dllimport) int neighbour();
#endif

namespace
{
const char kClass[] = "Software\\Classes\\CLSID\\{5B6A4F0E-2D5B-4D0A-9A53-7C1E0F6B8A11}";

HMODULE g_module = nullptr;

std::string programName()
{
    char path[MAX_PATH];
    const std::string program(path, ::GetModuleFileNameA(nullptr, path, sizeof path));
    return program.substr(program.rfind('\\') + 1);
}

const char* apartmentName()
{
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    if (FAILED(::CoGetApartmentType(&type, &qualifier)))
        return "none";
    return type == APTTYPE_MTA ? "MTA" : "STA";
}

HRESULT answer(const char* question, HRESULT (*work)())
{
    const bool byTool = ::lstrcmpiA(programName().c_str(), "regsvr32.exe") == 0;
    appendToRecord(std::string(question) + " " + (byTool ? "tool" : "host") + " " + apartmentName());
#if defined(NEEDS_NEIGHBOUR)
    if (neighbour() != 7)
        return E_UNEXPECTED;
#endif
    const std::string behaviour = environmentText(byTool ? "AUTTEST_TOOL" : "AUTTEST_SERVER");
    if (behaviour == "fail")
        return E_ACCESSDENIED;
    if (behaviour == "crash")
        ::RaiseException(EXCEPTION_ACCESS_VIOLATION, EXCEPTION_NONCONTINUABLE, 0, nullptr);
    if (behaviour == "throw")
        throw 1;
    const HRESULT outcome = work();
    return behaviour == "odd" && SUCCEEDED(outcome) ? S_FALSE : outcome;
}

HRESULT writeClass()
{
    char path[MAX_PATH];
    const DWORD length = ::GetModuleFileNameA(g_module, path, sizeof path);
    const std::string key = std::string(kClass) + "\\InprocServer32";
    return HRESULT_FROM_WIN32(
        static_cast<DWORD>(::RegSetKeyValueA(HKEY_LOCAL_MACHINE, key.c_str(), nullptr, REG_SZ, path, length + 1)));
}

HRESULT removeClass() { return HRESULT_FROM_WIN32(static_cast<DWORD>(::RegDeleteTreeA(HKEY_LOCAL_MACHINE, kClass))); }
} // namespace

extern "C"
{
    __declspec(dllexport) HRESULT __stdcall DllRegisterServer() { return answer("register", &writeClass); }
    __declspec(dllexport) HRESULT __stdcall DllUnregisterServer() { return answer("unregister", &removeClass); }
}

BOOL WINAPI DllMain(HINSTANCE module, DWORD, void*)
{
    g_module = module;
    return TRUE;
}
