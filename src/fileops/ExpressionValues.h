#ifndef AUTOOLS_FILEOPS_EXPRESSIONVALUES_H
#define AUTOOLS_FILEOPS_EXPRESSIONVALUES_H

#include "foundation/String.h"

#include <cstddef>
#include <windows.h>

namespace aut
{
// Where the blocks of an expression get their values from. An empty text is "no value".

/// No text of an expression grows beyond this by evaluation: a variable that names itself several times multiplies with
/// each round. Far above every path and above what the system allows for a variable.
inline constexpr std::size_t kLongestExpressionChars = 1024 * 1024;

/// The text with the system's environment variables expanded; what it does not know stays as written, and so does all
/// from a variable on that would make the text too long.
String expandSystemVariables(const String& text);

/// The text of a REG_SZ or REG_EXPAND_SZ value, the latter not expanded; any other type is no value. A terminator need
/// not be stored. `view` is added to the access: the program's own view of the registry for 0.
String registryText(HKEY root, const char* path, const char* name, REGSAM view);

/// The entry of an ini file, at most 1023 characters. The system's own rules hold: quotation marks around an entry
/// go, and a file without a folder is looked for in the Windows folder.
String iniText(const char* file, const char* section, const char* key);

/// The folder of the system's 32-bit libraries; none on a 32-bit system.
String systemFolder32();
/// A value of that name, as 32-bit programs see it, of the key where the system keeps its well-known folders.
String wellKnownFolder32(const char* name);
/// Where the browser keeps its downloaded controls.
String downloadedProgramFilesFolder();
} // namespace aut

#endif
