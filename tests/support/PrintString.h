#ifndef AUTOOLS_TESTS_SUPPORT_PRINTSTRING_H
#define AUTOOLS_TESTS_SUPPORT_PRINTSTRING_H

#include "foundation/String.h"

#include <gtest/gtest-printers.h>

#include <ostream>

/// How GoogleTest shows a String: its text in quotation marks.
inline void PrintTo(const String& text, std::ostream* out)
{
    ::testing::internal::PrintTo(static_cast<const char*>(text), out);
}

#endif
