#include "explain/Tables.h"

namespace autool
{
namespace
{
constexpr char kTool[] = "the registration tool (regsvr32)";
constexpr char kInProcess[] = "the registration within the client";
constexpr char kServer[] = "the COM server itself";
constexpr char kSystem[] = "COM";

constexpr Explanation outcome(long long code, const char* text, const char* reporter, const char* meaning,
                              const char* advice)
{
    return {Kind::Registration, code, code, "", text, reporter, meaning, advice};
}
constexpr Explanation installer(long long code, const char* text, const char* meaning, const char* advice)
{
    return {Kind::Installer, code, code, "", text, "the installer (status 477)", meaning, advice};
}
} // namespace

ExplanationRows registrationRows()
{
    return {
        outcome(1, "bad arguments", kTool, "The tool was given no file.", "Report it with the log."),
        outcome(2, "OLE initialisation failed", kTool, "COM could not be initialised.", "Restart Windows."),
        outcome(3, "not loadable", kTool, "The library could not be loaded.",
                "A DLL that it needs is missing, it is of another bitness, or it is damaged: look with a dependency "
                "viewer."),
        outcome(4, "no entry point", kTool, "The library has no DllRegisterServer.",
                "It is no COM server: the product list must not ask to register it."),
        outcome(5, "entry point failed", kTool, "DllRegisterServer gave an error.",
                "Mostly missing rights: registration needs an administrator. Run regsvr32 by hand to see the HRESULT."),
        outcome(-1, "not started", "the command", "The tool or the self-registering program could not be started.",
                "The file is missing or no program, or a policy forbids it."),
        outcome(-21, "not loadable", kInProcess, "The tool failed, and the library could not be loaded here either.",
                "A DLL that it needs is missing, it is of another bitness, or it is damaged."),
        outcome(-22, "no entry point", kInProcess, "The tool failed, and the library has no DllRegisterServer.",
                "It is no COM server: the product list must not ask to register it."),
        outcome(-23, "entry point failed", kInProcess,
                "The tool failed, and DllRegisterServer gave an error here too, or threw.",
                "Mostly missing rights: registration needs an administrator."),
        outcome(0x80004001, "E_NOTIMPL", kServer, "The server does not support what was asked.",
                "Report it to the server's maker."),
        outcome(0x80004002, "E_NOINTERFACE", kServer,
                "The server does not have this interface: it is older than its user, or its proxy is "
                "not registered.",
                "Install matching versions; register the proxy library again."),
        outcome(0x80004005, "E_FAIL", kServer, "The server failed without saying why.",
                "Run regsvr32 on it by hand; look into its own log."),
        outcome(0x8000FFFF, "E_UNEXPECTED", kServer, "The server failed in a way it did not foresee.",
                "Restart Windows; reinstall the server."),
        outcome(0x80020009, "DISP_E_EXCEPTION", kServer, "A method of the server ended with an error of its own.",
                "Look into the server's log."),
        outcome(0x8002801C, "TYPE_E_REGISTRYACCESS", kServer, "The type library could not be written to the registry.",
                "Registration needs an administrator."),
        outcome(0x80029C4A, "TYPE_E_CANTLOADLIBRARY", kSystem, "The type library could not be loaded.",
                "Its file is missing or damaged: reinstall the component."),
        outcome(0x80040110, "CLASS_E_NOAGGREGATION", kSystem, "The class cannot be part of another object.",
                "Report it to the server's maker."),
        outcome(0x80040111, "CLASS_E_CLASSNOTAVAILABLE", kServer, "The library does not contain this class.",
                "An older version of the file is registered: reinstall the component."),
        outcome(0x80040154, "REGDB_E_CLASSNOTREG", kSystem,
                "The class is not registered, not for this bitness, or its program is missing.",
                "Register the server (regsvr32, or the program with -regserver) in the bitness of its user."),
        outcome(0x80040155, "REGDB_E_IIDNOTREG", kSystem,
                "The interface is not registered, so calls cannot go to another process.",
                "Register the proxy library again."),
        outcome(0x80040200, "SELFREG_E_TYPELIB", kServer, "The server could not register its type library.",
                "Registration needs an administrator."),
        outcome(0x80040201, "SELFREG_E_CLASS", kServer, "The server could not write its class to the registry.",
                "Registration needs an administrator."),
        outcome(0x800401F0, "CO_E_NOTINITIALIZED", kSystem, "The calling thread has not initialised COM.",
                "A fault of the calling program: it must call CoInitialize first."),
        outcome(0x800401F3, "CO_E_CLASSSTRING", kSystem, "The name of the class is not registered.",
                "Register the server again."),
        outcome(0x800401F9, "CO_E_ERRORINDLL", kSystem, "The server's library is damaged or cannot be loaded.",
                "Reinstall the component."),
        outcome(0x80070002, "ERROR_FILE_NOT_FOUND", kSystem, "The server's file, or one that it needs, is not there.",
                "Reinstall the component."),
        outcome(0x80070005, "E_ACCESSDENIED", kSystem, "Rights are missing.",
                "Registration needs an administrator; look at DCOM permissions."),
        outcome(0x8007000E, "E_OUTOFMEMORY", kSystem, "Not enough memory.", "Close programs or restart Windows."),
        outcome(0x80070057, "E_INVALIDARG", kServer, "An argument was not accepted.", "Report it with the log."),
        outcome(0x8007007E, "ERROR_MOD_NOT_FOUND", kSystem, "The library, or one that it needs, was not found.",
                "Install what is missing, mostly a C++ runtime; look with a dependency viewer."),
        outcome(0x8007007F, "ERROR_PROC_NOT_FOUND", kSystem,
                "A library lacks a function that is needed: it is of another version.",
                "Reinstall the component with the libraries that belong to it."),
        outcome(0x800700C1, "ERROR_BAD_EXE_FORMAT", kSystem, "The file is of another bitness or no program.",
                "A 32-bit library needs the 32-bit tool (SysWOW64\\regsvr32.exe)."),
        outcome(0x800706BA, "RPC_S_SERVER_UNAVAILABLE", kSystem, "The server's process has ended or cannot be reached.",
                "Restart the service or program that holds the server."),
        outcome(0x800706BE, "RPC_S_CALL_FAILED", kSystem, "The server's process ended during the call.",
                "Look for its crash in the system's event log."),
        outcome(0x80080005, "CO_E_SERVER_EXEC_FAILURE", kSystem,
                "The server's process was started and did not register in time.",
                "Start its program by hand to see why."),
        installer(
            99, "restart wanted", "An Inno installer (type 16) wants Windows to be restarted.",
            "Restart Windows. The client counts this as a failure deliberately and tries again in the next cycle."),
        installer(1602, "ERROR_INSTALL_USEREXIT", "Somebody cancelled the installation.", "Run the cycle again."),
        installer(1603, "ERROR_INSTALL_FAILURE", "The installation failed.",
                  "Run the command line with a log (/l*v FILE) and look for \"value 3\"."),
        installer(1605, "ERROR_UNKNOWN_PRODUCT", "What is to be removed is not installed.",
                  "Nothing: it is gone already."),
        installer(1618, "ERROR_INSTALL_ALREADY_RUNNING", "Another installation is under way.",
                  "Wait for it; the next cycle tries again."),
        installer(1619, "ERROR_INSTALL_PACKAGE_OPEN_FAILED", "The package cannot be opened.",
                  "Let the client download the component again."),
        installer(1638, "ERROR_PRODUCT_VERSION", "Another version is installed already.",
                  "Remove it first, or correct the product list."),
        installer(1641, "ERROR_SUCCESS_REBOOT_INITIATED", "Installed; the installer restarts Windows.",
                  "The client counts this as a failure: the "
                  "next cycle sees what is installed."),
        installer(3010, "ERROR_SUCCESS_REBOOT_REQUIRED", "Installed; Windows must be restarted.",
                  "Restart Windows. The client counts this as a "
                  "failure: the next cycle sees what is installed."),
    };
}
} // namespace autool
