#ifndef AUTOOLS_TESTS_SUPPORT_CERTIFICATES_H
#define AUTOOLS_TESTS_SUPPORT_CERTIFICATES_H

#include <windows.h>

#include <wincrypt.h>

#include <string>
#include <vector>

namespace auttest
{
enum class Store
{
    machine,
    user
};

/// The values of a certificate's subject, in order; the first is its common name, the others organisational units.
using Subject = std::vector<std::string>;

/// A real self-signed certificate in one of the personal ("MY") stores while this lives.
class InstalledCertificate
{
public:
    InstalledCertificate(Store store, const Subject& subject);
    InstalledCertificate(const InstalledCertificate&) = delete;
    InstalledCertificate& operator=(const InstalledCertificate&) = delete;
    ~InstalledCertificate();

private:
    Store m_store;
    PCCERT_CONTEXT m_certificate = nullptr;
};

/// How many certificates the store holds.
int certificateCount(Store store);
} // namespace auttest

#endif
