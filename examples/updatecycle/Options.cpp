#include "Options.h"

#include <cstdio>
#include <utility>

namespace updatecycle
{
const char kUsage[] =
    "updatecycle [--server HOST[:PORT]] [--cid CERTIFICATE] [--data FOLDER] [--url URL] [--hours S-E] [--list]\n"
    "updatecycle --hold FILE\n"
    "Asks for this workstation's configuration and product lists, and installs, replaces or removes what it asks for.\n"
    "  --server HOST[:PORT]  the Web Configurator; stored in the client's settings\n"
    "  --cid CERTIFICATE     asks for this certificate ID only, not for those of this workstation\n"
    "  --data FOLDER         where the record files go; made when missing, stored in the client's settings\n"
    "  --url URL             the product list itself; without --cid its releases are local ones\n"
    "  --hours S-E           installs only from S to E o'clock, 22-6 for instance, whatever the configuration says\n"
    "  --list                ends when the list is shown and the records are saved\n"
    "  --hold FILE           only keeps FILE open, so that nobody can replace it, until the standard input ends\n"
    "Exit codes: 0 done, 1 unexpected error, 2 bad usage, 3 no settings, 4 no answer, 5 answer not understood,\n"
    "6 a release record was not saved, 7 a release was not installed or removed, 8 Windows must be restarted.\n";

namespace
{
std::optional<Hours> parseHours(const std::string& text)
{
    Hours hours;
    int length = 0;
    if (std::sscanf(text.c_str(), "%d-%d%n", &hours.start, &hours.end, &length) != 2 ||
        static_cast<std::size_t>(length) != text.size() || hours.start < 0 || hours.start > 23 || hours.end < 0 ||
        hours.end > 24)
        return std::nullopt;
    if (hours.end < hours.start)
        hours.end += 24;
    return hours;
}
} // namespace

std::optional<Options> parseOptions(int argc, char** argv, std::string& complaint)
{
    Options options;
    std::string hours;
    const std::pair<const char*, std::string*> texts[] = {
        {"--server", &options.server},   {"--url", &options.url},       {"--cid", &options.certificateId},
        {"--data", &options.dataFolder}, {"--hold", &options.holdFile}, {"--hours", &hours}};
    const std::pair<const char*, bool*> switches[] = {{"--list", &options.listOnly}, {"--help", &options.help}};
    for (int i = 1; i < argc; ++i)
    {
        const std::string name = argv[i];
        bool isSwitch = false;
        for (const auto& [known, on] : switches)
            if (name == known)
                *on = isSwitch = true;
        if (isSwitch)
            continue;
        std::string* target = nullptr;
        for (const auto& [known, text] : texts)
            if (name == known)
                target = text;
        if (target == nullptr)
            complaint = "unknown option " + name;
        else if (i + 1 == argc || *argv[i + 1] == '\0')
            complaint = name + " needs a value";
        if (!complaint.empty())
            return std::nullopt;
        *target = argv[++i];
    }
    if (!hours.empty() && !(options.hours = parseHours(hours)))
    {
        complaint = "--hours needs two hours of the day, as in 22-6";
        return std::nullopt;
    }
    return options;
}
} // namespace updatecycle
