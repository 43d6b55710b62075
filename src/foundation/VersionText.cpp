#include "foundation/VersionText.h"

#include "foundation/CVersion.h"
#include "platform/BoundedText.h"

#include <cstring>

namespace
{
enum class Order
{
    Older,
    Same,
    Newer
};

/// How parts `from` to `to` of `b` stand to those of `a`: the first difference decides.
Order compareParts(const CVersion& a, const CVersion& b, int from, int to)
{
    for (int i = from; i <= to; ++i)
    {
        if (a.part(i) != b.part(i))
            return b.part(i) > a.part(i) ? Order::Newer : Order::Older;
    }
    return Order::Same;
}
} // namespace

bool IsVersionNewer(const char* a, const char* b)
{
    CVersion first;
    CVersion second;
    // A text that does not parse counts as all zeros.
    first.parse(a);
    second.parse(b);

    // The separator behind minor takes part on purpose: 3.3.302 and 3.3_302 differ.
    const Order order = compareParts(first, second, 0, 3);
    if (order != Order::Same)
        return order == Order::Newer;
    if (first.isShort())
        return false;
    if (second.isShort())
        return true;
    if (!first.isFull())
        return second.isFull() || second.part(4) > first.part(4);
    if (!second.isFull())
        return false;
    return compareParts(first, second, 4, 6) == Order::Newer;
}

bool ExtractBuildVersionAndLanguage(const char* fullVersion, String& build, String& version, String& language)
{
    const String text(fullVersion); // copied first: the text may belong to one of the three results
    build.Empty();
    version.Empty();
    language.Empty();

    const int underscore = text.ReverseFind('_');
    if (underscore >= 0)
        language = text.Mid(underscore + 1);
    const String rest = underscore >= 0 ? text.Left(underscore) : text;
    const auto buildAt = static_cast<int>(std::strcspn(rest, "ABPabp"));
    build = rest.Mid(buildAt, rest.GetLength() - buildAt);
    version = rest.Left(buildAt);
    return !version.IsEmpty();
}
