#ifndef AUTOOLS_FILEOPS_EXECCOMMAND_H
#define AUTOOLS_FILEOPS_EXECCOMMAND_H

#include "foundation/Export.h"

/// Runs a command line in the folder of its program, which is found through PATH when it is named without one.
///
/// Blanks and tabs separate arguments outside double quotes; every quote toggles quoting and stays in its argument.
/// Leading characters up to code 32 do not belong to an argument. There is no way to escape a quote. Only the program
/// loses the quotes that enclose it. The text is only read.
///
/// The result of waiting is the exit code, however long the program takes: nothing ends one that hangs. Without waiting
/// it is the handle of the process, which the caller closes. -1: no program was named, or it cannot be started.
///
/// The process-wide current directory is another one until the program has started (ended, when waiting). It comes back
/// in its short form. Each call goes back to where it began: calls that overlap may leave the process in the folder of
/// one of their programs.
AUTOOLS_API int ExecCommand(char* commandLine, bool wait);

#endif
