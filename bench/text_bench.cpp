// Searching a text of 20 KB for what is not in it, against upper-case copies of both and strstr.

#include "bench/Figures.h"

#include "7xAutoUpdateTools.h"

#include <cstdlib>
#include <cstring>
#include <string>

namespace
{
constexpr std::size_t kTextChars = 20000;

char fold(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }

/// What a text search without regard to case often is: duplicate both, fold them, search.
const char* searchInCopies(const char* text, const char* sub)
{
    char* const upperText = ::_strdup(text);
    char* const upperSub = ::_strdup(sub);
    for (char* c = upperText; *c != '\0'; ++c)
        *c = fold(*c);
    for (char* c = upperSub; *c != '\0'; ++c)
        *c = fold(*c);
    const char* const match = std::strstr(upperText, upperSub);
    const std::ptrdiff_t at = match != nullptr ? match - upperText : -1;
    std::free(upperText);
    std::free(upperSub);
    return at >= 0 ? text + at : nullptr;
}

/// Ordinary words, in which every letter is about as frequent as in any text.
std::string ordinaryText()
{
    const char* const words[] = {
        "update ",   "Component ", "of the ",   "product list ", "was ",       "Installed ",
        "from ",     "server ",    "and then ", "removed ",      "at reboot ", "Version 3.3.302 ",
        "language ", "EN, ",       "because ",  "a file ",       "is in use. "};
    std::string text;
    for (std::size_t i = 0; text.size() < kTextChars; ++i)
        text += words[(i * 7 + i / 11) % (sizeof words / sizeof *words)];
    text.resize(kTextChars);
    return text;
}
} // namespace

int main()
{
    const std::string text = ordinaryText();
    const char* const missing = "Certificate";
    const String held(text.c_str());
    bench::require(searchInCopies(text.c_str(), missing) == nullptr && stristr(text.c_str(), missing) == nullptr &&
                       held.Find(missing, 0) == -1,
                   "missing the text");
    constexpr int kRepeat = 2000;
    const auto reference = [&] { bench::keep(searchInCopies(text.c_str(), missing)); };
    bench::timesFaster("stristr, 20 KB miss; duplicating reference",
                       bench::inTurns([&] { bench::keep(stristr(text.c_str(), missing)); }, reference, kRepeat), 8);
    bench::timesFaster("String::Find, 20 KB miss; duplicating reference",
                       bench::inTurns([&] { bench::keep(held.Find(missing, 0)); }, reference, kRepeat), 8);
    return bench::status();
}
