#ifndef AUTOOL_PLAN_COMPONENTLIST_H
#define AUTOOL_PLAN_COMPONENTLIST_H

#include "plan/Asked.h"
#include "plan/Installed.h"

namespace autool
{
/// What the client makes of a release's component list in its installation phase: "Kernel" is left out, entries are
/// shared and unshared as the list says, and the version that products share takes the place of an older one, at the
/// tail.
void rearrange(AskedRelease& release, Installed& installed);
} // namespace autool

#endif
