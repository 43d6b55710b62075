#ifndef AUTOOLS_SYSTEM_USERLIMIT_H
#define AUTOOLS_SYSTEM_USERLIMIT_H

#include "system/CProcessListManager.h"

#include <vector>

namespace aut
{
/// How many processes called `name` are looked at: the configured number of simultaneous users, else all that run now.
/// Logs which.
unsigned long maximumOfUsers(CProcessListManager& manager, const char* name);

/// The ids of the running processes called `name`, in enumeration order, at most `maximum` of them.
std::vector<unsigned long> runningProcesses(CProcessListManager& manager, const char* name, unsigned long maximum);
} // namespace aut

#endif
