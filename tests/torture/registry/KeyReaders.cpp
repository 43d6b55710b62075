#include "registry/CRegAutoUpdate.h"
#include "registry/CRegCitrix.h"
#include "registry/CRegComponent.h"
#include "registry/CRegConfig.h"
#include "registry/CRegDataCaching.h"
#include "registry/CRegInProgress.h"
#include "registry/CRegLogon.h"
#include "registry/CRegProduct.h"
#include "registry/CRegProductForComponent.h"
#include "registry/CRegReport.h"
#include "registry/CRegUpdatingConfigs.h"
#include "tests/torture/registry/GuardedBuffer.h"
#include "tests/torture/registry/Readers.h"

#include <algorithm>

namespace torture
{
namespace
{
constexpr char kTorture[] = "Software\\Velmora\\7xAutoUpdate\\Torture";

/// Opened once, as a client would who reads a value again and again.
CRegBase& base()
{
    static CRegBase key(kTorture, true);
    return key;
}
CRegProduct& product()
{
    static CRegProduct key("Product", true);
    return key;
}
CRegProductForComponent& entry()
{
    static CRegProductForComponent key("Component", "Product", true, true);
    return key;
}

template <typename Key> std::string versionAndBuild(Key& key)
{
    GuardedBuffer version;
    GuardedBuffer build;
    key.GetBuildAndVersion(version, build);
    return version.text() + "|" + build.text();
}

std::string documentedAnyType(const StoredData& data)
{
    if (data.type == REG_SZ)
        return told(true, data.text());
    if (data.type == REG_DWORD)
        return told(true, isNumber(data) ? told(number(data)) : "");
    return told(true, data.type == REG_BINARY ? "a number" : "");
}

/// Of binary data only some hexadecimal number is promised, not which one.
std::string anyType()
{
    String text("before");
    const bool found = base().QueryAnyTypeValue("Value", text);
    const std::string answer(text);
    const bool binary = ::RegGetValueA(HKEY_LOCAL_MACHINE, kTorture, "Value", RRF_RT_REG_BINARY, nullptr, nullptr,
                                       nullptr) == ERROR_SUCCESS;
    const bool hexadecimal = !answer.empty() && answer.find_first_not_of("0123456789abcdef") == std::string::npos;
    return told(found, binary && hexadecimal ? "a number" : answer);
}

std::string documentedLevels(const StoredData& data)
{
    std::string levels;
    std::string level;
    for (const char c : bufferText(data) + ",")
    {
        if (c != ',' && c != ';')
            level += c;
        else if (!level.empty())
        {
            levels += "[" + level + "]";
            level.clear();
        }
    }
    return told(true, levels);
}

std::string reportFile(bool whole)
{
    CRegReport report(true);
    report.SetReportName("Report");
    report.InitFromRegistry();
    return whole ? report.GetFullPath() : report.GetFileName();
}

std::string orInvalid(const std::string& path) { return path.size() < 260 ? path : ""; }
} // namespace

std::vector<Reader> baseAndKeyReaders()
{
    return {
        {"Torture", "Value", "CRegBase::QueryValue(number)",
         []
         {
             unsigned long read = 7;
             const bool found = base().QueryValue("Value", read);
             return told(found, told(read));
         },
         [](const StoredData& data) { return told(isNumber(data), told(number(data))); }},
        {"Torture", "Value", "CRegBase::QueryValue(buffer)",
         []
         {
             GuardedBuffer buffer;
             const bool found = base().QueryValue("Value", buffer);
             return told(found, buffer.text());
         },
         [](const StoredData& data) { return told(fitsBuffer(data), bufferText(data)); }},
        {"Torture", "Value", "CRegBase::QueryValue(String)",
         []
         {
             String text("before");
             const bool found = base().QueryValue("Value", text);
             return told(found, std::string(text));
         },
         [](const StoredData& data) { return told(true, data.size() == 0 ? "before" : data.text()); }},
        {"Torture", "Value", "CRegBase::QueryAnyTypeValue", anyType, documentedAnyType},
        {"Torture", "Value", "CRegBase::EnumerateStringValues",
         []
         {
             base().GetSubValuesCount();
             unsigned long index = 0;
             const std::string name(base().EnumerateStringValues(index));
             return name + told(index);
         },
         [](const StoredData& data) { return std::string(data.type == REG_SZ ? "Value1" : "1"); }},
        {"Torture", "Value", "CRegBase::GetValues",
         []
         {
             RT_List<String, String&> names;
             const bool read = base().GetValues(names);
             return told(read, told(names));
         },
         [](const StoredData&) { return told(true, "[Value]"); }},

        {"", "Path", "CRegAutoUpdate::GetPath", [] { return told(opened<CRegAutoUpdate>().GetPath()); },
         documentedText},
        {"", "Path", "CRegAutoUpdate::GetCompressedPath",
         [] { return std::string(opened<CRegAutoUpdate>().GetCompressedPath()); },
         [](const StoredData& data)
         {
             const std::string path = bufferText(data);
             if (path.empty())
                 return path;
             return path + (path.back() == '\\' ? "Compressed" : "\\Compressed");
         }},
        {"", "DataPath", "CRegAutoUpdate::GetDataPath", [] { return told(opened<CRegAutoUpdate>().GetDataPath()); },
         documentedText},
        {"", "DataPath", "CRegReport::GetPath", [] { return told(CRegReport(true).GetPath()); }, documentedText},
        {"", "DownloadPath", "CRegAutoUpdate::GetDownloadPath",
         [] { return told(opened<CRegAutoUpdate>().GetDownloadPath()); }, documentedText},
        {"", "CompPath", "CRegAutoUpdate::GetComponentPath",
         [] { return told(opened<CRegAutoUpdate>().GetComponentPath()); }, documentedText},
        {"", "CompPath", "CRegAutoUpdate::GetKernelPath",
         [] { return std::string(opened<CRegAutoUpdate>().GetKernelPath()); },
         [](const StoredData& data) { return bufferText(data) + "\\Kernel\\"; }},
        {"", "VelmoraPath", "CRegAutoUpdate::GetVelmoraPath",
         [] { return told(opened<CRegAutoUpdate>().GetVelmoraPath()); }, documentedText},
        {"", "Current_Kernel_Version", "CRegAutoUpdate::GetKernelVersion",
         [] { return told(opened<CRegAutoUpdate>().GetKernelVersion()); }, documentedText},
        {"", "Current_Kernel_Version", "CRegAutoUpdate::GetKernelPath",
         [] { return std::string(opened<CRegAutoUpdate>().GetKernelPath()); },
         [](const StoredData& data) { return "\\Kernel\\" + bufferText(data); }},
        {"", "Current_AutoUpdate_Version", "CRegAutoUpdate::GetAUProductVersion",
         [] { return told(opened<CRegAutoUpdate>().GetAUProductVersion()); }, documentedText},
        {"", "CAB_Kernel_Version", "CRegAutoUpdate::GetCABKernelVersion",
         [] { return told(opened<CRegAutoUpdate>().GetCABKernelVersion()); }, documentedText},
        {"", "CAB_AutoUpdate_Version", "CRegAutoUpdate::GetCABProductVersion",
         [] { return told(opened<CRegAutoUpdate>().GetCABProductVersion()); }, documentedText},
        {"", "Zone", "CRegAutoUpdate::GetZone", [] { return told(opened<CRegAutoUpdate>().GetZone()); },
         documentedText},
        {"", "CountryCode", "CRegAutoUpdate::GetCountryCode",
         [] { return told(opened<CRegAutoUpdate>().GetCountryCode()); }, documentedText},
        {"", "MarketingName", "CRegAutoUpdate::GetMarketingName",
         [] { return told(opened<CRegAutoUpdate>().GetMarketingName()); }, documentedText},
        {"", "TechnicalName", "CRegAutoUpdate::GetTechnicalName",
         [] { return told(opened<CRegAutoUpdate>().GetTechnicalName()); }, documentedText},
        {"", "LocalInstall", "CRegAutoUpdate::IsLocalInstall",
         [] { return told(opened<CRegAutoUpdate>().IsLocalInstall()); }, documentedFlag},
        {"", "AUWinLogonStatus", "CRegAutoUpdate::GetAUWinLogonStatus",
         [] { return told(opened<CRegAutoUpdate>().GetAUWinLogonStatus()); }, documentedFlag},
        {"", "Status", "CRegAutoUpdate::GetStatus", [] { return told(opened<CRegAutoUpdate>().GetStatus()); },
         documentedNumber},
        {"", "Exception", "CRegAutoUpdate::GetException", [] { return told(opened<CRegAutoUpdate>().GetException()); },
         [](const StoredData& data) { return told(number(data) <= 7 ? number(data) : 0UL); }},

        {"Config", "SilentMode", "CRegConfig::IsSilentMode", [] { return told(opened<CRegConfig>().IsSilentMode()); },
         documentedFlag},
        {"Config", "NoIcon", "CRegConfig::NoIcon", [] { return told(opened<CRegConfig>().NoIcon()); }, documentedFlag},
        {"Config", "AdminMode", "CRegConfig::IsAdminMode", [] { return told(opened<CRegConfig>().IsAdminMode()); },
         documentedFlag},
        {"Config", "NoService", "CRegConfig::RunAsService", [] { return told(opened<CRegConfig>().RunAsService()); },
         [](const StoredData& data) { return told(number(data) == 0); }},
        {"Config", "Flag", "CRegConfig::GetFlag", [] { return told(opened<CRegConfig>().GetFlag("Flag")); },
         documentedFlag},
        {"Config", "file.LastDate", "CRegConfig::GetLastDate",
         [] { return told(opened<CRegConfig>().GetLastDate("file.xml")); }, documentedText},
        {"Config", "NextGetProductList", "CRegConfig::GetNextProductListDate",
         [] { return std::to_string(opened<CRegConfig>().GetNextProductListDate()); }, documentedTime},
        {"Config", "NextPendingUpdate", "CRegConfig::GetNextPendingUpdate",
         [] { return std::to_string(opened<CRegConfig>().GetNextPendingUpdate()); }, documentedTime},
        {"Config", "DiffWebConfDate", "CRegConfig::GetWebConfDiffDate",
         [] { return std::to_string(opened<CRegConfig>().GetWebConfDiffDate()); }, documentedTime},
        {"Config", "prefix_ConfigCounter", "CRegConfig::GetConfigCounter",
         [] { return told(opened<CRegConfig>().GetConfigCounter("prefix")); }, documentedNumber},
        {"Config", "TestCID", "CRegConfig::GetTestCID", [] { return told(opened<CRegConfig>().GetTestCID()); },
         documentedText},
        {"Config", "TestHWID", "CRegConfig::GetTestHWID", [] { return told(opened<CRegConfig>().GetTestHWID()); },
         documentedText},
        {"Config", "IntermediateServersPath", "CRegConfig::GetIntermediateServersPath",
         [] { return told(opened<CRegConfig>().GetIntermediateServersPath()); }, documentedText},
        {"Config", "LanguageID", "CRegConfig::GetLanguageID", [] { return told(opened<CRegConfig>().GetLanguageID()); },
         documentedNumber},
        {"Config", "DeploymentCID", "CRegConfig::GetDeploymentCID",
         [] { return told(opened<CRegConfig>().GetDeploymentCID()); }, documentedText},
        {"Config", "MergeProductLists", "CRegConfig::IsMergeOptionSet",
         [] { return told(opened<CRegConfig>().IsMergeOptionSet()); },
         [](const StoredData& data) { return told(!isNumber(data) || number(data) != 0); }},
        {"Config", "TestEnv", "CRegConfig::GetTestEnvValue",
         [] { return told(opened<CRegConfig>().GetTestEnvValue()); }, documentedNumber},
        {"Config", "TestEnv", "CRegConfig::IsTestEnvFlagSet",
         [] { return told(opened<CRegConfig>().IsTestEnvFlagSet(2)); },
         [](const StoredData& data) { return told(number(data) >= 2); }},
        {"Config", "TestEnv", "CRegConfig::IsTestEnvFlagSet(0)",
         [] { return told(opened<CRegConfig>().IsTestEnvFlagSet(0)); },
         [](const StoredData& data) { return told(isNumber(data)); }},

        {"IN_PROGRESS", "ProductsFilePath", "CRegInProgress::GetProductFilePath",
         [] { return told(opened<CRegInProgress>().GetProductFilePath()); }, documentedText},
        {"IN_PROGRESS", "Phase", "CRegInProgress::GetPhase",
         [] { return told(static_cast<unsigned long>(opened<CRegInProgress>().GetPhase())); }, documentedNumber},
        {"IN_PROGRESS", "PrioA", "CRegInProgress::IsPrioA", [] { return told(opened<CRegInProgress>().IsPrioA()); },
         documentedFlag},
        {"IN_PROGRESS", "Action", "CRegInProgress::GetAction",
         [] { return told(opened<CRegInProgress>().GetAction()); }, documentedText},
        {"IN_PROGRESS", "Object", "CRegInProgress::GetObjectA",
         [] { return told(opened<CRegInProgress>().GetObjectA()); }, documentedText},
        {"IN_PROGRESS_LOCAL", "Action", "CRegInProgressLocal::GetAction",
         [] { return told(opened<CRegInProgressLocal>().GetAction()); }, documentedText},
        {"IN_PROGRESS_LOCAL", "Location", "CRegInProgressLocal::GetLocation",
         [] { return told(opened<CRegInProgressLocal>().GetLocation()); }, documentedText},

        {"Data", "Report", "CRegReport::GetFileName", [] { return reportFile(false); }, documentedText},
        {"Data", "Report", "CRegReport::GetFullPath", [] { return reportFile(true); },
         [](const StoredData& data) { return orInvalid("\\" + bufferText(data)); }},
        {"Config\\Logon", "Name", "CRegLogon::GetLogonNameList",
         []
         {
             RT_List<String, String&> names;
             const bool read = CRegLogon(true).GetLogonNameList(names);
             return told(read, told(names));
         },
         [](const StoredData&) { return told(true, "[Name]"); }},
        {"Citrix", "UsersNumber", "CRegCitrix::GetUserNumber",
         [] { return told(opened<CRegCitrix>().GetUserNumber()); }, documentedNumber},
        {"Citrix", "MsgNumber", "CRegCitrix::GetMsgNumber", [] { return told(opened<CRegCitrix>().GetMsgNumber()); },
         documentedNumber},
        {"Config\\Cache\\Data\\Product\\Host", "Cid__Component", "CRegDataCaching::GetTimeStamp",
         [] { return std::string(CRegDataCaching("Host", "Cid", "Product", "Component", true).GetTimeStamp()); },
         [](const StoredData& data) { return data.text().empty() ? std::string("1980-01-01 00:00:00") : data.text(); }},
        {"Config\\Cache\\UpdatingConfigs\\Product\\Host", "Cid__config", "CRegUpdatingConfigs::IsUpdatingConfigForCID",
         [] { return told(CRegUpdatingConfigs("Host", "Cid", "Product", true).IsUpdatingConfigForCID("Cid")); },
         [](const StoredData& data) { return told(bufferText(data) == "updating"); }},

        {"Products\\Product", "Version", "CRegProduct::GetVersion", [] { return told(product().GetVersion()); },
         documentedText},
        {"Products\\Product", "Version", "CRegProduct::GetBuildAndVersion", [] { return versionAndBuild(product()); },
         documentedVersion},
        {"Products\\Product", "Path", "CRegProduct::GetPath", [] { return told(product().GetPath()); }, documentedText},
        {"Products\\Product", "Language", "CRegProduct::GetLanguage", [] { return told(product().GetLanguage()); },
         documentedText},
        {"Products\\Product", "ActiveLanguage", "CRegProduct::GetActiveLanguage",
         [] { return told(product().GetActiveLanguage()); }, documentedText},
        {"Products\\Product", "CertificateID", "CRegProduct::GetCertificateID",
         [] { return told(product().GetCertificateID()); }, documentedText},
        {"Products\\Product", "Components", "CRegProduct::GetComponentList",
         [] { return told(product().GetComponentList()); }, documentedText},
        {"Products\\Product", "Enable", "CRegProduct::IsEnabled", [] { return told(product().IsEnabled()); },
         documentedFlag},
        {"Products\\Product", "MarketingName", "CRegProduct::GetMarketingName",
         [] { return told(product().GetMarketingName()); }, documentedText},
        {"Products\\Product", "TechnicalName", "CRegProduct::GetTechnicalName",
         [] { return told(product().GetTechnicalName()); }, documentedText},

        {"Components", "Max_Levels", "CRegComponent::GetMaxLevels",
         [] { return told(opened<CRegComponent>().GetMaxLevels()); }, documentedNumber},
        {"Components\\Component", "Most_Recent_levels", "CRegComponent::GetMostRecentLevels",
         []
         {
             RT_List<String, String&> levels;
             const bool read = CRegComponent("Component", true).GetMostRecentLevels(levels);
             return told(read, told(levels));
         },
         documentedLevels},
        {"Components\\Component\\Product", "Shared", "CRegProductForComponent::IsShared",
         [] { return told(CRegProductForComponent("Component", "Product", true, true).IsShared()); }, documentedFlag},
        {"Components\\Component\\Product", "ComponentVersion", "CRegProductForComponent::GetComponentVersion",
         [] { return told(entry().GetComponentVersion()); }, documentedText},
        {"Components\\Component\\Product", "ComponentVersion", "CRegProductForComponent::GetBuildAndVersion",
         [] { return versionAndBuild(entry()); }, documentedVersion},
        {"Components\\Component\\Product", "Path", "CRegProductForComponent::GetPath",
         [] { return told(entry().GetPath()); }, documentedText},
        {"Components\\Component\\Product", "Language", "CRegProductForComponent::GetLanguage",
         [] { return told(entry().GetLanguage()); }, documentedText},
        {"Components\\Component\\Product", "Enable", "CRegProductForComponent::IsEnabled",
         [] { return told(entry().IsEnabled()); }, documentedFlag},
    };
}
} // namespace torture
