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

std::string nameText(CERT_NAME_BLOB& name, DWORD form)
{
    const DWORD size = ::CertNameToStrA(X509_ASN_ENCODING, &name, form, nullptr, 0); // with its terminator
    std::string text(size, '\0');
    ::CertNameToStrA(X509_ASN_ENCODING, &name, form, text.data(), size);
    return text.c_str();
}

/// Takes the quotation marks away in which the system puts values with special characters; within them, "" is a
/// quotation mark of the value.
std::string withoutQuoting(const std::string& text)
{
    std::string plain;
    bool quoted = false;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] != '"')
            plain += text[i];
        else if (quoted && text.compare(i, 2, "\"\"") == 0)
            plain += text[i++];
        else
            quoted = !quoted;
    }
    return plain;
}

/// The subject's values, separated by ", ". Without quoting, which would otherwise spoil each certificate ID that has a
/// "+" or "=" in it.
std::string subjectValues(const CERT_CONTEXT& certificate)
{
    CERT_NAME_BLOB& subject = certificate.pCertInfo->Subject;
    const std::string text = nameText(subject, CERT_SIMPLE_NAME_STR | CERT_NAME_STR_NO_QUOTING_FLAG);
    // Not every system heeds the flag (Wine does not). One that does never gives the same with and without it for
    // values with quotation marks.
    const bool hasQuotes = text.find('"') != text.npos;
    return hasQuotes && text == nameText(subject, CERT_SIMPLE_NAME_STR) ? withoutQuoting(text) : text;
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
        const String cid = GetValidCIDFromSubject(subjectValues(*certificate.get()).c_str());
        if (list.append(cid))
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
