#ifndef AUTOOLS_SYSTEM_OSCLASSIFICATION_H
#define AUTOOLS_SYSTEM_OSCLASSIFICATION_H

#include "system/COperatingSystem.h"

namespace aut
{
/// The class of the system that a version record describes; OS_UNKNOWN for what the table does not know, which
/// deliberately includes every NT version above 6.1.
COperatingSystem::OS classifyOS(const OSVERSIONINFOA& version) noexcept;
} // namespace aut

#endif
