#ifndef AUTOOLS_UPDATECYCLE_WORKSTATION_H
#define AUTOOLS_UPDATECYCLE_WORKSTATION_H

#include <7xAutoUpdateTools.h>

#include <string>
#include <vector>

namespace updatecycle
{
/// Who this workstation is for the Web Configurator: its certificate IDs and the client's own configuration.
///
/// It derives from the library's class to walk the very certificate IDs that were gathered for the configuration: a
/// list of its own would ask the local server and the Web Configurator once more.
class Workstation : private DataCaching
{
public:
    /// Gathers the certificate IDs, and brings AUKernelData.xml up to date with the first one that has a deployment.
    /// Says what came of it; a configuration that does not come leaves the one that is there.
    void identify(const std::string& server);
    /// Those that were gathered, in their order.
    std::vector<std::string> certificateIds();
};
} // namespace updatecycle

#endif
