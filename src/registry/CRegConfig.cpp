#include "registry/CRegConfig.h"

#include "platform/BoundedText.h"
#include "registry/TypedValues.h"

#include <cstdint>
#include <cstring>

using aut::readFlag;
using aut::readNumber;
using aut::readText;
using aut::writeFlag;

namespace
{
String lastDateName(const char* file)
{
    String name(file);
    const int fullStop = name.ReverseFind('.');
    return (fullStop >= 0 ? name.Left(fullStop) : name) + ".LastDate";
}

String configCounterName(const char* prefix) { return String(prefix) + "_ConfigCounter"; }
} // namespace

CRegConfig::CRegConfig(bool readOnly) : CRegBase(aut::kAutoUpdateKey, "Config", readOnly) {}

bool CRegConfig::IsSilentMode() { return readFlag(*this, "SilentMode"); }
void CRegConfig::SilentMode(bool on) { writeFlag(*this, "SilentMode", on); }
bool CRegConfig::NoIcon() { return readFlag(*this, "NoIcon"); }
void CRegConfig::NoIcon(bool on) { writeFlag(*this, "NoIcon", on); }
bool CRegConfig::IsAdminMode() { return readFlag(*this, "AdminMode"); }
void CRegConfig::AdminMode(bool on) { writeFlag(*this, "AdminMode", on); }
bool CRegConfig::RunAsService() { return !readFlag(*this, "NoService"); }
bool CRegConfig::GetFlag(const char* name) { return readFlag(*this, name); }
void CRegConfig::SetFlag(const char* name, bool on) { writeFlag(*this, name, on); }

const char* CRegConfig::GetLastDate(const char* file) { return readText(*this, m_value, lastDateName(file)); }
void CRegConfig::SetLastDate(const char* file, const char* date)
{
    aut::writeOrDelete(*this, lastDateName(file), date);
}

__int64 CRegConfig::GetNextProductListDate() { return GetTimeValue("NextGetProductList"); }
void CRegConfig::SetNextProductListDate(__int64 time) { SetTimeValue("NextGetProductList", time); }
__int64 CRegConfig::GetNextPendingUpdate() { return GetTimeValue("NextPendingUpdate"); }
void CRegConfig::SetNextPendingUpdate(__int64 time) { SetTimeValue("NextPendingUpdate", time); }
__int64 CRegConfig::GetWebConfDiffDate() { return GetTimeValue("DiffWebConfDate"); }
void CRegConfig::SetWebConfDiffDate(__int64 seconds) { SetTimeValue("DiffWebConfDate", seconds); }

unsigned long CRegConfig::GetConfigCounter(const char* prefix) { return readNumber(*this, configCounterName(prefix)); }
void CRegConfig::SetConfigCounter(const char* prefix, unsigned long n) { SetValue(configCounterName(prefix), n); }

const char* CRegConfig::GetTestCID() { return readText(*this, m_value, "TestCID"); }
void CRegConfig::SetTestCID(const char* text) { SetValue("TestCID", text); }
const char* CRegConfig::GetTestHWID() { return readText(*this, m_value, "TestHWID"); }
void CRegConfig::SetTestHWID(const char* text) { SetValue("TestHWID", text); }
const char* CRegConfig::GetIntermediateServersPath() { return readText(*this, m_value, "IntermediateServersPath"); }
void CRegConfig::SetIntermediateServersPath(const char* text) { SetValue("IntermediateServersPath", text); }
unsigned long CRegConfig::GetLanguageID() { return readNumber(*this, "LanguageID"); }
void CRegConfig::SetLanguageID(unsigned long id) { SetValue("LanguageID", id); }
const char* CRegConfig::GetDeploymentCID() { return readText(*this, m_value, "DeploymentCID"); }
void CRegConfig::SetDeploymentCID(const char* text) { SetValue("DeploymentCID", text); }
unsigned long CRegConfig::GetTestEnvValue() { return readNumber(*this, "TestEnv"); }

bool CRegConfig::IsMergeOptionSet()
{
    unsigned long merge = 0;
    return !QueryValue("MergeProductLists", merge) || merge != 0;
}

bool CRegConfig::IsTestEnvFlagSet(unsigned long n)
{
    unsigned long level = 0;
    return QueryValue("TestEnv", level) && level >= n;
}

__int64 CRegConfig::GetTimeValue(const char* name)
{
    BYTE data[sizeof(std::int64_t)];
    DWORD size = sizeof data;
    if (name == nullptr || m_key == nullptr ||
        ::RegQueryValueExA(m_key, name, nullptr, nullptr, data, &size) != ERROR_SUCCESS)
        return 0;

    std::int64_t time = 0;
    std::int32_t shortTime = 0; // what clients with 32-bit times have left
    if (size == sizeof time)
        std::memcpy(&time, data, sizeof time);
    else if (size == sizeof shortTime)
    {
        std::memcpy(&shortTime, data, sizeof shortTime);
        time = shortTime;
    }
    return time;
}

int CRegConfig::SetTimeValue(const char* name, __int64 time)
{
    return name != nullptr && WriteValue(name, REG_QWORD, &time, sizeof time) ? 1 : 0;
}
