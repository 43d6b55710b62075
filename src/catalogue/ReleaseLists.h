#ifndef AUTOOLS_CATALOGUE_RELEASELISTS_H
#define AUTOOLS_CATALOGUE_RELEASELISTS_H

#include "catalogue/CRelease.h"
#include "foundation/RT_List.h"
#include "foundation/String.h"

/// Saves the release's record in the data folder as <name>.lst, or local_<name>.lst without certificate ID, and notes
/// the release in the registry. False when the file cannot be written.
///
/// The file is emptied and written in place, and the release noted when it is whole. A process that dies on the way
/// leaves a file that is empty or cut off, and the note of the previous one. Such a file is refused when it is read
/// (one that ends exactly behind its last component reads as a record of the older format, without names); the next
/// call writes it whole.
AUTOOLS_API bool SaveConfigFile(CRelease* release);

/// Whether the Web Configurator refused the certificate ID.
AUTOOLS_API bool IsCIDRevoked(const String& certificateId);

/// The first release of the certificate ID; null when there is none.
AUTOOLS_API POSITION FindCIDinReleaseList(RT_List<CRelease*, CRelease*>* list, const String& certificateId);

/// Deletes the releases and the list, and sets the pointer to null. Always 1.
AUTOOLS_API int FreeReleaseList(RT_List<CRelease*, CRelease*>*& list);

/// Withdraws the certificate ID from the releases noted in the registry, and deletes the files of all of them, so that
/// the next cycle rebuilds them from the product list.
AUTOOLS_API void DeletePreviousRegistryEntries(const String& certificateId);

/// Drops the record of a release that has been processed. When it is now installed, its certificate IDs are kept with
/// the product.
AUTOOLS_API void UpdateCertificatesForInstalledProduct(CRelease* release, bool installed);

#endif
