#include "state/Compare.h"

#include "common/Text.h"
#include "machine/Client.h"

#include <algorithm>
#include <fstream>
#include <map>

namespace autool
{
namespace
{
constexpr char kStep[] = " > ";

/// All single values by place, in order.
using Places = std::vector<std::pair<std::string, std::string>>;

std::string textOf(const Json& json) { return json.is_string() ? json.get<std::string>() : jsonLine(json); }

void flatten(const Json& json, const std::string& where, bool isSecret, const Secrets& secrets, Places& places)
{
    const auto below = [&](const std::string& step) { return where.empty() ? step : where + kStep + step; };
    if (json.is_object() && !json.empty())
    {
        for (const auto& item : json.items())
            flatten(item.value(), below(secrets.mask(item.key())),
                    isSecret || Secrets::isSecretName(toWide(item.key())), secrets, places);
        return;
    }
    if (json.is_array()) // one without elements says nothing
    {
        // By what they say, not by their number: an entry that comes or goes must not move all others.
        std::map<std::string, int> seen;
        for (const Json& element : json)
        {
            const std::string text = secrets.mask(element.is_primitive() ? textOf(element) : jsonLine(element));
            const int number = ++seen[text];
            places.emplace_back(below(text) + (number > 1 ? " (" + std::to_string(number) + ")" : ""), "there");
        }
        return;
    }
    const bool isName = json.is_string() && (json == "REG_SZ" || json == kHidden);
    places.emplace_back(where, isSecret && !isName && !json.is_boolean() ? kHidden : secrets.mask(textOf(json)));
}

/// A key that has got its first value, or lost its last one, is still there: its values are what came or went.
bool isOnlyEmpty(const std::string& where, const std::string& text, const std::map<std::string, std::string>& other)
{
    if (text != "{}")
        return false;
    const std::string below = where + kStep;
    const auto next = other.lower_bound(below);
    return next != other.end() && next->first.compare(0, below.size(), below) == 0;
}

bool isTimeOfState(const std::string& where) { return where == "time"; }
} // namespace

Json readState(const std::string& path)
{
    if (isFolder(path))
        throw NoState(path + " is a folder");
    std::ifstream file(toSystem(path), std::ios::binary);
    if (!file)
        throw NoState(path + " cannot be opened");
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (text.rfind("\xef\xbb\xbf", 0) == 0)
        text.erase(0, 3);
    if (text.rfind("\xff\xfe", 0) == 0) // what shells on Windows write when output goes to a file
        text = fromWide(std::wstring(reinterpret_cast<const wchar_t*>(text.data() + 2), text.size() / 2 - 1));
    const Json state = Json::parse(text, nullptr, false);
    if (state.is_discarded())
        throw NoState(path + " is no JSON, or was cut off");
    if (!state.is_object() || state.value("format", Json()) != "autool-state")
        throw NoState(path + " was not printed by \"autool state --json\"");
    if (state.value("formatVersion", Json()) != 1)
        throw NoState(path + " is of a newer autool");
    return state;
}

std::vector<Difference> compareStates(const Json& then, const Json& now, const Secrets& secrets)
{
    Places before;
    Places after;
    flatten(then, "", false, secrets, before);
    flatten(now, "", false, secrets, after);
    const std::map<std::string, std::string> beforeByPlace(before.begin(), before.end());
    const std::map<std::string, std::string> afterByPlace(after.begin(), after.end());

    std::vector<Difference> differences;
    for (const auto& [where, text] : before)
    {
        const auto found = afterByPlace.find(where);
        const bool isSame = found != afterByPlace.end() && found->second == text;
        if (!isTimeOfState(where) && !isSame && !isOnlyEmpty(where, text, afterByPlace))
            differences.push_back({where, text, found == afterByPlace.end() ? "" : found->second});
    }
    for (const auto& [where, text] : after)
        if (!isTimeOfState(where) && beforeByPlace.count(where) == 0 && !isOnlyEmpty(where, text, beforeByPlace))
            differences.push_back({where, "", text});
    std::stable_sort(differences.begin(), differences.end(),
                     [](const Difference& left, const Difference& right) { return left.where < right.where; });
    return differences;
}
} // namespace autool
