#ifndef AUTOOLS_FOUNDATION_STREAMTEXT_H
#define AUTOOLS_FOUNDATION_STREAMTEXT_H

#include "foundation/Export.h"

/// Texts in the record files are single words: each blank is stored as "%20". Only the blank is escaped, so a "%20"
/// that stood in the text reads back as a blank. A null `in` counts as "".

/// Copies `in` with every blank as "%20". The caller's buffer is not bounded: it must hold three times the text's
/// length and one byte.
AUTOOLS_API void ConvertOutputStreamString(const char* in, char* out);
/// Copies `in` with every "%20" as a blank. The caller's buffer must hold the text's length and one byte.
AUTOOLS_API void ConvertInputStreamString(const char* in, char* out);

#endif
