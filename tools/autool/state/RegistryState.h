#ifndef AUTOOL_STATE_REGISTRYSTATE_H
#define AUTOOL_STATE_REGISTRYSTATE_H

#include "common/Json.h"
#include "machine/RegistryReader.h"
#include "state/Secrets.h"

namespace autool
{
/// The tree as JSON: one object per key, named by its path below the tree's own key ("(client)"), with one object per
/// value
/// ({"type", "value"}); a value that the library knows and that is not there is {"missing": true, "default"}.
Json registryState(const RegistryKey& tree, const Secrets& secrets);
/// One value of it, without its credentials.
Json valueState(const RegistryValue& value, const Secrets& secrets, bool isTime);
/// The tree as a file for the registry editor (UTF-16 with its mark), without credentials.
std::string registryExport(const RegistryKey& tree, const Secrets& secrets);
} // namespace autool

#endif
