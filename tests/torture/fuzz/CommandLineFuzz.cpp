#include "tests/torture/fuzz/Fuzz.h"
#include "tests/torture/fuzz/Model.h"

#include "fileops/CommandLine.h"

#include <string>
#include <vector>

namespace
{
namespace model = torture::model;

const torture::Words kWords = {"\"",
                               "\"C:\\Program Files\\setup.exe\"",
                               "/AU_INSTALL",
                               "/VERYSILENT /NORESTART",
                               " ",
                               "\t",
                               "  \t ",
                               "\n",
                               "\x01",
                               "\"\"",
                               "\" \"",
                               "a\"b c\"d",
                               "\\\"",
                               "-regserver",
                               "\r\n",
                               "\xa0",
                               "\"a",
                               "b\"",
                               "/S \"x y.dll\""};

/// Quoted parts lie between quotes with odd and even numbers: there a blank is hidden, the rest is split at blanks, and
/// what was hidden comes back.
std::vector<std::string> arguments(const std::string& line)
{
    std::vector<std::string> parts = model::split(line, '"');
    std::vector<std::vector<std::string>> words(1); // each is a row of pieces, joined at the end
    for (std::size_t i = 0; i < parts.size(); ++i)
    {
        if (i > 0)
            words.back().push_back("\"");
        if (i % 2 == 1)
        {
            words.back().push_back(parts[i]);
            continue;
        }
        const auto pieces = model::split(model::replaced(parts[i], '\t', ' '), ' ');
        words.back().push_back(pieces.front());
        for (std::size_t k = 1; k < pieces.size(); ++k)
            words.push_back({pieces[k]});
    }
    std::vector<std::string> found;
    for (const auto& pieces : words)
    {
        std::string word = model::join(pieces, "");
        while (!word.empty() && static_cast<unsigned char>(word.front()) <= 32)
            word.erase(0, 1);
        if (!word.empty())
            found.push_back(word);
    }
    return found;
}

void checkCommandLine(torture::Generator& input, torture::Differences& differences)
{
    const std::string line = input.text(kWords);
    const std::vector<std::string> expected = arguments(line);
    const std::vector<std::string> got = aut::splitArguments(line.c_str());
    differences.expect("arguments", expected.size(), got.size());
    for (std::size_t i = 0; i < std::min(expected.size(), got.size()); ++i)
        differences.expect("argument", expected[i], got[i]);
    if (expected.empty() || got.empty())
        return;
    std::string program = expected.front();
    if (program.size() > 1 && program.front() == '"' && program.back() == '"')
        program = program.substr(1, program.size() - 2);
    differences.expect("program", program, aut::withoutEnclosingQuotes(got.front()));
}
} // namespace

AUTOOLS_FUZZ_TARGET(CommandLines, "command lines", checkCommandLine)
