#ifndef AUTOOLS_PLATFORM_XMLDECODING_H
#define AUTOOLS_PLATFORM_XMLDECODING_H

#include "platform/ComValues.h"

#include <cstddef>
#include <string>

namespace aut
{
/// Decodes an XML document given as bytes into the wide text that the parser takes.
///
/// The first of these that applies decides:
/// 1. a byte order mark: UTF-8, or UTF-16 of either byte order;
/// 2. a "<" as two bytes at the very start: UTF-16 of that byte order;
/// 3. the encoding that the XML declaration names, without regard to case: utf-8, us-ascii, iso-8859-1 to iso-8859-15,
///    windows-1250 to windows-1258 and windows-874, when the system knows that code page;
/// 4. otherwise (no declaration, another name, or "utf-16", which cannot be true for bytes that reach this point)
///    UTF-8 when all bytes are valid UTF-8, else the ANSI code page.
///
/// Null when the bytes contradict 1 or 3, when the text holds a NUL, or when it is too large for the memory. The
/// encoding in the declaration is overwritten with blanks, because it is no longer true for the wide text and a parser
/// that believed it would decode a second time.
UniqueBstr decodeXml(const char* bytes, std::size_t size);

/// 8-bit text in the ANSI code page as wide text. Null for an empty text or when memory runs out.
UniqueBstr wideFromAnsi(const char* text);
} // namespace aut

#endif
