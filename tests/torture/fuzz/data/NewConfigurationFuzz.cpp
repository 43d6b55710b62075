// What the status part of an answer means for the releases kept across all certificate IDs. A document is loaded once
// and then asked about many lists of releases.

#include "productlist/phase1xml.h"
#include "tests/support/ClientRegistry.h"
#include "tests/support/TestFolder.h"
#include "tests/torture/fuzz/data/Batches.h"
#include "tests/torture/fuzz/data/XmlText.h"

#include <windows.h>

#include <objbase.h>

namespace
{
using torture::Differences;
using torture::Generator;
using Texts = std::vector<std::string>;

constexpr int kQuestions = 20;
constexpr int kReleases = 5; ///< of one list
constexpr char kCertificates[] = "Config\\Cache\\Certificates\\";
constexpr char kDeliveries[] = "Data\\WebConf";

const torture::Words& reasons()
{
    static const torture::Words all = {
        "101:", "102: expired", "Err 102: certificate expired", "103: other", "10 1:", "", "1101:x", "102"};
    return all;
}

const torture::Words& certificates()
{
    static const torture::Words all = {"CID-A", "cid-a", "CID-B", "CID-C"};
    return all;
}

std::string lower(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    return text;
}

/// Which of the documented parts an answer holds; the first one counts.
struct Answer
{
    bool noData = false;
    bool refused = false;
    std::string reason;
    bool error = false;
    bool noChange = false;

    std::string xml(Generator& input) const
    {
        std::string text = "<any>";
        if (noData || refused || error)
        {
            text += "<Status><Error><Kind><Business>";
            if (noData)
                text += "<NoDataFound/>";
            if (refused)
                text += "<AccessMissing><DBReason>" + torture::xmlText(input, reason) + "</DBReason></AccessMissing>";
            text += "</Business></Kind></Error></Status>";
        }
        text += noChange ? "<Data><NoChange/></Data>" : "<Data><NewData/></Data>";
        return text + "</any>";
    }
    bool revoked() const
    {
        return !noData && refused &&
               (reason.find("101:") != std::string::npos || reason.find("102:") != std::string::npos);
    }
    /// The certificate ID is withdrawn from what the registry remembers, too.
    bool withdraws() const { return noData || revoked(); }
    bool isNew() const { return !noData && !refused && !error && !noChange; }
};

Answer drawnAnswer(Generator& input)
{
    Answer answer;
    switch (input.below(6))
    {
    case 0:
        answer.noData = true;
        answer.refused = input.oneIn(3);
        break;
    case 1:
    case 2:
        answer.refused = true;
        break;
    case 3:
        answer.error = true;
        break;
    case 4:
        answer.noChange = true;
        break;
    default:
        break;
    }
    answer.reason = input.oneIn(3) ? input.text(reasons(), 30) : input.oneOf(reasons());
    torture::keepXmlText(answer.reason);
    return answer;
}

struct Client
{
    auttest::ClientRegistry registry;
    auttest::TestFolder data;
};
Client* client = nullptr;

std::string told(const Texts& texts)
{
    std::string all;
    for (const std::string& text : texts)
        all += text + "\n";
    return all;
}

void ask(Generator& input, phase1xml& list, const Answer& answer, Differences& differences)
{
    const std::string certificate = input.oneOf(certificates());
    client->registry.removeKey("Config\\Cache");
    client->registry.removeKey(kDeliveries);
    // The releases at hand, and what the registry remembers of their deliveries.
    RT_List<CRelease*, CRelease*> releases;
    std::vector<CRelease*> owned;
    Texts kept;
    for (int left = kReleases; left > 0; --left)
    {
        const std::string of = input.oneOf(certificates());
        auto* const release = new CRelease(left, "", "", "R", "1", "2", "", 0, 0, 1);
        release->SetCertificateID(of.c_str());
        owned.push_back(release);
        releases.AddTail(release);
        if (!(answer.withdraws() || answer.isNew()) || lower(of) != lower(certificate))
            kept.push_back(of + std::to_string(left));
    }
    const bool remembers = input.oneIn(3);
    Texts keys;
    for (int i = 0; remembers && i < 2; ++i)
    {
        const std::string key = std::string(kDeliveries) + "\\R" + std::to_string(i);
        client->registry.write(key, "", "12");
        int others = 0;
        for (const char* id : {"CID-A", "CID-B"})
        {
            if (input.oneIn(3))
                continue;
            client->registry.write(key, id, id);
            others += lower(id) != lower(certificate) ? 1 : 0;
        }
        if (!answer.withdraws() || others > 0)
            keys.push_back("R" + std::to_string(i));
    }
    // Without any record of deliveries there is nothing to withdraw from, and the list is left alone.
    if (!remembers && answer.withdraws())
    {
        kept.clear();
        int left = static_cast<int>(owned.size());
        for (const CRelease* release : owned)
            kept.push_back(release->GetCertificateID() + std::to_string(left--));
    }

    differences.expect("answer", answer.isNew() ? 1 : 0, list.IsNewConfiguration(&releases, certificate.c_str()));
    Texts left;
    for (POSITION at = releases.GetHeadPosition(); at != nullptr;)
    {
        const CRelease& release = *releases.GetNext(at);
        left.push_back(release.GetCertificateID() + std::to_string(release.GetId()));
    }
    differences.expect("releases left", told(kept), told(left));
    differences.expect("deliveries left", told(keys), told(client->registry.subkeys(kDeliveries)));
    differences.expect("revoked", std::string(answer.revoked() ? "Revoked" : ""),
                       client->registry.readText(kCertificates + certificate, "Status").value_or(""));
    for (CRelease* release : owned)
        delete release;
}

void checkAnswer(Generator& input, Differences& differences)
{
    const Answer answer = drawnAnswer(input);
    const std::string xml = answer.xml(input);
    client->data.writeFile("productList.xml", xml);
    phase1xml list("http://localhost/");
    differences.expect("loading", 1, list.GetPreviousXMLDoc());
    auttest::removeAll(client->data / "productList.xml");
    for (int question = 0; question < kQuestions && differences.text().empty(); ++question)
        ask(input, list, answer, differences);
    differences.expect("saved", answer.isNew(), client->data.exists("productList.xml"));
    if (!differences.text().empty())
        differences.note("document", torture::literal(xml), "");
}
} // namespace

TEST(Fuzz, NewConfigurationsAnswerAsTheModelDoes)
{
    ::CoInitialize(nullptr);
    Client ofThisTest;
    client = &ofThisTest;
    ofThisTest.registry.write("", "DataPath", ofThisTest.data.path());
    torture::fuzzBatches("new configurations", "releases judged", checkAnswer, kQuestions * kReleases);
    ::CoUninitialize();
}
