#ifndef AUTOOLS_TORTURE_LEAKS_CALLS_H
#define AUTOOLS_TORTURE_LEAKS_CALLS_H

#include <functional>
#include <string>
#include <vector>

namespace torture
{
class ClientInstallation;

/// What a call costs: it decides how often it can be made.
enum class Cost
{
    light, ///< up to about a millisecond
    heavy, ///< starts a thread, a program or a transfer
    slow   ///< waits for what does not answer: only in the long form
};

/// A call of the library, or a few that belong together, with everything given back that its caller owns.
struct Call
{
    std::string name;
    std::function<void()> make;
    Cost cost = Cost::light;
    int handles = 0;           ///< handles that it keeps by contract
    bool impersonates = false; ///< leaves the thread impersonating by contract
};

using Calls = std::vector<Call>;

/// Every call of the library that opens something or touches the state of the thread or the process, once for success
/// and once for each kind of failure that can be brought about. With AUTOOLS_CALL, those whose name holds its text.
Calls allCalls(const ClientInstallation& client);

void addFileCalls(Calls& calls, const ClientInstallation& client);
void addWebCalls(Calls& calls, const ClientInstallation& client);
void addProcessCalls(Calls& calls, const ClientInstallation& client);
} // namespace torture

#endif
