// The one table behind `autool explain` and docs/codes.md, held against the sources that set the codes and write the
// texts.
#include "explain/Explanations.h"
#include "tests/support/TestFolder.h"
#include "tests/tools/Autool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <regex>
#include <set>

namespace
{
using namespace autool;
using namespace auttest;
namespace fs = std::filesystem;

fs::path projectFolder()
{
    const std::string folder = AUTOOL_SOURCE_FOLDER;
    return folder.front() == '/' ? "Z:" + folder : folder; // as the emulated Windows sees the build machine's disk
}

struct Source
{
    std::string name;
    std::string code;
};

/// Every source of the library.
std::vector<Source> sources()
{
    std::vector<Source> found;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(projectFolder() / "src"))
        if (entry.path().extension() == ".cpp")
            found.push_back({entry.path().filename().string(), readFile(entry.path().string())});
    return found;
}

/// The text of adjacent literals ("a" "b"), as the program sees it.
std::string literalText(const std::string& literals)
{
    static const std::regex literal("\"((?:[^\"\\\\]|\\\\.)*)\"");
    std::string text;
    for (std::sregex_iterator it(literals.begin(), literals.end(), literal), end; it != end; ++it)
        text += (*it)[1].str();
    return std::regex_replace(text, std::regex("\\\\(.)"), "$1");
}

bool hasLogText(const std::string& text)
{
    const auto& rows = explanations();
    return std::any_of(rows.begin(), rows.end(),
                       [&](const Explanation& row) { return row.kind == Kind::LogText && row.text == text; });
}

bool hasStatusCode(long long code, const std::string& action)
{
    const auto& rows = explanations();
    return std::any_of(rows.begin(), rows.end(),
                       [&](const Explanation& row)
                       { return row.kind == Kind::StatusCode && row.first == code && row.text == action; });
}

bool isKnownCode(long long code)
{
    const auto rows = explanationsOf(code);
    return std::any_of(rows.begin(), rows.end(),
                       [](const Explanation* row)
                       { return row->kind == Kind::StatusCode || row->kind == Kind::Transfer; });
}

const std::string kLiterals = "((?:\"(?:[^\"\\\\]|\\\\.)*\"\\s*)+)";

TEST(Codes, EveryTextThatTheSourcesLogIsInTheTable)
{
    const std::regex call("\\bLog\\(\\s*[^,()]+,\\s*" + kLiterals);
    const std::regex anyCall("\\bLog\\(\\s*[^,()]+,\\s*[^\"\\s]"); // a text that is no literal could not be found
    std::set<std::string> texts;
    for (const Source& source : sources())
    {
        for (std::sregex_iterator it(source.code.begin(), source.code.end(), call), end; it != end; ++it)
        {
            const std::string text = literalText((*it)[1].str());
            texts.insert(text);
            EXPECT_TRUE(hasLogText(text)) << source.name << " logs \"" << text << "\"";
        }
        if (source.name != "EventLog.cpp") // where the function itself is
        {
            EXPECT_FALSE(std::regex_search(source.code, anyCall)) << source.name;
        }
    }
    EXPECT_GE(texts.size(), 140U) << "the scan has lost its way";
    for (const Explanation& row : explanations())
        if (row.kind == Kind::LogText)
        {
            EXPECT_EQ(1U, texts.count(row.text)) << "nobody logs \"" << row.text << "\" any more";
        }
}

TEST(Codes, EveryStatusCodeThatTheSourcesSetIsInTheTable)
{
    // The code may be a number, a constant of the file or the argument of a helper: then the helper's calls count.
    const std::regex set("result->Set\\(\\s*(\\w+),\\s*(\"[^\"]*\"|\\w+)");
    const std::regex helperCall("\\w\\(\\s*(\\d{2,3}),\\s*(\"[^\"]*\")");
    const std::regex constant("constexpr (?:int|DWORD) (k\\w+) = (\\d+);");
    std::map<long long, int> seen;
    for (const Source& source : sources())
    {
        std::map<std::string, std::string> constants;
        for (std::sregex_iterator it(source.code.begin(), source.code.end(), constant), end; it != end; ++it)
            constants[(*it)[1]] = (*it)[2];
        const auto check = [&](const std::string& code, const std::string& action)
        {
            const std::string number = constants.count(code) != 0 ? constants[code] : code;
            if (number.find_first_not_of("0123456789") != std::string::npos)
                return; // an argument
            ++seen[std::stoll(number)];
            EXPECT_TRUE(isKnownCode(std::stoll(number))) << source.name << " sets " << number;
            if (action.front() == '"')
            {
                EXPECT_TRUE(hasStatusCode(std::stoll(number), literalText(action)))
                    << source.name << " sets " << number << " " << action;
            }
        };
        bool sets = false;
        for (std::sregex_iterator it(source.code.begin(), source.code.end(), set), end; it != end; ++it)
        {
            sets = true;
            check((*it)[1], (*it)[2]);
        }
        if (sets)
            for (std::sregex_iterator it(source.code.begin(), source.code.end(), helperCall), end; it != end; ++it)
                check((*it)[1], (*it)[2]);
    }
    for (const long long code : {18, 301, 459, 460, 462, 463, 465, 466, 470, 471, 472, 477, 500, 551, 554, 953})
        EXPECT_TRUE(seen.count(code) != 0 && isKnownCode(code)) << code;
    EXPECT_TRUE(isKnownCode(104)); // set through a variable
}

TEST(Codes, TheDocumentIsTheTable)
{
    const std::string path = (projectFolder() / "docs" / "codes.md").string();
    if (std::getenv("AUTOOLS_UPDATE_DOCS") != nullptr)
        writeFile(path, codesDocument());
    EXPECT_TRUE(readFile(path) == codesDocument()) << "docs/codes.md is not what the table says: build the target "
                                                      "update_codes";
}
} // namespace
