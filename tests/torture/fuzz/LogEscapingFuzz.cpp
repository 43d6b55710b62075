#include "tests/torture/fuzz/Fuzz.h"

#include "foundation/LogText.h"

#include <memory>
#include <string>
#include <vector>

namespace
{
const torture::Words kWords = {"\"",
                               "&",
                               "'",
                               "<",
                               ">",
                               "&quot;",
                               "&amp;",
                               "a<b & \"c\"",
                               "System Information",
                               "\"\"\"\"\"\"\"\"\"\"\"\"\"\"\"\"",
                               "%s%n",
                               "]]>",
                               "\r\n",
                               "'''''''''",
                               "<LogEvent>",
                               "</LogAutoUpdate>"};

/// The entities of the text in full; what ends behind the limit goes, whole characters from the back.
std::string model(const std::string& text, std::size_t limit)
{
    static const char kReserved[] = "\"&'<>";
    static const std::string kEntities[] = {"&quot;", "&amp;", "&apos;", "&lt;", "&gt;"};
    std::vector<std::string> written;
    std::size_t total = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const std::size_t at = std::string(kReserved).find(text[i]);
        written.push_back(at == std::string::npos ? text.substr(i, 1) : kEntities[at]);
        total += written.back().size();
    }
    for (; total > limit; written.pop_back())
        total -= written.back().size();
    std::string whole;
    for (const std::string& one : written)
        whole += one;
    return whole;
}

void checkEscaping(torture::Generator& input, torture::Differences& differences)
{
    static const std::size_t kSizes[] = {aut::kLogEscapedSize, aut::kLogEscapedSize, 1, 2, 6, 7, 64};
    const std::size_t size = input.oneOf(kSizes);
    const std::string text = input.text(kWords, 4000);
    const std::unique_ptr<char[]> out(new char[size]); // of exactly this size, so that a guard page sees an overrun
    aut::escapeXml(out.get(), size, text.c_str());
    differences.expect("escaped", model(text, size - 1), std::string(out.get()));
}
} // namespace

AUTOOLS_FUZZ_TARGET(LogEscaping, "log escaping", checkEscaping)
