#ifndef AUTOOLS_UPDATECYCLE_STEPS_H
#define AUTOOLS_UPDATECYCLE_STEPS_H

#include <string>

namespace updatecycle
{
// What the host says while it works: one line a step, those of a component further in than those of its release.

void releaseStep(const char* what, const std::string& text);
void componentStep(const char* what, const std::string& text);

/// What the library left in `result` about the failure that has just been reported.
std::string lastFailure();
} // namespace updatecycle

#endif
