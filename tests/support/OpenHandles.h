#ifndef AUTOOLS_TESTS_SUPPORT_OPENHANDLES_H
#define AUTOOLS_TESTS_SUPPORT_OPENHANDLES_H

#include <cstddef>

namespace auttest
{
/// The handles that this process has open, for tests that nothing leaks. GetProcessHandleCount always gives 0 under
/// Wine and would hide every leak.
std::size_t openHandles();
} // namespace auttest

#endif
