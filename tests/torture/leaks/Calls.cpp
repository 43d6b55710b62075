#include "tests/torture/leaks/Calls.h"

#include "tests/torture/Figure.h"

#include <algorithm>
#include <cstdlib>

namespace torture
{
Calls allCalls(const ClientInstallation& client)
{
    Calls calls;
    addFileCalls(calls, client);
    addWebCalls(calls, client);
    addProcessCalls(calls, client);
    if (!isLong())
        calls.erase(
            std::remove_if(calls.begin(), calls.end(), [](const Call& call) { return call.cost == Cost::slow; }),
            calls.end());
    if (const char* const only = std::getenv("AUTOOLS_CALL"))
        calls.erase(std::remove_if(calls.begin(), calls.end(),
                                   [only](const Call& call) { return call.name.find(only) == std::string::npos; }),
                    calls.end());
    return calls;
}
} // namespace torture
