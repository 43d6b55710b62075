// samplecertificate.exe CERTIFICATE-ID: puts a self-signed certificate into the machine's personal store ("MY"), as the
// client finds one there: the fifth value of its subject is the certificate ID.

#include <windows.h>

#include <wincrypt.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{
void require(bool done, const char* what)
{
    if (!done)
        throw std::runtime_error(std::string(what) + ": error " + std::to_string(::GetLastError()));
}

/// A name of one common name and units behind it, encoded.
std::vector<BYTE> encodedName(std::vector<std::string> values)
{
    char commonName[] = szOID_COMMON_NAME;
    char unit[] = szOID_ORGANIZATIONAL_UNIT_NAME;
    std::vector<CERT_RDN_ATTR> attributes;
    attributes.reserve(values.size());
    for (std::string& value : values)
        attributes.push_back({attributes.empty() ? commonName : unit,
                              CERT_RDN_PRINTABLE_STRING,
                              {static_cast<DWORD>(value.size()), reinterpret_cast<BYTE*>(value.data())}});
    std::vector<CERT_RDN> parts;
    parts.reserve(attributes.size());
    for (CERT_RDN_ATTR& attribute : attributes)
        parts.push_back({1, &attribute});
    CERT_NAME_INFO name{static_cast<DWORD>(parts.size()), parts.data()};
    DWORD size = 0;
    require(::CryptEncodeObject(X509_ASN_ENCODING, X509_NAME, &name, nullptr, &size), "encoding the name");
    std::vector<BYTE> bytes(size);
    require(::CryptEncodeObject(X509_ASN_ENCODING, X509_NAME, &name, bytes.data(), &size), "encoding the name");
    return bytes;
}

/// The key only signs the certificate and is not kept: nobody has to prove anything with it.
PCCERT_CONTEXT selfSigned(std::vector<BYTE> name)
{
    HCRYPTPROV provider = 0;
    HCRYPTKEY key = 0;
    require(::CryptAcquireContextA(&provider, nullptr, MS_ENHANCED_PROV_A, PROV_RSA_FULL, CRYPT_VERIFYCONTEXT),
            "opening the key provider");
    require(::CryptGenKey(provider, AT_SIGNATURE, 2048U << 16U, &key), "making a key");
    CERT_NAME_BLOB subject{static_cast<DWORD>(name.size()), name.data()};
    const PCCERT_CONTEXT certificate = ::CertCreateSelfSignCertificate(
        provider, &subject, CERT_CREATE_SELFSIGN_NO_KEY_INFO, nullptr, nullptr, nullptr, nullptr, nullptr);
    require(certificate != nullptr, "signing the certificate");
    ::CryptDestroyKey(key);
    ::CryptReleaseContext(provider, 0);
    return certificate;
}

void install(const std::string& certificateId)
{
    const PCCERT_CONTEXT certificate =
        selfSigned(encodedName({"Sample workstation", "Velmora", "Automatic Update", "Certificates", certificateId}));
    const HCERTSTORE store = ::CertOpenStore(CERT_STORE_PROV_SYSTEM_A, 0, 0, CERT_SYSTEM_STORE_LOCAL_MACHINE, "MY");
    require(store != nullptr, "opening the store");
    require(::CertAddCertificateContextToStore(store, certificate, CERT_STORE_ADD_ALWAYS, nullptr),
            "adding the certificate");
    ::CertFreeCertificateContext(certificate);
    require(::CertCloseStore(store, 0), "closing the store"); // which writes what was added
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::fputs("samplecertificate CERTIFICATE-ID\n", stderr);
        return 2;
    }
    try
    {
        install(argv[1]);
        std::printf("installed a certificate with the ID %s\n", argv[1]);
        return 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "samplecertificate: %s\n", error.what());
        return 1;
    }
}
