// Which certificate ID the subject of a certificate names.

#include "tests/torture/fuzz/Fuzz.h"
#include "tests/torture/fuzz/data/CertificateModel.h"
#include "webconf/CCIDListManager.h"

/// The private member that judges one subject.
template <> struct aut::LayoutOf<struct SubjectReader>
{
    static std::string valid(CCIDListManager& manager, const std::string& subject)
    {
        return static_cast<const char*>(manager.GetValidCIDFromSubject(String(subject.c_str())));
    }
};

namespace
{
using torture::Differences;
using torture::Generator;

void checkSubject(Generator& input, Differences& differences)
{
    std::string subject;
    for (int left = input.number(0, 7); left > 0; --left)
        subject +=
            (input.oneIn(4) ? input.text(torture::certificateWords(), 60) : input.oneOf(torture::certificateWords())) +
            (input.oneIn(9) ? "" : ",");

    std::vector<std::string> fields(1);
    for (const char c : subject)
    {
        if (c != ',')
            fields.back() += c;
        else
            fields.emplace_back();
    }
    fields.resize(5);
    std::string maker = fields[3].substr(0, 7);
    for (char& c : maker)
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    const std::string expected = fields[3].empty() || maker == "velmora" ? "" : torture::acceptedCertificate(fields[4]);
    CCIDListManager manager;
    differences.expect("certificate ID of the subject", expected,
                       aut::LayoutOf<SubjectReader>::valid(manager, subject));
    if (!differences.text().empty())
        differences.note("subject", torture::literal(subject), "");
}

} // namespace

TEST(Fuzz, SubjectsOfCertificatesAnswerAsTheModelDoes)
{
    const torture::Revocations revocations;
    torture::fuzz("certificate subjects", checkSubject);
}
