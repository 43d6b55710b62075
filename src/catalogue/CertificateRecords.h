#ifndef AUTOOLS_CATALOGUE_CERTIFICATERECORDS_H
#define AUTOOLS_CATALOGUE_CERTIFICATERECORDS_H

#include "catalogue/CRelease.h"
#include "foundation/RT_List.h"
#include "foundation/String.h"

// What the registry knows of certificate IDs. A release that was delivered and is not yet processed has a key below
// "WebConf" with its full version as default value and one value per certificate ID that it was delivered for.

namespace aut
{
/// Notes that the release was delivered for the certificate ID. False when the registry refuses it. The release's name
/// must be one that `isReleaseName` accepts.
bool recordDelivery(const CRelease& release, const char* certificateId);
/// Notes a release without certificate ID: one value with its full version in the key of local releases.
bool recordLocalRelease(const CRelease& release);
/// The names of the releases noted; false when there are no notes, or not all of them could be read.
bool recordedReleases(RT_List<String, String&>& names);
/// Withdraws the certificate ID from one release; without any other certificate ID the release is no longer noted.
void withdrawDelivery(const char* releaseName, const String& certificateId);

/// Remembers that the Web Configurator refused the certificate ID: `IsCIDRevoked` is true from now on.
void markCertificateRevoked(const String& certificateId);
} // namespace aut

#endif
