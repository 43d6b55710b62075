#include "registry/CRegAutoUpdate.h"

#include "foundation/WholeText.h"
#include "platform/BoundedText.h"
#include "registry/TypedValues.h"

#include <cstring>

using aut::readFlag;
using aut::readNumber;
using aut::readText;
using aut::writeFlag;

CRegAutoUpdate::CRegAutoUpdate(bool readOnly) : CRegBase(aut::kAutoUpdateKey, readOnly) {}

const char* CRegAutoUpdate::GetPath() { return readText(*this, m_value, "Path"); }
void CRegAutoUpdate::SetPath(const char* text) { SetValue("Path", text); }
const char* CRegAutoUpdate::GetDataPath() { return readText(*this, m_value, "DataPath"); }
void CRegAutoUpdate::SetDataPath(const char* text) { SetValue("DataPath", text); }
const char* CRegAutoUpdate::GetDownloadPath() { return readText(*this, m_value, "DownloadPath"); }
void CRegAutoUpdate::SetDownloadPath(const char* text) { SetValue("DownloadPath", text); }
const char* CRegAutoUpdate::GetComponentPath() { return readText(*this, m_value, "CompPath"); }
void CRegAutoUpdate::SetComponentPath(const char* text) { SetValue("CompPath", text); }
const char* CRegAutoUpdate::GetVelmoraPath() { return readText(*this, m_value, "VelmoraPath"); }
void CRegAutoUpdate::SetVelmoraPath(const char* text) { SetValue("VelmoraPath", text); }
const char* CRegAutoUpdate::GetKernelVersion() { return readText(*this, m_value, "Current_Kernel_Version"); }
void CRegAutoUpdate::SetKernelVersion(const char* text) { SetValue("Current_Kernel_Version", text); }
const char* CRegAutoUpdate::GetAUProductVersion() { return readText(*this, m_value, "Current_AutoUpdate_Version"); }
void CRegAutoUpdate::SetAUProductVersion(const char* text) { SetValue("Current_AutoUpdate_Version", text); }
const char* CRegAutoUpdate::GetCABKernelVersion() { return readText(*this, m_value, "CAB_Kernel_Version"); }
const char* CRegAutoUpdate::GetCABProductVersion() { return readText(*this, m_value, "CAB_AutoUpdate_Version"); }
const char* CRegAutoUpdate::GetZone() { return readText(*this, m_value, "Zone"); }
void CRegAutoUpdate::SetZone(const char* text) { SetValue("Zone", text); }
const char* CRegAutoUpdate::GetCountryCode() { return readText(*this, m_value, "CountryCode"); }
void CRegAutoUpdate::SetCountryCode(const char* text) { SetValue("CountryCode", text); }
const char* CRegAutoUpdate::GetMarketingName() { return readText(*this, m_value, "MarketingName"); }
void CRegAutoUpdate::SetMarketingName(const char* text) { SetValue("MarketingName", text); }
const char* CRegAutoUpdate::GetTechnicalName() { return readText(*this, m_value, "TechnicalName"); }
void CRegAutoUpdate::SetTechnicalName(const char* text) { SetValue("TechnicalName", text); }

bool CRegAutoUpdate::IsLocalInstall() { return readFlag(*this, "LocalInstall"); }
void CRegAutoUpdate::LocalInstall(bool on) { writeFlag(*this, "LocalInstall", on); }
bool CRegAutoUpdate::GetAUWinLogonStatus() { return readFlag(*this, "AUWinLogonStatus"); }
void CRegAutoUpdate::SetAUWinLogonStatus(bool on) { writeFlag(*this, "AUWinLogonStatus", on); }

unsigned long CRegAutoUpdate::GetStatus() { return readNumber(*this, "Status"); }

void CRegAutoUpdate::SetStatus(AUStatus flags) { SetValue("Status", GetStatus() | static_cast<unsigned long>(flags)); }

void CRegAutoUpdate::ResetStatus(AUStatus flags)
{
    unsigned long status = 0;
    if (QueryValue("Status", status))
        SetValue("Status", flags == 0 ? 0UL : status & ~static_cast<unsigned long>(flags));
}

unsigned long CRegAutoUpdate::GetException()
{
    const unsigned long exception = readNumber(*this, "Exception");
    return exception <= 7 ? exception : 0;
}

void CRegAutoUpdate::SetException(unsigned long value) { SetValue("Exception", value); }

String CRegAutoUpdate::GetCompressedPath()
{
    const char* const path = GetPath();
    if (aut::isEmpty(path))
        return String();
    return aut::wholeText({path, path[std::strlen(path) - 1] != '\\' ? "\\" : "", "Compressed"});
}

String CRegAutoUpdate::GetKernelPath()
{
    char components[260]; // the next value is read into the same buffer
    aut::copyText(components, GetComponentPath());
    return aut::wholeText({components, "\\Kernel\\", GetKernelVersion()});
}
