#include "fileops/ExpressionValues.h"

#include "platform/UniqueResource.h"
#include "platform/WideText.h"
#include "registry/CRegBase.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>
#include <string>
#include <string_view>

namespace
{
constexpr char kCurrentVersionKey[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion";
constexpr char kInternetSettingsKey[] = "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
constexpr DWORD kIniBufferSize = 1024;
constexpr DWORD kLongestVariableChars = 32767; // of the system, terminator included

/// What the system makes of a text; nothing when it changes nothing, or when the code page cannot express the outcome.
/// In wide form: in 8-bit form the system puts question marks for such characters, which is another path.
std::optional<std::string> expandedBySystem(std::string_view text)
{
    if (text.size() > kLongestVariableChars)
        return std::nullopt;
    const std::wstring source = aut::widened(text);
    std::wstring expanded;
    DWORD needed = ::ExpandEnvironmentStringsW(source.c_str(), nullptr, 0);
    while (needed > expanded.size() && needed <= kLongestVariableChars) // it may grow between asking and expanding
    {
        expanded.resize(needed);
        needed = ::ExpandEnvironmentStringsW(source.c_str(), expanded.data(), static_cast<DWORD>(expanded.size()));
    }
    if (needed == 0 || needed > expanded.size())
        return std::nullopt;
    expanded.resize(needed - 1); // without the terminator
    return expanded == source ? std::nullopt : aut::narrowed(expanded);
}

/// The system keeps the path of an ini file in MAX_PATH characters, and not every system looks whether it fits.
bool fitsIniPath(const char* file)
{
    char path[MAX_PATH] = "";
    const bool hasFolder = std::strpbrk(file, "\\/:") != nullptr;
    const std::size_t length = hasFolder ? ::GetFullPathNameA(file, MAX_PATH, path, nullptr)
                                         : ::GetWindowsDirectoryA(path, MAX_PATH) + 1 + std::strlen(file);
    return length < MAX_PATH;
}
} // namespace

String aut::expandSystemVariables(const String& text)
{
    const std::string_view source(static_cast<const char*>(text));
    try
    {
        if (const std::optional<std::string> whole = expandedBySystem(source))
            return String(whole->c_str());
        // What is longer than a variable may be the system refuses or even cuts: variable by variable, as it would go.
        std::string output;
        std::size_t done = 0;
        for (std::size_t begin = source.find('%'); begin != std::string_view::npos; begin = source.find('%', done))
        {
            const std::size_t end = source.find('%', begin + 1);
            if (end == std::string_view::npos)
                break;
            const std::optional<std::string> value = expandedBySystem(source.substr(begin, end - begin + 1));
            if (value &&
                output.size() + (begin - done) + value->size() + (source.size() - end - 1) > kLongestExpressionChars)
                break;
            const std::size_t kept = (value ? begin : end + 1) - done;
            output.append(source, done, kept).append(value.value_or(std::string()));
            done = end + 1;
        }
        return done == 0 ? text : String(output.append(source, done, std::string_view::npos).c_str());
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
    // The size should count a terminator, but not every system adds one to a text that is stored without. The string
    // has room for one behind its own length.
    String text;
    const int length = static_cast<int>(size);
    char* const buffer = text.GetBufferSetLength(length);
    if (buffer == nullptr || ::RegGetValueA(key.get(), nullptr, name, kTexts, nullptr, buffer, &size) != ERROR_SUCCESS)
        return String();
    buffer[std::min(static_cast<int>(size), length)] = '\0';
    text.ReleaseBuffer(-1);
    return text;
}

String aut::iniText(const char* file, const char* section, const char* key)
{
    char value[kIniBufferSize] = "";
    if (fitsIniPath(file))
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
