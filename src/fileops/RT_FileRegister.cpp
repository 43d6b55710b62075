#include "fileops/ExecCommand.h"
#include "fileops/RT_File.h"
#include "fileops/ServerRegistration.h"
#include "foundation/RT_RESULT.h"

#include <windows.h>

#include <new>
#include <string>

namespace
{
constexpr DWORD kSettleMs = 3000; ///< what an installer leaves running is given this time to finish

/// Whether the file is a program: everything else is registered as a library, names without extension too.
bool isProgram(const String& fileName)
{
    const int point = fileName.ReverseFind('.');
    return point >= 0 && fileName.Mid(point + 1) == "exe";
}

const char* installerArguments(int type, bool install)
{
    switch (type)
    {
    case 8:
        return install ? "/AU_INSTALL" : "/AU_REMOVE";
    case 16:
        return install ? "/VERYSILENT /NORESTART /NOCANCEL /RESTARTEXITCODE=99"
                       : "/UNINSTALL /VERYSILENT /NORESTART /NOCANCEL /RESTARTEXITCODE=99";
    default:
        return "";
    }
}
} // namespace

bool RT_File::Register()
try
{
    const bool program = isProgram(m_fileName);
    int outcome = program ? aut::selfRegistration(m_fullPath, true) : aut::LaunchRegSvr32(m_fullPath, true);
    // A library that crashed the tool is not let into this process, which it would crash as well.
    if (outcome != 0 && !program && !aut::isCrash(outcome))
        outcome = aut::registerInProcess(m_fullPath);
    if (outcome == 0)
        return true;
    String object;
    object.Format("%s (Error Code:%X)", static_cast<const char*>(m_fullPath), static_cast<unsigned int>(outcome));
    result->Set(470, "Registration failed", "RT_File::Register", "", "", object);
    return false;
}
catch (const std::bad_alloc&)
{
    return false;
}

bool RT_File::UnRegister()
try
{
    const int outcome =
        isProgram(m_fileName) ? aut::selfRegistration(m_fullPath, false) : aut::LaunchRegSvr32(m_fullPath, false);
    if (outcome == 0)
        return true;
    if (outcome != aut::kToolMissing) // that one has been recorded
        result->Set(471, "UnRegistration failed", "RT_File::UnRegister", "", "", m_fullPath);
    return false;
}
catch (const std::bad_alloc&)
{
    return false;
}

bool RT_File::Execute(int type, bool install)
try
{
    std::string commandLine =
        "\"" + std::string(static_cast<const char*>(m_fullPath)) + "\" " + installerArguments(type, install);
    if (ExecCommand(commandLine.data(), true) == 0)
    {
        ::Sleep(kSettleMs);
        return true;
    }
    // A restart that the installer asks for (exit code 99) deliberately counts as a failure too.
    result->Set(477, "Execution failed", "RT_File::Execute", "", "", commandLine.c_str());
    return false;
}
catch (const std::bad_alloc&)
{
    return false;
}
