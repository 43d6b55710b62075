#include "tests/torture/fuzz/Fuzz.h"
#include "tests/torture/fuzz/Model.h"

#include "foundation/CText.h"
#include "foundation/String.h"

#include <string>

namespace
{
using torture::Differences;
using torture::Generator;
namespace model = torture::model;

const torture::Words kWords = {"a",      "A",      "aa",         "ab",    "aab",  "aabaab", "Ab",   "ABAB",
                               "needle", "NEEDLE", "neednee",    " ",     ",",    "%20",    "\\",   "/",
                               "[",      "{",      "@",          "`",     "\xe4", "\xc4",   "\x01", "\t",
                               "12",     "-5",     "4294967296", "00000", "\xa0", "\r\n"};

/// A text that may well occur in `text`.
std::string partOf(Generator& input, const std::string& text)
{
    if (text.empty() || input.oneIn(5))
        return input.text(kWords, 80);
    const std::size_t at = input.below(static_cast<unsigned>(text.size()));
    const std::string part = text.substr(at, static_cast<std::size_t>(input.number(0, 6)));
    return input.oneIn(4) ? input.mutation(part, kWords) : part;
}

/// Index of the first place from `start` on, -1 when there is none.
int indexOf(const std::string& text, const std::string& part, std::size_t start)
{
    const std::size_t at = text.find(part, start);
    return at == std::string::npos ? -1 : static_cast<int>(at);
}

void checkFind(Generator& input, Differences& differences)
{
    const std::string text = input.text(kWords);
    const std::string part = partOf(input, text);
    const String library(text.c_str());
    const int length = static_cast<int>(text.size());
    const int start = input.index(length);
    const auto from = static_cast<std::size_t>(std::max(start, 0));
    const bool outside = start >= length;

    const bool nothing = outside || part.empty();
    differences.expect("Find of a text", nothing ? -1 : indexOf(model::lower(text), model::lower(part), from),
                       library.Find(part.c_str(), start));
    const int found = indexOf(model::lower(text), model::lower(part), 0);
    const char* const match = stristr(text.c_str(), part.c_str());
    differences.expect("stristr", found, match != nullptr ? static_cast<int>(match - text.c_str()) : -1);

    const char c = part.empty() ? static_cast<char>(input.number(0, 255)) : part[0];
    differences.expect("Find of a character", outside || c == '\0' ? -1 : indexOf(text, std::string(1, c), from),
                       library.Find(c, start));
    // The terminator is a character that is found, but not in an empty text.
    const int last = c == '\0' ? length : static_cast<int>(static_cast<long long>(text.rfind(c)));
    differences.expect("ReverseFind", text.empty() ? -1 : last, library.ReverseFind(c));
}

/// Every place where `part` begins counts, also inside another one; what is replaced never overlaps.
void checkReplace(Generator& input, Differences& differences)
{
    const std::string text = input.text(kWords);
    const std::string from = partOf(input, text);
    const std::string to = input.text(kWords, 80);
    int places = 0;
    std::string expected;
    std::size_t replacedTo = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const bool here = !from.empty() && from != to && text.compare(i, from.size(), from) == 0;
        places += here ? 1 : 0;
        if (i < replacedTo)
            continue;
        expected += here ? to : text.substr(i, 1);
        replacedTo = here ? i + from.size() : i;
    }
    String library(text.c_str());
    differences.expect("places", places, library.Replace(from.c_str(), to.c_str()));
    differences.expect("replaced", expected, std::string(static_cast<const char*>(library)));
    differences.expect("its length", expected.size(), static_cast<std::size_t>(library.GetLength()));
}

void checkReplaceCharacter(Generator& input, Differences& differences)
{
    const std::string text = input.text(kWords);
    const char from = text.empty() ? 'a' : text[input.below(static_cast<unsigned>(text.size()))];
    const char to = static_cast<char>(input.number(1, 255));
    String library(text.c_str());
    const auto places = from == to ? 0 : static_cast<int>(model::split(text, from).size()) - 1;
    differences.expect("places", places, library.Replace(from, to));
    differences.expect("replaced", model::replaced(text, from, to), std::string(static_cast<const char*>(library)));
}

void checkTrim(Generator& input, Differences& differences)
{
    const std::string text = input.text(kWords);
    std::string expected = text;
    const auto isInk = [](char c) { return c > ' ' && static_cast<unsigned char>(c) < 128; };
    while (!expected.empty() && !isInk(expected.back()))
        expected.pop_back();
    while (!expected.empty() && !isInk(expected.front()))
        expected.erase(0, 1);
    std::string buffer = text;
    const char* const trimmed = Trim(buffer.data());
    differences.expect("Trim returns its argument", true, trimmed == buffer.data());
    differences.expect("Trim", expected, std::string(trimmed));
}

/// Powers of ten from the last digit on, each modulo 2^32.
void checkNumber(Generator& input, Differences& differences)
{
    const std::string text = input.text(kWords);
    const std::string digits = text.substr(0, text.find_first_not_of("0123456789"));
    unsigned long long power = 1;
    unsigned long long value = 0;
    for (std::size_t i = digits.size(); i-- > 0; power = power * 10 % 4294967296U)
        value = (value + power * static_cast<unsigned long long>(digits[i] - '0')) % 4294967296U;
    differences.expect("atodw", value, static_cast<unsigned long long>(atodw(text.c_str())));
}

void checkSearch(Generator& input, Differences& differences)
{
    switch (input.number(0, 5))
    {
    case 0:
    case 1:
        return checkFind(input, differences);
    case 2:
        return checkReplace(input, differences);
    case 3:
        return checkReplaceCharacter(input, differences);
    case 4:
        return checkTrim(input, differences);
    default:
        return checkNumber(input, differences);
    }
}
} // namespace

AUTOOLS_FUZZ_TARGET(TextSearch, "finding and replacing", checkSearch)
