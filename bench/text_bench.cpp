// Text search and comparison, against the ways a good engineer would write them with the standard library.

#include "bench/Ratio.h"

#include "7xAutoUpdateTools.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>

namespace
{
char fold(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }

/// Upper-case copies of both, then strstr.
const char* searchInCopies(const char* text, const char* sub)
{
    std::string upperText(text);
    std::string upperSub(sub);
    std::transform(upperText.begin(), upperText.end(), upperText.begin(), fold);
    std::transform(upperSub.begin(), upperSub.end(), upperSub.begin(), fold);
    const char* const match = std::strstr(upperText.c_str(), upperSub.c_str());
    return match != nullptr ? text + (match - upperText.c_str()) : nullptr;
}

/// std::search with a folding comparison.
const char* searchWithPredicate(const char* text, const char* sub)
{
    const char* const end = text + std::strlen(text);
    const char* const match =
        std::search(text, end, sub, sub + std::strlen(sub), [](char a, char b) { return fold(a) == fold(b); });
    return match != end ? match : nullptr;
}

std::string sampleText(std::size_t size)
{
    const std::string words = "the Product List names each component with its version, language and location; ";
    std::string text;
    while (text.size() < size)
        text += words;
    return text + "<TimeStamp>";
}

bool search(std::size_t size, int rounds)
{
    const std::string text = sampleText(size);
    const auto time = [&](const char* (*find)(const char*, const char*))
    {
        return bench::seconds(
            [&]
            {
                for (int i = 0; i < rounds; ++i)
                    bench::keep(find(text.c_str(), "<timestamp>"));
            });
    };
    const double ours = time(stristr);
    char what[64];
    std::snprintf(what, sizeof what, "stristr, %u characters", static_cast<unsigned>(size));
    const bool copies = bench::ratio(what, ours, "upper-case copies and strstr", time(searchInCopies), 1.0);
    const bool predicate = bench::ratio(what, ours, "std::search, folding", time(searchWithPredicate), 1.0);
    return copies && predicate;
}

bool comparison()
{
    const String a("Software\\Velmora\\7xAutoUpdate\\Products");
    const String b("SOFTWARE\\Velmora\\7xAutoUpdate\\products");
    const double ours = bench::seconds(
        [&]
        {
            for (int i = 0; i < 100000; ++i)
                bench::keep(a == b);
        });
    const double theirs = bench::seconds(
        [&]
        {
            for (int i = 0; i < 100000; ++i)
                bench::keep(_stricmp(a, b));
        });
    return bench::ratio("operator==, 37 characters x 100,000", ours, "_stricmp", theirs, 1.5);
}

bool growth()
{
    const auto time = [](std::size_t size)
    {
        const std::string text = sampleText(size);
        return bench::seconds([&] { bench::keep(stristr(text.c_str(), "<timestamp>")); });
    };
    return bench::ratio("stristr, 10,000,000 characters", time(10000000), "10 x 1,000,000 characters",
                        10 * time(1000000), 1.5);
}
} // namespace

int main()
{
    bool kept = search(60, 100000);
    kept = search(100000, 100) && kept;
    kept = comparison() && kept;
    kept = growth() && kept;
    return kept ? 0 : 1;
}
