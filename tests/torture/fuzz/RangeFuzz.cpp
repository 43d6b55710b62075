#include "tests/torture/fuzz/Fuzz.h"
#include "tests/torture/fuzz/Model.h"

#include "system/CRange.h"

#include <cstdlib>
#include <string>

namespace
{
namespace model = torture::model;

const torture::Words kWords = {"10-20",
                               "7",
                               "5-5",
                               "-5-10",
                               "20-10",
                               " 3 - 9 ",
                               "-",
                               "--",
                               "0-0",
                               "1-",
                               "-1",
                               "+2-+8",
                               "\xa0"
                               "4-\xff"
                               "6",
                               "2147483647",
                               "0-2147483647",
                               "2147483648-1",
                               "99999999999",
                               "1-2-3",
                               "abc",
                               "\t12\n",
                               "12x-15y",
                               "3 0-9"};

bool isBlank(char c) { return c <= ' ' || static_cast<unsigned char>(c) >= 128; }

std::string trimmed(std::string text)
{
    while (!text.empty() && isBlank(text.back()))
        text.pop_back();
    while (!text.empty() && isBlank(text.front()))
        text.erase(0, 1);
    return text;
}

/// The bounds, and what the runtime's next random number makes of them.
void checkRange(torture::Generator& input, torture::Differences& differences)
{
    const std::string text = input.text(kWords, 300);
    const std::size_t dash = text.find('-');
    const bool hasBoth = dash != std::string::npos;
    const int lower = hasBoth ? model::decimal(trimmed(text.substr(0, dash))) : 0;
    const int upper = model::decimal(trimmed(hasBoth ? text.substr(dash + 1) : text));

    CRange range;
    range.SetRange("900-901");
    range.SetRange(text.c_str());
    differences.expect("lower", lower, range.m_lower);
    differences.expect("upper", upper, range.m_upper);

    const auto seed = static_cast<unsigned>(input.number(0, 1000));
    std::srand(seed);
    const long long drawn = std::rand();
    const long long distance = static_cast<long long>(upper) - lower;
    const long long expected = distance == 0 ? lower : lower + drawn % distance;
    std::srand(seed);
    differences.expect("drawn", static_cast<int>(expected), range.Random());
    if (distance > 0)
        differences.expect("within", true, range.Random() >= lower && range.Random() < upper);
}
} // namespace

AUTOOLS_FUZZ_TARGET(Ranges, "ranges", checkRange)
