#include "machine/RebootQueue.h"

#include "common/Text.h"
#include "machine/Client.h"
#include "machine/RegistryReader.h"
#include "machine/Text.h"

#include <windows.h>

#include <algorithm>

namespace autool
{
namespace
{
constexpr wchar_t kSessionManager[] = L"System\\CurrentControlSet\\Control\\Session Manager";
constexpr wchar_t kRunOnce[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\RunServicesOnce";

/// "\??\C:\x" and, for a move that replaces, "!\??\C:\x".
std::wstring plainPath(std::wstring path)
{
    if (!path.empty() && path[0] == L'!')
        path.erase(0, 1);
    if (path.rfind(L"\\??\\", 0) == 0)
        path.erase(0, 4);
    return path;
}

std::wstring fileName(const std::wstring& path) { return path.substr(path.find_last_of(L"\\/") + 1); }
std::wstring withoutExtension(const std::wstring& name) { return name.substr(0, name.rfind(L'.')); }

/// What the library copies beside a drive's root until the restart: X:\<name of the target>_<digit>.tmp.
bool isReplacementTemporary(const std::wstring& source, const std::wstring& target)
{
    const bool isInRoot =
        source.size() > 3 && source[1] == L':' && source.find_first_of(L"\\/", 3) == std::wstring::npos;
    const std::wstring name = lowered(fileName(source));
    const std::wstring base = lowered(withoutExtension(fileName(target)));
    if (!isInRoot || base.empty() || name.size() != base.size() + 6)
        return false;
    const wchar_t digit = name[base.size() + 1];
    return name.compare(0, base.size(), base) == 0 && name[base.size()] == L'_' && digit >= L'0' && digit <= L'9' &&
           name.compare(base.size() + 2, 4, L".tmp") == 0;
}

void markStale(RebootEntry& entry)
{
    entry.isStale = !entry.isDamaged && ::GetFileAttributesW(toWide(entry.source).c_str()) == INVALID_FILE_ATTRIBUTES;
}

void addRegistryList(std::vector<RebootEntry>& entries, const wchar_t* name)
{
    const auto value = readValue(HKEY_LOCAL_MACHINE, kSessionManager, name);
    if (!value)
        return;
    RegistryValue raw = *value;
    raw.type = REG_MULTI_SZ; // whatever it is said to be: the empty texts in between count
    for (RebootEntry& entry : parseRenames(raw.text()))
    {
        entry.queue = fromWide(name);
        markStale(entry);
        entries.push_back(std::move(entry));
    }
}

/// The client's writer joins deletions as "NUL=path", any number of them, and replacements as "target=source".
void addStartupSection(std::vector<RebootEntry>& entries)
{
    wchar_t windows[MAX_PATH] = L"";
    if (::GetWindowsDirectoryW(windows, MAX_PATH) == 0)
        return;
    const std::wstring file = std::wstring(windows) + L"\\WinInit.ini";
    if (::GetFileAttributesW(file.c_str()) == INVALID_FILE_ATTRIBUTES)
        return;
    std::vector<wchar_t> buffer(4096);
    DWORD length = 0;
    for (;;)
    {
        length = ::GetPrivateProfileSectionW(L"Rename", buffer.data(), static_cast<DWORD>(buffer.size()), file.c_str());
        if (length + 2 < buffer.size())
            break;
        buffer.resize(buffer.size() * 2);
    }
    for (const wchar_t* line = buffer.data(); line < buffer.data() + length && *line != L'\0';
         line += std::wcslen(line) + 1)
    {
        const std::wstring text = line;
        const std::size_t equals = text.find(L'=');
        RebootEntry entry;
        entry.queue = "WinInit.ini";
        entry.isDamaged = equals == std::wstring::npos;
        entry.source = fromWide(entry.isDamaged ? text : text.substr(equals + 1));
        if (!entry.isDamaged && ::_wcsicmp(text.substr(0, equals).c_str(), L"NUL") != 0)
            entry.target = fromWide(text.substr(0, equals));
        markStale(entry);
        entries.push_back(std::move(entry));
    }
}

void addCommands(std::vector<RebootEntry>& entries)
{
    const auto key = readTree(HKEY_LOCAL_MACHINE, kRunOnce);
    if (!key)
        return;
    for (const RegistryValue& value : key->values)
    {
        RebootEntry entry;
        entry.queue = "RunServicesOnce";
        entry.source = fromWide(value.text());
        entries.push_back(std::move(entry));
    }
}

/// "Command.com /C C:\Windows\Command\Move.exe /Y SOURCE TARGET": the target as the library writes it.
std::string moveTarget(const std::string& command)
{
    const std::size_t option = lowerCase(command).find("\\move.exe /y ");
    const std::size_t source = option == std::string::npos ? option : option + 13;
    const std::size_t blank = source == std::string::npos ? source : command.find(' ', source); // 8.3: without blanks
    return blank == std::string::npos ? std::string() : command.substr(blank + 1);
}
} // namespace

std::vector<RebootEntry> parseRenames(const std::wstring& data)
{
    std::vector<std::wstring> texts;
    for (std::size_t at = 0; at < data.size();)
    {
        const std::size_t end = std::min(data.find(L'\0', at), data.size());
        texts.push_back(data.substr(at, end - at));
        at = end + 1;
    }
    // An empty text in second place is a deletion; the one behind the last pair is the end of the list.
    if (texts.size() % 2 != 0 && texts.back().empty())
        texts.pop_back();
    std::vector<RebootEntry> entries;
    for (std::size_t i = 0; i < texts.size(); i += 2)
    {
        if (texts[i].empty())
            continue; // left behind by a program that took its entry out
        RebootEntry& entry = entries.emplace_back();
        entry.source = fromWide(plainPath(texts[i]));
        entry.isDamaged = i + 1 == texts.size();
        if (!entry.isDamaged)
            entry.target = fromWide(plainPath(texts[i + 1]));
    }
    return entries;
}

void RebootOwnership::add(const std::string& folder, std::string what)
{
    std::wstring path = properFolder(toWide(folder));
    if (!path.empty())
        m_folders.push_back({std::move(path), std::move(what)});
}

RebootOwnership RebootOwnership::ofClient()
{
    RebootOwnership ownership;
    const ClientFolders folders = readClientFolders();
    ownership.add(folders.path, "the client's folder");
    ownership.add(folders.data, "the client's data folder");
    ownership.add(folders.download, "the client's download folder");
    ownership.add(folders.components, "the components' folder");
    const auto addPaths = [&](const RegistryKey& key, const std::string& what)
    {
        if (const RegistryValue* const path = key.value(L"Path"))
            ownership.add(fromWide(path->text()), what);
    };
    if (const auto products = readTree(HKEY_LOCAL_MACHINE, std::wstring(kClientTree) + L"\\Products"))
        for (const RegistryKey& product : products->keys)
            addPaths(product, "product " + fromWide(product.name));
    if (const auto components = readTree(HKEY_LOCAL_MACHINE, std::wstring(kClientTree) + L"\\Components"))
        for (const RegistryKey& component : components->keys)
            for (const RegistryKey& user : component.keys)
                addPaths(user, "component " + fromWide(component.name));
    ownership.add(folders.maker, "the maker's products");
    return ownership;
}

void RebootOwnership::judge(RebootEntry& entry) const
{
    const bool isCommand = entry.queue == "RunServicesOnce";
    const std::string target = isCommand ? moveTarget(entry.source) : entry.target;
    const std::wstring changed = toWide(isCommand || !target.empty() ? target : entry.source);
    for (const Folder& folder : m_folders)
        if (isBelow(changed, folder.path))
        {
            entry.isOurs = true;
            entry.why = folder.what;
            return;
        }
    if (!isCommand && !target.empty() && isReplacementTemporary(toWide(entry.source), toWide(target)))
    {
        entry.isOurs = true;
        entry.why = "a temporary file of the library's replacement";
    }
}

std::vector<RebootEntry> readRebootQueue(const RebootOwnership& ownership)
{
    std::vector<RebootEntry> entries;
    addRegistryList(entries, L"PendingFileRenameOperations");
    addRegistryList(entries, L"PendingFileRenameOperations2");
    addStartupSection(entries);
    addCommands(entries);
    for (RebootEntry& entry : entries)
        ownership.judge(entry);
    return entries;
}
} // namespace autool
