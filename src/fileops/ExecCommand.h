#ifndef AUTOOLS_FILEOPS_EXECCOMMAND_H
#define AUTOOLS_FILEOPS_EXECCOMMAND_H

#include "foundation/Export.h"

/// Runs a command line in its program's own folder. Blanks and tabs separate arguments outside double quotes.
///
/// The result is the exit code when waiting, else what the start gave; -1 for a command line without a program or one
/// that cannot be started. The text is only read. The process-wide current directory is another one until the program
/// is started (ended, when waiting).
AUTOOLS_API int ExecCommand(char* commandLine, bool wait);

#endif
