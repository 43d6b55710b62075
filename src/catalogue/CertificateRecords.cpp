#include "catalogue/CertificateRecords.h"

#include "catalogue/Actions.h"
#include "catalogue/ReleaseFile.h"
#include "catalogue/ReleaseLists.h"
#include "foundation/EventLog.h"
#include "registry/CRegBase.h"
#include "registry/CRegProduct.h"
#include "registry/TypedValues.h"

#include <cstring>

namespace
{
const unsigned long kTrace = 0x20000;

const char kDataKey[] = "Software\\Velmora\\7xAutoUpdate\\Data";
const char kDeliveries[] = "WebConf";
const char kLocalReleases[] = "Local";
const char kCertificatesKey[] = "Software\\Velmora\\7xAutoUpdate\\Config\\Cache\\Certificates";
const char kStatus[] = "Status";
const char kRevoked[] = "Revoked";

/// Names that cannot all be read are never taken for few: then nothing may be deleted for want of them.
bool hasAtMost(int count, CRegBase& key)
{
    RT_List<String, String&> values;
    return key.GetValues(values) && values.GetCount() <= count;
}

void forgetLocalRelease(const char* name)
{
    CRegBase local(kDataKey, kLocalReleases, false);
    local.DeleteValue(name);
    if (hasAtMost(0, local))
        local.DeleteKey();
    aut::deleteReleaseFile(name, true);
}

void recordCertificate(CRegBase& certificates, const char* product, const char* certificateId)
{
    // An empty one is no certificate; its value would be the key's default value.
    if (*certificateId != '\0' && !certificates.SetValue(certificateId, certificateId))
        Log(2, "Certificate %s of product %s not recorded", certificateId, product);
}

/// Moves the certificate IDs of a release that is now installed to its product: the one it was installed under so far,
/// and all that it was delivered for.
void recordInstalledCertificates(const CRelease& release)
{
    CRegProduct product(release.GetName(), false);
    const String previous = product.GetCertificateID();
    product.DeleteValue("CertificateID");

    CRegBase certificates(aut::kProductsKey, release.GetName(), "Certificates", false);
    recordCertificate(certificates, release.GetName(), previous);
    RT_List<String, String&> delivered;
    CRegBase(kDataKey, kDeliveries, release.GetName(), true).GetValues(delivered);
    for (POSITION at = delivered.GetHeadPosition(); at != nullptr;)
        recordCertificate(certificates, release.GetName(), delivered.GetNext(at));
    recordCertificate(certificates, release.GetName(), release.GetCertificateID());
}

void forgetDelivery(const char* name)
{
    CRegBase(kDataKey, kDeliveries, name, false).DeleteKey();
    RT_List<String, String&> others;
    if (aut::recordedReleases(others) && others.IsEmpty())
        CRegBase(kDataKey, kDeliveries, false).DeleteKey();
    aut::deleteReleaseFile(name, false);
}
} // namespace

namespace aut
{
bool recordDelivery(const CRelease& release, const char* certificateId)
{
    CRegBase delivery(kDataKey, kDeliveries, release.GetName(), false);
    return delivery.SetValue("", release.GetFullVersion()) && delivery.SetValue(certificateId, certificateId);
}

bool recordLocalRelease(const CRelease& release)
{
    return CRegBase(kDataKey, kLocalReleases, false).SetValue(release.GetName(), release.GetFullVersion());
}

bool recordedReleases(RT_List<String, String&>& names)
{
    return CRegBase(kDataKey, kDeliveries, true).GetSubKeys(names);
}

void withdrawDelivery(const char* releaseName, const String& certificateId)
{
    CRegBase delivery(kDataKey, kDeliveries, releaseName, false);
    delivery.DeleteValue(certificateId);
    if (hasAtMost(1, delivery)) // the full version
        delivery.DeleteKey();
}

void markCertificateRevoked(const String& certificateId)
{
    if (certificateId.IsEmpty())
        return; // its key would be the one of all certificates
    if (!CRegBase(kCertificatesKey, certificateId, false).SetValue(kStatus, kRevoked))
        Log(2, "Certificate %s is revoked: not recorded", static_cast<const char*>(certificateId));
}
} // namespace aut

bool IsCIDRevoked(const String& certificateId)
{
    String status;
    return !certificateId.IsEmpty() && CRegBase(kCertificatesKey, certificateId, true).QueryValue(kStatus, status) &&
           std::strcmp(status, kRevoked) == 0;
}

void DeletePreviousRegistryEntries(const String& certificateId)
{
    Log(kTrace, "DeletePreviousRegistryEntries - START");
    RT_List<String, String&> names; // all of them first: keys go while the list is walked
    if (!certificateId.IsEmpty())
        aut::recordedReleases(names);
    for (POSITION at = names.GetHeadPosition(); at != nullptr;)
    {
        const String& name = names.GetNext(at);
        aut::withdrawDelivery(name, certificateId);
        // Deliberately also when other certificates keep the release: the next cycle rebuilds every file from the
        // product list.
        aut::deleteReleaseFile(name, false);
    }
    Log(kTrace, "DeletePreviousRegistryEntries - END");
}

void UpdateCertificatesForInstalledProduct(CRelease* release, bool installed)
{
    if (release == nullptr)
        return;
    if (!aut::isReleaseName(release->GetName()))
    {
        Log(2, "UpdateCertificatesForInstalledProduct: release name %s refused", release->GetName());
        return;
    }
    if (*release->GetCertificateID() == '\0')
    {
        forgetLocalRelease(release->GetName());
        return;
    }
    if (release->GetAction() != aut::kRemove && installed)
        recordInstalledCertificates(*release);
    forgetDelivery(release->GetName());
}
