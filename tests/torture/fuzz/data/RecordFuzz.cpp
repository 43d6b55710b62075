// What releases and results write into their stream records, and what they make of records that are nearly right.

#include "foundation/RT_RESULT.h"
#include "tests/torture/fuzz/Fuzz.h"
#include "tests/torture/streams/HostileWords.h"
#include "tests/torture/streams/MemoryStream.h"
#include "tests/torture/streams/RecordModel.h"
#include "tests/torture/streams/ResultModel.h"

namespace
{
using torture::Differences;
using torture::Generator;

const torture::Words& words()
{
    static const torture::Words all = {"~",    "%20", "%2",  "0",  " ",   "\n",          "-1", "2000000000", "12abc",
                                       "\r\n", "EN",  "3.3", "B1", "a b", "99999999999", "\t", "http://x",   "CID"};
    return all;
}

std::string fieldText(Generator& input) { return input.text(words(), input.oneIn(10) ? 300 : 20).substr(0, 259); }

/// A text that comes back from a record: short, not empty, and without white space but the blank.
std::string plainText(Generator& input)
{
    static const torture::Words kPlain = {"3.3", "B1", "EN", "a b", "my product", "x~", "http://host/a b"};
    return input.oneIn(6) ? "v" + fieldText(input).substr(0, 12) : input.oneOf(kPlain);
}

void draw(Generator& input, torture::ObjectModel& object, bool plain)
{
    const auto text = [&input, plain] { return plain ? plainText(input) : fieldText(input); };
    object.action = input.index(3);
    object.id = input.index(100);
    object.name = text();
    object.version = text();
    object.build = text();
    object.language = text();
}

torture::ReleaseModel drawnRelease(Generator& input)
{
    torture::ReleaseModel model;
    const bool plain = !input.oneIn(4);
    draw(input, model, plain);
    model.enabled = input.number(0, 1);
    model.date = static_cast<std::int64_t>(input.index(1000)) * input.index(1000);
    model.noDownload = input.number(0, 1);
    model.preInstallOnly = input.number(0, 1);
    model.certificateId = input.oneIn(3) ? "" : plain ? "CID-1" : fieldText(input);
    model.marketingName = input.oneIn(3) ? "" : plain ? plainText(input) : fieldText(input);
    model.technicalName = input.oneIn(3) ? "" : plain ? plainText(input) : fieldText(input);
    for (int left = input.number(0, 4); left > 0; --left)
    {
        torture::ComponentModel component;
        draw(input, component, plain);
        component.enabled = 1;
        component.location = input.oneIn(3) ? "" : plain ? plainText(input) : fieldText(input);
        component.shared = input.number(0, 1);
        model.components.push_back(component);
    }
    return model;
}

void fill(CRelease& release, const torture::ReleaseModel& model)
{
    release.InitValues(static_cast<long>(model.id), model.marketingName.c_str(), model.technicalName.c_str(),
                       model.name.c_str(), model.version.c_str(), model.build.c_str(), model.language.c_str(),
                       static_cast<int>(model.action), model.date, static_cast<int>(model.enabled), 0, 24, false, false,
                       false);
    release.SetCertificateID(model.certificateId.c_str());
    release.SetNoDownload(static_cast<int>(model.noDownload));
    release.SetPreInstallOnly(static_cast<int>(model.preInstallOnly));
    for (const torture::ComponentModel& model1 : model.components)
    {
        auto* const component = new CComponent(static_cast<long>(model1.id), model1.name.c_str(),
                                               model1.version.c_str(), model1.build.c_str(), model1.language.c_str(),
                                               static_cast<int>(model1.action), model1.location.c_str());
        component->SetShared(static_cast<int>(model1.shared));
        release.GetComponentList().AddTail(component);
    }
}

/// The record as it is, nearly so, or with words replaced.
std::string damaged(Generator& input, const std::string& record)
{
    static const std::vector<std::string> kHostile = torture::hostileWords();
    if (input.oneIn(2)) // half of them: a failure is logged, and a line in the log costs more than the reading
        return record;
    if (input.oneIn(2))
        return input.mutation(record, words());
    const std::vector<std::string> all = torture::wordsOf(record);
    return torture::linesWith(all, input.below(static_cast<unsigned>(all.size())), input.oneOf(kHostile));
}

void checkRelease(Generator& input, Differences& differences)
{
    const torture::ReleaseModel model = drawnRelease(input);
    CRelease release;
    fill(release, model);
    differences.expect("the release", torture::told(model), torture::told(release));
    torture::MemoryOutput output;
    differences.expect("writing", 1, release.Serialize(output.stream()));
    differences.expect("the record", model.written(), output.bytes());

    const std::string record = damaged(input, model.written());
    torture::ReleaseModel read;
    CRelease readRelease;
    torture::MemoryInput stream(record);
    const int expected = read.read(record);
    const int answer = readRelease.Serialize(stream.stream());
    differences.expect("reading", expected, answer);
    differences.expect("components", static_cast<int>(read.components.size()),
                       readRelease.GetComponentList().GetCount());
    if (expected == 1)
        differences.expect("what was read", torture::told(read), torture::told(readRelease));
    if (!differences.text().empty())
        differences.note("record", torture::literal(record), "");
}

void checkResult(Generator& input, Differences& differences)
{
    RT_RESULT record(static_cast<unsigned>(input.index(1000)));
    std::string texts[5];
    for (std::string& text : texts)
        text = input.oneIn(4) ? "" : input.text(words(), input.oneIn(10) ? 400 : 20);
    record.Set(input.index(500), texts[0].c_str(), texts[2].c_str(), texts[3].c_str(), texts[4].c_str(), 5L,
               texts[1].c_str());
    const torture::ResultModel stored(record);
    for (std::size_t i = 0; i < 5; ++i)
        differences.expect("text", texts[i].substr(0, i == 0 || i == 2 ? 127 : 259), stored.texts[i]);
    torture::MemoryOutput output;
    record.Serialize(output.stream());
    differences.expect("the stored form", stored.written(), output.bytes());

    const std::string text = damaged(input, output.bytes());
    RT_RESULT read(9);
    torture::ResultModel model(read);
    model.read(text);
    torture::MemoryInput stream(text);
    differences.expect("reading", 1, read.Serialize(stream.stream()));
    differences.expect("what was read", model.told(), torture::ResultModel(read).told());
    differences.expect("end of file", model.ended(), stream.stream().eof());
    differences.expect("failed", model.failed(), stream.stream().fail());
}
} // namespace

AUTOOLS_FUZZ_TARGET(ReleaseStreams, "release streams", checkRelease)
AUTOOLS_FUZZ_TARGET(ResultStreams, "result streams", checkResult)
