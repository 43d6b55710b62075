#include "tests/support/Certificates.h"

#include "tests/support/ClientRegistry.h"

#include <gtest/gtest.h>

namespace auttest
{
namespace
{
char kCommonName[] = szOID_COMMON_NAME;
char kUnitName[] = szOID_ORGANIZATIONAL_UNIT_NAME;

HCERTSTORE openStore(Store store)
{
    const DWORD place = store == Store::machine ? CERT_SYSTEM_STORE_LOCAL_MACHINE : CERT_SYSTEM_STORE_CURRENT_USER;
    return ::CertOpenStore(CERT_STORE_PROV_SYSTEM_A, 0, 0, place, "MY");
}

std::vector<BYTE> encodedName(const Subject& subject)
{
    std::vector<CERT_RDN_ATTR> values;
    values.reserve(subject.size());
    for (const std::string& value : subject)
    {
        CERT_RDN_ATTR attribute{};
        attribute.pszObjId = values.empty() ? kCommonName : kUnitName;
        attribute.dwValueType = CERT_RDN_PRINTABLE_STRING;
        attribute.Value.cbData = static_cast<DWORD>(value.size());
        attribute.Value.pbData = reinterpret_cast<BYTE*>(const_cast<char*>(value.data()));
        values.push_back(attribute);
    }
    std::vector<CERT_RDN> parts;
    parts.reserve(values.size());
    for (CERT_RDN_ATTR& attribute : values)
        parts.push_back({1, &attribute});
    CERT_NAME_INFO name{static_cast<DWORD>(parts.size()), parts.data()};
    DWORD size = 0;
    EXPECT_TRUE(::CryptEncodeObject(X509_ASN_ENCODING, X509_NAME, &name, nullptr, &size));
    std::vector<BYTE> bytes(size);
    EXPECT_TRUE(::CryptEncodeObject(X509_ASN_ENCODING, X509_NAME, &name, bytes.data(), &size));
    bytes.resize(size);
    return bytes;
}

/// One key for all certificates: making one takes longer than anything else here.
HCRYPTPROV signingKey()
{
    static const HCRYPTPROV provider = []
    {
        HCRYPTPROV made = 0;
        HCRYPTKEY key = 0;
        EXPECT_TRUE(::CryptAcquireContextA(&made, nullptr, MS_ENHANCED_PROV_A, PROV_RSA_FULL, CRYPT_VERIFYCONTEXT));
        EXPECT_TRUE(::CryptGenKey(made, AT_SIGNATURE, 1024U << 16U, &key));
        ::CryptDestroyKey(key);
        return made;
    }();
    return provider;
}
/// Removes what the registry keeps of the certificate, if anything: a key named by its fingerprint.
void removeStored(Store store, PCCERT_CONTEXT certificate)
{
    BYTE hash[20] = {};
    DWORD size = sizeof hash;
    EXPECT_TRUE(::CertGetCertificateContextProperty(certificate, CERT_SHA1_HASH_PROP_ID, hash, &size));
    std::string key = "Software\\Microsoft\\SystemCertificates\\MY\\Certificates\\";
    for (const BYTE byte : hash)
    {
        key += "0123456789ABCDEF"[byte >> 4U];
        key += "0123456789ABCDEF"[byte & 15U];
    }
    Registry(store == Store::machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER).removeKey(key);
}
} // namespace

// A store writes what was changed when it is closed, and one that is open does not see it.

InstalledCertificate::InstalledCertificate(Store store, const Subject& subject) : m_store(store)
{
    std::vector<BYTE> name = encodedName(subject);
    CERT_NAME_BLOB blob{static_cast<DWORD>(name.size()), name.data()};
    m_certificate = ::CertCreateSelfSignCertificate(signingKey(), &blob, CERT_CREATE_SELFSIGN_NO_KEY_INFO, nullptr,
                                                    nullptr, nullptr, nullptr, nullptr);
    EXPECT_NE(nullptr, m_certificate) << "error " << ::GetLastError();
    const HCERTSTORE opened = openStore(m_store);
    EXPECT_TRUE(::CertAddCertificateContextToStore(opened, m_certificate, CERT_STORE_ADD_ALWAYS, nullptr))
        << "error " << ::GetLastError();
    ::CertCloseStore(opened, 0);
}

InstalledCertificate::~InstalledCertificate()
{
    const HCERTSTORE opened = openStore(m_store);
    const PCCERT_CONTEXT found =
        ::CertFindCertificateInStore(opened, X509_ASN_ENCODING, 0, CERT_FIND_EXISTING, m_certificate, nullptr);
    EXPECT_TRUE(found != nullptr && ::CertDeleteCertificateFromStore(found));
    ::CertCloseStore(opened, 0);
    removeStored(m_store, m_certificate); // Wine forgets to
    ::CertFreeCertificateContext(m_certificate);
}

int certificateCount(Store store)
{
    const HCERTSTORE opened = openStore(store);
    int count = 0;
    for (PCCERT_CONTEXT next = nullptr; (next = ::CertEnumCertificatesInStore(opened, next)) != nullptr;)
        ++count;
    ::CertCloseStore(opened, 0);
    return count;
}
} // namespace auttest
