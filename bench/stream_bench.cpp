// The stream record of a release with 10,000 components, against plain << and >> of the same words and numbers.

#include "bench/Figures.h"

#include "7xAutoUpdateTools.h"

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace
{
constexpr int kComponents = 10000;
const __int64 kDate = 1279800309;

/// A component in the words of the format, so that nothing needs to be escaped.
struct Record
{
    int action = 0;
    std::string build;
    long id = 0;
    std::string language;
    std::string name;
    std::string version;
    int enabled = 0;
    std::string location;
    int shared = 0;
};

std::vector<Record> makeRecords()
{
    std::vector<Record> records;
    for (int i = 0; i < kComponents; ++i)
    {
        const std::string number = std::to_string(i);
        records.push_back({0, "B1", i, "EN", "Component%20name%20" + number, "3.3.302", 1,
                           "HTTP://depot:80/components/part%20" + number + ".cab", 0});
    }
    return records;
}

std::string withBlanks(std::string text)
{
    for (std::size_t at = text.find("%20"); at != std::string::npos; at = text.find("%20", at))
        text.replace(at, 3, " ");
    return text;
}

void fill(CRelease& release, const std::vector<Record>& records)
{
    for (const Record& record : records)
        release.GetComponentList().AddTail(
            new CComponent(record.id, withBlanks(record.name).c_str(), record.version.c_str(), record.build.c_str(),
                           record.language.c_str(), record.action, withBlanks(record.location).c_str()));
}

void writePlain(std::ofstream& out, const std::vector<Record>& records)
{
    out << 0 << '\n'
        << "B1" << '\n'
        << 1L << '\n'
        << "EN" << '\n'
        << "Product" << '\n'
        << "3.3.302" << '\n'
        << 1 << '\n';
    out << kDate << '\n' << kComponents << '\n' << "ABCDEFGHIJKLMNOP" << '\n' << 0 << '\n' << 0 << '\n';
    for (const Record& record : records)
        out << record.action << '\n'
            << record.build << '\n'
            << record.id << '\n'
            << record.language << '\n'
            << record.name << '\n'
            << record.version << '\n'
            << record.enabled << '\n'
            << record.location << '\n'
            << record.shared << '\n';
    out << "Marketing%20Name" << '\n' << "technical" << '\n';
}

void readPlain(std::ifstream& in, std::vector<Record>& records)
{
    Record head;
    __int64 date = 0;
    int count = 0;
    int flag = 0;
    std::string word;
    in >> head.action >> head.build >> head.id >> head.language >> head.name >> head.version >> head.enabled;
    in >> date >> count >> word >> flag >> flag;
    for (int i = 0; i < count && in; ++i)
    {
        Record record;
        in >> record.action >> record.build >> record.id >> record.language >> record.name >> record.version >>
            record.enabled >> record.location >> record.shared;
        records.push_back(std::move(record));
    }
    in >> word >> word;
}

std::string contentsOf(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}
} // namespace

int main()
{
    char folder[MAX_PATH];
    ::GetTempPathA(sizeof folder, folder);
    const std::string path = std::string(folder) + "release.lst";
    const std::string plainPath = path + ".plain";
    const std::vector<Record> records = makeRecords();
    CRelease release(1, "Marketing Name", "technical", "Product", "3.3.302", "B1", "EN", 0, kDate, 1);
    release.SetCertificateID("ABCDEFGHIJKLMNOP");
    fill(release, records);

    const bench::Times writing = bench::inTurns(
        [&]
        {
            std::ofstream out(path, std::ios::binary);
            bench::require(release.Serialize(out) == 1, "writing");
        },
        [&]
        {
            std::ofstream out(plainPath, std::ios::binary);
            writePlain(out, records);
        });
    const bool sameBytes = contentsOf(path) == contentsOf(plainPath);

    bool sameState = true;
    bench::Times reading;
    for (int round = 0; round < bench::rounds(); ++round)
    {
        // Neither side pays for giving its records up.
        CRelease copy;
        std::vector<Record> plain;
        std::ifstream in(path, std::ios::binary);
        std::ifstream plainIn(path, std::ios::binary);
        bench::addRound(
            reading, [&] { return bench::secondsOf([&] { bench::require(copy.Serialize(in) == 1, "reading"); }); },
            [&] { return bench::secondsOf([&] { readPlain(plainIn, plain); }); });
        bench::require(copy.GetComponentList().GetCount() == kComponents && plain.size() == kComponents,
                       "reading all of it");
        sameState = sameState && in.rdstate() == plainIn.rdstate() && in.tellg() == plainIn.tellg();
    }
    ::DeleteFileA(path.c_str());
    ::DeleteFileA(plainPath.c_str());

    bench::atMost("release of 10,000 components, write; plain <<", writing, 1.8);
    bench::atMost("release of 10,000 components, read; plain >>", reading, 2.5);
    bench::figure("release of 10,000 components, bytes written", sameBytes ? "the same" : "differ", "the same",
                  sameBytes);
    bench::figure("release of 10,000 components, stream state after reading", sameState ? "the same" : "differs",
                  "the same", sameState);
    return bench::status();
}
