#include "check/Check.h"
#include "common/Text.h"
#include "machine/Client.h"
#include "machine/Owners.h"
#include "machine/RegistryReader.h"

#include <7xAutoUpdateTools.h>

#include <windows.h>

#include <wincrypt.h>

#include <set>

namespace autool
{
namespace
{
inline void closeStore(HCERTSTORE store) { ::CertCloseStore(store, 0); }
using Store = Owner<HCERTSTORE, closeStore>;

/// The fifth value of a certificate's subject is its certificate ID; one whose fourth begins with the maker's name, and
/// one without a fourth, has none.
std::string certificateIdOf(const CERT_CONTEXT& certificate)
{
    CERT_NAME_BLOB& subject = certificate.pCertInfo->Subject;
    constexpr DWORD kForm = CERT_SIMPLE_NAME_STR | CERT_NAME_STR_NO_QUOTING_FLAG;
    const DWORD size = ::CertNameToStrA(X509_ASN_ENCODING, &subject, kForm, nullptr, 0);
    std::string text(size, '\0');
    ::CertNameToStrA(X509_ASN_ENCODING, &subject, kForm, text.data(), size);
    const String values(text.c_str());
    const String maker = values.ExtractSubString(',', 3);
    if (maker.IsEmpty() || maker.Find("Velmora") == 0)
        return std::string();
    std::string id = static_cast<const char*>(values.ExtractSubString(',', 4));
    for (const char unwanted : {' ', '"'}) // not every system leaves the quotation marks out
    {
        id.erase(0, id.find_first_not_of(unwanted));
        id.erase(id.find_last_not_of(unwanted) + 1);
    }
    constexpr std::size_t kShortestId = 11;
    constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
    const bool isWellFormed = id.size() >= kShortestId && id.find_first_not_of(kAlphabet) == std::string::npos;
    return isWellFormed ? id : std::string();
}

/// By ID: a user's store shows the machine's certificates, too.
struct Found
{
    std::set<std::string> ids;
    std::set<std::string> revoked;
    std::set<std::string> expired;
};

void search(DWORD place, Found& found)
{
    const Store store(::CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0,
                                      place | CERT_STORE_READONLY_FLAG | CERT_STORE_OPEN_EXISTING_FLAG, L"MY"));
    if (!store)
        return;
    // The enumeration frees the certificate it is given.
    for (PCCERT_CONTEXT certificate = nullptr;
         (certificate = ::CertEnumCertificatesInStore(store.get(), certificate)) != nullptr;)
    {
        const std::string id = certificateIdOf(*certificate);
        if (id.empty())
            continue;
        (IsCIDRevoked(id.c_str()) ? found.revoked : found.ids).insert(id);
        if (::CertVerifyTimeValidity(nullptr, certificate->pCertInfo) != 0)
            found.expired.insert(id);
    }
}

/// IDs that are kept in the registry: those of the hardware and of other users, and one for deployment.
int storedIds()
{
    int count = 0;
    for (const wchar_t* const cache : {L"\\Config\\Cache\\HWIDs", L"\\Config\\Cache\\User"})
        if (const auto tree = readTree(HKEY_LOCAL_MACHINE, std::wstring(kClientTree) + cache))
            for (const RegistryKey& owner : tree->keys)
                for (const RegistryValue& value : owner.values)
                    count += value.text() != L"Revoked" ? 1 : 0;
    for (const wchar_t* const name : {L"DeploymentCID", L"TestCID"})
        if (const auto value = readValue(HKEY_LOCAL_MACHINE, std::wstring(kClientTree) + L"\\Config", name))
            count += value->text().empty() ? 0 : 1;
    return count;
}
} // namespace

void checkCertificates(CheckList& list)
{
    list.begin("Looking for certificates");
    Found found;
    search(CERT_SYSTEM_STORE_LOCAL_MACHINE, found);
    search(CERT_SYSTEM_STORE_CURRENT_USER, found);
    const int stored = storedIds();
    const std::string inRegistry = stored > 0 ? std::to_string(stored) + " in the registry" : "none in the registry";
    if (!found.revoked.empty())
        list.add("CERTIFICATES", Verdict::warn,
                 "The Web Configurator has refused the IDs of " + std::to_string(found.revoked.size()) +
                     " certificate" + (found.revoked.size() == 1 ? "" : "s") + " of this machine.");
    if (!found.expired.empty())
        list.add("CERTIFICATES", Verdict::warn,
                 std::to_string(found.expired.size()) + " certificate" + (found.expired.size() == 1 ? "" : "s") +
                     " with an ID " + (found.expired.size() == 1 ? "has" : "have") + " expired.");
    if (!found.ids.empty())
        list.add("CERTIFICATES", Verdict::pass,
                 "Certificate IDs: " + std::to_string(found.ids.size()) + " in the certificate stores (first " +
                     shortened(fromSystem(*found.ids.begin()), 40) + "), " + inRegistry + ".");
    else
        list.add("CERTIFICATES", stored > 0 ? Verdict::pass : Verdict::warn,
                 std::string("No ") + (found.revoked.empty() ? "" : "other ") +
                     "certificate of this machine or user has an ID, " + inRegistry +
                     (stored > 0 ? "." : ": the Web Configurator does not know this machine."));
}
} // namespace autool
