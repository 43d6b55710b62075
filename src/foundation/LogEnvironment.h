#ifndef AUTOOLS_FOUNDATION_LOGENVIRONMENT_H
#define AUTOOLS_FOUNDATION_LOGENVIRONMENT_H

#include <string>

namespace aut
{
/// The block that tells a reader of the log where it was written: versions of the client, the system and the browser.
/// Reads the registry each time.
std::string logEnvironmentBlock();
} // namespace aut

#endif
