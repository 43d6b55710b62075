#include "tests/torture/streams/ResultModel.h"

#include <algorithm>

namespace torture
{
namespace
{
constexpr std::size_t kMostChars[] = {127, 259, 127, 259, 259};

bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// Whether a number without leading zeros is above another.
bool above(const std::string& digits, const std::string& limit)
{
    return digits.size() != limit.size() ? digits.size() > limit.size() : digits > limit;
}
} // namespace

ResultModel::ResultModel(RT_RESULT& record) : phase(record.GetPhase())
{
    __int64 stored = 0;
    record.GetDatetime(&stored);
    date = stored;
    texts[0] = record.GetAction();
    texts[1] = record.GetObjectA();
    texts[2] = record.GetFunction();
    texts[3] = record.GetArgument1();
    texts[4] = record.GetArgument2();
}

std::string ResultModel::digits(const std::string& text, bool& negative)
{
    while (m_at < text.size() && isBlank(text[m_at]))
        ++m_at;
    m_missing = m_at == text.size();
    negative = m_at < text.size() && text[m_at] == '-';
    if (negative || (m_at < text.size() && text[m_at] == '+'))
        ++m_at;
    std::string found;
    while (m_at < text.size() && text[m_at] >= '0' && text[m_at] <= '9')
        found += text[m_at++];
    m_ended = m_at == text.size();
    m_failed = found.empty();
    if (!found.empty())
        found.erase(0, std::min(found.find_first_not_of('0'), found.size() - 1));
    return found;
}

void ResultModel::fail()
{
    m_ended = true;
    m_failed = true;
    for (std::string& text : texts)
        text.clear();
}

void ResultModel::read(const std::string& text)
{
    bool negative = false;
    std::string number = digits(text, negative);
    // A number that is none reads as 0, one that is too large as the nearest.
    if (m_missing)
        return fail(); // nothing is read, and nothing is set
    if (m_failed)
        date = 0;
    else if (above(number, negative ? "9223372036854775808" : "9223372036854775807"))
    {
        m_failed = true;
        date = negative ? INT64_MIN : INT64_MAX;
    }
    else
        date = std::stoll((negative ? "-" : "") + number);
    if (!m_failed && !m_ended)
    {
        number = digits(text, negative);
        if (m_missing)
            return fail();
        if (m_failed)
            phase = 0;
        else if (above(number, "4294967295"))
        {
            m_failed = true;
            phase = UINT32_MAX;
        }
        else // a sign turns an unsigned number around
            phase = negative ? 0U - static_cast<std::uint32_t>(std::stoull(number))
                             : static_cast<std::uint32_t>(std::stoull(number));
    }
    else
        m_failed = true;

    for (std::size_t i = 0; i < 5; ++i)
    {
        std::string word;
        m_failed = m_failed || m_ended;
        if (!m_failed)
        {
            while (m_at < text.size() && isBlank(text[m_at]))
                ++m_at;
            while (m_at < text.size() && !isBlank(text[m_at]))
                word += text[m_at++];
            m_ended = m_at == text.size();
            m_failed = word.empty();
        }
        word = word.substr(0, word.find('\0'));
        texts[i] = word.substr(0, kMostChars[i]);
    }
}

std::string ResultModel::written() const
{
    std::string text = std::to_string(date) + "\n" + std::to_string(phase);
    for (const std::string& word : texts)
        text += "\n" + (word.empty() ? "~" : word);
    return text;
}

std::string ResultModel::told() const
{
    std::string text = std::to_string(date) + "|" + std::to_string(phase);
    for (const std::string& word : texts)
        text += "|" + word;
    return text;
}
} // namespace torture
