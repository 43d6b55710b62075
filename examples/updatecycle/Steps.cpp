#include "Steps.h"

#include <7xAutoUpdateTools.h>

#include <cstdio>
#include <cstring>

namespace updatecycle
{
namespace
{
/// At once, also to somebody who watches through a pipe.
void say(const char* indent, const char* what, const std::string& text)
{
    std::printf("%s%-12s %s\n", indent, what, text.c_str());
    std::fflush(stdout);
}
} // namespace

void releaseStep(const char* what, const std::string& text) { say("  ", what, text); }

/// A failure is in the event log as well: nobody watches a service, and the library does not log what it returns.
void componentStep(const char* what, const std::string& text)
{
    say("    ", what, text);
    if (std::strcmp(what, "failed") == 0)
        Log(2, "Update cycle: %s", text.c_str());
}

std::string lastFailure()
{
    String text;
    text.Format("%s: status %d, in %s, on %s", static_cast<const char*>(result->GetAction()), result->GetStatusCode(),
                static_cast<const char*>(result->GetFunction()), static_cast<const char*>(result->GetObjectA()));
    return static_cast<const char*>(text);
}
} // namespace updatecycle
