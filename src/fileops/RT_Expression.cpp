#include "fileops/RT_Expression.h"

#include "fileops/ExpressionValues.h"
#include "platform/BoundedText.h"
#include "platform/Layout.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

AUT_LAYOUT_BEGIN
template <> struct aut::LayoutOf<RT_Expression>
{
    static_assert(sizeof(RT_Expression) == 56);
    static_assert(offsetof(RT_Expression, m_expression) == 8);
    static_assert(offsetof(RT_Expression, m_name) == 24);
    static_assert(offsetof(RT_Expression, m_value) == 40);
};
AUT_LAYOUT_END

namespace
{
constexpr int kMostRounds = 10;

/// The next piece of `rest` between "="; a run of them separates like one, and those in front are skipped.
std::string_view takeToken(std::string_view& rest)
{
    rest.remove_prefix(std::min(rest.find_first_not_of('='), rest.size()));
    const std::string_view token = rest.substr(0, rest.find('='));
    rest.remove_prefix(token.size());
    return token;
}

String trimmed(String text)
{
    text.Trim();
    return text;
}

/// String's own comparison ignores case, but a value that differs in case only is a change.
bool isSameText(const String& left, const String& right) { return std::strcmp(left, right) == 0; }
} // namespace

RT_Expression::RT_Expression() = default;

RT_Expression::RT_Expression(const String& name, const String& expression) : m_expression(expression), m_name(name) {}

RT_Expression::RT_Expression(const char* line)
{
    std::string_view rest = aut::orEmpty(line);
    try
    {
        m_name = std::string(takeToken(rest)).c_str();
        m_expression = std::string(takeToken(rest)).c_str();
    }
    catch (const std::bad_alloc&)
    {
        m_name.Empty();
    }
    m_name.Trim();
    m_expression.TrimLeft(' ');
}

RT_Expression::RT_Expression(const RT_Expression& other) = default;
RT_Expression& RT_Expression::operator=(const RT_Expression& other) = default;
RT_Expression::~RT_Expression() = default;

String RT_Expression::Evaluate()
{
    String text = m_expression;
    for (int round = 0; round < kMostRounds; ++round)
    {
        String expanded = aut::expandSystemVariables(text);
        const String evaluated = Evaluate(expanded);
        const bool unchanged = isSameText(text, expanded) && isSameText(expanded, evaluated);
        text = evaluated;
        if (unchanged)
            break;
    }
    return text;
}

String RT_Expression::Evaluate(String& text)
{
    try
    {
        const std::string_view source(static_cast<const char*>(text));
        std::string output;
        std::size_t done = 0;
        for (;;)
        {
            const std::size_t begin = source.find_first_of("{%", done);
            if (begin == std::string_view::npos)
                break;
            const bool isBrace = source[begin] == '{';
            const int start = static_cast<int>(begin) + 1;
            const int end =
                isBrace ? SearchPosEndBlock(text, '{', '}', start) : SearchPosEndBlock(text, '%', '\0', start);
            if (end < 0)
                break; // a block that is never closed: it and all behind it stay as written
            const String inner = text.Mid(start, end - start);
            m_value = isBrace ? EvaluateRegOrFile(inner) : EvaluateEnvironmentVariable(inner);

            const std::size_t behind = static_cast<std::size_t>(end) + 1;
            const std::string_view value(static_cast<const char*>(m_value));
            const std::size_t length = output.size() + (begin - done) + value.size() + (source.size() - behind);
            if (!value.empty() && length > aut::kLongestExpressionChars)
                break; // the text has grown as far as it may: the rest stays as written
            if (value.empty())
                output.append(source, done, behind - done); // as written, for a later round or the caller
            else
                output.append(source, done, begin - done).append(value);
            done = behind;
        }
        if (done == 0)
            return text;
        output.append(source, done, std::string_view::npos);
        return String(output.c_str());
    }
    catch (const std::bad_alloc&)
    {
        return text;
    }
}

int RT_Expression::SearchPosEndBlock(const String& text, char open, char close, int start)
{
    if (close == '\0')
        return text.Find(open, start);
    int depth = 1;
    for (int i = start; i < text.GetLength(); ++i)
    {
        const char c = text.GetAt(i);
        if (c == open)
            ++depth;
        else if (c == close && --depth == 0)
            return i;
    }
    return -1;
}

String RT_Expression::EvaluateRegOrFile(const String& inner)
{
    return inner.Find('[') != -1 ? EvaluateFile(inner) : EvaluateReg(inner);
}

String RT_Expression::EvaluateReg(const String& inner)
{
    HKEY root = HKEY_LOCAL_MACHINE;
    int prefix = inner.Find("HKLM\\");
    if (prefix == -1)
    {
        root = HKEY_CURRENT_USER;
        prefix = inner.Find("HKCU\\");
    }
    if (prefix == -1)
        return String();

    const int first = prefix + 5;
    const int last = inner.ReverseFind('\\'); // the prefix's own when no key stands before the name
    return aut::registryText(root, trimmed(inner.Mid(first, last - first)), trimmed(inner.Mid(last + 1)), 0);
}

String RT_Expression::EvaluateFile(const String& inner)
{
    const int open = inner.Find('[');
    const int close = open == -1 ? -1 : inner.Find(']', open);
    if (close == -1)
        return inner; // deliberately the text itself: the block loses its braces
    return aut::iniText(trimmed(inner.Left(open)), trimmed(inner.Mid(open + 1, close - open - 1)),
                        trimmed(inner.Mid(close + 1)));
}

String RT_Expression::EvaluateEnvironmentVariable(const String& name)
{
    if (name == "WINSYSDIR")
        return aut::systemFolder32();
    if (name == "ProgramFilesDir" || name == "CommonFilesDir")
        return aut::wellKnownFolder32(name);
    if (name == "DownloadedProgramFilesDir")
        return aut::downloadedProgramFilesFolder();
    return String();
}

bool RT_Expression::Analyse()
{
    int depth = 0;
    bool inVariable = false;
    int depthOfVariable = 0;
    for (const char c : std::string_view(static_cast<const char*>(m_expression)))
    {
        if (c == '{')
            ++depth;
        else if (c == '}' && --depth < 0)
            return false;
        else if (c == '%')
        {
            if (inVariable && depth != depthOfVariable)
                return false;
            inVariable = !inVariable;
            depthOfVariable = depth;
        }
    }
    return !inVariable && depth == 0;
}
