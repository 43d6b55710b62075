// Lists of certificate IDs in a document.

#include "productlist/phase1xml.h"
#include "tests/torture/fuzz/data/Batches.h"
#include "tests/torture/fuzz/data/CertificateModel.h"
#include "tests/torture/fuzz/data/XmlText.h"

#include <windows.h>

#include <objbase.h>

namespace
{
using torture::Differences;
using torture::Generator;

constexpr int kElements = 100;

void checkList(Generator& input, Differences& differences)
{
    std::string document = "<list><Other/><CIDList>";
    std::vector<std::string> expected;
    for (int i = 0; i < kElements; ++i)
    {
        std::string text =
            input.oneIn(3) ? input.text(torture::certificateWords(), 40) : input.oneOf(torture::certificateWords());
        torture::keepXmlCharacters(text);
        if (!input.oneIn(6))
            text += std::to_string(i);          // as a real list: no two are the same
        const bool elsewhere = input.oneIn(10); // below something else, where nothing is looked for
        document += elsewhere ? "<X><CID>" : input.oneIn(5) ? "<CID master=\"True\">" : "<CID>";
        document += torture::xmlText(input, text);
        document += elsewhere ? "</CID></X>" : "</CID>";
        if (!elsewhere && !torture::acceptedCertificate(text).empty())
            expected.push_back(torture::acceptedCertificate(text));
    }
    document += "</CIDList></list>";

    phase1xml list("http://localhost/");
    RT_List<String, String&> found;
    String xml(document.c_str());
    differences.expect("reading the list", 1, list.ConcatenateCIDs(&found, xml));
    std::string expectedIds;
    std::string foundIds;
    for (const std::string& id : expected)
        expectedIds += id + "\n";
    for (POSITION pos = found.GetHeadPosition(); pos != nullptr;)
        foundIds += std::string(found.GetNext(pos)) + "\n";
    differences.expect("certificate IDs", expectedIds, foundIds);
    if (!differences.text().empty())
        differences.note("document", torture::literal(document), "");
}

} // namespace

TEST(Fuzz, ListsOfCertificateIdsAnswerAsTheModelDoes)
{
    const torture::Revocations revocations;
    ::CoInitialize(nullptr);
    torture::fuzzBatches("certificate ID lists", "elements", checkList, kElements);
    ::CoUninitialize();
}
