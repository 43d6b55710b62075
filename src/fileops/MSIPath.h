#ifndef AUTOOLS_FILEOPS_MSIPATH_H
#define AUTOOLS_FILEOPS_MSIPATH_H

#include "foundation/Export.h"
#include "foundation/String.h"

/// The folder of a Windows Installer component, "MSI(product:component)" with both codes as GUIDs without braces. Empty
/// when the installer does not know it. Initialises COM (multithreaded) for the time of the call.
AUTOOLS_API String MSIEvaluatePath(const String& text);

/// Splits such a text into the two codes, each put into braces; false without a ":".
AUTOOLS_API bool MSIExtractProductIDAndMainCompID(const String& text, String& product, String& component);

#endif
