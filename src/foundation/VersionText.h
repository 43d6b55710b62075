#ifndef AUTOOLS_FOUNDATION_VERSIONTEXT_H
#define AUTOOLS_FOUNDATION_VERSIONTEXT_H

#include "foundation/Export.h"
#include "foundation/String.h"

/// True when version `b` is newer than version `a`. Equal versions are never newer. A text that does not parse
/// counts as all zeros. The character between the second and third number takes part in the comparison.
AUTOOLS_API bool IsVersionNewer(const char* a, const char* b);

/// Takes a full version text (version, build and "_" language, as in 3.3.302B1_EN) apart: the language is what follows
/// the last "_", the build starts at the first A, B or P of either case, the rest is the version. What is missing is
/// left empty. Returns true when a version was found.
AUTOOLS_API bool ExtractBuildVersionAndLanguage(const char* fullVersion, String& build, String& version,
                                                String& language);

#endif
