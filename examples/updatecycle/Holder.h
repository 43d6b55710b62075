#ifndef AUTOOLS_UPDATECYCLE_HOLDER_H
#define AUTOOLS_UPDATECYCLE_HOLDER_H

#include "ExitCodes.h"

#include <string>

namespace updatecycle
{
/// Keeps a file open for reading, as a program that works with it does, until the standard input ends. Says "holding"
/// and the path once it is open.
ExitCode holdFile(const std::string& path);
} // namespace updatecycle

#endif
