#ifndef AUTOOL_COMMON_EXITCODE_H
#define AUTOOL_COMMON_EXITCODE_H

namespace autool
{
/// What every command ends with; scripts rely on the numbers.
enum ExitCode : int
{
    kFine = 0,
    kFindings = 1, ///< it ran, and found something that wants looking at
    kUsage = 2,
    kCouldNotRun = 3
};
} // namespace autool

#endif
