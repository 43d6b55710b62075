#include "fileops/ExpressionValues.h"

#include "platform/UniqueResource.h"
#include "platform/WideText.h"
#include "registry/CRegBase.h"

#include <new>
#include <optional>
#include <string>

namespace
{
constexpr char kCurrentVersionKey[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
constexpr char kInternetSettingsKey[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
constexpr DWORD kIniBufferSize = 1024;
} // namespace

String aut::expandSystemVariables(const String& text)
{
    if (text.Find('%') == -1)
        return text;
    try
    {
        // In wide form, where the system only counts when it has no buffer: in 8-bit form it makes one of its own, of
        // any size. The environment may change between asking and expanding, so it is asked until the text fits.
        const std::wstring source = widened(static_cast<const char*>(text));
        std::wstring expanded;
        DWORD needed = ::ExpandEnvironmentStringsW(source.c_str(), nullptr, 0);
        while (needed > expanded.size() && needed <= kLongestExpressionChars)
        {
            expanded.resize(needed);
            needed = ::ExpandEnvironmentStringsW(source.c_str(), expanded.data(), static_cast<DWORD>(expanded.size()));
        }
        if (needed == 0 || needed > expanded.size())
            return text;
        expanded.resize(needed - 1); // without the terminator
        if (expanded == source)
            return text; // byte by byte
        const std::optional<std::string> narrow = narrowed(expanded);
        return narrow ? String(narrow->c_str()) : text;
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
