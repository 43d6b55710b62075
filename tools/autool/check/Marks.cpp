#include "check/Check.h"
#include "common/Text.h"
#include "machine/Client.h"
#include "machine/Owners.h"
#include "machine/RebootQueue.h"
#include "machine/RegistryReader.h"

#include <windows.h>

#include <tlhelp32.h>

#include <ctime>
#include <optional>

namespace autool
{
namespace
{
/// A request is given ten minutes; a mark that is older has outlived it.
constexpr __int64 kLongestRequestSeconds = 15 * 60;

bool isClientRunning()
{
    const Handle snapshot(::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W process{};
    process.dwSize = sizeof process;
    for (BOOL more = snapshot ? ::Process32FirstW(snapshot.get(), &process) : FALSE; more != FALSE;
         more = ::Process32NextW(snapshot.get(), &process))
        if (::_wcsicmp(process.szExeFile, L"AutoUpdate.exe") == 0)
            return true;
    return false;
}

struct Mark
{
    std::string place;
    __int64 written;
};

void collectMarks(const RegistryKey& key, const std::string& path, std::vector<Mark>& marks)
{
    for (const RegistryValue& value : key.values)
        if (value.text() == L"updating")
            marks.push_back({path + "\\" + fromWide(value.name), key.written});
    for (const RegistryKey& child : key.keys)
        collectMarks(child, path.empty() ? fromWide(child.name) : path + "\\" + fromWide(child.name), marks);
}

void checkConfigurationMarks(CheckList& list, bool isRunning)
{
    const auto tree = readTree(HKEY_LOCAL_MACHINE, std::wstring(kClientTree) + L"\\Config\\Cache\\UpdatingConfigs");
    std::vector<Mark> marks;
    if (tree)
        collectMarks(*tree, "", marks);
    for (const Mark& mark : marks)
    {
        const __int64 age = ::_time64(nullptr) - mark.written;
        const bool isDead = !isRunning || age > kLongestRequestSeconds;
        list.add(
            "MARK-CONFIG", isDead ? Verdict::fail : Verdict::warn,
            isDead ? "A request for " + mark.place + " was noted " + ageText(age) + " ago, " +
                         (isRunning ? "longer than any takes" : "and AutoUpdate.exe does not run") +
                         ": until that value of Config\\Cache\\UpdatingConfigs is deleted, every such request gives 18."
                   : "A request for " + mark.place + " is under way.");
    }
    if (marks.empty())
        list.add("MARK-CONFIG", Verdict::pass, "No mark of a configuration request is left behind.");
}

void checkProgress(CheckList& list, const wchar_t* name, bool isRunning)
{
    const auto key = readTree(HKEY_LOCAL_MACHINE, std::wstring(kClientTree) + L"\\" + name);
    const RegistryValue* const phase = key ? key->value(L"Phase") : nullptr;
    const std::string place = fromWide(name);
    unsigned __int64 number = 0;
    if (phase != nullptr)
    {
        const std::optional<unsigned __int64> stored = phase->number();
        if (!stored)
        {
            list.add("MARK-PROGRESS", Verdict::warn,
                     "\"Phase\" of " + place + " is no number but " + typeName(phase->type) + ".");
            return;
        }
        number = *stored;
    }
    if (number == 0)
        list.add("MARK-PROGRESS", Verdict::pass, "No update cycle is noted as under way in " + place + ".");
    else if (isRunning)
        list.add("MARK-PROGRESS", Verdict::pass,
                 "An update cycle is under way, in phase " + std::to_string(number) + ".");
    else
        list.add("MARK-PROGRESS", Verdict::warn,
                 place + " says phase " + std::to_string(number) +
                     ", but AutoUpdate.exe does not run: a cycle was broken off " +
                     ageText(::_time64(nullptr) - key->written) + " ago.");
}
} // namespace

void checkMarks(CheckList& list)
{
    list.begin("Looking for marks");
    const bool isRunning = isClientRunning();
    checkConfigurationMarks(list, isRunning);
    checkProgress(list, L"IN_PROGRESS", isRunning);
    if (readTree(HKEY_LOCAL_MACHINE, std::wstring(kClientTree) + L"\\IN_PROGRESS_LOCAL"))
        checkProgress(list, L"IN_PROGRESS_LOCAL", isRunning);
}

void checkReboot(CheckList& list)
{
    list.begin("Looking at what waits for the restart");
    int waiting = 0;
    int others = 0;
    bool isGood = true;
    for (const RebootEntry& entry : readRebootQueue(RebootOwnership::ofClient()))
    {
        if (!entry.isOurs)
        {
            ++others;
            continue;
        }
        ++waiting;
        if (!entry.isDamaged && !entry.isStale)
            continue;
        isGood = false;
        list.add("REBOOT-CLIENT", entry.target.empty() ? Verdict::warn : Verdict::fail,
                 entry.isDamaged        ? "The entry for " + entry.source + " in " + entry.queue + " is cut off."
                 : entry.target.empty() ? entry.source + " is to be deleted at the restart, but is not there any more."
                                        : entry.target + " is to be replaced at the restart, but " + entry.source +
                                              " is missing: the old file stays.");
    }
    if (isGood)
        list.add("REBOOT-CLIENT", waiting > 0 ? Verdict::warn : Verdict::pass,
                 waiting > 0 ? std::to_string(waiting) + " change" + (waiting == 1 ? "" : "s") + " of the client wait" +
                                   (waiting == 1 ? "s" : "") + " for a restart of Windows."
                             : "Nothing of the client waits for a restart of Windows.");
    list.add("REBOOT-OTHER", others > 0 ? Verdict::warn : Verdict::pass,
             others > 0 ? std::to_string(others) + " change" + (others == 1 ? "" : "s") + " of other programs wait" +
                              (others == 1 ? "s" : "") + " for a restart of Windows."
                        : "Nothing of other programs waits for a restart of Windows.");
}
} // namespace autool
