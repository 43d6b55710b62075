#include "tests/torture/fuzz/Fuzz.h"
#include "tests/torture/fuzz/Model.h"

#include "foundation/String.h"

#include <cstring>
#include <string>
#include <vector>

namespace
{
using torture::Differences;
using torture::Generator;
namespace model = torture::model;

const torture::Words kWords = {"abc", "ABC",         "aBcAbC",   "aaaa", "a,b,,c", ",",   " ",
                               "   ", "Hello World", "o",        "%20",  "%s",     "\\",  "//",
                               "x",   "\t",          "\xe4\xc4", "\n",   "zZ[{@`", "\xff"};

/// The text, its length, its terminator and the empty state.
void expectText(Differences& differences, const char* what, const std::string& expected, const String& got)
{
    const char* const text = got;
    differences.expect(what, expected, std::string(text, static_cast<std::size_t>(got.GetLength())));
    differences.expect("where it ends", expected.size(), std::strlen(text));
    differences.expect("IsEmpty", expected.empty(), got.IsEmpty());
    if (!expected.empty())
        differences.expect("GetBuffer is the text", true, got.GetBuffer() == text);
}

/// A part of a text, said as the characters whose index meets a condition.
template <typename Condition> std::string charactersWhere(const std::string& text, Condition meets)
{
    std::string part;
    for (long long i = 0; i < static_cast<long long>(text.size()); ++i)
        if (meets(i))
            part += text[static_cast<std::size_t>(i)];
    return part;
}

/// One of the text's own characters, or any but NUL.
char anyCharacter(Generator& input, const std::string& text)
{
    if (text.empty() || input.oneIn(4))
        return static_cast<char>(input.number(1, 255));
    return text[input.below(static_cast<unsigned>(text.size()))];
}

void checkParts(Generator& input, Differences& differences)
{
    const std::string text = input.text(kWords);
    const String library(text.c_str());
    expectText(differences, "construction", text, library);

    const auto length = static_cast<long long>(text.size());
    const long long n = input.index(static_cast<int>(length));
    const long long count = input.index(static_cast<int>(length));
    const int nAsInt = static_cast<int>(n);

    const auto first = charactersWhere(text, [&](long long i) { return i < n; });
    const auto last = charactersWhere(text, [&](long long i) { return length - i <= n; });
    const auto rest = charactersWhere(text, [&](long long i) { return i >= n; });
    const auto middle = charactersWhere(text, [&](long long i) { return i >= n && i < n + count; });
    expectText(differences, "Left", first, library.Left(nAsInt));
    expectText(differences, "Right", last, library.Right(nAsInt));
    expectText(differences, "Mid", rest, library.Mid(nAsInt));
    // A negative start gives the whole text, unless the count is negative, too.
    expectText(differences, "Mid of a count", n < 0 && count >= 0 ? text : middle,
               library.Mid(nAsInt, static_cast<int>(count)));
    if (n >= 0)
        differences.expect("GetAt", n < length ? text[static_cast<std::size_t>(n)] : '\0', library.GetAt(nAsInt));
}

void checkFields(Generator& input, Differences& differences)
{
    const std::string text = input.text(kWords);
    const char separator = input.oneIn(9) ? '\0' : anyCharacter(input, text);
    const auto fields = separator == '\0' ? std::vector<std::string>{text} : model::split(text, separator);
    const int wanted = input.index(static_cast<int>(fields.size()));
    const auto index = static_cast<std::size_t>(std::max(wanted, 0));
    expectText(differences, "ExtractSubString", index < fields.size() ? fields[index] : std::string(),
               String(text.c_str()).ExtractSubString(separator, wanted));
}

void checkComparison(Generator& input, Differences& differences)
{
    const std::string left = input.text(kWords, 300);
    const std::string right = input.oneIn(2) ? input.mutation(left, kWords) : input.text(kWords, 300);
    const bool equal = model::lower(left) == model::lower(right);
    const String a(left.c_str());
    const String b(right.c_str());
    differences.expect("== of texts", equal ? 1 : 0, a == right.c_str());
    differences.expect("== of strings", equal ? 1 : 0, a == b);
    differences.expect("!=", equal ? 0 : 1, a != b);
    differences.expect("== null", left.empty() ? 1 : 0, a == static_cast<const char*>(nullptr));
    expectText(differences, "+", left + right, a + b);
}

/// The same text held by the model and by the library.
struct Twins
{
    std::string text;
    String library;
};

void trimFront(std::string& text, char c)
{
    while (!text.empty() && text.front() == c)
        text.erase(0, 1);
}

void trimBack(std::string& text, char c)
{
    while (!text.empty() && text.back() == c)
        text.pop_back();
}

/// Two lines each: what the model does, what the library does.
const std::vector<void (*)(Twins&, const std::string&, char)> kChanges = {
    [](Twins& t, const std::string& other, char)
    {
        t.text = other;
        t.library = other.c_str();
    },
    [](Twins& t, const std::string& other, char)
    {
        t.text = other;
        t.library = String(other.c_str());
    },
    [](Twins& t, const std::string&, char c)
    {
        t.text.assign(1, c);
        t.library = c;
    },
    [](Twins& t, const std::string&, char c)
    {
        t.text = c + t.text;
        t.library = c + t.library;
    },
    [](Twins& t, const std::string& other, char)
    {
        t.text += other;
        t.library += other.c_str();
    },
    [](Twins& t, const std::string& other, char)
    {
        t.text += other;
        t.library += String(other.c_str());
    },
    [](Twins& t, const std::string&, char c)
    {
        t.text += c;
        t.library += c;
        t.library += '\0'; // changes nothing
    },
    [](Twins& t, const std::string&, char)
    {
        if (t.text.size() > 20000)
            return;
        t.text += t.text;
        t.library += t.library;
    },
    [](Twins& t, const std::string&, char c)
    {
        t.text += c;
        t.library = t.library + c;
    },
    [](Twins& t, const std::string&, char)
    {
        t.text.erase(0, t.text.size() / 2); // from a place in its own buffer
        t.library = static_cast<const char*>(t.library) + t.library.GetLength() / 2;
    },
    [](Twins& t, const std::string&, char)
    {
        t.text += t.text.substr(t.text.size() / 2);
        t.library += static_cast<const char*>(t.library) + t.library.GetLength() / 2;
    },
    [](Twins& t, const std::string&, char c)
    {
        trimFront(t.text, c);
        t.library.TrimLeft(c);
    },
    [](Twins& t, const std::string&, char c)
    {
        trimBack(t.text, c);
        t.library.TrimRight(c);
    },
    [](Twins& t, const std::string&, char)
    {
        trimFront(t.text, ' ');
        trimBack(t.text, ' ');
        t.library.Trim();
    },
    [](Twins& t, const std::string&, char c)
    {
        if (!t.text.empty())
            t.text[t.text.size() / 2] = c;
        t.library.SetAt(t.library.GetLength() / 2, t.library.IsEmpty() ? '\0' : c);
        t.library.SetAt(t.library.GetLength(), '\0');
        t.library.SetAt(t.library.GetLength() + 1, c); // changes nothing
    },
    [](Twins& t, const std::string& other, char c)
    {
        t.text = other.substr(0, other.size() / 2);
        const int length = static_cast<int>(other.size());
        std::memcpy(t.library.GetBufferSetLength(length), other.c_str(), other.size());
        if (c % 2 == 0)
            t.library.ReleaseBuffer(length / 2);
        else
        {
            t.library.SetAt(length / 2, '\0');
            t.library.ReleaseBuffer(-1);
        }
    },
    [](Twins& t, const std::string& other, char c)
    {
        t.text = "<" + other.substr(0, 2000) + "|" + std::to_string(c) + ">";
        t.library.Format("<%.2000s|%d>", other.c_str(), c);
    },
    [](Twins& t, const std::string&, char)
    {
        t.text.clear();
        t.library.Empty();
    },
};

/// A row of changes to one String.
void checkChanges(Generator& input, Differences& differences)
{
    Twins twins;
    for (int left = input.number(1, 12); left > 0 && differences.text().empty(); --left)
    {
        const auto change = static_cast<std::size_t>(input.number(0, static_cast<int>(kChanges.size()) - 1));
        const std::string other = input.text(kWords, 2047);
        kChanges[change](twins, other, anyCharacter(input, twins.text));
        const std::string what = "change " + std::to_string(change);
        expectText(differences, what.c_str(), twins.text, twins.library);
    }
}

void checkString(Generator& input, Differences& differences)
{
    switch (input.number(0, 3))
    {
    case 0:
        return checkParts(input, differences);
    case 1:
        return checkFields(input, differences);
    case 2:
        return checkComparison(input, differences);
    default:
        return checkChanges(input, differences);
    }
}
} // namespace

AUTOOLS_FUZZ_TARGET(String, "String", checkString)
