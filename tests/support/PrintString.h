#ifndef AUTOOLS_TESTS_SUPPORT_PRINTSTRING_H
#define AUTOOLS_TESTS_SUPPORT_PRINTSTRING_H

#include "foundation/String.h"

#include <gtest/gtest-printers.h>

#include <ostream>
#include <string>

/// How GoogleTest shows a String: its text in quotation marks.
inline void PrintTo(const String& text, std::ostream* out)
{
    *out << ::testing::PrintToString(std::string(text));
}

#endif
