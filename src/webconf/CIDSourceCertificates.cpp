#include "webconf/CCIDListManager.h"

#include "catalogue/ReleaseLists.h"
#include "foundation/EventLog.h"
#include "foundation/RT_RESULT.h"
#include "platform/UniqueResource.h"
#include "system/AsLoggedOnUser.h"
#include "webconf/CertificateIds.h"

#include <windows.h>

#include <wincrypt.h>

#include <string>

// The certificate IDs of the certificates that were installed in the personal stores: each is the fifth value of its
// certificate's subject.

namespace
{
constexpr char kMaker[] = "Velmora";
constexpr int kMakerField = 3;
constexpr int kCIDField = 4;

struct StoreTraits
{
    using Type = HCERTSTORE;
    static Type none() noexcept { return nullptr; }
    static void close(Type store) noexcept { ::CertCloseStore(store, 0); }
};
struct CertificateTraits
{
    using Type = PCCERT_CONTEXT;
    static Type none() noexcept { return nullptr; }
    static void close(Type certificate) noexcept { ::CertFreeCertificateContext(certificate); }
};
using UniqueStore = aut::UniqueResource<StoreTraits>;
using UniqueCertificate = aut::UniqueResource<CertificateTraits>;

UniqueStore openPersonalStore(bool ofMachine)
{
    const DWORD flags =
        ofMachine ? CERT_SYSTEM_STORE_LOCAL_MACHINE | CERT_STORE_READONLY_FLAG : CERT_SYSTEM_STORE_CURRENT_USER;
    return UniqueStore(::CertOpenStore(CERT_STORE_PROV_SYSTEM_A, 0, 0, flags, "MY"));
}

/// The subject's values, separated by ", ". Without quotation marks, which would otherwise stand around each
/// certificate ID with a "+" or "=" in it.
String subjectValues(const CERT_CONTEXT& certificate)
{
    constexpr DWORD kForm = CERT_SIMPLE_NAME_STR | CERT_NAME_STR_NO_QUOTING_FLAG;
    CERT_NAME_BLOB* const subject = &certificate.pCertInfo->Subject;
    const DWORD size = ::CertNameToStrA(X509_ASN_ENCODING, subject, kForm, nullptr, 0);
    std::string text(size, '\0');
    ::CertNameToStrA(X509_ASN_ENCODING, subject, kForm, text.data(), size);
    return String(text.c_str());
}
} // namespace

int CCIDListManager::GetLocalCIDList()
{
    if (m_list == nullptr)
    {
        Log(2, "CCIDListManager::GetLocalCIDList - List not initialized");
        return 0;
    }
    SearchCIDCertificates(1);
    {
        const aut::AsLoggedOnUser user;
        SearchCIDCertificates(0);
    }
    if (m_list->IsEmpty())
    {
        result->Set(301, "Empty CID list", "GetLocalCIDList", "cids");
        return 0;
    }
    return 1;
}

void CCIDListManager::SearchCIDCertificates(int machine)
{
    const UniqueStore store = openPersonalStore(machine != 0);
    if (!store)
    {
        Log(1, "Unable to open certificate store [LocalMachine = %d]", machine);
        return;
    }
    aut::CIDAppender list(*m_list);
    UniqueCertificate certificate;
    for (;;)
    {
        // The enumeration frees the certificate it is given.
        certificate = UniqueCertificate(::CertEnumCertificatesInStore(store.get(), certificate.release()));
        if (!certificate)
            return;
        String cid = GetValidCIDFromSubject(subjectValues(*certificate.get()));
        if (!cid.IsEmpty() && list.append(cid))
            Log(0, "Physical CID added = %s", static_cast<const char*>(cid));
    }
}

String CCIDListManager::GetValidCIDFromSubject(String subject)
{
    // The fields keep the blank behind their comma. A field is deliberately refused only when the maker's name is the
    // very first thing in it, which it is not behind a blank.
    const String maker = subject.ExtractSubString(',', kMakerField);
    if (maker.IsEmpty() || maker.Find(kMaker) == 0)
        return String();

    String cid = subject.ExtractSubString(',', kCIDField);
    cid.Trim();
    if (!aut::isWellFormedCID(static_cast<const char*>(cid)))
        return String();
    if (IsCIDRevoked(cid))
    {
        Log(0, "CID %s revoked or expired", static_cast<const char*>(cid));
        return String();
    }
    return cid;
}
