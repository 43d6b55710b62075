// webconfigurator.exe: serves the sample pages until its input ends or it is stopped.

#include "webconfigurator/WebConfigurator.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

namespace
{
constexpr char kUsage[] =
    "webconfigurator [--port N] [--templates FOLDER] [--depot FOLDER] [--rule RULE]... [--quiet]\n"
    "Serves the Web Configurator's pages on 127.0.0.1 until its standard input ends.\n"
    "  --port N            0 (the default) takes a free port; the first line of the output is \"port N\"\n"
    "  --templates FOLDER  the templates and pages.rules; \"templates\" unless given\n"
    "  --depot FOLDER      the files served as they are under /Depot/; none unless given\n"
    "  --rule RULE         goes before those of pages.rules, for instance\n"
    "                      \"page=wcfgGetProductList.asp, delay=2000\" or \"status=503\" or \"cut=100, times=2\"\n"
    "  --quiet             does not list the requests\n";

struct Options
{
    unsigned short port = 0;
    std::string templates = "templates";
    std::string depot;
    std::vector<std::string> rules;
    bool quiet = false;
};

bool parse(int argc, char** argv, Options& options)
{
    for (int i = 1; i < argc; ++i)
    {
        const std::string_view name = argv[i];
        if (name == "--quiet")
        {
            options.quiet = true;
            continue;
        }
        if (++i == argc)
            return false;
        const std::string_view value = argv[i];
        const char* const end = value.data() + value.size();
        if (name == "--templates")
            options.templates = value;
        else if (name == "--depot")
            options.depot = value;
        else if (name == "--rule")
            options.rules.emplace_back(value);
        else if (name != "--port" || std::from_chars(value.data(), end, options.port).ptr != end)
            return false;
    }
    return true;
}

void serve(const Options& options)
{
    webconf_sample::WebConfigurator server(options.templates, options.port);
    for (auto rule = options.rules.rbegin(); rule != options.rules.rend(); ++rule)
        server.addRule(*rule); // the last one added goes first, and the first one given shall
    server.serveDepot(options.depot);
    if (!options.quiet)
        server.onRequest(
            [](const webconf_sample::HttpRequest& request)
            {
                std::printf("%s\n", request.line.c_str());
                std::fflush(stdout);
            });
    std::printf("port %u\n", static_cast<unsigned>(server.port()));
    std::fflush(stdout);
    while (std::getchar() != EOF)
    {
    }
}
} // namespace

int main(int argc, char** argv)
{
    Options options;
    if (!parse(argc, argv, options))
    {
        std::fputs(kUsage, stderr);
        return 2;
    }
    try
    {
        serve(options);
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "webconfigurator: %s\n", error.what());
        return 1;
    }
}
