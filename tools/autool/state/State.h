#ifndef AUTOOL_STATE_STATE_H
#define AUTOOL_STATE_STATE_H

#include "common/Json.h"
#include "machine/RegistryReader.h"
#include "state/Secrets.h"

#include <functional>
#include <string>

namespace autool
{
/// What a machine holds of the client, read without changing anything.
struct MachineState
{
    RegistryKey tree; ///< as it is stored, credentials included: not to be shown
    Secrets secrets;
    Json json; ///< what may be seen
};

using Step = std::function<void(const std::string& what)>;
/// Gathers all of it. What cannot be read is said in its place. `step` is called for each section.
MachineState readMachineState(const Step& step);

// The sections, each free of credentials.
Json cacheState(const RegistryKey& tree, const std::string& dataFolder);
Json releaseFileState(const std::string& dataFolder);
Json sharedCountState();
Json rebootState();
Json sessionState();
Json fileState();
} // namespace autool

#endif
