#include "fileops/CommandLine.h"

#include "platform/BoundedText.h"

namespace aut
{
std::vector<std::string> splitArguments(const char* commandLine)
{
    std::vector<std::string> arguments;
    for (const char* at = orEmpty(commandLine);;)
    {
        while (*at != '\0' && static_cast<unsigned char>(*at) <= ' ') // a letter beyond ASCII is no blank
            ++at;
        if (*at == '\0')
            return arguments;
        const char* const begin = at;
        bool quoted = false;
        for (; *at != '\0' && (quoted || (*at != ' ' && *at != '\t')); ++at)
            if (*at == '"')
                quoted = !quoted;
        arguments.emplace_back(begin, at);
    }
}

std::string withoutEnclosingQuotes(const std::string& text)
{
    const bool enclosed = text.size() >= 2 && text.front() == '"' && text.back() == '"';
    return enclosed ? text.substr(1, text.size() - 2) : text;
}
} // namespace aut
