#include "foundation/RT_RESULT.h"

#include <cstring>

// The readable message uses the action, which may come from anywhere, as a printf format for three texts. It is
// interpreted here instead of being handed to printf, so that a percent sign in it can neither read behind the three
// texts nor write: %s takes the next text (with width and precision), %% is a percent sign, any other conversion takes
// a text and shows nothing.

namespace
{
const char kConversions[] = "diouxXcCeEfFgGaAnpsS";

class MessageFormat
{
public:
    explicit MessageFormat(const char* format) : m_at(format) {}

    String fill(const char* const (&texts)[3])
    {
        String message;
        while (*m_at != '\0')
        {
            const std::size_t plain = std::strcspn(m_at, "%");
            appendRange(message, m_at, plain);
            m_at += plain;
            if (*m_at == '%')
                convert(message, texts);
        }
        return message;
    }

private:
    static void appendRange(String& out, const char* text, std::size_t length)
    {
        String part;
        char* const buffer = length > 0 ? part.GetBufferSetLength(static_cast<int>(length)) : nullptr;
        if (buffer != nullptr)
            std::memcpy(buffer, text, length);
        out += part;
    }

    /// `m_at` stands on a percent sign.
    void convert(String& message, const char* const (&texts)[3])
    {
        const char* const start = m_at++;
        const bool left = skipFlags();
        const int width = number(0);
        int precision = kUnlimited;
        if (*m_at == '.')
        {
            ++m_at;
            precision = number(0);
        }
        m_at += std::strspn(m_at, "hlLqjzt");
        if (*m_at == '%')
            message += *m_at++;
        else if (*m_at == '\0' || std::strchr(kConversions, *m_at) == nullptr)
            appendRange(message, start, static_cast<std::size_t>(m_at - start)); // no conversion: shown as it stands
        else
        {
            const char* const text = m_used < 3 ? texts[m_used++] : "";
            if (*m_at++ == 's')
                appendPadded(message, String(text).Left(precision), width, left);
        }
    }

    bool skipFlags()
    {
        const std::size_t flags = std::strspn(m_at, "-+ #0");
        const bool left = std::memchr(m_at, '-', flags) != nullptr;
        m_at += flags;
        return left;
    }

    /// A width or precision; nobody needs one of more than three digits.
    int number(int value)
    {
        for (; *m_at >= '0' && *m_at <= '9'; ++m_at)
            value = value < 100 ? value * 10 + (*m_at - '0') : value;
        return value;
    }

    static void appendPadded(String& out, const String& text, int width, bool left)
    {
        String padding;
        for (int i = text.GetLength(); i < width; ++i)
            padding += ' ';
        out += left ? text + padding : padding + text;
    }

    static constexpr int kUnlimited = 0x7FFFFFFF;
    const char* m_at;
    int m_used = 0;
};
} // namespace

String RT_RESULT::GetErrorMessage(const char*)
{
    String format(m_action);
    format += " %s %s %s";
    String object(m_object);
    if (object.IsEmpty())
        object.Format("Error code:%d", m_statusCode);
    const char* const texts[3] = {object, m_argument1, m_argument2};

    String message = MessageFormat(format).fill(texts);
    if (m_win32Error != 0)
    {
        message += "\n(";
        GetWin32ErrorMessage(message);
        message += ')';
    }
    return message;
}
