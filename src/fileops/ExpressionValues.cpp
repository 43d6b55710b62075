#include "fileops/ExpressionValues.h"

#include "platform/UniqueResource.h"
#include "registry/CRegBase.h"

#include <new>
#include <string>

namespace
{
constexpr char kCurrentVersionKey[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
constexpr char kInternetSettingsKey[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
constexpr DWORD kIniBufferSize = 1024;
} // namespace

String aut::expandSystemVariables(const String& text)
{
    // The system takes the text through Unicode, which need not bring every byte back: only when there is something.
    if (text.Find('%') == -1)
        return text;
    try
    {
        // The environment may change between asking and expanding, so the second answer counts as much as the first.
        std::string expanded;
        DWORD needed = ::ExpandEnvironmentStringsA(text, nullptr, 0);
        while (needed > expanded.size() && needed <= kLongestExpressionChars)
        {
            expanded.resize(needed);
            needed = ::ExpandEnvironmentStringsA(text, expanded.data(), static_cast<DWORD>(expanded.size()));
        }
        return needed != 0 && needed <= expanded.size() ? String(expanded.c_str()) : text;
    }
    catch (const std::bad_alloc&)
    {
        return text;
    }
}

String aut::registryText(HKEY root, const char* path, const char* name, REGSAM view)
{
    HKEY opened = nullptr;
    if (::RegOpenKeyExA(root, path, 0, KEY_QUERY_VALUE | view, &opened) != ERROR_SUCCESS)
        return String();
    const UniqueKey key(opened);

    constexpr DWORD kTexts = RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND;
    DWORD size = 0;
    if (::RegGetValueA(key.get(), nullptr, name, kTexts, nullptr, nullptr, &size) != ERROR_SUCCESS || size == 0 ||
        size > kLongestExpressionChars)
        return String();
    // The size counts the terminator, and the string has room for one behind its own length.
    String text;
    char* const buffer = text.GetBufferSetLength(static_cast<int>(size) - 1);
    if (buffer == nullptr || ::RegGetValueA(key.get(), nullptr, name, kTexts, nullptr, buffer, &size) != ERROR_SUCCESS)
        return String();
    text.ReleaseBuffer(-1);
    return text;
}

String aut::iniText(const char* file, const char* section, const char* key)
{
    char value[kIniBufferSize] = "";
    ::GetPrivateProfileStringA(section, key, "", value, kIniBufferSize, file);
    return String(value);
}

String aut::systemFolder32()
{
    char folder[MAX_PATH] = "";
    const UINT length = ::GetSystemWow64DirectoryA(folder, MAX_PATH);
    return length != 0 && length < MAX_PATH ? String(folder) : String();
}

String aut::wellKnownFolder32(const char* name)
{
    return registryText(HKEY_LOCAL_MACHINE, kCurrentVersionKey, name, KEY_WOW64_32KEY);
}

String aut::downloadedProgramFilesFolder()
{
    CRegBase settings;
    String folder;
    if (settings.Open(kInternetSettingsKey, KEY_READ))
        settings.QueryValue("ActiveXCache", folder);
    return folder;
}
