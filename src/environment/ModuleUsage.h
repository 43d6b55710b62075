#ifndef AUTOOLS_ENVIRONMENT_MODULEUSAGE_H
#define AUTOOLS_ENVIRONMENT_MODULEUSAGE_H

#include "foundation/Export.h"
#include "foundation/RT_List.h"
#include "foundation/String.h"

/// Appends "file name={class ID}" for each module that Windows records as shared between downloaded controls; the class
/// ID is the first one recorded for it. What the list held before stays. A module without a class ID is left out.
AUTOOLS_API void GetModuleFiles(RT_List<String, String&>& list);

/// The class ID of the first entry with that file name, without regard to case; empty when there is none. The entry is
/// removed: asked again, the next one answers. An entry is split at its first equals sign; one without any is skipped.
AUTOOLS_API String GetCLSIDFromFileName(RT_List<String, String&>& list, const char* fileName);

#endif
