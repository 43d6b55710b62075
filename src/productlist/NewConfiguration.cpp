#include "productlist/phase1xml.h"

#include "catalogue/CertificateRecords.h"
#include "foundation/EventLog.h"
#include "platform/FileReplacement.h"
#include "platform/Xml.h"
#include "productlist/ProductListFile.h"

#include <windows.h>

#include <comdef.h>

#include <cstring>

namespace
{
/// Takes the releases of the certificate ID out of the list. They are not deleted: the list's owner owns them.
void takeOut(RT_List<CRelease*, CRelease*>* list, const String& certificateId)
{
    if (list == nullptr)
        return;
    for (POSITION next = list->GetHeadPosition(); next != nullptr;)
    {
        const POSITION at = next;
        const CRelease* const release = list->GetNext(next);
        if (release != nullptr && certificateId == release->GetCertificateID())
            list->RemoveAt(at);
    }
}

/// Whether the reason for which the Web Configurator refused a certificate ID means that it is revoked.
bool meansRevoked(const char* reason)
{
    return std::strstr(reason, "101:") != nullptr || std::strstr(reason, "102:") != nullptr;
}
/// Saving may fail half way: the list of the previous cycle stays until the new one is whole. Raises.
void replaceList(IXMLDOMDocument* document, const char* path)
{
    if (*path == '\0') // of no folder at all, the current one would be taken
        throw _com_error(HRESULT_FROM_WIN32(ERROR_INVALID_NAME));
    aut::FileReplacement file(path);
    if (*file.temporary() != '\0')
    {
        aut::saveXmlFile(document, file.temporary());
        if (file.commit())
            return;
    }
    throw _com_error(HRESULT_FROM_WIN32(::GetLastError()));
}
} // namespace

int phase1xml::IsNewConfiguration(RT_List<CRelease*, CRelease*>* list, const String& certificateId)
{
    m_root = aut::xmlRoot(m_document.Get());
    if (m_root == nullptr)
    {
        Log(1, "phase1xml::IsNewConfiguration pDocRoot is NULL");
        return 0;
    }
    GetWebConfDateTime(); // an answer that is an error tells the time too

    const auto select = [this](const char* path) { return aut::selectXmlNode(m_root.Get(), path); };
    if (select("Status/Error/Kind/Business/NoDataFound") != nullptr)
    {
        RemoveCIDReferences(list, certificateId);
        return 0;
    }
    if (const XmlNodePtr refusal = select("Status/Error/Kind/Business/AccessMissing/DBReason"))
    {
        const String reason = aut::xmlText(refusal.Get());
        Log(1, "Get info for Certificate %s returned: \"%s\"", static_cast<const char*>(certificateId),
            static_cast<const char*>(reason));
        if (meansRevoked(reason))
        {
            aut::markCertificateRevoked(certificateId);
            RemoveCIDReferences(list, certificateId);
        }
        return 0;
    }
    if (select("Status/Error") != nullptr || select("Data/NoChange") != nullptr)
        return 0;

    const String file = aut::productListFile(m_namePrefix);
    replaceList(m_document.Get(), file);
    Log(0, "%s file saved", static_cast<const char*>(file));
    takeOut(list, certificateId);
    return 1;
}

void phase1xml::RemoveCIDReferences(RT_List<CRelease*, CRelease*>* list, const String& certificateId)
{
    RT_List<String, String&> names; // all of them first: keys go while the list is walked
    if (!aut::recordedReleases(names))
        return;
    // No value is named after an empty certificate ID: the one without a name is the full version, whoever asked for
    // it.
    for (POSITION at = certificateId.IsEmpty() ? nullptr : names.GetHeadPosition(); at != nullptr;)
        aut::withdrawDelivery(names.GetNext(at), certificateId);
    takeOut(list, certificateId);
}
