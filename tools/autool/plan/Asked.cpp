#include "plan/Asked.h"

namespace autool
{
std::string actionName(int action)
{
    switch (action)
    {
    case kInstall:
        return "install";
    case kRemove:
        return "remove";
    case kForceReinstall:
        return "reinstall";
    case kDisable:
        return "disable";
    default:
        return "action " + std::to_string(action);
    }
}
} // namespace autool
