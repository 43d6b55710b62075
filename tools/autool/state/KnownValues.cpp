#include "state/KnownValues.h"

namespace autool
{
const std::vector<KnownValue>& knownValues()
{
    static const std::vector<KnownValue> kValues = {
        {L"", L"Path", REG_SZ, ""},
        {L"", L"DataPath", REG_SZ, ""},
        {L"", L"DownloadPath", REG_SZ, ""},
        {L"", L"CompPath", REG_SZ, ""},
        {L"", L"VelmoraPath", REG_SZ, ""},
        {L"", L"Current_Kernel_Version", REG_SZ, ""},
        {L"", L"Current_AutoUpdate_Version", REG_SZ, ""},
        {L"", L"CAB_Kernel_Version", REG_SZ, ""},
        {L"", L"CAB_AutoUpdate_Version", REG_SZ, ""},
        {L"", L"LocalInstall", REG_DWORD, "off"},
        {L"", L"Status", REG_DWORD, "0"},
        {L"", L"AUWinLogonStatus", REG_DWORD, "off"},
        {L"", L"Zone", REG_SZ, ""},
        {L"", L"CountryCode", REG_SZ, ""},
        {L"", L"Exception", REG_DWORD, "0"},
        {L"", L"MarketingName", REG_SZ, ""},
        {L"", L"TechnicalName", REG_SZ, ""},
        {L"", L"LastAndMaxIndex", REG_DWORD, "last archive 0, at most 4 kept"},
        {L"Config", L"SilentMode", REG_DWORD, "off"},
        {L"Config", L"NoIcon", REG_DWORD, "off"},
        {L"Config", L"AdminMode", REG_DWORD, "off"},
        {L"Config", L"NoService", REG_DWORD, "off: runs as a service"},
        {L"Config", L"NextGetProductList", REG_QWORD, "0", true},
        {L"Config", L"NextPendingUpdate", REG_QWORD, "0", true},
        {L"Config", L"DiffWebConfDate", REG_QWORD, "0 s"},
        {L"Config", L"TestCID", REG_SZ, ""},
        {L"Config", L"TestHWID", REG_SZ, ""},
        {L"Config", L"IntermediateServersPath", REG_SZ, ""},
        {L"Config", L"LanguageID", REG_DWORD, "0"},
        {L"Config", L"DeploymentCID", REG_SZ, ""},
        {L"Config", L"MergeProductLists", REG_DWORD, "on"},
        {L"Config", L"TestEnv", REG_DWORD, "0: no detail in the log"},
        {L"Config", L"BFU9K", REG_DWORD, "off: installation hours count"},
        {L"Config", L"WebServer", REG_SZ, ""},
        {L"Config", L"WebVirtualDir", REG_SZ, "WebConfV1"},
        {L"Config", L"WebConfCnxFail", REG_DWORD, "0"},
        {L"Config", L"BypassDataCaching", REG_DWORD, "off"},
        {L"Config", L"ShowDialog", REG_DWORD, "off"},
        {L"Config", L"ServiceInstalled", REG_DWORD, "off"},
        {L"Config", L"LogonName", REG_SZ, "the owner of the first shell"},
        {L"Config\\Network", L"ProxyFirewallAddress", REG_SZ, "none"},
        {L"Config\\Network", L"ProxyFirewallBypass", REG_SZ, "none"},
        {L"Config\\Network", L"ProxyAuthorization", REG_SZ, "none"},
        {L"Config\\Network", L"ServerAuthorization", REG_SZ, "none"},
        {L"Config\\Network", L"AdminMode", REG_DWORD, "off"},
        {L"IN_PROGRESS", L"ProductsFilePath", REG_SZ, ""},
        {L"IN_PROGRESS", L"Phase", REG_DWORD, "0: not at work"},
        {L"IN_PROGRESS", L"PrioA", REG_DWORD, "off"},
        {L"IN_PROGRESS", L"Action", REG_SZ, ""},
        {L"IN_PROGRESS", L"Object", REG_SZ, ""},
        {L"Citrix", L"UsersNumber", REG_DWORD, "0"},
        {L"Citrix", L"MsgNumber", REG_DWORD, "0"},
    };
    return kValues;
}

const KnownValue* knownValue(const std::wstring& key, const std::wstring& name)
{
    for (const KnownValue& known : knownValues())
        if (::_wcsicmp(known.key, key.c_str()) == 0 && ::_wcsicmp(known.name, name.c_str()) == 0)
            return &known;
    return nullptr;
}
} // namespace autool
