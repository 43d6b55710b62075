#include "Options.h"

#include <utility>

namespace updatecycle
{
const char kUsage[] =
    "updatecycle [--server HOST[:PORT]] [--cid CERTIFICATE] [--data FOLDER] [--url URL]\n"
    "Fetches this workstation's product list, shows it, and saves one record file for each release.\n"
    "  --server HOST[:PORT]  the Web Configurator; stored in the client's settings\n"
    "  --cid CERTIFICATE     the certificate ID to ask for; without one the releases are local ones\n"
    "  --data FOLDER         where the record files go; made when missing, stored in the client's settings\n"
    "  --url URL             the product list itself, instead of the Web Configurator's page\n"
    "Exit codes: 0 done, 1 unexpected error, 2 bad usage, 3 no settings, 4 no answer, 5 answer not understood,\n"
    "6 a release record was not saved.\n";

std::optional<Options> parseOptions(int argc, char** argv, std::string& complaint)
{
    Options options;
    const std::pair<const char*, std::string*> texts[] = {{"--server", &options.server},
                                                          {"--url", &options.url},
                                                          {"--cid", &options.certificateId},
                                                          {"--data", &options.dataFolder}};
    for (int i = 1; i < argc; ++i)
    {
        const std::string name = argv[i];
        if (name == "--help")
        {
            options.help = true;
            continue;
        }
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
    return options;
}
} // namespace updatecycle
