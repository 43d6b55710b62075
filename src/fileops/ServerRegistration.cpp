#include "fileops/ServerRegistration.h"

#include "fileops/ExecCommand.h"
#include "fileops/ProgramSearch.h"
#include "foundation/RT_RESULT.h"
#include "platform/ComApartment.h"
#include "platform/EntryPoint.h"
#include "platform/QueriedText.h"
#include "platform/UniqueResource.h"

#include <windows.h>

#include <string>

namespace aut
{
namespace
{
constexpr int kNotLoaded = -21;
constexpr int kNoEntryPoint = -22;
constexpr int kCallFailed = -23;

/// Loads without the loader's message boxes, which nobody would answer in a service. The error mode is the whole
/// process's: every Windows has this one, unlike that of the thread.
UniqueModule loadSilently(const char* path)
{
    const UINT before = ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    UniqueModule library(::LoadLibraryExA(path, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
    ::SetErrorMode(before);
    return library;
}

/// The tool in the system directory, or its bare name, for the search path to find.
std::string registrationTool()
{
    const std::string directory =
        queriedText<char>([](char* text, DWORD size) { return ::GetSystemDirectoryA(text, size); });
    return directory.empty() ? "RegSvr32.exe" : directory + "\\RegSvr32.exe";
}

int runAndWait(std::string commandLine) { return ExecCommand(commandLine.data(), true); }
} // namespace

int LaunchRegSvr32(const char* path, bool registering)
{
    const char* const option = registering ? "" : "/U ";
    const std::string tool = registrationTool();
    if (!findProgram(tool))
    {
        result->Set(463, "Regsvr32 does not exist", "LaunchRegSvr32", "", "", tool.c_str());
        return kToolMissing;
    }
    return runAndWait("\"" + tool + "\" " + option + "/S \"" + path + "\"");
}

int selfRegistration(const char* path, bool registering)
{
    return runAndWait("\"" + std::string(path) + "\" " + (registering ? "-regserver" : "-unregserver"));
}

int registerInProcess(const char* path)
{
    const ComApartment apartment(COINIT_APARTMENTTHREADED); // as in the tool; outlives the library
    const UniqueModule library = loadSilently(path);
    if (!library)
        return kNotLoaded;
    const auto registerServer = entryPoint<HRESULT(__stdcall*)()>(library.get(), "DllRegisterServer");
    if (registerServer == nullptr)
        return kNoEntryPoint;
    try
    {
        return SUCCEEDED(registerServer()) ? 0 : kCallFailed;
    }
    catch (...) // a C++ exception that the library let out
    {
        return kCallFailed;
    }
}

bool isCrash(int exitCode)
{
    // Exceptions of the system begin with 0xC, those of a language's runtime with 0xE. What begins with 0xF is a
    // negative number of a tool's own, among them the -1 of one that did not start.
    const unsigned int code = static_cast<unsigned int>(exitCode);
    return code >= 0xC0000000U && code < 0xF0000000U;
}
} // namespace aut
