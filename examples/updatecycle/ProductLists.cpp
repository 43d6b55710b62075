#include "ProductLists.h"

#include "Progress.h"
#include "Steps.h"

#include <cctype>
#include <cstdio>

namespace updatecycle
{
namespace
{
std::string listUrl(const std::string& server, const std::string& certificateId)
{
    DataExchange request;
    std::snprintf(request.m_host, sizeof request.m_host, "%s", server.c_str());
    std::snprintf(request.m_certificateId, sizeof request.m_certificateId, "%s", certificateId.c_str());
    std::snprintf(request.m_productName, sizeof request.m_productName, "Automatic Update");
    request.UpdateVersions(); // without an installed client the versions stay empty, and the page does not need them
    String url = request.ConstructURL("wcfgGetProductList.asp");
    url.Replace("+", "%2B"); // a certificate ID may hold it, and a server reads it as a blank
    return static_cast<const char*>(url);
}

/// Keeps apart what the certificate IDs' previous lists are saved as. What no file name may hold becomes a "-", which
/// is in no certificate ID.
std::string namePrefix(std::string certificateId)
{
    for (char& c : certificateId)
        if (std::isalnum(static_cast<unsigned char>(c)) == 0 && c != '+' && c != '=')
            c = '-';
    return certificateId;
}

ExitCode fetch(phase1xml& list, const ClientConfiguration& configuration)
{
    int fetched = 0;
    {
        const Progress progress("Downloading the product list");
        fetched = list.GetXMLDoc(configuration.get());
    }
    if (fetched == 1)
        return kDone;
    const int status = result->GetStatusCode();
    const bool notUnderstood = status == 500 || status == 554;
    std::printf(notUnderstood ? "What the server sent is no product list.\n" : "No product list came.\n");
    std::printf("  %s\n", lastFailure().c_str());
    if (status == 551)
        return kUnexpected;
    return notUnderstood ? kBadAnswer : kNoAnswer;
}

/// How many releases of the certificate ID are in the list.
int countOf(const ReleaseList& releases, const std::string& certificateId)
{
    int count = 0;
    releases.forEach([&](const CRelease& release)
                     { count += String(certificateId.c_str()) == release.GetCertificateID() ? 1 : 0; });
    return count;
}

std::string waiting(const ReleaseList& releases, const std::string& certificateId)
{
    return std::to_string(countOf(releases, certificateId)) + " releases wait from before";
}
} // namespace

ExitCode updateReleases(ReleaseList& releases, const std::string& certificateId, const Settings& settings,
                        const ClientConfiguration& configuration)
{
    const std::string url = settings.url.empty() ? listUrl(settings.server, certificateId) : settings.url;
    std::printf("\nCertificate  %s\n", certificateId.empty() ? "none, local releases" : certificateId.c_str());
    Log(0, "Update cycle: product list from %s", url.c_str());
    phase1xml list(url.c_str(), namePrefix(certificateId).c_str());
    if (const ExitCode fetched = fetch(list, configuration); fetched != kDone)
    {
        releaseStep("kept", waiting(releases, certificateId));
        return fetched;
    }

    const String id(certificateId.c_str());
    int isNew = 0;
    releases.rearrange([&](auto* all) { isNew = list.IsNewConfiguration(all, id); });
    if (isNew != 0)
    {
        list.ParseXMLDocument(releases.get(), id);
        std::printf("%d releases, list number %lu, country %s\n", countOf(releases, certificateId),
                    list.GetModifCounter(), CRegAutoUpdate(true).GetCountryCode());
    }
    else if (IsCIDRevoked(id))
        releaseStep("refused", "its releases are withdrawn, and it is not asked for again");
    else
        releaseStep("no new list", waiting(releases, certificateId));
    return kDone;
}
} // namespace updatecycle
