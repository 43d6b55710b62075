#ifndef AUTOOLS_FOUNDATION_CTEXT_H
#define AUTOOLS_FOUNDATION_CTEXT_H

#include "foundation/Export.h"

/// Trims `s` in place at both ends and returns it. A byte is blank when its value as a signed char is at most 32:
/// control characters, the blank, and deliberately every byte from 0x80 to 0xFF. Null is returned unchanged.
AUTOOLS_API char* Trim(char* s);
/// The value of the leading decimal digits, in 32 bits that wrap around. No sign, no leading blank; 0 for null.
AUTOOLS_API unsigned long atodw(const char* s);

#endif
