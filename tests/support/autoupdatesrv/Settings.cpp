#include "Settings.h"

#include "platform/UniqueResource.h"

namespace autoupdatesrv
{
namespace
{
aut::UniqueKey openKey(REGSAM access)
{
    aut::UniqueKey key;
    ::RegCreateKeyExA(HKEY_LOCAL_MACHINE, kSettingsKey, 0, nullptr, REG_OPTION_NON_VOLATILE, access | KEY_WOW64_64KEY,
                      nullptr, key.put(), nullptr);
    return key;
}
} // namespace

DWORD numberSetting(const char* name)
{
    DWORD number = 0;
    DWORD size = sizeof number;
    const aut::UniqueKey key = openKey(KEY_READ);
    if (::RegGetValueA(key.get(), nullptr, name, RRF_RT_REG_DWORD, nullptr, &number, &size) != ERROR_SUCCESS)
        return 0;
    return number;
}

std::string textSetting(const char* name)
{
    const aut::UniqueKey key = openKey(KEY_READ);
    DWORD size = 0;
    if (::RegGetValueA(key.get(), nullptr, name, RRF_RT_REG_SZ, nullptr, nullptr, &size) != ERROR_SUCCESS)
        return std::string();
    std::string text(size, '\0');
    if (::RegGetValueA(key.get(), nullptr, name, RRF_RT_REG_SZ, nullptr, text.data(), &size) != ERROR_SUCCESS)
        return std::string();
    return text.c_str();
}

bool hasSetting(const char* name)
{
    return ::RegQueryValueExA(openKey(KEY_READ).get(), name, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

void writeNumber(const char* name, DWORD number)
{
    ::RegSetValueExA(openKey(KEY_READ | KEY_WRITE).get(), name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number),
                     sizeof number);
}
} // namespace autoupdatesrv
