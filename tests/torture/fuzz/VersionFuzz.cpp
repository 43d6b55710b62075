#include "tests/torture/fuzz/Fuzz.h"
#include "tests/torture/fuzz/Model.h"

#include "foundation/CVersion.h"
#include "foundation/VersionText.h"

#include <string>
#include <vector>

namespace
{
using torture::Differences;
using torture::Generator;
namespace model = torture::model;

const torture::Words kWords = {
    "3.3.302.1",  "3.3.302.2",   "3.3.302",     "3.3_302", "3.3.302B", "3.3.302B1.2", "1.0A5P3.4_EN",
    "10.2.0.1",   ".",           "_",           "B",       "A",        "P",           "0",
    "1",          "2",           "-1",          "+4",      " ",        "\t",          "2147483647",
    "2147483648", "-2147483648", "99999999999", "_FR",     "1.2.3.4",  "7.0.1b2.3_de"};

/// The numbers and separators that a form asks for, as far as the text gives them: 'd' a number, 'c' any character,
/// anything else itself.
std::vector<int> items(const std::string& text, const std::string& form)
{
    std::vector<int> read;
    std::size_t at = 0;
    for (const char wanted : form)
    {
        int value = 0;
        if (wanted == 'd')
        {
            if (!model::number(text, at, value))
                break;
            read.push_back(value);
            continue;
        }
        if (at >= text.size() || (wanted != 'c' && text[at] != wanted))
            break;
        if (wanted == 'c')
            read.push_back(static_cast<unsigned char>(text[at]));
        ++at;
    }
    return read;
}

enum class Form
{
    None,
    Short,
    Five,
    Full
};

struct Version
{
    Form form = Form::None;
    std::vector<int> parts = std::vector<int>(7);
};

Version parsed(const std::string& text)
{
    Version version;
    std::vector<int> read = items(text, "d.dcdcd.d");
    if (read.size() == 7)
        version.form = Form::Full;
    else
    {
        read = items(text, "d.dcd.d");
        if (read.size() != 4 && read.size() != 5)
            return version;
        version.form = read.size() == 4 ? Form::Short : Form::Five;
    }
    read.resize(7);
    version.parts = read;
    return version;
}

bool isNewer(const Version& a, const Version& b)
{
    const std::vector<int> mainA(a.parts.begin(), a.parts.begin() + 4);
    const std::vector<int> mainB(b.parts.begin(), b.parts.begin() + 4);
    if (mainA != mainB)
        return mainA < mainB;
    if (a.form == Form::Short || b.form == Form::Short)
        return a.form != Form::Short;
    if (a.form == Form::Full && b.form == Form::Full)
        return a.parts < b.parts;
    if (a.form == Form::Full || b.form == Form::Full)
        return b.form == Form::Full;
    return a.parts[4] < b.parts[4];
}

void checkParts(const std::string& text, const Version& version, Differences& differences)
{
    CVersion library;
    differences.expect("parsed", version.form != Form::None, library.parse(text.c_str()));
    differences.expect("full", version.form == Form::Full, library.isFull());
    differences.expect("short", version.form == Form::Short, library.isShort());
    const int compared = version.form == Form::Full ? 7 : version.form == Form::Short ? 4 : 5;
    for (int i = 0; i < compared; ++i)
        differences.expect("part", version.parts[static_cast<std::size_t>(i)], library.part(i));
}

/// A product version is version, build and language: the language behind the last underscore, the build from its
/// letter.
void checkExtraction(const std::string& text, Differences& differences)
{
    std::vector<std::string> fields = model::split(text, '_');
    const std::string language = fields.size() > 1 ? fields.back() : std::string();
    if (fields.size() > 1)
        fields.pop_back();
    const std::string rest = model::join(fields, "_");
    const std::string version = rest.substr(0, model::lower(rest).find_first_of("abp"));

    String libraryBuild;
    String libraryVersion;
    String libraryLanguage;
    differences.expect("extracted", !version.empty(),
                       ExtractBuildVersionAndLanguage(text.c_str(), libraryBuild, libraryVersion, libraryLanguage));
    differences.expect("version", version, std::string(static_cast<const char*>(libraryVersion)));
    differences.expect("build", rest.substr(version.size()), std::string(static_cast<const char*>(libraryBuild)));
    differences.expect("language", language, std::string(static_cast<const char*>(libraryLanguage)));
}

void checkVersions(Generator& input, Differences& differences)
{
    const std::string a = input.text(kWords, 300);
    const std::string b = input.oneIn(3) ? input.text(kWords, 300) : input.mutation(a, kWords);
    const Version versionA = parsed(a);
    const Version versionB = parsed(b);
    checkParts(a, versionA, differences);
    differences.expect("b newer than a", isNewer(versionA, versionB), IsVersionNewer(a.c_str(), b.c_str()));
    differences.expect("a newer than b", isNewer(versionB, versionA), IsVersionNewer(b.c_str(), a.c_str()));
    differences.expect("a newer than a", false, IsVersionNewer(a.c_str(), a.c_str()));
    differences.expect("a newer than none", isNewer(Version(), versionA), IsVersionNewer(nullptr, a.c_str()));
    checkExtraction(a, differences);
}
} // namespace

AUTOOLS_FUZZ_TARGET(Versions, "version texts", checkVersions)
